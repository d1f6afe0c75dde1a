#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "glib/module_api/result_values.h"
#include "tests/modules/qfpx/fpx_writer.h"
#include "tests/support/corpus.h"
#include "tests/support/damage.h"
#include "tests/support/module_host.h"
#include "tests/support/temporary_folder.h"

namespace tests {
namespace {

constexpr std::uint32_t kFpxId = 0x00000011;

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kGrey = 0x00010000;
constexpr std::uint32_t kYcc = 0x00020000;
constexpr std::uint32_t kRgb = 0x00030000;
constexpr std::uint32_t kOpacity = 0x7FFE;

// Smooth, so that a JPEG of the best quality keeps it closely.
std::uint8_t Sample(std::uint32_t channel, std::uint32_t x, std::uint32_t y) {
  return static_cast<std::uint8_t>(30 + 40 * channel + x + y / 2);
}

// Tile samples with those of the picture; past its sides they go on.
Bytes TileOf(std::uint32_t channels, std::uint32_t left, std::uint32_t top, std::uint32_t side) {
  Bytes samples;
  for (std::uint32_t i = 0; i < side * side; ++i) {
    for (std::uint32_t c = 0; c < channels; ++c) samples.push_back(Sample(c, left + i % side, top + i / side));
  }
  return samples;
}

// 70 x 66 in four tiles.
FpxSpec Picture(std::vector<std::uint32_t> channels) {
  const auto count = static_cast<std::uint32_t>(channels.size());
  FpxSpec spec{.width = 70, .height = 66, .channels = std::move(channels)};
  for (const std::uint32_t top : {0U, 64U}) {
    for (const std::uint32_t left : {0U, 64U}) spec.tiles.push_back({.data = TileOf(count, left, top, 64)});
  }
  return spec;
}

std::uint32_t Word(std::uint32_t red, std::uint32_t green, std::uint32_t blue, std::uint32_t alpha = 255) {
  return alpha << 24 | red << 16 | green << 8 | blue;
}

class Qfpx : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host_.Ok()); }

  Loaded Load(const FpxSpec& spec) const { return host_.Load(MakeFpx(spec), kFpxId); }

  ModuleHost host_{"qfpx"};
};

TEST_F(Qfpx, RegistersItsRowAndOnlyReads) {
  EXPECT_EQ(host_.Ids(), std::vector<std::uint32_t>{kFpxId});
  EXPECT_FALSE(host_.HasEntry("SaveImageData"));
}

TEST_F(Qfpx, ReadsRawTilesOfAllColours) {
  struct Case {
    const char* name;
    std::vector<std::uint32_t> channels;
    std::int32_t bits;
    std::uint32_t (*pixel)(const std::uint32_t*);
  };
  const std::vector<Case> cases = {
      {"grey", {kGrey}, 8, [](const std::uint32_t* s) { return Word(s[0], s[0], s[0]); }},
      {"grey without calibration",
       {0x80000000U | kGrey},
       8,
       [](const std::uint32_t* s) { return Word(s[0], s[0], s[0]); }},
      {"grey and opacity",
       {kGrey | 0x8000, kGrey | kOpacity},
       32,
       [](const std::uint32_t* s) { return Word(s[0], s[0], s[0], s[1]); }},
      {"colour", {kRgb, kRgb | 1, kRgb | 2}, 24, [](const std::uint32_t* s) { return Word(s[0], s[1], s[2]); }},
      {"colour the other way round",
       {kRgb | 2, kRgb | 1, kRgb},
       24,
       [](const std::uint32_t* s) { return Word(s[2], s[1], s[0]); }},
      {"colour and opacity",
       {kRgb, kRgb | 1, kRgb | 2, kRgb | kOpacity},
       32,
       [](const std::uint32_t* s) { return Word(s[0], s[1], s[2], s[3]); }},
  };
  for (const Case& one : cases) {
    SCOPED_TRACE(one.name);
    const Loaded loaded = Load(Picture(one.channels));
    ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
    ASSERT_EQ(loaded.PageCount(), 1U);
    const auto& page = loaded.PageAt(0);
    ASSERT_EQ(page.bits, one.bits);
    EXPECT_EQ(page.slideNumber, -1);
    ASSERT_EQ(page.width, 70);
    ASSERT_EQ(page.height, 66);
    for (std::uint32_t y = 0; y < 66; ++y) {
      for (std::uint32_t x = 0; x < 70; ++x) {
        const std::uint32_t samples[] = {Sample(0, x, y), Sample(1, x, y), Sample(2, x, y), Sample(3, x, y)};
        ASSERT_EQ(PixelAt(page, x, y), one.pixel(samples)) << x << ' ' << y;
      }
    }
  }
}

TEST_F(Qfpx, PhotoYccBecomesColours) {
  struct Case {
    std::uint32_t subtype;  // luminance lowest
    std::uint32_t colour;
  };
  // Without chrominance 182 is white; the others leave the cube of colours in one corner.
  for (const Case& one :
       {Case{0x899C00, Word(0, 0, 0)}, Case{0x899C64, Word(136, 136, 136)}, Case{0x899CB6, Word(247, 247, 247)},
        Case{0xFF9C64, Word(255, 26, 136)}, Case{0x890064, Word(136, 203, 0)}}) {
    FpxSpec spec = Picture({kYcc, kYcc | 1, kYcc | 2});
    for (FpxTile& tile : spec.tiles) tile = {.compression = 1, .subtype = one.subtype};
    const Loaded loaded = Load(spec);
    ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
    EXPECT_EQ(PixelAt(loaded.PageAt(0), 69, 65), one.colour) << std::hex << PixelAt(loaded.PageAt(0), 69, 65);
  }
}

