#ifndef MODULES_QIMG_SGI_H_
#define MODULES_QIMG_SGI_H_

#include <cstdint>
#include <span>

#include "modules/common/page_builder.h"

// Raster files of Silicon Graphics' workstations. An own reader, as the image library takes ten bytes a pixel and 1.6
// times as long.

namespace qimg {

inline constexpr std::size_t kSgiHeader = 512;

struct SgiHeader {
  std::uint32_t width = 0;  // checked against the limits, as the height
  std::uint32_t height = 0;
  std::uint32_t planes = 0;       // grey, grey and alpha, colours, colours and alpha; more are not shown
  std::uint32_t sampleBytes = 0;  // 1 or 2
  bool packed = false;

  bool Grey() const { return planes <= 2; }
  bool Alpha() const { return planes == 2 || planes >= 4; }
  std::uint32_t PageBits() const { return Alpha() ? 32 : Grey() ? 8 : 24; }
};

modules::Verdict ReadSgiHeader(std::span<const std::uint8_t> file, SgiHeader& header);

std::uint32_t LoadSgi(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange);

}  // namespace qimg

#endif  // MODULES_QIMG_SGI_H_
