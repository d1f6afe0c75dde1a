#include "glib/pixel/mirror.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "tests/support/random_raster.h"
#include "tests/support/slow_geometry.h"

namespace {

using test_support::RandomRaster;

TEST(MirrorTest, EqualsSlowForm) {
  std::mt19937 random(40);
  for (const std::int32_t bits : {1, 4, 8, 24, 32}) {
    for (int round = 0; round < 40; ++round) {
      const bool aligned = bits > 8 || round % 3 != 0;
      RandomRaster raster(random, static_cast<std::int32_t>(1 + random() % 40),
                          static_cast<std::int32_t>(1 + random() % 40), bits, aligned);
      const bool horizontal = round % 2 == 0;
      const bool vertical = round % 4 != 0;
      const auto expected = test_support::SlowMirror(raster.View(), horizontal, vertical);
      if (!horizontal && !vertical) continue;
      ASSERT_TRUE(
          glib::MirrorRaster(raster.pixels.data(), bits, aligned, raster.width, raster.height, horizontal, vertical));
      std::size_t i = 0;
      for (std::int32_t y = 0; y < raster.height; ++y) {
        for (std::int32_t x = 0; x < raster.width; ++x, ++i) {
          ASSERT_EQ(test_support::ValueAt(raster.View(), x, y), expected[i])
              << bits << " bits, " << raster.width << "x" << raster.height << " at " << x << "," << y;
        }
      }
    }
  }
}

TEST(MirrorTest, RefusesWhatItCantDo) {
  std::vector<std::uint8_t> pixels = {1, 2, 3, 4};
  const auto before = pixels;
  EXPECT_FALSE(glib::MirrorRaster(pixels.data(), 8, true, 4, 1, false, false));
  EXPECT_FALSE(glib::MirrorRaster(pixels.data(), 16, true, 2, 1, false, true));
  EXPECT_FALSE(glib::MirrorRaster(nullptr, 8, true, 4, 1, true, true));
  EXPECT_EQ(pixels, before);
}

}  // namespace
