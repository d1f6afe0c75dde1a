#ifndef TESTS_SUPPORT_SLOW_GEOMETRY_H_
#define TESTS_SUPPORT_SLOW_GEOMETRY_H_

#include <cstdint>
#include <vector>

#include "glib/pixel/raster_view.h"

namespace test_support {

// Words row by row, with their size.
struct Words {
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::vector<std::uint32_t> pixels;
};

// What turning a 32-bit raster must give, from the formulas pixel after pixel.
Words SlowRotate(const glib::RasterView& source, double angle, bool interpolate, std::uint32_t background);

// What mirroring must give: the value of each pixel (the index at 8 bits and less), row by row.
std::vector<std::uint32_t> SlowMirror(const glib::RasterView& source, bool horizontal, bool vertical);

// The value of a pixel: its index at 8 bits and less, its bytes as a word otherwise.
std::uint32_t ValueAt(const glib::RasterView& raster, std::int32_t x, std::int32_t y);

}  // namespace test_support

#endif  // TESTS_SUPPORT_SLOW_GEOMETRY_H_