TEST_F(Qfpx, ReadsJpegTiles) {
  for (const std::uint32_t channels : {1U, 3U}) {
    for (const bool converted : {false, true}) {
      for (const bool shared : {false, true}) {
        SCOPED_TRACE(std::to_string(channels) + " channels, converted " + std::to_string(converted) + ", shared " +
                     std::to_string(shared));
        FpxSpec spec = Picture(channels == 1 ? std::vector{kGrey} : std::vector{kRgb, kRgb | 1, kRgb | 2});
        for (FpxTile& tile : spec.tiles) {
          tile.data = MakeJpeg(64, channels, converted, tile.data, shared ? &spec.tables : nullptr);
          tile.compression = 2;
          tile.subtype = (converted ? 0x10000U : 0) | (shared ? 3U << 24 : 0);
        }
        const Loaded loaded = Load(spec);
        ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
        EXPECT_EQ(loaded.message, "");
        for (const auto& [x, y] : {std::pair{0U, 0U}, std::pair{69U, 3U}, std::pair{12U, 65U}, std::pair{66U, 64U}}) {
          const std::uint32_t pixel = PixelAt(loaded.PageAt(0), x, y);
          for (std::uint32_t c = 0; c < channels; ++c) EXPECT_NEAR(pixel >> (16 - 8 * c) & 255U, Sample(c, x, y), 3);
        }
      }
    }
  }
}

TEST_F(Qfpx, ATileThatCanNotBeReadLeavesTheOthers) {
  FpxSpec spec = Picture({kGrey});
  spec.tiles[1].data.resize(10);
  spec.tiles[2].compression = 77;
  Loaded loaded = Load(spec);
  ASSERT_EQ(loaded.result, glib::RCOK);
  EXPECT_NE(loaded.message, "");
  EXPECT_EQ(IndexAt(loaded.PageAt(0), 63, 63), Sample(0, 63, 63));
  EXPECT_EQ(IndexAt(loaded.PageAt(0), 64, 63), 0U);
  EXPECT_EQ(IndexAt(loaded.PageAt(0), 65, 65), Sample(0, 65, 65));
  for (FpxTile& tile : spec.tiles) tile.compression = 77;
  loaded = Load(spec);
  EXPECT_EQ(loaded.result, glib::IERR);
  CheckOutcome(loaded);
}

TEST_F(Qfpx, TellsOfAFile) {
  const Bytes fpx = MakeFpx(Picture({kRgb, kRgb | 1, kRgb | 2}));
  const test_support::TemporaryFolder folder;
  const auto info = host_.Info(folder.Write("a.fpx", {reinterpret_cast<const char*>(fpx.data()), fpx.size()}), kFpxId);
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->width, 70);
  EXPECT_EQ(info->height, 66);
  EXPECT_EQ(info->bits(), 24);
  EXPECT_EQ(info->pages, 1);
}

TEST_F(Qfpx, RefusesWhatItCanNotHold) {
  const auto result = [&](auto change) {
    FpxSpec spec = Picture({kGrey});
    change(spec);
    const Loaded loaded = Load(spec);
    CheckOutcome(loaded);
    return loaded.result;
  };
  EXPECT_EQ(result([](FpxSpec&) {}), glib::RCOK);
  EXPECT_EQ(result([](FpxSpec& spec) { spec.width = 0x7FFFFFFF; }), glib::NSUP);
  EXPECT_EQ(result([](FpxSpec& spec) { spec.height = 0; }), glib::IERR);
  EXPECT_EQ(result([](FpxSpec& spec) { spec.width = 20000; }), glib::IERR);  // more than its tiles
  EXPECT_EQ(result([](FpxSpec& spec) { spec.tileSide = 0; }), glib::IERR);
  EXPECT_EQ(result([](FpxSpec& spec) { spec.tileSide = 0xFFFFFFFF; }), glib::IERR);
  EXPECT_EQ(result([](FpxSpec& spec) { spec.resolutions = 0; }), glib::IERR);
  EXPECT_EQ(result([](FpxSpec& spec) { spec.sampleFormat = 18; }), glib::NSUP);
  EXPECT_EQ(result([](FpxSpec& spec) { spec.channels = {kRgb}; }), glib::NSUP);
  EXPECT_EQ(result([](FpxSpec& spec) { spec.channels = {kRgb, kRgb, kRgb | 1}; }), glib::NSUP);
  EXPECT_EQ(result([](FpxSpec& spec) { spec.channels.assign(5, kRgb); }), glib::NSUP);
  EXPECT_EQ(host_.Load(Bytes{1, 2, 3}, kFpxId).result, glib::IERR);
}

TEST_F(Qfpx, DamagedFilesEndCleanly) {
  // Small tiles, so that the file is one.
  FpxSpec spec{.width = 9, .height = 7, .tileSide = 8, .channels = {kRgb, kRgb | 1, kRgb | 2}};
  spec.tiles = {{.data = TileOf(3, 0, 0, 8)}, {.compression = 2, .subtype = 3U << 24}};
  spec.tiles[1].data = MakeJpeg(8, 3, false, TileOf(3, 8, 0, 8), &spec.tables);
  TryDamaged(MakeFpx(spec), [&](std::span<const std::uint8_t> bytes) { return host_.Load(bytes, kFpxId); });
}

TEST_F(Qfpx, RealFilesLookAsElsewhere) {
  if (!CheckCorpus("fpx", host_, kFpxId)) GTEST_SKIP() << "no corpus";
}

}  // namespace
}  // namespace tests
