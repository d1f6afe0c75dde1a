#include "glib/tasks/pixel_length.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

TEST(PixelLength, TakesPercents) {
  EXPECT_EQ(glib::PercentOf(200, 10), 20.0F);
  EXPECT_EQ(glib::PercentOf(200, 90), 180.0F);
  EXPECT_EQ(glib::PercentOf(1999, 10), 199.9F);
  EXPECT_EQ(glib::PercentOf(100, -50), -50.0F);
  EXPECT_EQ(glib::PercentOf(0, 50), 0.0F);
  // The factor lies below 0.01, and a product so large doesn't round up to the whole.
  EXPECT_EQ(glib::PercentOf(4294967295U, 100), 4294967296.0F);
  EXPECT_LT(glib::PercentOf(7, 100), std::nextafter(7.0F, 8.0F));
  for (std::uint32_t length = 1; length < 30000; ++length) {
    ASSERT_EQ(glib::CutToInteger(glib::PercentOf(length, 100)), static_cast<std::int32_t>(length));
  }
}

TEST(PixelLength, CutsTowardsZeroWithinTheRangeOnly) {
  EXPECT_EQ(glib::CutToInteger(199.9), 199);
  EXPECT_EQ(glib::CutToInteger(-199.9), -199);
  EXPECT_EQ(glib::CutToInteger(-0.5), 0);
  EXPECT_EQ(glib::CutToInteger(2147483647.5), 2147483647);
  EXPECT_EQ(glib::CutToInteger(-2147483648.5), std::numeric_limits<std::int32_t>::min());
  for (const double value : {2147483648.0, -2147483649.0, 1e300, -1e300, std::numeric_limits<double>::infinity(),
                             std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_EQ(glib::CutToInteger(value), std::nullopt) << value;
  }
}

}  // namespace
