#include "glib/model/slide.h"

#include <gtest/gtest.h>

#include <vector>

#include "glib/model/range.h"
#include "tests/support/layers.h"

namespace {

using glib::kToTheLast;
using glib::Layer;
using glib::RGB32;
using glib::Slide;
using test_support::AddLayer;
using test_support::AddLayer32;
using test_support::Words;
using WordList = std::vector<std::uint32_t>;

struct Size {
  std::int32_t width = -7;
  std::int32_t height = -7;
};
Size Extent(const Slide& slide) {
  Size size;
  slide.GetExtent(size.width, size.height);
  return size;
}

struct Raster {
  std::int32_t bits = 0;
  std::uint8_t* pixels = nullptr;
  std::uint32_t* palette = nullptr;
  glib::MetafileHandle metafile = nullptr;
};
Raster RasterOf(Slide& slide) {
  Raster raster;
  raster.bits = slide.GetRaster(raster.pixels, raster.palette, raster.metafile);
  return raster;
}

TEST(Slide, BeginsEmptyAndStale) {
  Slide slide(RGB32(1, 2, 3, 4));
  EXPECT_EQ(Extent(slide).width, 0);
  EXPECT_EQ(Extent(slide).height, 0);
  ASSERT_NE(slide.flat, nullptr);
  EXPECT_EQ(slide.flat->raster.bits, -1);
  EXPECT_TRUE(slide.stale);
  EXPECT_EQ(slide.delay, 10U);
  EXPECT_FALSE(slide.AddLayer(nullptr));
  EXPECT_EQ(slide.GetLayer(0), nullptr);
  EXPECT_EQ(slide.LayerBits(0), -1);
  EXPECT_FALSE(slide.ConvertBits(32, 0, nullptr, 0));
  EXPECT_EQ(RasterOf(slide).bits, -1);
  double yDpi = 0.0;
  double xDpi = 0.0;
  slide.dpiX = 96.0;
  slide.GetDpi(yDpi, xDpi);
  EXPECT_EQ(yDpi, 72.0);
  EXPECT_EQ(xDpi, 96.0);
}

TEST(Slide, ExtentTakesEachEdgeFromTheFarthestLayer) {
  Slide slide(RGB32(0, 0, 0, 0));
  AddLayer32(slide, 0, 7, 10, 2, 0);
  AddLayer32(slide, 5, 0, 3, 4, 0);
  EXPECT_EQ(Extent(slide).width, 10);
  EXPECT_EQ(Extent(slide).height, 9);
  slide.layers.At(0)->x = INT32_MAX;
  EXPECT_EQ(Extent(slide).width, INT32_MAX);
}

TEST(Slide, BackgroundMakesTheFlatLayerStaleOnlyWhenItChanges) {
  Slide slide(RGB32(1, 2, 3, 4));
  slide.stale = false;
  slide.SetBackground(RGB32(1, 2, 3, 4));
  EXPECT_FALSE(slide.stale);
  slide.SetBackground(RGB32(1, 2, 3, 5));
  EXPECT_TRUE(slide.stale);
}

TEST(Slide, RasterOfASingleIndexedLayerIsItsOwn) {
  Slide slide(RGB32(0, 0, 0, 0));
  Layer* layer = AddLayer(slide, 8, 1, 1, {1, 0, 0, 0});
  layer->SetPosition(30, 40);
  const Raster raster = RasterOf(slide);
  EXPECT_EQ(raster.bits, 8);
  EXPECT_EQ(raster.pixels, layer->raster.pixels);
  EXPECT_EQ(raster.palette, layer->raster.palette);
  EXPECT_EQ(slide.flat->raster.bits, -1);
  EXPECT_TRUE(slide.stale);
}

TEST(Slide, RasterOfASingleMetafileIsItsHandle) {
  Slide slide(RGB32(0, 0, 0, 0));
  auto* layer = new Layer(&slide);
  layer->raster.SetMetafile(test_support::NewMetafile(100, 100), 5, 5, false);
  slide.AddLayer(layer);
  const Raster raster = RasterOf(slide);
  EXPECT_EQ(raster.bits, 0);
  EXPECT_EQ(raster.metafile, layer->raster.metafile);
  EXPECT_EQ(raster.pixels, nullptr);
}

TEST(Slide, RasterOfA32BitLayerIsComposedOnce) {
  Slide slide(RGB32(0, 0, 0, 0));
  Layer* layer = AddLayer32(slide, 1, 0, 1, 1, 0x80FFFFFF);
  const Raster raster = RasterOf(slide);
  EXPECT_EQ(raster.bits, 32);
  EXPECT_EQ(raster.pixels, slide.flat->raster.pixels);
  EXPECT_EQ(Words(slide.flat->raster), (WordList{0, 0x807F7F7F}));
  EXPECT_FALSE(slide.stale);
  layer->raster.pixels[0] = 1;
  RasterOf(slide);
  EXPECT_EQ(Words(slide.flat->raster), (WordList{0, 0x807F7F7F}));
  slide.stale = true;
  RasterOf(slide);
  EXPECT_NE(Words(slide.flat->raster), (WordList{0, 0x807F7F7F}));
}

TEST(Slide, ConvertBitsMakesTheFlatLayerStale) {
  Slide slide(RGB32(0, 0, 0, 0));
  AddLayer(slide, 24, 1, 1, {1, 2, 3, 0});
  slide.stale = false;
  EXPECT_TRUE(slide.ConvertBits(32, 0, nullptr, 0));
  EXPECT_EQ(slide.LayerBits(0), 32);
  EXPECT_TRUE(slide.stale);
}

TEST(Slide, PrepareLayersTakesAllTo32Bits) {
  Slide slide(RGB32(0, 0, 0, 0));
  AddLayer(slide, 24, 1, 1, {1, 2, 3, 0});
  AddLayer(slide, 1, 1, 1, {0x80, 0, 0, 0});
  EXPECT_TRUE(slide.PrepareLayers(nullptr, 5));
  EXPECT_EQ(slide.LayerBits(0), 32);
  EXPECT_EQ(slide.LayerBits(1), 32);
  EXPECT_EQ(slide.GetLayer(1)->raster.userValue, 5U);
  auto* metafile = new Layer(&slide);
  metafile->raster.SetMetafile(test_support::UnreadableMetafile(), 5, 5, false);
  slide.AddLayer(metafile);
  EXPECT_FALSE(slide.PrepareLayers(nullptr, 0));
}

TEST(Slide, CropMovesASingleLayerToTheCorner) {
  Slide slide(RGB32(0, 0, 0, 0));
  Layer* layer = AddLayer32(slide, 10, 0, 2, 1, WordList{1, 2});
  slide.stale = false;
  ASSERT_TRUE(slide.Crop(11, 0, 5, 1));
  EXPECT_EQ(Words(layer->raster), WordList{2});
  EXPECT_EQ(layer->x, 0);
  EXPECT_EQ(layer->y, 0);
  EXPECT_TRUE(slide.stale);
}

TEST(Slide, CropKeepsTheArrangementAndDropsWhatIsOutside) {
  Slide slide(RGB32(0, 0, 0, 0));
  Layer* low = AddLayer32(slide, 0, 0, 4, 4, 1);
  Layer* inside = AddLayer32(slide, 3, 2, 1, 1, 2);
  AddLayer32(slide, 4, 0, 2, 2, 3);  // shares an edge only
  ASSERT_TRUE(slide.Crop(2, 1, 2, 3));
  ASSERT_EQ(slide.layers.count, 2U);
  EXPECT_EQ(slide.GetLayer(0), low);
  EXPECT_EQ(low->raster.width, 2);
  EXPECT_EQ(low->raster.height, 3);
  EXPECT_EQ(low->x, 0);
  EXPECT_EQ(inside->x, 1);
  EXPECT_EQ(inside->y, 1);
}

TEST(Slide, CropThatMissesEverythingLeavesNoLayers) {
  Slide slide(RGB32(0, 0, 0, 0));
  AddLayer32(slide, 0, 0, 4, 4, 1);
  AddLayer32(slide, 2, 2, 4, 4, 1);
  EXPECT_TRUE(slide.Crop(6, 0, 2, 2));
  EXPECT_EQ(slide.layers.count, 0U);
}

TEST(Slide, CropRefuses) {
  Slide slide(RGB32(0, 0, 0, 0));
  Layer* layer = AddLayer32(slide, 0, 0, 4, 4, 1);
  constexpr std::int32_t kSizes[][2] = {
      {0, 1}, {1, 0}, {-1, 1}, {1, INT32_MIN}, {4, 4}, {5, 4}, {INT32_MAX, INT32_MAX}};
  for (const auto& size : kSizes) EXPECT_FALSE(slide.Crop(0, 0, size[0], size[1])) << size[0] << " x " << size[1];
  EXPECT_EQ(layer->raster.width, 4);
  // The far corner lies beyond the numbers: no common area, not a wrapped one.
  EXPECT_TRUE(slide.Crop(INT32_MAX, 0, INT32_MAX, 1));
  EXPECT_EQ(slide.layers.count, 0U);
}

TEST(Slide, StretchWithoutExtentFails) {
  Slide slide(RGB32(0, 0, 0, 0));
  slide.stale = false;
  EXPECT_TRUE(slide.Stretch(10, 10, 0, false, nullptr, nullptr)) << "no layers, nothing to do";
  EXPECT_TRUE(slide.stale);
  slide.AddLayer(new Layer(&slide));
  slide.stale = false;
  EXPECT_FALSE(slide.Stretch(10, 10, 0, false, nullptr, nullptr));
  EXPECT_TRUE(slide.stale);
}

TEST(Slide, MergeLayers) {
  Slide slide(RGB32(0, 0, 0, 0));
  AddLayer32(slide, 0, 0, 1, 1, 0xFF000001);
  Layer* second = AddLayer32(slide, 1, 0, 1, 1, 0xFF000002);
  AddLayer32(slide, 0, 0, 1, 1, 0xFF000003);
  Layer* top = AddLayer32(slide, 0, 0, 1, 1, 0xFF000004);
  second->visible = 1;
  slide.stale = false;
  EXPECT_FALSE(slide.MergeLayers(4, 1));
  EXPECT_FALSE(slide.stale);
  ASSERT_TRUE(slide.MergeLayers(1, 2));
  ASSERT_EQ(slide.layers.count, 3U);
  EXPECT_EQ(slide.GetLayer(1), second);
  EXPECT_EQ(slide.GetLayer(2), top);
  EXPECT_EQ(Words(second->raster), (WordList{0xFF000003, 0xFF000002}));
  EXPECT_EQ(second->x, 0);
  EXPECT_TRUE(slide.stale);
  ASSERT_TRUE(slide.MergeLayers(0, kToTheLast));
  ASSERT_EQ(slide.layers.count, 1U);
  EXPECT_EQ(Words(slide.GetLayer(0)->raster), (WordList{0xFF000004, 0xFF000002}));
}

}  // namespace
