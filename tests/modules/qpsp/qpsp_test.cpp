#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "glib/module_api/result_values.h"
#include "tests/support/corpus.h"
#include "tests/support/damage.h"
#include "tests/support/module_host.h"
#include "tests/support/psp_writer.h"
#include "tests/support/temporary_folder.h"

namespace tests {
namespace {

constexpr std::uint32_t kPspId = 0x2000001A;
constexpr std::int32_t kWidth = 6;
constexpr std::int32_t kHeight = 4;

using Bytes = std::vector<std::uint8_t>;

// With runs in the rows and across their ends.
std::uint32_t Value(std::uint32_t seed, std::uint32_t x, std::uint32_t y) { return x < 2 ? 9 : 40 * seed + 3 * x + y; }

PspChannel ChannelOf(std::uint32_t bitmap, std::uint32_t channel, std::uint32_t depth = 8) {
  return {bitmap, channel, depth, [=](std::uint32_t x, std::uint32_t y) {
            const std::uint32_t value = Value(bitmap % 8 == 1 ? 5 : channel, x, y);
            return depth == 16 ? value * 257 : value & ((1U << depth) - 1);
          }};
}

std::uint32_t Colour(std::uint32_t x, std::uint32_t y, std::uint32_t alpha = 255) {
  return alpha << 24 | Value(1, x, y) << 16 | Value(2, x, y) << 8 | Value(3, x, y);
}

PspLayer LayerOf(std::vector<PspChannel> channels) {
  return {.name = "one", .whole = {0, 0, kWidth, kHeight}, .saved = {0, 0, kWidth, kHeight}, .channels = channels};
}

PspSpec Picture(std::uint32_t version, std::uint32_t compression) {
  return {.version = version, .width = kWidth, .height = kHeight, .compression = compression};
}

class Qpsp : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host_.Ok()); }

  Loaded Load(const PspSpec& spec) const { return host_.Load(MakePsp(spec), kPspId); }

  // Calls `check` for each version and compression.
  template <typename Check>
  void ForEachKind(Check check) const {
    for (const std::uint32_t version : {3U, 4U, 5U, 8U}) {
      for (const std::uint32_t compression : {0U, 1U, 2U}) {
        SCOPED_TRACE("version " + std::to_string(version) + " compression " + std::to_string(compression));
        check(Picture(version, compression));
      }
    }
  }

  ModuleHost host_{"qpsp"};
};

TEST_F(Qpsp, RegistersItsRowAndOnlyReads) {
  EXPECT_EQ(host_.Ids(), std::vector<std::uint32_t>{kPspId});
  EXPECT_FALSE(host_.HasEntry("SaveImageData"));
}

TEST_F(Qpsp, ReadsColoursOfEightAndSixteenBits) {
  ForEachKind([&](PspSpec spec) {
    for (const std::uint32_t depth : {24U, 48U}) {
      spec.depth = depth;
      const std::uint32_t sample = depth / 3;
      spec.layers = {LayerOf({ChannelOf(0, 1, sample), ChannelOf(0, 2, sample), ChannelOf(0, 3, sample)})};
      for (const bool padded : {false, true}) {
        if (padded && spec.compression != 0) continue;
        spec.padded = padded;
        const Loaded loaded = Load(spec);
        ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
        const auto& page = loaded.PageAt(0);
        ASSERT_EQ(page.bits, 24);
        for (std::uint32_t i = 0; i < kWidth * kHeight; ++i) {
          EXPECT_EQ(PixelAt(page, i % kWidth, i / kWidth), Colour(i % kWidth, i / kWidth)) << i;
        }
      }
    }
  });
}

TEST_F(Qpsp, IndexedPicturesKeepTheirDepth) {
  ForEachKind([&](PspSpec spec) {
    for (const std::uint32_t depth : {1U, 4U, 8U}) {
      for (const bool grey : {false, true}) {
        spec.depth = depth;
        spec.grey = grey;
        spec.palette.clear();
        for (std::uint32_t i = 0; i < 1U << depth && !grey; ++i) spec.palette.push_back(0x010203 * i);
        spec.layers = {LayerOf({ChannelOf(0, 0, depth)})};
        const Loaded loaded = Load(spec);
        ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
        const auto& page = loaded.PageAt(0);
        ASSERT_EQ(page.bits, static_cast<std::int32_t>(depth));
        EXPECT_EQ(page.grayscale, grey ? 1 : 0);
        EXPECT_EQ(page.paletteEntries, 1U << depth);
        const std::uint32_t highest = (1U << depth) - 1;
        for (std::uint32_t i = 0; i < kWidth * kHeight; ++i) {
          const std::uint32_t index = Value(0, i % kWidth, i / kWidth) & highest;
          const std::uint32_t colour = grey ? 0x010101 * (index * 255 / highest) : 0x010203 * index;
          EXPECT_EQ(PixelAt(page, i % kWidth, i / kWidth), 0xFF000000U | colour) << i;
        }
      }
    }
  });
}

