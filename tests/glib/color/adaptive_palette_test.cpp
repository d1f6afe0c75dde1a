// Palettes and mapping of whole pages.

#include "glib/color/adaptive_palette.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <set>
#include <vector>

#include "glib/color/exact_colors.h"
#include "glib/color/palette_mapper.h"
#include "tests/support/instruction_sets.h"
#include "tests/support/slow_colors.h"

namespace {

using glib::AdaptivePalette;
using glib::ColorPage;
using glib::PaletteLevel;
using glib::PaletteSettings;
using test_support::PageOf;
using Bytes = std::vector<std::uint8_t>;
using Words = std::vector<std::uint32_t>;

AdaptivePalette Build(const ColorPage& page, const PaletteSettings& settings) {
  return glib::BuildAdaptivePalette(std::span(&page, 1), settings);
}

Bytes Map(const ColorPage& page, const Words& colors, const glib::MapSettings& settings = {}) {
  Bytes indices(page.PixelCount(), 200);
  glib::PaletteMapper(colors, settings).Map(page, nullptr, indices.data());
  return indices;
}

// Different colours, the i-th of them i + 1 times.
Words Staircase(std::uint32_t colors) {
  Words words;
  for (std::uint32_t i = 0; i < colors; ++i) words.insert(words.end(), i + 1, 0xFF000000U | i * 0x010307U);
  return words;
}

TEST(AdaptivePalette, KeepsColorsThatFit) {
  for (const std::uint32_t count : {1, 2, 3, 17, 256}) {
    const Words words = Staircase(count);
    const ColorPage page = PageOf(words, static_cast<std::uint32_t>(words.size()));
    const AdaptivePalette palette = Build(page, {count, PaletteLevel::kDefault, false, true});
    ASSERT_TRUE(palette.exact);
    ASSERT_EQ(palette.colors.size(), count);
    EXPECT_EQ(palette.colors.front(), words.back());  // the most frequent
    const Bytes indices = Map(page, palette.colors);
    for (std::size_t i = 0; i < words.size(); ++i) ASSERT_EQ(palette.colors[indices[i]], words[i]);
    EXPECT_EQ(Build(page, {count - 1, PaletteLevel::kDefault, false, false}).exact, count == 1);
  }
}

TEST(AdaptivePalette, CountsAllPagesTogether) {
  const Words first(10, 0xFF102030U);
  const Words second = {0x00FFFFFFU, 0x7F102030U, 0xFF000001U};  // any alpha but 0 is opaque
  const std::vector<ColorPage> pages = {PageOf(first, 5), PageOf(second, 3)};
  const auto counted = glib::CountExactColors(pages, false);
  ASSERT_TRUE(counted);
  EXPECT_EQ(*counted, (std::vector<glib::CountedColor>{{0xFF102030U, 11}, {0xFF000001U, 1}}));
}

TEST(AdaptivePalette, ExactColorsEndAtTheirLimit) {
  Words words;
  for (std::uint32_t i = 0; i < glib::kMaxExactColors; ++i) words.push_back(0xFF000000U | i * 37);
  ColorPage page = PageOf(words, 128);
  const auto most = glib::CountExactColors(std::span(&page, 1), false);
  ASSERT_TRUE(most);
  EXPECT_EQ(most->size(), glib::kMaxExactColors);
  words.insert(words.end(), 128, 0xFFFFFFFFU);
  page = PageOf(words, 128);
  EXPECT_FALSE(glib::CountExactColors(std::span(&page, 1), false));
}

// The same picture in every layout gives the same palette and indices.
TEST(AdaptivePalette, ReadsAllLayouts) {
  const Bytes indices = {0, 1, 1, 0, 1, 0, 0, 1, 1, 1};  // two rows of five
  Words table(256, 0xFF00FF00U);
  table[0] = 0xFF336699U;
  table[1] = 0x00000000U;
  Words wide;
  Bytes bytes24(32);
  Bytes bytes8(16);
  Bytes bytes4(8);
  Bytes bytes1(8);
  for (std::size_t i = 0; i < indices.size(); ++i) {
    const std::size_t y = i / 5;
    const std::size_t x = i % 5;
    wide.push_back(table[indices[i]]);
    const std::uint32_t solid = indices[i] == 0 ? 0x336699U : 0xFFFFFFU;
    std::memcpy(&bytes24[y * 16 + x * 3], &solid, 3);
    bytes8[y * 8 + x] = indices[i];
    bytes4[y * 4 + x / 2] |= static_cast<std::uint8_t>(indices[i] << (x % 2 == 0 ? 4 : 0));
    bytes1[y * 4] |= static_cast<std::uint8_t>(indices[i] << (7 - x));
  }
  const Words hole = {0xFF336699U};
  Bytes expected(10);
  for (std::size_t i = 0; i < 10; ++i) expected[i] = indices[i] == 0 ? 1 : 0;
  for (const ColorPage& page :
       {PageOf(wide, 5), ColorPage{bytes8.data(), 8, 5, 2, 8, table.data()},
        ColorPage{bytes4.data(), 4, 5, 2, 4, table.data()}, ColorPage{bytes1.data(), 4, 5, 2, 1, table.data()}}) {
    const AdaptivePalette palette = Build(page, {});
    EXPECT_EQ(palette.colors, hole) << page.bits;
    EXPECT_EQ(Map(page, palette.colors, {1, PaletteLevel::kDefault, false, false}), expected) << page.bits;
    EXPECT_EQ(Map(page, palette.colors, {1, PaletteLevel::kDefault, false, true}), expected) << page.bits;
  }
  const ColorPage solid{bytes24.data(), 16, 5, 2, 24, nullptr};
  const AdaptivePalette both = Build(solid, {});
  EXPECT_EQ(both.colors, (Words{0xFFFFFFFFU, 0xFF336699U}));  // six and four pixels
  EXPECT_EQ(Map(solid, both.colors), expected);
}

TEST(AdaptivePalette, PagesWithoutColorHaveNoEntries) {
  const Words words(12, 0x00123456U);
  for (const ColorPage& page : {PageOf(words, 4), ColorPage{nullptr, 0, 0, 0, 32, nullptr}}) {
    const AdaptivePalette palette = Build(page, {16, PaletteLevel::kBest, false, true});
    EXPECT_TRUE(palette.colors.empty());
    EXPECT_EQ(Map(page, palette.colors, {1, PaletteLevel::kDefault, false, true}), Bytes(page.PixelCount()));
  }
  EXPECT_TRUE(glib::BuildAdaptivePalette({}, {}).colors.empty());
}

TEST(AdaptivePalette, OnePixel) {
  const Words words = {0xFF010203U};
  for (const bool dither : {false, true}) {
    const AdaptivePalette palette = Build(PageOf(words, 1), {2, PaletteLevel::kDefault, false, dither});
    EXPECT_EQ(palette.colors, words);
    EXPECT_EQ(Map(PageOf(words, 1), palette.colors, {0, PaletteLevel::kDefault, false, dither}), Bytes{0});
  }
}

TEST(AdaptivePalette, GreysAreExact) {
  const Words words = test_support::ShadedPicture(200, 100);
  const AdaptivePalette palette = Build(PageOf(words, 200), {256, PaletteLevel::kDefault, true, true});
  EXPECT_TRUE(palette.exact);
  const Bytes indices = Map(PageOf(words, 200), palette.colors, {0, PaletteLevel::kDefault, true, false});
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::uint32_t grey =
        (77 * (words[i] >> 16 & 255U) + 150 * (words[i] >> 8 & 255U) + 29 * (words[i] & 255U)) >> 8;
    ASSERT_EQ(palette.colors[indices[i]], 0xFF000000U | grey * 0x010101U);
  }
}

