#ifndef MODULES_QIMG_CUT_H_
#define MODULES_QIMG_CUT_H_

#include <cstdint>
#include <span>

#include "modules/common/page_builder.h"

// Cuts of Dr. Halo: rows of runs, with the colours in a file of their own.

namespace qimg {

inline constexpr std::size_t kCutHeader = 6;

struct CutHeader {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
};

// Reads a header. Sides are within the limits if it is fine.
modules::Verdict ReadCutHeader(std::span<const std::uint8_t> file, CutHeader& header);

// An empty or senseless `paletteFile` gives greys.
std::uint32_t LoadCut(std::span<const std::uint8_t> file, std::span<const std::uint8_t> paletteFile,
                      glib::ImageDataExchange& exchange);

}  // namespace qimg

#endif  // MODULES_QIMG_CUT_H_
