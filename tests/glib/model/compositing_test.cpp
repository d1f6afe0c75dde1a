#include "glib/model/compositing.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "glib/model/range.h"
#include "tests/support/layers.h"
#include "tests/support/slow_blending.h"

namespace {

using glib::kToTheLast;
using glib::Layer;
using glib::RGB32;
using glib::Slide;
using test_support::AddLayer;
using test_support::AddLayer32;
using test_support::Words;
using WordList = std::vector<std::uint32_t>;

// Layers one pixel in size, the lowest first, on the background `below`.
struct OnePixel {
  const char* name;
  std::vector<std::uint32_t> layers;
  std::uint32_t flattened;
  std::uint32_t merged;
};

TEST(Compositing, PixelsWorkedByHand) {
  // The background is red 200, green 100, blue 0, alpha 0.
  const OnePixel cases[] = {
      {"transparent", {0x00112233}, 0x00C86400, 0x00112233},
      // 200 + (0 - 200) * 128 / 256 = 100; blue 0 + 255 * 128 / 256 = 127
      {"half", {0x800000FF}, 0x8064327F, 0x800000FF},
      // 0 + 255 * 255 / 256 = 254: full alpha doesn't quite reach
      {"opaque", {0xFFFFFFFF}, 0xFFFEFEFE, 0xFFFFFFFF},
      // Flattened: 200 * 1 / 256 cut down = 0 each, then 255 * 128 >> 8 = 127.
      // Merged: p = 128 * 255 / 255 = 128, (255 * 128 + 0 * 127) / 255 = 128.
      {"half over opaque", {0xFF000000, 0x80FFFFFF}, 0x807F7F7F, 0xFF808080},
      // 200 - 184, 100 - 68, 0 + 47: differences below 0 are cut downwards, those above 0 too.
      {"nothing over opaque", {0xFF102030, 0x00FFFFFF}, 0x0010202F, 0xFF102030},
  };
  for (const OnePixel& c : cases) {
    Slide slide(RGB32(200, 100, 0, 0));
    for (const std::uint32_t pixel : c.layers) AddLayer32(slide, 0, 0, 1, 1, pixel);
    Layer flat(&slide);
    Layer merged(&slide);
    ASSERT_TRUE(glib::FlattenLayers(slide, flat, 0, kToTheLast));
    ASSERT_TRUE(glib::MergeIntoLayer(slide, merged, 0, kToTheLast));
    EXPECT_EQ(Words(flat.raster), WordList{c.flattened}) << c.name << std::hex << " " << Words(flat.raster)[0];
    EXPECT_EQ(Words(merged.raster), WordList{c.merged}) << c.name << std::hex << " " << Words(merged.raster)[0];
  }
}

TEST(Compositing, CornersThatNoLayerCoversStayTheBackground) {
  Slide slide(RGB32(1, 2, 3, 4));
  AddLayer32(slide, 0, 0, 20, 20, 0xFF000000);
  AddLayer32(slide, 10, 10, 20, 20, 0xFF000000);
  Layer target(&slide);
  ASSERT_TRUE(glib::FlattenLayers(slide, target, 0, kToTheLast));
  ASSERT_EQ(target.raster.width, 30);
  ASSERT_EQ(target.raster.height, 30);
  const WordList words = Words(target.raster);
  for (std::size_t y = 0; y < 30; ++y) {
    for (std::size_t x = 0; x < 30; ++x) {
      const bool covered = (x < 20 && y < 20) || (x >= 10 && y >= 10);
      ASSERT_EQ(words[30 * y + x] >> 24, covered ? 0xFFU : 4U) << x << ", " << y;
      if (covered) continue;
      ASSERT_EQ(words[30 * y + x], 0x04010203U) << x << ", " << y;
    }
  }
}

TEST(Compositing, InvisibleLayersGiveTheSizeOnly) {
  Slide slide(RGB32(9, 8, 7, 0));
  AddLayer32(slide, 1, 0, 2, 1, 0xFFFFFFFF)->visible = 0;
  Layer target(&slide);
  ASSERT_TRUE(glib::MergeIntoLayer(slide, target, 0, kToTheLast));
  EXPECT_EQ(Words(target.raster), (WordList{0x00090807, 0x00090807, 0x00090807}));
}

TEST(Compositing, TheFirstLayerOfTheRangeIsAlwaysPlain) {
  Slide slide(RGB32(0, 0, 0, 0));
  AddLayer32(slide, 0, 0, 1, 1, 0xFF000000);
  AddLayer32(slide, 0, 0, 1, 1, 0xFF404040)->blendMode = 2;
  AddLayer32(slide, 0, 0, 1, 1, 0xFF808080)->blendMode = 2;
  Layer target(&slide);
  ASSERT_TRUE(glib::MergeIntoLayer(slide, target, 1, 2));
  EXPECT_EQ(Words(target.raster), WordList{0xFF202020});
  // The lowest visible layer that isn't the first of the range keeps its mode: multiplied with a black background.
  slide.layers.At(1)->visible = 0;
  ASSERT_TRUE(glib::MergeIntoLayer(slide, target, 1, 2));
  EXPECT_EQ(Words(target.raster), WordList{0xFF000000});
}

TEST(Compositing, AModeThatIsNoneDrawsNothing) {
  Slide slide(RGB32(0, 0, 0, 0));
  AddLayer32(slide, 0, 0, 1, 1, 0xFF123456);
  AddLayer32(slide, 0, 0, 1, 1, 0xFFFFFFFF)->blendMode = 16;
  Layer target(&slide);
  ASSERT_TRUE(glib::MergeIntoLayer(slide, target, 0, kToTheLast));
  EXPECT_EQ(Words(target.raster), WordList{0xFF123456});
}

TEST(Compositing, IndexedLayersBecome32Bits) {
  Slide slide(RGB32(0, 0, 0, 0));
  Layer* layer = AddLayer(slide, 8, 1, 1, {2, 0, 0, 0});
  layer->raster.palette[2] = 0xFF334455;
  Layer target(&slide);
  ASSERT_TRUE(glib::MergeIntoLayer(slide, target, 0, kToTheLast));
  EXPECT_EQ(Words(target.raster), WordList{0xFF334455});
  EXPECT_EQ(Words(layer->raster), WordList{0xFF334455});
}

TEST(Compositing, ATargetOfTheSameSizeIsUsedAgain) {
  Slide slide(RGB32(0, 0, 0, 0));
  Layer* layer = AddLayer32(slide, 0, 0, 2, 2, 0xFF000001);
  Layer target(&slide);
  ASSERT_TRUE(glib::MergeIntoLayer(slide, target, 0, kToTheLast));
  const std::uint8_t* pixels = target.raster.pixels;
  layer->visible = 0;
  ASSERT_TRUE(glib::MergeIntoLayer(slide, target, 0, kToTheLast));
  EXPECT_EQ(target.raster.pixels, pixels);
  EXPECT_EQ(Words(target.raster), WordList(4, 0)) << "nothing of the old image is left";
}

TEST(Compositing, Ranges) {
  Slide slide(RGB32(0, 0, 0, 0));
  Layer target(&slide);
  EXPECT_FALSE(glib::FlattenLayers(slide, target, 0, kToTheLast));
  AddLayer32(slide, 0, 0, 1, 1, 0xFF000000);
  EXPECT_FALSE(glib::FlattenLayers(slide, target, 1, kToTheLast));
  EXPECT_TRUE(glib::FlattenLayers(slide, target, 0, 100));
  EXPECT_FALSE(glib::FlattenLayers(slide, target, 0, 0)) << "an image without a size";
}

TEST(Compositing, PositionsThatNoBlockCanHold) {
  Slide slide(RGB32(0, 0, 0, 0));
  Layer* layer = AddLayer32(slide, 0, 0, 2, 2, WordList{0xFF000001, 0xFF000002, 0xFF000003, 0xFF000004});
  Layer target(&slide);
  layer->x = INT32_MAX;
  EXPECT_FALSE(glib::FlattenLayers(slide, target, 0, kToTheLast));
  layer->x = 2000000;
  layer->y = 2000000;
  EXPECT_FALSE(glib::FlattenLayers(slide, target, 0, kToTheLast));
  // A layer that sticks out on the left and above is cut.
  layer->x = -1;
  layer->y = -1;
  ASSERT_TRUE(glib::MergeIntoLayer(slide, target, 0, kToTheLast));
  EXPECT_EQ(Words(target.raster), WordList{0xFF000004});
  layer->x = 0;
  ASSERT_TRUE(glib::MergeIntoLayer(slide, target, 0, kToTheLast));
  EXPECT_EQ(Words(target.raster), (WordList{0xFF000003, 0xFF000004}));
}

TEST(Compositing, AMetafileThatCannotBeDrawnIsPassedOver) {
  Slide slide(RGB32(0, 0, 0, 0));
  AddLayer32(slide, 0, 0, 1, 1, 0xFF123456);
  auto* metafile = new Layer(&slide);
  metafile->raster.SetMetafile(test_support::UnreadableMetafile(), 1, 1, false);
  slide.AddLayer(metafile);
  Layer target(&slide);
  ASSERT_TRUE(glib::MergeIntoLayer(slide, target, 0, kToTheLast));
  EXPECT_EQ(Words(target.raster), WordList{0xFF123456});
}

// The whole frame against one pixel at a time: random stacks, positions, modes, depths and backgrounds.
TEST(Compositing, RandomStacksEqualThePixelwiseForm) {
  std::mt19937 random(42);
  for (int round = 0; round < 300; ++round) {
    SCOPED_TRACE(round);
    const auto number = [&](std::uint32_t below) { return static_cast<std::int32_t>(random() % below); };
    const auto byte = [&] { return static_cast<std::uint8_t>(random()); };
    Slide slide(RGB32(byte(), byte(), byte(), round % 3 == 0 ? byte() : 0));
    std::int32_t width = 0;
    std::int32_t height = 0;
    const std::int32_t layerCount = 1 + number(4);
    for (std::int32_t i = 0; i < layerCount; ++i) {
      const std::int32_t w = 1 + number(24);
      const std::int32_t h = 1 + number(5);
      WordList pixels(static_cast<std::size_t>(w) * static_cast<std::size_t>(h));
      for (auto& pixel : pixels) pixel = static_cast<std::uint32_t>(random());
      Layer* layer = AddLayer32(slide, number(6), number(4), w, h, pixels);
      const std::int32_t mode = number(17);
      layer->blendMode = mode == 1 ? 0 : mode;
      layer->visible = number(5) != 0;
      width = std::max(width, layer->x + w);
      height = std::max(height, layer->y + h);
    }
    for (const bool merge : {false, true}) {
      WordList expected(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), ToPixel(slide.background));
      for (std::uint32_t i = 0; i < slide.layers.count; ++i) {
        const Layer& layer = *slide.layers.At(i);
        if (layer.visible == 0 || (i > 0 && layer.blendMode > 15)) continue;
        const WordList pixels = Words(layer.raster);
        for (std::int32_t p = 0; p < layer.raster.width * layer.raster.height; ++p) {
          const std::int32_t at = (layer.y + p / layer.raster.width) * width + layer.x + p % layer.raster.width;
          std::uint32_t& target = expected[static_cast<std::size_t>(at)];
          const auto s = test_support::ToPixel(pixels[static_cast<std::size_t>(p)]);
          const auto d = test_support::ToPixel(target);
          const bool plain = i == 0 || layer.blendMode == 0;
          target = test_support::ToWord(!plain  ? test_support::SlowBlend(layer.blendMode, s, d)
                                        : merge ? test_support::SlowOver(s, d)
                                                : test_support::SlowMix(s, d));
        }
      }
      Layer target(&slide);
      ASSERT_TRUE(merge ? glib::MergeIntoLayer(slide, target, 0, kToTheLast)
                        : glib::FlattenLayers(slide, target, 0, kToTheLast));
      ASSERT_EQ(Words(target.raster), expected) << (merge ? "merged" : "flattened");
    }
  }
}

}  // namespace