// Flat fields, a bar of shades and thin lines: a few hundred colours, so that none is lost in a histogram.
Words Interface(std::uint32_t width, std::uint32_t height) {
  Words words;
  for (std::uint32_t y = 0; y < height; ++y) {
    for (std::uint32_t x = 0; x < width; ++x) {
      std::uint32_t word = 0xFFEEF0F3U;
      if (y < 40) word = 0xFF000000U | (70 - y) << 16 | (120 - 2 * y) << 8 | (190 - x * 100 / width);
      if (y > 60 && (x / 24 + y / 24) % 3 == 0)
        word = 0xFF000000U | (x / 24 * 37 % 256) << 16 | (y / 24 * 59 % 256) << 8;
      if (x % 24 == 0) word = 0xFF303840U + y / 8;
      words.push_back(word);
    }
  }
  return words;
}

// Floors a tenth of a decibel below what was measured when they were set.
TEST(AdaptivePalette, QualityFloors) {
  const Words shades = test_support::ShadedPicture(384, 256);
  const Words interface = Interface(384, 256);
  const struct {
    const Words& words;
    std::size_t colors;
    PaletteLevel level;
    double plain;
    double dithered;
  } floors[] = {
      {shades, 256, PaletteLevel::kFast, 37.51, 37.11},       {shades, 256, PaletteLevel::kDefault, 37.57, 37.18},
      {shades, 256, PaletteLevel::kBest, 37.59, 37.21},       {shades, 64, PaletteLevel::kDefault, 32.35, 30.97},
      {shades, 16, PaletteLevel::kDefault, 26.59, 24.07},     {shades, 2, PaletteLevel::kDefault, 17.93, 16.84},
      {interface, 256, PaletteLevel::kDefault, 52.04, 51.21}, {interface, 32, PaletteLevel::kDefault, 33.48, 31.17}};
  for (const auto& floor : floors) {
    const ColorPage page = PageOf(floor.words, 384);
    for (const bool dither : {false, true}) {
      const AdaptivePalette palette = Build(page, {floor.colors, floor.level, false, dither});
      const Bytes indices = Map(page, palette.colors, {0, floor.level, false, dither});
      EXPECT_GE(test_support::Psnr(floor.words, palette.colors, indices), dither ? floor.dithered : floor.plain)
          << floor.colors << " colours, level " << static_cast<int>(floor.level) << (dither ? ", dithered" : "");
    }
  }
}

