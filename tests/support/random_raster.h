#ifndef TESTS_SUPPORT_RANDOM_RASTER_H_
#define TESTS_SUPPORT_RANDOM_RASTER_H_

#include <cstdint>
#include <random>
#include <vector>

#include "glib/pixel/raster_view.h"

namespace test_support {

// A raster of random pixels with a random palette and random bytes in the padding of its rows.
struct RandomRaster {
  RandomRaster(std::mt19937& random, std::int32_t rasterWidth, std::int32_t rasterHeight, std::int32_t rasterBits,
               bool aligned = true)
      : width(rasterWidth), height(rasterHeight), bits(rasterBits), rowsAligned(aligned), palette(256) {
    for (auto& entry : palette) entry = static_cast<std::uint32_t>(random());
    pixels.resize(View().Stride() * static_cast<std::size_t>(height));
    // A few runs of one value beside noise, so that flat areas are met too.
    std::uint8_t value = 0;
    for (auto& byte : pixels) {
      if (random() % 3 != 0) value = static_cast<std::uint8_t>(random());
      byte = value;
    }
  }

  glib::RasterView View() const { return {pixels.data(), width, height, bits, palette.data(), rowsAligned}; }

  std::int32_t width;
  std::int32_t height;
  std::int32_t bits;
  bool rowsAligned;
  std::vector<std::uint32_t> palette;
  std::vector<std::uint8_t> pixels;
};

// A pixel as its four channels in the order of memory: blue, green, red, alpha. Outside the raster all are 0. Written
// plainly, for slow forms.
struct Channels {
  std::uint8_t value[4] = {0, 0, 0, 0};
};
Channels PixelAt(const glib::RasterView& raster, std::int32_t x, std::int32_t y);

// The palette index of a pixel of 8 bits or less.
std::uint32_t IndexAt(const glib::RasterView& raster, std::int32_t x, std::int32_t y);

}  // namespace test_support

#endif  // TESTS_SUPPORT_RANDOM_RASTER_H_
