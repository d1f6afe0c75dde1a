// Layers that hold a metafile in place of pixels.

#include <gtest/gtest.h>

#include <memory>

#include "glib/model/compositing.h"
#include "glib/model/layer.h"
#include "glib/model/range.h"
#include "glib/model/slide.h"
#include "platform/metafile/metafile.h"
#include "tests/support/layers.h"

namespace {

using glib::Layer;
using glib::RGB32;
using glib::Slide;

constexpr std::uint32_t kRed = 0xFFFF0000;

std::uint32_t WordAt(const Layer& layer, std::int32_t x, std::int32_t y) {
  const auto index =
      static_cast<std::size_t>(y) * static_cast<std::size_t>(layer.raster.width) + static_cast<std::size_t>(x);
  return reinterpret_cast<const std::uint32_t*>(layer.raster.pixels)[index];
}

// A slide of 100 dots to the inch across and 50 down, with a half red layer of one inch by one, of no size of its own.
class MetafileLayer : public testing::Test {
 protected:
  MetafileLayer() : slide(RGB32(255, 255, 255, 0)) {
    slide.dpiX = 100;
    slide.dpiY = 50;
    layer = new Layer(&slide);
    layer->raster.SetMetafile(test_support::HalfRedMetafile(100, 100), -1, -1, false);
    slide.AddLayer(layer);
  }

  Slide slide;
  Layer* layer;
};

TEST_F(MetafileLayer, CountsWithTheSizeOfItsFrame) {
  std::int32_t width = 0;
  std::int32_t height = 0;
  slide.GetExtent(width, height);
  EXPECT_EQ(width, 100);
  EXPECT_EQ(height, 50);
  layer->SetPosition(7, 9);
  slide.GetExtent(width, height);
  EXPECT_EQ(width, 107);
  EXPECT_EQ(height, 59);
  EXPECT_EQ(layer->raster.bits, 0) << "asking for the size draws nothing";
}

TEST_F(MetafileLayer, IsDrawnAtItsPlace) {
  layer->SetPosition(3, 2);
  Layer target(&slide);
  ASSERT_TRUE(glib::FlattenLayers(slide, target, 0, glib::kToTheLast));
  EXPECT_EQ(target.raster.width, 103);
  EXPECT_EQ(target.raster.height, 52);
  EXPECT_EQ(WordAt(target, 3, 2), kRed);
  EXPECT_EQ(WordAt(target, 52, 51), kRed);
  EXPECT_NE(WordAt(target, 2, 2), kRed);
  EXPECT_NE(WordAt(target, 53, 20), kRed);
  EXPECT_EQ(layer->raster.bits, 0) << "the layer stays a drawing";
}

TEST_F(MetafileLayer, ScalesWithoutBecomingPixels) {
  ASSERT_TRUE(slide.Stretch(40, 30, 1, false, nullptr, nullptr));
  EXPECT_EQ(layer->raster.bits, 0);
  EXPECT_EQ(layer->raster.width, 40);
  EXPECT_EQ(layer->raster.height, 30);
  ASSERT_TRUE(layer->EnsureRaster());
  EXPECT_EQ(WordAt(*layer, 19, 29), kRed);
  EXPECT_EQ(WordAt(*layer, 20, 29), 0U);
}

TEST_F(MetafileLayer, ScalesByItsOwnProportions) {
  ASSERT_TRUE(layer->ScaleLayer(60, 60, 1, true, nullptr, nullptr));
  EXPECT_EQ(layer->raster.width, 60);
  EXPECT_EQ(layer->raster.height, 30);
}

TEST_F(MetafileLayer, CropsItsPixels) {
  ASSERT_TRUE(slide.Crop(40, 10, 20, 30));
  EXPECT_EQ(layer->raster.bits, 32);
  EXPECT_EQ(layer->raster.width, 20);
  EXPECT_EQ(layer->raster.height, 30);
  EXPECT_EQ(WordAt(*layer, 9, 5), kRed);
  EXPECT_EQ(WordAt(*layer, 10, 5), 0U);
}

TEST_F(MetafileLayer, ClonesAreDrawnAlike) {
  const std::unique_ptr<Layer> copy(layer->Clone(&slide));
  ASSERT_TRUE(copy->EnsureRaster());
  ASSERT_TRUE(layer->EnsureRaster());
  EXPECT_EQ(copy->raster.width, 100);
  EXPECT_EQ(copy->raster.height, 50);
  EXPECT_EQ(test_support::Words(copy->raster), test_support::Words(layer->raster));
}

TEST_F(MetafileLayer, KeepsTheSizeOfAResizedCanvas) {
  ASSERT_TRUE(layer->ResizeCanvas(10, 20));
  ASSERT_TRUE(layer->ConvertTo(24));
  EXPECT_EQ(layer->raster.width, 10);
  EXPECT_EQ(layer->raster.height, 20);
  EXPECT_EQ(layer->raster.pixels[2], 255);
  EXPECT_EQ(layer->raster.pixels[3 * 9], 255) << "white where nothing is drawn";
}

TEST(RasterToMetafile, KeepsSizeAndPixels) {
  for (const std::int32_t bits : {1, 4, 8, 24, 32}) {
    Slide slide(RGB32(0, 0, 0, 0));
    const std::int32_t width = 37;
    const std::int32_t height = 11;
    auto* layer = new Layer(&slide);
    slide.AddLayer(layer);
    auto* pixels = test_support::NewPages(std::vector<std::uint8_t>(glib::PaddedBytes(width, height, bits)));
    std::uint32_t seed = 1;
    for (std::size_t i = 0; i < glib::PaddedBytes(width, height, bits); ++i) {
      seed = seed * 1664525 + 1013904223;
      pixels[i] = static_cast<std::uint8_t>(bits == 32 && i % 4 == 3 ? 255 : seed >> 24);
    }
    std::uint32_t palette[256];
    for (std::uint32_t i = 0; i < 256; ++i) palette[i] = 0xFF000000 | (i * 0x010503 + 0x203040);
    layer->SetRaster(0, 0, width, height, pixels, palette, bits);
    const std::unique_ptr<Layer> before(layer->Clone(&slide));
    ASSERT_TRUE(before->ConvertTo(32));

    ASSERT_TRUE(layer->ConvertTo(0));
    EXPECT_EQ(layer->raster.bits, 0);
    EXPECT_EQ(layer->raster.pixels, nullptr);
    EXPECT_EQ(layer->raster.width, width);
    EXPECT_EQ(layer->raster.height, height);
    ASSERT_TRUE(layer->ConvertTo(0)) << "it is one already";
    // The frame alone says the same at the resolution of a slide that has none.
    layer->raster.width = layer->raster.height = -1;
    ASSERT_TRUE(layer->ConvertTo(32));
    EXPECT_EQ(test_support::Words(layer->raster), test_support::Words(before->raster)) << bits;
  }
}

TEST(RasterToMetafile, NeedsPixels) {
  Slide slide(RGB32(0, 0, 0, 0));
  Layer layer(&slide);
  EXPECT_FALSE(layer.ConvertTo(0));
}

}  // namespace
