#ifndef GLIB_MODULE_API_PROGRESS_H_
#define GLIB_MODULE_API_PROGRESS_H_

#include <cstdint>

#include "gen/basic_string.h"
#include "glib/raster/raster_block.h"

namespace glib {

inline constexpr std::int32_t kStageBegins = -1;
inline constexpr std::int32_t kStageEnds = -2;
inline constexpr std::int32_t kModuleCallBegins = -3;
inline constexpr std::int32_t kModuleCallEnded = -4;

// One report of how far an operation has come. It lives on the stack of whoever reports.
struct ProgressInfo {
  std::uint32_t total = 0;       // the scale of `current`; 0 around module calls
  std::int32_t current = 0;      // 1 to `total`, or one of the marks above
  std::uintptr_t userValue = 0;  // what was given together with the callback
  std::uint8_t flag = 1;
  gen::basic_string<char> text;  // what is being done
};

// How often pixel work over `pixels` pixels reports: 0 for small rasters, which make no reports by rows at all.
std::uint32_t ProgressSteps(std::uint32_t pixels);

// Rows between two reports for a raster of this size; 0 means that there are no reports by rows.
std::uint32_t RowsPerReport(std::uint32_t width, std::uint32_t height);

// The same when the step count is taken from other pixels than `width` times `height`.
std::uint32_t RowsPerReport(std::uint32_t pixels, std::uint32_t steps, std::uint32_t width);

}  // namespace glib

#endif  // GLIB_MODULE_API_PROGRESS_H_
