#include "glib/color/palette_diffusion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "glib/color/assign_palette.h"
#include "glib/color/nearest_entry.h"
#include "tests/support/color_rasters.h"
#include "tests/support/plain_dither.h"
#include "tests/support/report_recorder.h"

namespace {

using color_rasters::Recipe;
using color_rasters::Texture;
using glib::DitherTarget;
using glib::RasterBlock;

enum class Palette { kScattered, kCorner, kEqual, kPairs };

void MakePalette(Palette kind, std::uint32_t* palette) {
  std::uint32_t state = 7;
  for (std::uint32_t i = 0; i < 256; ++i) {
    state = state * 1664525 + 1013904223;
    const std::uint32_t scattered = state >> 4;
    switch (kind) {
      case Palette::kScattered:
        palette[i] = scattered;
        break;
      case Palette::kCorner:
        palette[i] = scattered & 0x1F1F1F;
        break;
      case Palette::kEqual:
        palette[i] = 0x808080;
        break;
      case Palette::kPairs:
        palette[i] = i % 2 == 0 ? scattered : palette[i - 1] ^ 0xFF000000;
        break;
    }
  }
}

plain::Channels SourceChannels(const RasterBlock& source, std::uint32_t x, std::uint32_t y) {
  const std::uint8_t* row = source.pixels + source.Stride() * y;
  if (source.bits == 32) return {row[4 * x], row[4 * x + 1], row[4 * x + 2]};
  const std::uint32_t index = source.bits == 8 ? row[x] : x % 2 == 0 ? row[x / 2] >> 4U : row[x / 2] & 15U;
  return plain::ChannelsOf(source.palette[index]);
}

void ExpectLikePlain(const Recipe& recipe, Palette kind, std::int32_t count, bool destAligned) {
  SCOPED_TRACE("bits " + std::to_string(recipe.bits) + " size " + std::to_string(recipe.width) + "x" +
               std::to_string(recipe.height) + " palette " + std::to_string(static_cast<int>(kind)) + " count " +
               std::to_string(count));
  RasterBlock source;
  Make(recipe, source);
  const auto width = static_cast<std::uint32_t>(recipe.width);
  const auto height = static_cast<std::uint32_t>(recipe.height);
  const std::size_t stride = destAligned ? glib::PaddedStride(width, 8) : width;
  std::vector<std::uint8_t> dest(stride * height + 16, 0);
  DitherTarget target{dest.data(), {}, count, destAligned};
  MakePalette(kind, target.palette);
  const bool aligned = recipe.aligned;
  const bool done = recipe.bits == 32 ? target.DitherRgb32(source.pixels, width, height, nullptr, 0)
                    : recipe.bits == 8
                        ? target.DitherIndexed8(source.pixels, width, height, source.palette, aligned, nullptr, 0)
                        : target.DitherIndexed4(source.pixels, width, height, source.palette, aligned, nullptr, 0);
  ASSERT_TRUE(done);
  std::vector<std::uint8_t> expected =
      plain::DitherToPalette(width, height, stride, target.palette, static_cast<std::uint32_t>(count),
                             [&source](std::uint32_t x, std::uint32_t y) { return SourceChannels(source, x, y); });
  expected.resize(dest.size());
  const auto differs = std::mismatch(dest.begin(), dest.end(), expected.begin());
  if (differs.first == dest.end()) return;
  const auto at = static_cast<std::size_t>(differs.first - dest.begin());
  ADD_FAILURE() << "pixel " << at % stride << ", " << at / stride << " is " << int{*differs.first} << ", plain "
                << int{*differs.second};
}

TEST(PaletteDiffusion, LikePlain) {
  std::uint32_t seed = 0;
  for (const std::int32_t bits : {32, 8, 4}) {
    for (const std::int32_t width : {1, 2, 3, 4, 7, 31, 130}) {
      for (const std::int32_t count : {1, 2, 3, 16, 216, 256}) {
        for (const Palette kind : {Palette::kScattered, Palette::kCorner, Palette::kPairs}) {
          ++seed;
          const Texture texture = seed % 3 == 0 ? Texture::kPhoto : Texture::kEdges;
          ExpectLikePlain({bits, width, 40, texture, 256, seed, seed % 2 == 0}, kind, count, seed % 4 < 2);
        }
      }
    }
  }
}

// A dark palette under a bright picture: errors pile up far beyond a byte, until their squares wrap.
TEST(PaletteDiffusion, ErrorsPileUp) {
  for (const std::int32_t width : {3, 90}) {
    ExpectLikePlain({32, width, 900, Texture::kPhoto, 0, 5}, Palette::kCorner, 256, true);
    ExpectLikePlain({32, width, 900, Texture::kPhoto, 0, 5}, Palette::kCorner, 1, true);
  }
}

// The first one beats all others everywhere.
TEST(PaletteDiffusion, EqualEntries) {
  ExpectLikePlain({32, 300, 100, Texture::kNoise, 0, 5}, Palette::kEqual, 256, true);
}

// One grey row against black and white. Column 0 keeps its error; then 100 is nearer to black, and 7/16 of its error
// (43 of 43.75) go on: 100 + 43 = 143 is white with an error of -112, of which -49 go on: 51 is black, and 22 go on to
// the last column: 122, black.
TEST(PaletteDiffusion, ByHand) {
  std::vector<std::uint32_t> source(5, 0x00646464);
  std::vector<std::uint8_t> dest(8, 9);
  DitherTarget target{dest.data(), {0xFF000000, 0xFFFFFFFF}, 2, true};
  EXPECT_TRUE(target.DitherRgb32(reinterpret_cast<std::uint8_t*>(source.data()), 5, 1, nullptr, 0));
  EXPECT_EQ(std::vector<std::uint8_t>({0, 0, 1, 0, 0, 9, 9, 9}), dest);
}

TEST(PaletteDiffusion, ReportsAndCannotBeStopped) {
  RasterBlock source;
  color_rasters::Make({32, 500, 400, Texture::kFew, 4}, source);
  std::vector<std::uint8_t> dest(500 * 400), silent(500 * 400);
  test_support::ReportRecorder recorder;
  recorder.stopAt = 1;
  DitherTarget target{dest.data(), {}, 4, true};
  MakePalette(Palette::kScattered, target.palette);
  EXPECT_TRUE(
      target.DitherRgb32(source.pixels, 500, 400, test_support::ReportRecorder::Callback, recorder.UserValue()));
  // sqrt(110000) * 0.009 is 2: every 200 rows.
  EXPECT_EQ(std::vector<std::int32_t>({1, 201, -2}), recorder.currents);
  EXPECT_EQ(400U, recorder.totals[0]);
  EXPECT_EQ("dither...", recorder.texts[0]);
  target.dest = silent.data();
  EXPECT_TRUE(target.DitherRgb32(source.pixels, 500, 400, nullptr, 0));
  EXPECT_EQ(silent, dest);
}

TEST(NearestEntryFinder, LikePlainNearAndFar) {
  for (const Palette kind : {Palette::kScattered, Palette::kCorner, Palette::kPairs}) {
    for (const std::uint32_t count : {1U, 2U, 7U, 33U, 255U, 256U}) {
      std::uint32_t palette[256];
      MakePalette(kind, palette);
      glib::NearestEntryFinder learning(palette, count, 1000000), plainly(palette, count, 0);
      std::uint32_t state = count;
      const auto random = [&state] { return state = state * 1664525 + 1013904223; };
      for (int i = 0; i < 20000; ++i) {
        // From the colour cube to numbers whose squares wrap.
        constexpr std::uint32_t kShifts[] = {24, 23, 22, 19, 16, 14, 13, 11, 8, 0};
        const std::uint32_t shift = kShifts[(random() >> 16 & 1) != 0 ? 0 : static_cast<std::size_t>(i % 10)];
        plain::Channels c;
        for (std::int32_t& channel : c) channel = static_cast<std::int32_t>(random()) >> shift;
        if (i % 2 == 0) c[0] = std::clamp(c[0] + 128, -129, 384);
        const std::uint32_t expected = plain::NearestEntry(c, palette, count);
        ASSERT_EQ(expected, learning.Find(c[0], c[1], c[2])) << c[0] << " " << c[1] << " " << c[2];
        ASSERT_EQ(expected, plainly.Find(c[0], c[1], c[2]));
        ASSERT_EQ(expected, glib::NearestEntryPlain(palette, count, c[0], c[1], c[2]));
      }
    }
  }
}

TEST(AssignPalette, TakesTheFirstNearestEntry) {
  const std::uint32_t old[] = {0x000000, 0x0000FF, 0x101010, 0x808080};
  const std::uint32_t given[] = {0xFF202020, 0xFF202020, 0xFF000000, 0xFF0000F0, 0xFF606060, 0xFFA0A0A0};
  std::vector<std::uint8_t> pixels = {0, 1, 2, 3, 4, 9, 9, 9, 3, 2, 1, 0, 255, 9, 9, 9};
  glib::AssignPalette(pixels.data(), old, 4, given, 6, 5, 2, nullptr, 0);
  // 0x101010 stands between 0x202020 and black, 0x808080 between two greys. Padding stays.
  EXPECT_EQ(std::vector<std::uint8_t>({2, 3, 0, 4, 0, 9, 9, 9, 4, 0, 3, 2, 0, 9, 9, 9}), pixels);
}

TEST(AssignPalette, Reports) {
  std::vector<std::uint8_t> pixels(500 * 400);
  const std::uint32_t black = 0;
  test_support::ReportRecorder recorder;
  glib::AssignPalette(pixels.data(), &black, 1, &black, 1, 500, 400, test_support::ReportRecorder::Callback,
                      recorder.UserValue());
  EXPECT_EQ(std::vector<std::int32_t>({1, 201, -2}), recorder.currents);
  EXPECT_EQ("assign...", recorder.texts[2]);
  recorder.currents.clear();
  glib::AssignPalette(pixels.data(), &black, 1, &black, 1, 299, 300, test_support::ReportRecorder::Callback,
                      recorder.UserValue());
  EXPECT_TRUE(recorder.currents.empty());
}

}  // namespace
