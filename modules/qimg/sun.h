#ifndef MODULES_QIMG_SUN_H_
#define MODULES_QIMG_SUN_H_

#include <cstdint>
#include <span>

#include "modules/common/page_builder.h"

// Raster files of Sun's workstations. An own reader, as the image library takes packed rows of 1 bit apart wrongly.

namespace qimg {

inline constexpr std::size_t kSunHeader = 32;

struct SunHeader {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t bits = 0;  // 1, 8, 24 or 32, of the file as of the page
  bool packed = false;
  bool redFirst = false;
  bool mapped = false;          // the map gives colours
  std::uint32_t mapLength = 0;  // bytes behind the header
};

// Reads a header. Sides are within the limits if it is fine.
modules::Verdict ReadSunHeader(std::span<const std::uint8_t> file, SunHeader& header);

std::uint32_t LoadSun(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange);

}  // namespace qimg

#endif  // MODULES_QIMG_SUN_H_