TEST(AdaptivePalette, MoreColorsAreNeverWorse) {
  const Words words = test_support::ShadedPicture(160, 120);
  const ColorPage page = PageOf(words, 160);
  double before = 0;
  for (std::size_t count = 2; count <= 256; ++count) {
    const AdaptivePalette palette = Build(page, {count, PaletteLevel::kDefault, false, false});
    ASSERT_LE(palette.colors.size(), count);
    const double psnr = test_support::Psnr(words, palette.colors, Map(page, palette.colors));
    EXPECT_GT(psnr, before - 0.15) << count;
    before = std::max(before, psnr);
  }
}

TEST(AdaptivePalette, IsTheSameOnEveryInstructionSet) {
  const Words words = test_support::ShadedPicture(150, 90);
  const ColorPage page = PageOf(words, 150);
  for (const PaletteLevel level : {PaletteLevel::kDefault, PaletteLevel::kPerceptual}) {
    std::set<Words> palettes;
    std::set<Bytes> maps;
    test_support::ForEachInstructionSet([&](const char*) {
      const AdaptivePalette palette = Build(page, {77, level, false, true});
      palettes.insert(palette.colors);
      maps.insert(Map(page, palette.colors, {0, level, false, true}));
    });
    EXPECT_EQ(palettes.size(), 1U);
    EXPECT_EQ(maps.size(), 1U);
  }
}

TEST(AdaptivePalette, LevelsOfTheSetting) {
  const struct {
    std::int32_t quantize;
    PaletteLevel level;
  } cases[] = {{-7, PaletteLevel::kDefault},   {0, PaletteLevel::kDefault}, {1, PaletteLevel::kFast},
               {2, PaletteLevel::kDefault},    {7, PaletteLevel::kDefault}, {8, PaletteLevel::kBest},
               {9, PaletteLevel::kPerceptual}, {251, PaletteLevel::kFast},  {INT32_MIN, PaletteLevel::kDefault}};
  for (const auto& [quantize, level] : cases) EXPECT_EQ(glib::PaletteLevelOf(quantize), level) << quantize;
}

}  // namespace
