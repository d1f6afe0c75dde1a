#include "tests/support/random_raster.h"

#include <cstring>

namespace test_support {

std::uint32_t IndexAt(const glib::RasterView& raster, std::int32_t x, std::int32_t y) {
  const std::uint8_t* row = raster.Row(y);
  const auto bit = static_cast<std::uint32_t>(x * raster.bits);
  const auto shift = 8 - static_cast<std::uint32_t>(raster.bits) - bit % 8;
  return row[bit / 8] >> shift & ((1U << raster.bits) - 1);
}

Channels PixelAt(const glib::RasterView& raster, std::int32_t x, std::int32_t y) {
  Channels channels;
  if (x < 0 || y < 0 || x >= raster.width || y >= raster.height) return channels;
  if (raster.bits <= 8) {
    std::memcpy(channels.value, &raster.palette[IndexAt(raster, x, y)], 4);
  } else if (raster.bits == 24) {
    std::memcpy(channels.value, raster.Row(y) + 3 * x, 3);
    channels.value[3] = 255;
  } else {
    std::memcpy(channels.value, raster.Row(y) + 4 * x, 4);
  }
  return channels;
}

}  // namespace test_support
