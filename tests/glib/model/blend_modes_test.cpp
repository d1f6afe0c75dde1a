#include "glib/model/blend_modes.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "tests/support/slow_blending.h"

namespace {

using test_support::ToPixel;
using test_support::ToWord;

struct Worked {
  int mode;
  std::uint32_t layer;
  std::uint32_t target;
  std::uint32_t result;
};

// Words are alpha, red, green, blue.
TEST(BlendModes, PixelsWorkedByHand) {
  constexpr Worked kCases[] = {
      {2, 0x40FF8000, 0x40804020, 0x80802000},  // 255 x 128, 128 x 64, 0 x 32
      {3, 0x01FF8000, 0x01804020, 0x02FFA020},  // 128 + 64 - 32 = 160
      {4, 0x00FF0080, 0xFFFFFF40, 0xFFFF0060},  // s 128, d 64: u = 64, then 192 x 128 / 255 = 96
      {5, 0xFF102030, 0x01302010, 0xFF302030},
      {6, 0xF0102030, 0x20302010, 0xFF102010},
      {7, 0x00102030, 0x00302011, 0x0020001F},
      {8, 0xFF646464, 0x000000FF, 0xFF646464},   // a grey layer has no saturation
      {11, 0xFF0000FF, 0x00808080, 0xFF000080},  // the layer's pure colour at half the value
      {12, 0x80FF0180, 0x90010280, 0xFFFF03FF},
      {13, 0x10FF0180, 0x10010280, 0x20FE0000},
      {14, 0x00FF0A80, 0x00000A80, 0x00FFE8FE},  // 10 x 256 / 11 = 232, 128 x 256 / 129 = 254
      {15, 0x01000000, 0x00FF8000, 0xFF007FFF},
      {15, 0x00FFFFFF, 0x12FF8000, 0x12FF8000},  // a transparent pixel changes nothing
  };
  for (const Worked& c : kCases) {
    std::uint32_t pixel = c.target;
    glib::BlendRowOf(c.mode)(&pixel, &c.layer, 1);
    EXPECT_EQ(pixel, c.result) << "mode " << c.mode << ": " << std::hex << c.layer << " on " << c.target << " gave "
                               << pixel;
  }
}

TEST(BlendModes, RandomRowsEqualTheFormulas) {
  std::mt19937 random(11);
  // Few levels, so that equal channels, greys and extremes are frequent.
  constexpr std::uint8_t kLevels[] = {0, 1, 42, 100, 127, 128, 129, 200, 254, 255};
  const auto word = [&] {
    std::uint32_t value = static_cast<std::uint32_t>(random());
    if (random() % 2 == 0) {
      value = 0;
      for (int c = 0; c < 4; ++c) value = value << 8 | kLevels[random() % std::size(kLevels)];
    }
    return value;
  };
  std::vector<std::uint32_t> source(4000);
  std::vector<std::uint32_t> before(source.size());
  for (int mode = 2; mode <= 15; ++mode) {
    for (std::size_t i = 0; i < source.size(); ++i) {
      source[i] = word();
      before[i] = word();
    }
    std::vector<std::uint32_t> target = before;
    glib::BlendRowOf(mode)(target.data(), source.data(), source.size());
    for (std::size_t i = 0; i < source.size(); ++i) {
      const std::uint32_t expected = ToWord(test_support::SlowBlend(mode, ToPixel(source[i]), ToPixel(before[i])));
      ASSERT_EQ(target[i], expected) << "mode " << mode << ": " << std::hex << source[i] << " on " << before[i]
                                     << ", got " << target[i] << ", expected " << expected;
    }
  }
}

TEST(BlendModes, DissolveKeepsColoursAndDropsAlphaByChance) {
  std::vector<std::uint32_t> source(3000, 0x80123456);
  source[0] = 0xFF123456;
  source[1] = 0x00FFFFFF;
  std::vector<std::uint32_t> target(source.size(), 0x99999999);
  glib::BlendRowOf(1)(target.data(), source.data(), source.size());
  EXPECT_EQ(target[0], 0xFF123456U) << "an opaque pixel always stays";
  EXPECT_EQ(target[1], 0x00FFFFFFU);
  std::size_t kept = 0;
  for (std::size_t i = 2; i < target.size(); ++i) {
    ASSERT_EQ(target[i] & 0xFFFFFF, 0x123456U);
    ASSERT_TRUE(target[i] >> 24 == 0 || target[i] >> 24 == 0x80) << i;
    kept += target[i] >> 24 != 0 ? 1 : 0;
  }
  EXPECT_GT(kept, 1200U);
  EXPECT_LT(kept, 1800U);
}

TEST(BlendModes, OtherNumbersAreNoMode) {
  for (const int mode : {-1, 0, 16, 1000}) EXPECT_EQ(glib::BlendRowOf(mode), nullptr) << mode;
}

}  // namespace
