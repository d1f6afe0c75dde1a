#include "glib/pixel/color_effect.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

#include "tests/support/instruction_sets.h"

namespace {

using glib::ChannelTable;

std::vector<std::uint32_t> RandomPixels(std::size_t count, std::uint32_t seed) {
  std::mt19937 random(seed);
  std::vector<std::uint32_t> pixels(count);
  for (auto& pixel : pixels) pixel = static_cast<std::uint32_t>(random());
  return pixels;
}

int Channel(std::uint32_t pixel, int c) { return static_cast<int>(pixel >> (8 * c) & 255); }

std::uint32_t Join(int blue, int green, int red, std::uint32_t alphaOf) {
  return (alphaOf & 0xFF000000U) | static_cast<std::uint32_t>(red) << 16 | static_cast<std::uint32_t>(green) << 8 |
         static_cast<std::uint32_t>(blue);
}

// Lengths around those of vectors.
const std::size_t kCounts[] = {0, 1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 33, 63, 65, 127, 128, 1000};

TEST(ColorEffectTest, PointEffectsEqualTheirFormulas) {
  ChannelTable tables[3];
  std::mt19937 random(60);
  for (auto& table : tables) {
    for (auto& entry : table) entry = static_cast<std::uint8_t>(random());
  }
  for (const std::size_t count : kCounts) {
    const auto source = RandomPixels(count, 61);
    auto tabled = source;
    auto shifted = source;
    auto inverted = source;
    auto weighted = source;
    auto mean = source;
    glib::ApplyTables(tabled.data(), count, tables[0], tables[1], tables[2]);
    glib::ShiftChannels(shifted.data(), count, 40, -300, 255);
    glib::InvertChannels(inverted.data(), count);
    glib::WeightedGray(weighted.data(), count);
    glib::MeanGray(mean.data(), count);
    for (std::size_t i = 0; i < count; ++i) {
      const std::uint32_t p = source[i];
      const int b = Channel(p, 0);
      const int g = Channel(p, 1);
      const int r = Channel(p, 2);
      ASSERT_EQ(tabled[i], Join(tables[0][static_cast<std::size_t>(b)], tables[1][static_cast<std::size_t>(g)],
                                tables[2][static_cast<std::size_t>(r)], p));
      ASSERT_EQ(shifted[i], Join(std::min(b + 40, 255), std::max(g - 255, 0), std::min(r + 255, 255), p));
      ASSERT_EQ(inverted[i], Join(255 - b, 255 - g, 255 - r, p));
      const int w = (77 * b + 150 * g + 29 * r) >> 8;
      ASSERT_EQ(weighted[i], Join(w, w, w, p));
      const int m = (b + g + r) / 3;
      ASSERT_EQ(mean[i], Join(m, m, m, p));
    }
  }
}

TEST(ColorEffectTest, OneTableForAllChannelsIsTheSameOnEveryInstructionSet) {
  ChannelTable table;
  std::mt19937 random(64);
  for (auto& entry : table) entry = static_cast<std::uint8_t>(random());
  test_support::ForEachInstructionSet([&](const char* set) {
    for (const std::size_t count : kCounts) {
      const auto source = RandomPixels(count, 65);
      auto got = source;
      glib::ApplyTables(got.data(), count, table, table, table);
      for (std::size_t i = 0; i < count; ++i) {
        const auto entry = [&](int c) { return table[static_cast<std::size_t>(Channel(source[i], c))]; };
        ASSERT_EQ(got[i], Join(entry(0), entry(1), entry(2), source[i])) << set << " " << i << " of " << count;
      }
    }
  });
}

TEST(ColorEffectTest, RangeFindsEveryChannelsEnds) {
  for (const std::size_t count : kCounts) {
    if (count == 0) continue;
    auto pixels = RandomPixels(count, 62);
    for (auto& pixel : pixels) pixel = (pixel & 0x7F7F7F7FU) + 0x20202020U;
    pixels[count / 2] = 0x01020304;
    pixels[count - 1] = 0xFBFCFDFE;
    const glib::ChannelRange range = glib::RangeOf(pixels.data(), count);
    for (int c = 0; c < 4; ++c) {
      int low = 255;
      int high = 0;
      for (const std::uint32_t pixel : pixels) {
        low = std::min(low, Channel(pixel, c));
        high = std::max(high, Channel(pixel, c));
      }
      EXPECT_EQ(int{range.low[c]}, low) << count;
      EXPECT_EQ(int{range.high[c]}, high) << count;
    }
  }
}

ChannelTable Filled(int value) {
  ChannelTable table;
  table.fill(static_cast<std::uint8_t>(value));
  return table;
}

TEST(ColorEffectTest, ContrastTables) {
  ChannelTable identity;
  std::iota(identity.begin(), identity.end(), std::uint8_t{0});
  ChannelTable table = Filled(9);
  glib::ContrastTable(table, 0);
  EXPECT_EQ(table, identity);
  for (const int amount : {127, 128}) {  // a threshold
    table = Filled(9);
    glib::ContrastTable(table, amount);
    for (std::size_t i = 0; i < 256; ++i) ASSERT_EQ(int{table[i]}, i < 128 ? 0 : 255) << amount << " " << i;
  }
  table = Filled(9);
  glib::ContrastTable(table, 255);
  EXPECT_EQ(int{table[0]}, 0);
  EXPECT_EQ(int{table[1]}, 255);  // the upper entries are written last
  table = Filled(9);
  glib::ContrastTable(table, 100);  // a ramp of 55 steps of 305040 / 65536
  EXPECT_EQ(int{table[99]}, 0);
  EXPECT_EQ(int{table[101]}, 4);
  EXPECT_EQ(int{table[128]}, 28 * 305040 >> 16);
  EXPECT_EQ(int{table[155]}, 255);
  struct Squeezed {
    int amount;
    int first;
    int last;
  };
  // The step is (256 - 2n) x 65536 / 255, cut towards zero; 255 steps lead to the last entry.
  for (const Squeezed& c : {Squeezed{-55, 55, 200}, Squeezed{-127, 127, 128}, Squeezed{-200, 200, 56}}) {
    table = Filled(9);
    glib::ContrastTable(table, c.amount);
    EXPECT_EQ(int{table[0]}, c.first) << c.amount;
    EXPECT_EQ(int{table[255]}, c.last) << c.amount;
    EXPECT_EQ(std::is_sorted(table.begin(), table.end()), c.first < c.last);
  }
}

TEST(ColorEffectTest, LevelsGammaAndShiftTables) {
  ChannelTable table = Filled(9);
  glib::LevelsTable(table, 100, 228, 0, 255);
  EXPECT_EQ(int{table[100]}, 0);
  EXPECT_EQ(int{table[164]}, 128);
  EXPECT_EQ(int{table[228]}, 255);
  EXPECT_EQ(int{table[99]}, 9);
  EXPECT_EQ(int{table[229]}, 9);
  table = Filled(9);
  glib::LevelsTable(table, 50, 50, 0, 255);
  EXPECT_EQ(table, Filled(9));

  ChannelTable identity;
  std::iota(identity.begin(), identity.end(), std::uint8_t{0});
  glib::GammaTable(table, 1.0);
  EXPECT_EQ(table, identity);
  glib::GammaTable(table, 2.0);
  EXPECT_EQ(int{table[64]}, 128);  // sqrt(64 / 255) x 255 = 127.75
  EXPECT_EQ(int{table[255]}, 255);
  for (const double gamma : {0.0, -1.0}) {
    table = Filled(9);
    glib::GammaTable(table, gamma);
    EXPECT_EQ(table, Filled(9));
  }

  glib::ShiftTable(table, 10);
  EXPECT_EQ(int{table[0]}, 10);
  EXPECT_EQ(int{table[250]}, 255);
  glib::ShiftTable(table, -1000);
  EXPECT_EQ(table, Filled(0));
}

// Every value of a channel, in pixels whose other channels hold it too.
std::vector<std::uint32_t> AllValues() {
  std::vector<std::uint32_t> pixels;
  for (std::uint32_t v = 0; v < 256; ++v) pixels.push_back(v * 0x01010101U);
  return pixels;
}

TEST(ColorEffectTest, RampsEqualTheirTables) {
  for (int amount = 0; amount < 128; ++amount) {
    ChannelTable table = Filled(9);
    glib::ContrastTable(table, amount);
    auto pixels = AllValues();
    const glib::ChannelRamp ramp{static_cast<std::uint8_t>(amount),
                                 0x1000000U / static_cast<std::uint32_t>(255 - 2 * amount)};
    const glib::ChannelRamp ramps[3] = {ramp, ramp, ramp};
    glib::ApplyRamps(pixels.data(), pixels.size(), ramps);
    for (std::uint32_t v = 0; v < 256; ++v) {
      ASSERT_EQ(pixels[v], Join(table[v], table[v], table[v], v * 0x01010101U)) << amount << " " << v;
    }
  }
  for (int low = 0; low < 255; low += 3) {
    for (int high = low + 1; high < 256; high += 2) {
      ChannelTable table;
      glib::LevelsTable(table, low, high, 0, 255);
      auto pixels = AllValues();
      const glib::ChannelRamp ramp{static_cast<std::uint8_t>(low), 0x1000000U / static_cast<std::uint32_t>(high - low)};
      const glib::ChannelRamp ramps[3] = {{0, 0x10000}, ramp, {0, 0x10000}};
      glib::ApplyRamps(pixels.data(), pixels.size(), ramps);
      for (int v = low; v <= high; ++v) {
        const auto i = static_cast<std::size_t>(v);
        ASSERT_EQ(pixels[i], Join(v, table[i], v, static_cast<std::uint32_t>(v) * 0x01010101U)) << low << " " << high;
      }
    }
  }
}

TEST(ColorEffectTest, MosaicTakesThePixelBehindTheMiddle) {
  for (const auto& [width, height] : {std::pair{17, 11}, std::pair{1, 9}, std::pair{40, 1}, std::pair{5, 5}}) {
    for (const auto& [bw, bh] : {std::pair{1, 1}, std::pair{2, 2}, std::pair{3, 1}, std::pair{1, 3}, std::pair{4, 5},
                                 std::pair{100, 100}, std::pair{2147483647, 2}}) {
      const auto source = RandomPixels(static_cast<std::size_t>(width * height), 63);
      auto got = source;
      glib::Mosaic(got.data(), width, height, bw, bh);
      for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
          const std::int64_t sx = std::min<std::int64_t>(x - x % bw + bw / 2 + std::int64_t{1}, width - 1);
          const std::int64_t sy = std::min<std::int64_t>(y - y % bh + bh / 2 + std::int64_t{1}, height - 1);
          ASSERT_EQ(got[static_cast<std::size_t>(y * width + x)], source[static_cast<std::size_t>(sy * width + sx)])
              << width << "x" << height << " in " << bw << "x" << bh << " at " << x << "," << y;
        }
      }
    }
  }
}

}  // namespace
