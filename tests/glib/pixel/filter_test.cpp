#include "glib/pixel/filter.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "tests/support/random_raster.h"
#include "tests/support/report_recorder.h"
#include "tests/support/slow_filters.h"

namespace {

using glib::FilterKernel;
using glib::RasterFilter;
using test_support::RandomRaster;
using test_support::ReportRecorder;

struct Kernel {
  FilterKernel kernel;
  float weights[9];
  double scale;
  double bias;
};

const Kernel kKernels[] = {
    {FilterKernel::kBlur, {1, 1, 1, 1, 1, 1, 1, 1, 1}, 0.1111111111111111, 0},
    {FilterKernel::kSharpen, {0, -1, 0, -1, 5, -1, 0, -1, 0}, 1, 0},
    {FilterKernel::kEmboss, {1, 1, 0, 1, 0, -1, 0, -1, -1}, 0.5, 128},
};

void ExpectPixels(const RandomRaster& got, const std::vector<std::uint32_t>& expected, const char* what) {
  for (std::size_t i = 0; i < expected.size(); ++i) {
    std::uint32_t word;
    std::memcpy(&word, got.pixels.data() + 4 * i, 4);
    ASSERT_EQ(word, expected[i]) << what << " " << got.width << "x" << got.height << ", pixel " << i;
  }
}

TEST(FilterTest, MeansEqualTheDoubleFormulaForEverySum) {
  for (std::uint32_t sum = 0; sum <= 9 * 255; ++sum) {
    EXPECT_EQ(glib::BlurMean(sum), static_cast<std::uint32_t>(sum * 0.1111111111111111 + 0.0 + 0.5)) << sum;
    EXPECT_EQ(glib::AlphaMean(sum), sum / 9) << sum;
  }
}

TEST(FilterTest, KernelsEqualSlowForm) {
  std::mt19937 random(50);
  for (const Kernel& kernel : kKernels) {
    for (int round = 0; round < 60; ++round) {
      const auto side = [&] { return static_cast<std::int32_t>(3 + random() % (round % 2 == 0 ? 6 : 68)); };
      RandomRaster raster(random, side(), side(), 32);
      const auto expected = test_support::SlowConvolve(raster.View(), kernel.weights, kernel.scale, kernel.bias);
      ASSERT_TRUE(RasterFilter().ConvolveRaster(raster.pixels.data(), raster.width, raster.height, kernel.kernel));
      ExpectPixels(raster, expected, "kernel");
    }
  }
}

TEST(FilterTest, RanksEqualSlowForm) {
  std::mt19937 random(51);
  for (const std::uint32_t rank : {0U, 4U, 8U}) {
    for (int round = 0; round < 60; ++round) {
      const auto side = [&] { return static_cast<std::int32_t>(3 + random() % (round % 2 == 0 ? 6 : 68)); };
      RandomRaster raster(random, side(), side(), 32);
      // Few values, so that many neighbours are equally bright.
      if (round % 3 == 0) {
        for (auto& byte : raster.pixels) byte &= 0xC0;
      }
      const auto expected = test_support::SlowRank(raster.View(), rank);
      ASSERT_TRUE(RasterFilter().RankRaster(raster.pixels.data(), raster.width, raster.height, rank));
      ExpectPixels(raster, expected, "rank");
    }
  }
}

TEST(FilterTest, FlatAreas) {
  struct Case {
    FilterKernel kernel;
    std::uint32_t expected;
  };
  for (const Case& c : {Case{FilterKernel::kBlur, 0xFF6432C8}, Case{FilterKernel::kSharpen, 0xFF6432C8},
                        Case{FilterKernel::kEmboss, 0xFF808080}}) {
    std::vector<std::uint32_t> pixels(30 * 20, 0xFF6432C8);
    ASSERT_TRUE(RasterFilter().ConvolveRaster(reinterpret_cast<std::uint8_t*>(pixels.data()), 30, 20, c.kernel));
    for (const std::uint32_t pixel : pixels) ASSERT_EQ(pixel, c.expected);
  }
}

TEST(FilterTest, SmallRastersStay) {
  std::mt19937 random(52);
  for (const auto& [width, height] : {std::pair{2, 100}, std::pair{100, 2}, std::pair{1, 1}}) {
    RandomRaster raster(random, width, height, 32);
    const auto before = raster.pixels;
    for (const Kernel& kernel : kKernels) {
      EXPECT_FALSE(RasterFilter().ConvolveRaster(raster.pixels.data(), width, height, kernel.kernel));
    }
    EXPECT_TRUE(RasterFilter().RankRaster(raster.pixels.data(), width, height, 4));
    EXPECT_EQ(raster.pixels, before);
  }
}

TEST(FilterTest, ReportsAndStops) {
  std::mt19937 random(53);
  RandomRaster raster(random, 400, 350, 32);  // two steps of 175 rows
  ReportRecorder recorder;
  RasterFilter filter;
  filter.callback = ReportRecorder::Callback;
  filter.userValue = recorder.UserValue();
  filter.stage = "Slide 3";
  EXPECT_TRUE(filter.ConvolveRaster(raster.pixels.data(), 400, 350, FilterKernel::kBlur));
  EXPECT_EQ(recorder.currents, (std::vector<std::int32_t>{-1, 0, 175, -2}));
  EXPECT_EQ(recorder.texts.back(), "Slide 3; processing");
  EXPECT_EQ(recorder.totals.back(), 350U);

  recorder = ReportRecorder();
  recorder.stopAt = 3;
  const auto before = raster.pixels;
  EXPECT_FALSE(filter.ConvolveRaster(raster.pixels.data(), 400, 350, FilterKernel::kEmboss));
  EXPECT_EQ(recorder.currents, (std::vector<std::int32_t>{-1, 0, 175, -2}));
  const std::ptrdiff_t done = 175 * 400 * 4;
  EXPECT_FALSE(std::equal(before.begin(), before.begin() + done, raster.pixels.begin()));
  EXPECT_TRUE(std::equal(before.begin() + done, before.end(), raster.pixels.begin() + done));
}

}  // namespace
