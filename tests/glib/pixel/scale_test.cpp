#include "glib/pixel/scale.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include "platform/pages.h"
#include "tests/support/random_raster.h"
#include "tests/support/report_recorder.h"
#include "tests/support/slow_scaling.h"

namespace {

using glib::RasterScaler;
using glib::RasterView;
using test_support::RandomRaster;
using test_support::ReportRecorder;

struct Block {
  std::unique_ptr<std::uint8_t, void (*)(void*)> bytes;
  std::size_t size;
};

Block Scale(const RasterView& source, std::int32_t width, std::int32_t height, bool smooth) {
  RasterScaler scaler;
  scaler.smooth = smooth ? 1 : 0;
  const auto bits = static_cast<std::size_t>(smooth ? 32 : source.bits);
  return {{scaler.ScaleRaster(source, width, height, nullptr), platform::FreePages},
          glib::PaddedStride(static_cast<std::size_t>(width), bits) * static_cast<std::size_t>(height)};
}

void ExpectScaled(const RasterView& source, std::int32_t width, std::int32_t height, bool smooth) {
  const Block got = Scale(source, width, height, smooth);
  const std::vector<std::uint8_t> expected = test_support::SlowScale(source, width, height, smooth);
  ASSERT_NE(got.bytes, nullptr);
  ASSERT_EQ(got.size, expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    // The padding of a copied row is the source's own.
    ASSERT_EQ(int{got.bytes.get()[i]}, int{expected[i]})
        << source.bits << " bits, " << source.width << "x" << source.height << " to " << width << "x" << height
        << (smooth ? " smooth" : "") << ", byte " << i;
  }
}

TEST(ScaleTest, EqualsSlowFormOverRandomSizes) {
  std::mt19937 random(20);
  for (const std::int32_t bits : {1, 4, 8, 24, 32}) {
    for (int round = 0; round < 60; ++round) {
      const auto side = [&] { return static_cast<std::int32_t>(1 + random() % (round % 4 == 0 ? 4 : 70)); };
      const RandomRaster source(random, side(), side(), bits);
      const std::int32_t width = side();
      const std::int32_t height = side();
      ExpectScaled(source.View(), width, height, true);
      if (width != source.width || height != source.height) ExpectScaled(source.View(), width, height, false);
    }
  }
}

TEST(ScaleTest, EqualsSlowFormAtTheEdgesOfTheRoutes) {
  std::mt19937 random(21);
  struct Case {
    std::int32_t sourceWidth, sourceHeight, width, height;
  };
  const Case cases[] = {
      {20, 20, 21, 21},  // one pixel larger on both axes: the enlarging route
      {20, 20, 21, 20},  // one pixel larger on one axis: the reducing route
      {20, 20, 20, 21}, {20, 20, 20, 20}, {1, 1, 40, 40},   {1, 30, 40, 60},  {30, 1, 60, 40},
      {1, 30, 40, 10},  {30, 1, 10, 40},  {64, 64, 8, 8},   {64, 64, 1, 1},   {7, 5, 700, 500},
      {300, 2, 299, 1}, {2, 300, 1, 299}, {255, 3, 254, 3}, {3, 255, 4, 254},
  };
  for (const Case& c : cases) {
    for (const std::int32_t bits : {8, 24, 32}) {
      const RandomRaster source(random, c.sourceWidth, c.sourceHeight, bits);
      ExpectScaled(source.View(), c.width, c.height, true);
    }
  }
}

// Positions far from 0 have fewer bits behind the point, and rows longer than some hundred pixels are summed in parts.
TEST(ScaleTest, WideReductionsEqualSlowForm) {
  std::mt19937 random(25);
  struct Case {
    std::int32_t sourceWidth, sourceHeight, width, height;
  };
  const Case cases[] = {
      {1400, 40, 777, 31},   // boxes that overlap
      {1400, 40, 1000, 31},  // and that leave gaps
      {1300, 20, 1299, 19}, {1500, 33, 100, 7}, {1500, 30, 300, 6}, {1401, 30, 2, 4}, {700, 30, 3000, 20},
  };
  for (const Case& c : cases) {
    for (const std::int32_t bits : {4, 24}) {
      const RandomRaster source(random, c.sourceWidth, c.sourceHeight, bits);
      ExpectScaled(source.View(), c.width, c.height, true);
    }
  }
}

TEST(ScaleTest, LargeTargetsEqualSlowForm) {
  std::mt19937 random(24);
  ExpectScaled(RandomRaster(random, 61, 43, 32).View(), 2500, 1700, false);
  ExpectScaled(RandomRaster(random, 61, 43, 24).View(), 3001, 2000, false);
}

TEST(ScaleTest, RowsPaddedToWholeBytesAreReadWhenSmooth) {
  std::mt19937 random(22);
  for (const std::int32_t bits : {1, 4, 8}) {
    const RandomRaster source(random, 13, 9, bits, false);
    ExpectScaled(source.View(), 5, 4, true);
    ExpectScaled(source.View(), 29, 31, true);
  }
}

TEST(ScaleTest, FlatAreasStayFlat) {
  for (const int value : {0, 1, 77, 200, 254, 255}) {
    std::vector<std::uint8_t> pixels(glib::PaddedStride(37, 24) * 23, static_cast<std::uint8_t>(value));
    const RasterView source{pixels.data(), 37, 23, 24, nullptr, true};
    for (const auto& [width, height] : {std::pair{101, 55}, std::pair{17, 9}, std::pair{37, 23}, std::pair{36, 24}}) {
      const Block got = Scale(source, width, height, true);
      for (std::size_t i = 0; i < got.size; ++i)
        ASSERT_EQ(int{got.bytes.get()[i]}, i % 4 == 3 ? 255 : value) << width << " " << i;
    }
  }
}

TEST(ScaleTest, BoxesOfMillionsOfPixelsStayWhite) {
  const std::vector<std::uint8_t> pixels(std::size_t{6004} * 2000);
  const std::vector<std::uint32_t> white(256, 0xFFFFFFFFU);
  const RasterView source{pixels.data(), 6001, 2000, 8, white.data(), true};
  for (const std::int32_t width : {1, 2}) {
    const Block got = Scale(source, width, 1, true);
    for (std::size_t i = 0; i < got.size; ++i) ASSERT_EQ(int{got.bytes.get()[i]}, 255) << width << " " << i;
  }
}

TEST(ScaleTest, HandWorkedPixels) {
  // Two grey pixels, 0 and 200, enlarged to four: positions 0, 1/4, 1/2, 3/4 of the one step between them.
  std::vector<std::uint32_t> two = {0xFF000000U, 0xFFC8C8C8U, 0xFF000000U, 0xFFC8C8C8U};
  const RasterView source{reinterpret_cast<const std::uint8_t*>(two.data()), 2, 2, 32, nullptr, true};
  const Block got = Scale(source, 4, 4, true);
  const std::uint8_t expected[] = {0, 50, 100, 150};
  // Alpha is cut twice: 255 x 256 / 256 stays 255 in every column.
  for (std::size_t x = 0; x < 4; ++x) {
    EXPECT_EQ(int{got.bytes.get()[x * 4]}, int{expected[x]});
    EXPECT_EQ(int{got.bytes.get()[x * 4 + 3]}, 255);
  }
  // To a single pixel: both axes have step 2, the second place is one pixel on, and all four count: (0+200+0+200)/4.
  const Block one = Scale(source, 1, 1, true);
  EXPECT_EQ(int{one.bytes.get()[0]}, 100);
}

TEST(ScaleTest, RefusesSizesThatAreNoRaster) {
  std::vector<std::uint32_t> one = {0};
  const RasterView source{reinterpret_cast<const std::uint8_t*>(one.data()), 1, 1, 32, nullptr, true};
  for (const auto& [width, height] : {std::pair{0, 5}, std::pair{5, 0}, std::pair{-1, 5}, std::pair{65536, 65536},
                                      std::pair{0x7FFFFFFF, 0x7FFFFFFF}}) {
    EXPECT_EQ(Scale(source, width, height, true).bytes, nullptr) << width << "x" << height;
    EXPECT_EQ(Scale(source, width, height, false).bytes, nullptr) << width << "x" << height;
  }
}

TEST(ScaleTest, ReportsByRows) {
  // 400 x 400 pixels: sqrt(70000) x 0.009 is 2.38, so 2 steps of 200 rows.
  std::mt19937 random(23);
  const RandomRaster words(random, 10, 10, 32);
  const RandomRaster triples(random, 10, 10, 24);
  struct Case {
    const RandomRaster* source;
    bool smooth;
    std::vector<std::int32_t> currents;
  };
  for (const Case& c : {Case{&words, false, {-1, 1, 201, -2}}, Case{&triples, true, {-1, 1, 201, -2}},
                        Case{&words, true, {-1, 200, 400, -2}}}) {
    ReportRecorder recorder;
    RasterScaler scaler;
    scaler.userValue = recorder.UserValue();
    scaler.smooth = c.smooth ? 1 : 0;
    platform::FreePages(scaler.ScaleRaster(c.source->View(), 400, 400, ReportRecorder::Callback));
    EXPECT_EQ(recorder.currents, c.currents);
    EXPECT_EQ(recorder.totals.back(), 400U);
    EXPECT_EQ(recorder.texts.back(), "scaling...");
  }
}

TEST(ScaleTest, AStopLeavesTheRestZero) {
  std::vector<std::uint32_t> white(100, 0xFFFFFFFFU);
  const RasterView source{reinterpret_cast<const std::uint8_t*>(white.data()), 10, 10, 32, nullptr, true};
  ReportRecorder recorder;
  recorder.stopAt = 2;
  RasterScaler scaler;
  scaler.userValue = recorder.UserValue();
  scaler.smooth = 1;
  std::unique_ptr<std::uint8_t, void (*)(void*)> block(scaler.ScaleRaster(source, 400, 400, ReportRecorder::Callback),
                                                       platform::FreePages);
  const auto* pixels = reinterpret_cast<const std::uint32_t*>(block.get());
  EXPECT_EQ(pixels[199 * 400], 0xFFFFFFFFU);
  EXPECT_EQ(pixels[200 * 400], 0U);
  EXPECT_EQ(pixels[399 * 400 + 399], 0U);
  EXPECT_EQ(recorder.currents, (std::vector<std::int32_t>{-1, 200, -2}));
}

}  // namespace