TEST_F(Qpsp, LayersKeepTheirPlaceNameOpacityAndMask) {
  ForEachKind([&](PspSpec spec) {
    PspLayer above = LayerOf({ChannelOf(0, 1), ChannelOf(0, 2), ChannelOf(0, 3), ChannelOf(1, 0)});
    above.name = "above";
    above.whole = {10, 20, 30, 40};
    above.saved = {-2, 3, -2 + kWidth, 3 + kHeight};  // at 8, 23 of the picture
    above.opacity = 128;
    above.visible = 0;
    above.mask = {9, 22, 11, 25};
    above.channels.push_back({2, 0, 8, [](std::uint32_t x, std::uint32_t y) { return 100 * x + y; }});
    spec.layers = {LayerOf({ChannelOf(0, 1), ChannelOf(0, 2), ChannelOf(0, 3)}), above, LayerOf({})};
    const Loaded loaded = Load(spec);
    ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
    ASSERT_EQ(loaded.PageCount(), 2U);
    EXPECT_STREQ(loaded.PageAt(0).name.c_str(), "one");
    EXPECT_EQ(loaded.PageAt(0).slideNumber, 0);
    EXPECT_EQ(loaded.PageAt(0).visible, 1);
    const auto& page = loaded.PageAt(1);
    EXPECT_STREQ(page.name.c_str(), "above");
    EXPECT_EQ(page.slideNumber, 0);
    EXPECT_EQ(page.x, 8);
    EXPECT_EQ(page.y, 23);
    EXPECT_EQ(page.visible, 0);
    ASSERT_EQ(page.bits, 32);
    const auto alpha = [&](std::uint32_t x, std::uint32_t y) { return Value(5, x, y) & 255U; };
    const auto times = [](std::uint32_t left, std::uint32_t right) { return (left * right + 127) / 255; };
    EXPECT_EQ(PixelAt(page, 4, 1), Colour(4, 1, times(alpha(4, 1), 128)));
    EXPECT_EQ(PixelAt(page, 2, 1), Colour(2, 1, times(times(alpha(2, 1), 102), 128)));
    EXPECT_EQ(PixelAt(page, 1, 0), Colour(1, 0, times(times(alpha(1, 0), 1), 128)));
    spec.layers[1].maskDisabled = 1;
    EXPECT_EQ(PixelAt(Load(spec).PageAt(1), 1, 0), Colour(1, 0, times(alpha(1, 0), 128)));
  });
}

TEST_F(Qpsp, TransparencySpreadsThePalette) {
  PspSpec spec = Picture(4, 1);
  spec.depth = 4;
  for (std::uint32_t i = 0; i < 16; ++i) spec.palette.push_back(0x100102 * i);
  spec.layers = {LayerOf({ChannelOf(1, 0), ChannelOf(0, 0, 4)})};
  const Loaded loaded = Load(spec);
  ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
  const std::uint32_t index = Value(0, 5, 3) & 15U;
  EXPECT_EQ(PixelAt(loaded.PageAt(0), 5, 3), Value(5, 5, 3) << 24 | 0x100102 * index);
}

TEST_F(Qpsp, GroupsHideAndFadeTheirLayers) {
  PspSpec spec = Picture(8, 2);
  const PspLayer layer = LayerOf({ChannelOf(0, 1), ChannelOf(0, 2), ChannelOf(0, 3)});
  const PspLayer hidden{.kind = 5, .visible = 0, .members = 2};
  const PspLayer faded{.kind = 5, .opacity = 51, .members = 1};
  spec.layers = {hidden, layer, faded, layer, layer};
  const Loaded loaded = Load(spec);
  ASSERT_EQ(loaded.PageCount(), 3U) << loaded.message;
  EXPECT_EQ(loaded.PageAt(0).visible, 0);
  EXPECT_EQ(loaded.PageAt(1).visible, 0);
  EXPECT_EQ(PixelAt(loaded.PageAt(1), 0, 0) >> 24, 51U);
  EXPECT_EQ(loaded.PageAt(2).visible, 1);
}

