#include "glib/pixel/rotate.h"

#include <gtest/gtest.h>

#include <bit>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include "platform/pages.h"
#include "tests/support/random_raster.h"
#include "tests/support/report_recorder.h"
#include "tests/support/slow_geometry.h"

namespace {

using glib::RGB32;
using glib::RotateImage;
using test_support::RandomRaster;
using test_support::ReportRecorder;
using test_support::Words;

constexpr std::uint32_t kBackground = 0x00010203;

bool Rotate(RotateImage<RGB32>& image, const RandomRaster& source, double angle, Words& result) {
  RGB32* target = nullptr;
  if (!image.Rotate(reinterpret_cast<const RGB32*>(source.pixels.data()), source.width, source.height, angle, target,
                    result.width, result.height, std::bit_cast<RGB32>(kBackground))) {
    return false;
  }
  const auto* words = reinterpret_cast<const std::uint32_t*>(target);
  result.pixels.assign(words, words + static_cast<std::ptrdiff_t>(result.width) * result.height);
  platform::FreePages(target);
  return true;
}

void ExpectRotated(const RandomRaster& source, double angle, bool interpolate) {
  RotateImage<RGB32> image;
  image.interpolate = interpolate ? 1 : 0;
  const Words expected = test_support::SlowRotate(source.View(), angle, interpolate, kBackground);
  Words got;
  const bool done = Rotate(image, source, angle, got);
  ASSERT_EQ(done, expected.width > 0 && expected.height > 0) << source.width << "x" << source.height << " " << angle;
  if (!done) return;
  ASSERT_EQ(got.width, expected.width);
  ASSERT_EQ(got.height, expected.height);
  for (std::size_t i = 0; i < expected.pixels.size(); ++i) {
    ASSERT_EQ(got.pixels[i], expected.pixels[i])
        << source.width << "x" << source.height << " by " << angle << (interpolate ? " mixed" : "") << ", pixel " << i;
  }
}

TEST(RotateTest, EqualsSlowForm) {
  std::mt19937 random(30);
  std::vector<double> angles = {0,     90,  180,  270,   -90, 450,        360,        -360, 1,   30,
                                45,    60,  89.5, 90.5,  120, 135,        179.9999,   200,  225, 269,
                                271.5, 300, 315,  359.9, -30, 90.0000001, -0.0000001, 1e-9, 725, 179.99999999};
  for (int i = 0; i < 20; ++i) angles.push_back(static_cast<double>(random() % 36000) / 100.0);
  for (const double angle : angles) {
    for (const bool interpolate : {false, true}) {
      const auto side = [&] { return static_cast<std::int32_t>(1 + random() % 70); };
      ExpectRotated(RandomRaster(random, side(), side(), 32), angle, interpolate);
      ExpectRotated(RandomRaster(random, 1, side(), 32), angle, interpolate);
      ExpectRotated(RandomRaster(random, side(), 1, 32), angle, interpolate);
      ExpectRotated(RandomRaster(random, 2, 2, 32), angle, interpolate);
      ExpectRotated(RandomRaster(random, 1, 1, 32), angle, interpolate);
    }
  }
  // Large enough to go past the caches.
  ExpectRotated(RandomRaster(random, 2311, 1907, 32), 90, false);
  ExpectRotated(RandomRaster(random, 1907, 2311, 32), 270, false);
  // Larger than the blocks that the kernels work in.
  for (const double angle : {90.0, 180.0, 270.0, 33.3, 211.0}) {
    ExpectRotated(RandomRaster(random, 301, 203, 32), angle, false);
    ExpectRotated(RandomRaster(random, 203, 301, 32), angle, true);
  }
}

TEST(RotateTest, HandWorkedRightAngles) {
  std::mt19937 random(31);
  RandomRaster source(random, 3, 1, 32);
  const auto* from = reinterpret_cast<const std::uint32_t*>(source.pixels.data());
  RotateImage<RGB32> image;
  Words got;
  ASSERT_TRUE(Rotate(image, source, 90, got));
  EXPECT_EQ(got.width, 1);
  EXPECT_EQ(got.height, 3);
  EXPECT_EQ(got.pixels, (std::vector<std::uint32_t>{from[0], from[1], from[2]}));
  ASSERT_TRUE(Rotate(image, source, 270, got));
  EXPECT_EQ(got.pixels, (std::vector<std::uint32_t>{from[2], from[1], from[0]}));
}

TEST(RotateTest, CornersTakeTheBackgroundWithItsAlpha) {
  std::mt19937 random(32);
  RandomRaster source(random, 100, 100, 32);
  RotateImage<RGB32> image;
  Words got;
  ASSERT_TRUE(Rotate(image, source, 45, got));
  EXPECT_EQ(got.width, 141);
  EXPECT_EQ(got.height, 141);
  for (const std::size_t corner : {0, 140, 140 * 141, 141 * 141 - 1}) EXPECT_EQ(got.pixels[corner], kBackground);
}

TEST(RotateTest, RefusesWhatCantBeTurned) {
  std::mt19937 random(33);
  RandomRaster source(random, 4, 4, 32);
  RotateImage<RGB32> image;
  Words got;
  for (const double angle : {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_FALSE(Rotate(image, source, angle, got));
  }
  RGB32* target = nullptr;
  EXPECT_FALSE(image.Rotate(nullptr, 4, 4, 90, target, got.width, got.height, std::bit_cast<RGB32>(kBackground)));
  EXPECT_TRUE(Rotate(image, source, 1e300, got));  // some angle, found without counting down to it
}

TEST(RotateTest, ReportsRowsOfTheSourceScale) {
  // 400 x 350 pixels give 2 steps of 175 rows.
  std::mt19937 random(34);
  RandomRaster source(random, 400, 350, 32);
  struct Case {
    double angle;
    const char* label;
    std::vector<std::int32_t> currents;
    const char* text;
  };
  for (const Case& c :
       {Case{90, "", {-1, 0, 175, -2}, "rotate"}, Case{180, "Slide 2", {-1, 0, 175, -2}, "Slide 2; rotate"},
        Case{45, "", {-1, 0, 175, 350, 525, -2}, "rotate"}, Case{0, "", {}, ""}}) {
    ReportRecorder recorder;
    RotateImage<RGB32> image;
    image.callback = ReportRecorder::Callback;
    image.user = recorder.UserValue();
    image.label = c.label;
    Words got;
    ASSERT_TRUE(Rotate(image, source, c.angle, got));
    EXPECT_EQ(recorder.currents, c.currents) << c.angle;
    if (!recorder.texts.empty()) {
      EXPECT_EQ(recorder.texts.back(), c.text);
      EXPECT_EQ(recorder.totals.back(), 350U);
    }
  }
  ReportRecorder recorder;
  recorder.stopAt = 3;
  RotateImage<RGB32> image;
  image.callback = ReportRecorder::Callback;
  image.user = recorder.UserValue();
  Words got;
  EXPECT_FALSE(Rotate(image, source, 45, got));
  EXPECT_EQ(recorder.currents, (std::vector<std::int32_t>{-1, 0, 175, -2}));
}

}  // namespace