TEST_F(Qpsp, TheCompositeComesBeforeTheLayers) {
  for (const std::uint32_t compression : {0U, 1U, 2U}) {
    PspSpec spec = Picture(6, compression);
    spec.resolution = 40;
    spec.unit = 2;
    const PspChannel black{0, 0, 8, [](std::uint32_t, std::uint32_t) { return 0U; }};
    spec.layers = {LayerOf({black, black, black})};
    spec.composite = {ChannelOf(8, 1), ChannelOf(8, 2), ChannelOf(8, 3)};
    Loaded loaded = Load(spec);
    ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
    ASSERT_EQ(loaded.PageCount(), 1U);
    EXPECT_EQ(loaded.PageAt(0).slideNumber, -1);
    EXPECT_EQ(loaded.PageAt(0).bits, 24);
    EXPECT_NEAR(loaded.PageAt(0).dpiX, 101.6, 0.001);
    EXPECT_EQ(PixelAt(loaded.PageAt(0), 3, 2), Colour(3, 2));
    spec.composite.push_back(ChannelOf(9, 0));
    loaded = Load(spec);
    EXPECT_EQ(loaded.PageAt(0).bits, 32);
    EXPECT_EQ(PixelAt(loaded.PageAt(0), 3, 2), Colour(3, 2, Value(5, 3, 2)));
  }
}

TEST_F(Qpsp, TellsOfAFileFromItsHeaderAlone) {
  PspSpec spec = Picture(5, 2);
  spec.depth = 4;
  spec.resolution = 300;
  spec.unit = 1;
  const Bytes psp = MakePsp(spec);
  const test_support::TemporaryFolder folder;
  const auto info = host_.Info(folder.Write("a.psp", {reinterpret_cast<const char*>(psp.data()), psp.size()}), kPspId);
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->width, kWidth);
  EXPECT_EQ(info->height, kHeight);
  EXPECT_EQ(info->bits(), 4);
  EXPECT_EQ(info->dpiX, 300.0);
}

TEST_F(Qpsp, RefusesWhatItCanNotHold) {
  const auto result = [&](auto change) {
    PspSpec spec = Picture(5, 2);
    spec.layers = {LayerOf({ChannelOf(0, 1), ChannelOf(0, 2), ChannelOf(0, 3)})};
    change(spec);
    const Loaded loaded = Load(spec);
    CheckOutcome(loaded);
    return loaded.result;
  };
  EXPECT_EQ(result([](PspSpec&) {}), glib::RCOK);
  EXPECT_EQ(result([](PspSpec& spec) { spec.version = 2; }), glib::NSUP);
  EXPECT_EQ(result([](PspSpec& spec) { spec.depth = 5; }), glib::NSUP);
  EXPECT_EQ(result([](PspSpec& spec) { spec.compression = 3; }), glib::NSUP);
  EXPECT_EQ(result([](PspSpec& spec) { spec.width = 70000; }), glib::NSUP);
  EXPECT_EQ(result([](PspSpec& spec) { spec.height = 0; }), glib::IERR);
  EXPECT_EQ(result([](PspSpec& spec) { spec.layers.clear(); }), glib::IERR);
  EXPECT_EQ(result([](PspSpec& spec) { spec.layers[0].channels.pop_back(); }), glib::IERR);
  EXPECT_EQ(result([](PspSpec& spec) {
              for (auto& channel : spec.layers[0].channels) channel.value = nullptr;
              spec.layers[0].saved = {0, 0, 30000, 8000};
            }),
            glib::IERR);
}

TEST_F(Qpsp, DamagedFilesEndCleanly) {
  const auto load = [&](std::span<const std::uint8_t> bytes) { return host_.Load(bytes, kPspId); };
  for (const std::uint32_t version : {3U, 6U}) {
    for (const std::uint32_t compression : {0U, 1U, 2U}) {
      PspSpec spec = Picture(version, compression);
      PspLayer layer = LayerOf({ChannelOf(0, 1), ChannelOf(0, 2), ChannelOf(0, 3), ChannelOf(1, 0), ChannelOf(2, 0)});
      layer.mask = {1, 1, 4, 3};
      layer.opacity = 9;
      spec.layers = {{.kind = 5, .members = 1}, layer};
      if (version > 3) spec.composite = {ChannelOf(8, 1), ChannelOf(8, 2), ChannelOf(8, 3)};
      TryDamaged(MakePsp(spec), load);
      spec.depth = 4;
      spec.palette = {1, 2, 3};
      spec.layers = {LayerOf({ChannelOf(0, 0, 4)})};
      spec.composite.clear();
      TryDamaged(MakePsp(spec), load);
    }
  }
}

// What the collection says of most of these files comes from a program that leaves drawings and hidden groups out of
// the picture, so that only size and number of pages are worth a comparison.
TEST_F(Qpsp, RealFilesHaveTheirSize) {
  auto files = CorpusFiles("psp");
  if (files.empty()) GTEST_SKIP() << "no corpus";
  for (Expected& expected : files) {
    if (expected.name.starts_with("fpd-")) expected.limit = 255;
    EXPECT_EQ(Compare(expected, host_.Load(expected.path, kPspId)), "") << expected.name;
  }
}

}  // namespace
}  // namespace tests
