#include "glib/model/layer.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "platform/metafile/metafile.h"
#include "tests/support/layers.h"

namespace {

using glib::Layer;
using glib::RGB32;
using glib::Slide;
using test_support::AddLayer;
using test_support::AddLayer32;
using test_support::RowBytes;
using test_support::Words;
using Bytes = std::vector<std::uint8_t>;
using WordList = std::vector<std::uint32_t>;

TEST(Layer, BeginsEmptyAndVisible) {
  Slide slide(RGB32(0, 0, 0, 0));
  const Layer layer(&slide);
  EXPECT_EQ(layer.raster.bits, -1);
  EXPECT_EQ(layer.raster.pixels, nullptr);
  EXPECT_EQ(layer.visible, 1);
  EXPECT_EQ(layer.x, 0);
  EXPECT_EQ(layer.blendMode, 0);
}

TEST(Layer, CreateFillsWithTheBackground) {
  Slide slide(RGB32(1, 2, 3, 0));
  Layer layer(&slide);
  layer.visible = 0;
  ASSERT_TRUE(layer.Create(4, 5, 2, 1));
  EXPECT_EQ(RowBytes(layer.raster), (Bytes{3, 2, 1, 0, 3, 2, 1, 0}));
  EXPECT_EQ(layer.x, 4);
  EXPECT_EQ(layer.y, 5);
  EXPECT_EQ(layer.visible, 1);
}

TEST(Layer, CreateRefusesSizesThatNoBlockCanHave) {
  Slide slide(RGB32(1, 2, 3, 0));
  constexpr std::int32_t kSizes[][2] = {
      {0, 5}, {5, 0}, {-1, 5}, {5, -1}, {65536, 16384}, {INT32_MAX, INT32_MAX}, {INT32_MAX, 1}, {INT32_MIN, INT32_MIN}};
  for (const auto& size : kSizes) {
    Layer layer(&slide);
    ASSERT_TRUE(layer.Create(0, 0, 1, 1));
    EXPECT_FALSE(layer.Create(0, 0, size[0], size[1])) << size[0] << " x " << size[1];
    EXPECT_EQ(layer.raster.bits, -1) << "what was there before is gone";
    EXPECT_EQ(layer.raster.pixels, nullptr);
  }
}

TEST(Layer, SetRaster) {
  Slide slide(RGB32(0, 0, 0, 0));
  Layer layer(&slide);
  std::uint32_t palette[256];
  for (std::uint32_t i = 0; i < 256; ++i) palette[i] = i << 24 | i;
  layer.SetRaster(1, 2, 1, 1, test_support::NewPages({7, 0, 0, 0}), palette, 8);
  EXPECT_EQ(layer.raster.bits, 8);
  for (std::uint32_t i = 0; i < 256; ++i) ASSERT_EQ(layer.raster.palette[i], 0xFF000000U | i);
  layer.SetRaster(8, 9, 1, 1, test_support::NewPages({7, 0, 0, 0}), nullptr, 4);
  EXPECT_EQ(layer.raster.palette[200], 0xFF0000C8U) << "without a palette the old one stays";

  layer.SetRaster(3, 4, 5, 5, nullptr, palette, 16);
  EXPECT_EQ(layer.raster.bits, -1);
  EXPECT_EQ(layer.raster.pixels, nullptr);
  EXPECT_EQ(layer.x, 3);
  EXPECT_EQ(layer.y, 4);
}

TEST(Layer, SetPositionKeepsOffNegativeValues) {
  Slide slide(RGB32(0, 0, 0, 0));
  Layer layer(&slide);
  layer.SetPosition(-5, 3);
  EXPECT_EQ(layer.x, 0);
  EXPECT_EQ(layer.y, 3);
}

struct CropCase {
  const char* name;
  std::int32_t bits;
  std::int32_t width;
  std::int32_t height;
  Bytes rows;
  std::int32_t x, y;  // of the layer
  glib::Rectangle rectangle;
  Bytes result;  // empty: refused
  std::int32_t resultWidth, resultX, resultY;
};

TEST(Layer, Crop) {
  const Bytes bytes3x3 = {1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0};
  const CropCase cases[] = {
      {"8 bits, middle", 8, 3, 3, bytes3x3, 0, 0, {1, 1, 3, 2}, {5, 6, 0, 0}, 2, 1, 1},
      {"8 bits, past the edges", 8, 3, 3, bytes3x3, 0, 0, {2, 2, 90, 90}, {9, 0, 0, 0}, 1, 2, 2},
      {"8 bits, whole", 8, 3, 3, bytes3x3, 0, 0, {0, 0, 3, 3}, {}, 0, 0, 0},
      {"8 bits, more than whole", 8, 3, 3, bytes3x3, 0, 0, {0, 0, 9, 9}, {}, 0, 0, 0},
      {"8 bits, outside", 8, 3, 3, bytes3x3, 0, 0, {3, 0, 5, 2}, {}, 0, 0, 0},
      {"8 bits, nothing", 8, 3, 3, bytes3x3, 0, 0, {1, 1, 1, 2}, {}, 0, 0, 0},
      {"8 bits, inside out", 8, 3, 3, bytes3x3, 0, 0, {2, 2, 1, 1}, {}, 0, 0, 0},
      {"8 bits, beyond all numbers", 8, 3, 3, bytes3x3, 0, 0, {1, 1, INT32_MIN, 2}, {}, 0, 0, 0},
      {"displaced", 8, 3, 3, bytes3x3, 10, 20, {11, 21, 13, 22}, {5, 6, 0, 0}, 2, 11, 21},
      {"displaced, whole", 8, 3, 3, bytes3x3, 10, 20, {10, 20, 13, 23}, {}, 0, 10, 20},
      {"displaced, begins before it", 8, 3, 3, bytes3x3, 10, 20, {5, 5, 11, 21}, {1, 0, 0, 0}, 1, 10, 20},
      {"displaced, before it", 8, 3, 3, bytes3x3, 10, 20, {0, 0, 10, 20}, {}, 0, 10, 20},
      {"4 bits, odd column", 4, 4, 1, {0x12, 0x34, 0, 0}, 0, 0, {1, 0, 4, 1}, {0x23, 0x40, 0, 0}, 3, 1, 0},
      {"4 bits, even column", 4, 4, 1, {0x12, 0x34, 0, 0}, 0, 0, {2, 0, 4, 1}, {0x34, 0, 0, 0}, 2, 2, 0},
      {"4 bits, last column", 4, 4, 1, {0x12, 0x34, 0, 0}, 0, 0, {3, 0, 4, 1}, {0x40, 0, 0, 0}, 1, 3, 0},
      {"4 bits, odd count", 4, 4, 1, {0x12, 0x34, 0, 0}, 0, 0, {2, 0, 3, 1}, {0x30, 0, 0, 0}, 1, 2, 0},
      {"1 bit, within bytes", 1, 16, 1, {0x5A, 0xC3, 0, 0}, 0, 0, {3, 0, 13, 1}, {0xD6, 0, 0, 0}, 10, 3, 0},
      {"1 bit, one pixel", 1, 16, 1, {0x5A, 0xC3, 0, 0}, 0, 0, {9, 0, 10, 1}, {0x80, 0, 0, 0}, 1, 9, 0},
      {"1 bit, at a byte", 1, 16, 1, {0x5A, 0xC3, 0, 0}, 0, 0, {8, 0, 16, 1}, {0xC3, 0, 0, 0}, 8, 8, 0},
      {"1 bit, part of a byte", 1, 16, 1, {0x5A, 0xC3, 0, 0}, 0, 0, {0, 0, 12, 1}, {0x5A, 0xC0, 0, 0}, 12, 0, 0},
      {"24 bits", 24, 2, 1, {1, 2, 3, 4, 5, 6, 0, 0}, 0, 0, {1, 0, 2, 1}, {4, 5, 6, 0}, 1, 1, 0},
      {"32 bits",
       32,
       2,
       2,
       {1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3, 4, 4, 4, 4},
       0,
       0,
       {1, 0, 2, 2},
       {2, 2, 2, 2, 4, 4, 4, 4},
       1,
       1,
       0},
  };
  for (const CropCase& c : cases) {
    SCOPED_TRACE(c.name);
    Slide slide(RGB32(0, 0, 0, 0));
    Layer* layer = AddLayer(slide, c.bits, c.width, c.height, c.rows);
    layer->x = c.x;
    layer->y = c.y;
    layer->raster.palette[3] = 0x12345678;
    const std::uint8_t* before = layer->raster.pixels;
    EXPECT_EQ(layer->CropLayer(c.rectangle), !c.result.empty());
    EXPECT_EQ(layer->raster.bits, c.bits);
    EXPECT_EQ(layer->raster.palette[3], 0x12345678U);
    if (c.result.empty()) {
      EXPECT_EQ(layer->raster.pixels, before);
      EXPECT_EQ(layer->x, c.x);
      EXPECT_EQ(layer->y, c.y);
    } else {
      EXPECT_EQ(RowBytes(layer->raster), c.result);
      EXPECT_EQ(layer->raster.width, c.resultWidth);
      EXPECT_EQ(layer->x, c.resultX);
      EXPECT_EQ(layer->y, c.resultY);
    }
  }
}

TEST(Layer, CropKeepsEveryPixelAtEveryColumn) {
  for (const std::int32_t bits : {1, 4}) {
    constexpr std::int32_t kWidth = 37;
    Bytes row(glib::PaddedStride(kWidth, static_cast<std::size_t>(bits)));
    for (std::size_t i = 0; i < row.size(); ++i) row[i] = static_cast<std::uint8_t>(i * 73 + 29);
    const auto pixel = [&](const Bytes& bytes, std::int32_t column) {
      const std::int32_t bit = column * bits;
      return bytes[static_cast<std::size_t>(bit / 8)] >> (8 - bits - bit % 8) & ((1 << bits) - 1);
    };
    for (std::int32_t left = 0; left < kWidth; ++left) {
      for (std::int32_t right = left + 1; right <= kWidth; ++right) {
        if (left == 0 && right == kWidth) continue;
        Slide slide(RGB32(0, 0, 0, 0));
        Layer* layer = AddLayer(slide, bits, kWidth, 1, row);
        ASSERT_TRUE(layer->CropLayer({left, 0, right, 1}));
        const Bytes cropped = RowBytes(layer->raster);
        for (std::int32_t i = 0; i < right - left; ++i) {
          ASSERT_EQ(pixel(cropped, i), pixel(row, left + i))
              << bits << " bits, " << left << " to " << right << ": " << i;
        }
      }
    }
  }
}

TEST(Layer, CropOfWhatHasNoPixels) {
  Slide slide(RGB32(0, 0, 0, 0));
  Layer layer(&slide);
  layer.raster.width = 10;
  layer.raster.height = 10;
  EXPECT_FALSE(layer.CropLayer(0, 0, 5, 5));
}

struct CanvasCase {
  const char* name;
  std::int32_t bits;
  std::int32_t width, height;
  Bytes rows;
  std::int32_t newWidth, newHeight;
  Bytes result;
};

TEST(Layer, ResizeCanvas) {
  const CanvasCase cases[] = {
      {"32 bits grow", 32, 1, 1, {9, 9, 9, 9}, 2, 2, {9, 9, 9, 9, 3, 2, 1, 7, 3, 2, 1, 7, 3, 2, 1, 7}},
      {"32 bits shrink", 32, 2, 2, {1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3, 4, 4, 4, 4}, 1, 1, {1, 1, 1, 1}},
      {"24 bits, filled rows", 24, 4, 1, {1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4}, 5, 2, {1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4,
                                                                                      4, 3, 2, 1, 0, 3, 2, 1, 3, 2, 1,
                                                                                      3, 2, 1, 3, 2, 1, 3, 2, 1, 0}},
      {"24 bits shrink to what the row holds",
       24,
       3,
       1,
       {1, 1, 1, 2, 2, 2, 3, 3, 3, 0, 0, 0},
       2,
       1,
       {1, 1, 1, 2, 2, 2, 3, 3}},
      {"8 bits grow with index 0", 8, 2, 1, {5, 6, 0, 0}, 5, 2, {5, 6, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
      {"4 bits", 4, 2, 1, {0x56, 0, 0, 0}, 9, 1, {0x56, 0, 0, 0, 0, 0, 0, 0}},
      {"1 bit", 1, 8, 2, {0xFF, 0, 0, 0, 0xFF, 0, 0, 0}, 8, 1, {0xFF, 0, 0, 0}},
  };
  for (const CanvasCase& c : cases) {
    SCOPED_TRACE(c.name);
    Slide slide(RGB32(1, 2, 3, 7));
    Layer* layer = AddLayer(slide, c.bits, c.width, c.height, c.rows);
    layer->x = 6;
    ASSERT_TRUE(layer->ResizeCanvas(c.newWidth, c.newHeight));
    EXPECT_EQ(RowBytes(layer->raster), c.result);
    EXPECT_EQ(layer->raster.width, c.newWidth);
    EXPECT_EQ(layer->raster.height, c.newHeight);
    EXPECT_EQ(layer->x, 6);
  }
}

TEST(Layer, ResizeCanvasRefuses) {
  Slide slide(RGB32(1, 2, 3, 7));
  Layer* layer = AddLayer32(slide, 0, 0, 1, 1, 0x01020304);
  constexpr std::int32_t kSizes[][2] = {{0, 1}, {1, 0}, {-3, 1}, {1, -3}, {INT32_MAX, INT32_MAX}};
  for (const auto& size : kSizes) {
    EXPECT_FALSE(layer->ResizeCanvas(size[0], size[1]));
    EXPECT_EQ(Words(layer->raster), WordList{0x01020304});
  }
  EXPECT_FALSE(Layer(&slide).ResizeCanvas(2, 2));
}

TEST(Layer, ResizeCanvasOfAMetafileStoresTheSize) {
  Slide slide(RGB32(1, 2, 3, 7));
  Layer layer(&slide);
  layer.raster.SetMetafile(test_support::NewMetafile(100, 100), -1, -1, false);
  EXPECT_TRUE(layer.ResizeCanvas(30, 40));
  EXPECT_EQ(layer.raster.width, 30);
  EXPECT_EQ(layer.raster.height, 40);
  EXPECT_EQ(layer.raster.bits, 0);
}

TEST(Layer, Clone) {
  Slide slide(RGB32(0, 0, 0, 0));
  Slide other(RGB32(0, 0, 0, 0));
  Layer* layer = AddLayer(slide, 8, 3, 1, {1, 2, 3, 0});
  layer->SetPosition(4, 5);
  layer->name = "name";
  layer->comment = "comment";
  layer->visible = 0;
  layer->blendMode = 3;
  layer->raster.palette[9] = 0x99887766;
  layer->raster.grayscale = 1;
  layer->raster.paletteEntries = 7;
  const std::unique_ptr<Layer> copy(layer->Clone(&other));
  EXPECT_EQ(copy->slide, &other);
  EXPECT_EQ(copy->x, 4);
  EXPECT_EQ(copy->y, 5);
  EXPECT_EQ(copy->visible, 0);
  EXPECT_STREQ(copy->name.c_str(), "name");
  EXPECT_STREQ(copy->comment.c_str(), "comment");
  EXPECT_EQ(copy->raster.palette[9], 0x99887766U);
  EXPECT_NE(copy->raster.pixels, layer->raster.pixels);
  EXPECT_EQ(RowBytes(copy->raster), RowBytes(layer->raster));
  EXPECT_EQ(copy->blendMode, 0);
  EXPECT_EQ(copy->raster.grayscale, 0);
  EXPECT_EQ(copy->raster.paletteEntries, 256U);
}

TEST(Layer, CloneOfPackedRowsHasPaddedOnes) {
  Slide slide(RGB32(0, 0, 0, 0));
  Layer* layer = AddLayer(slide, 8, 3, 2, {1, 2, 3, 4, 5, 6});
  layer->raster.rowsAligned = 0;
  const std::unique_ptr<Layer> copy(layer->Clone(&slide));
  EXPECT_EQ(RowBytes(copy->raster), (Bytes{1, 2, 3, 0, 4, 5, 6, 0}));
}

TEST(Layer, CloneOfAMetafile) {
  Slide slide(RGB32(0, 0, 0, 0));
  Layer layer(&slide);
  layer.raster.SetMetafile(test_support::NewMetafile(100, 200), -1, 8, false);
  const std::unique_ptr<Layer> copy(layer.Clone(&slide));
  EXPECT_EQ(copy->raster.bits, 0);
  EXPECT_EQ(copy->raster.width, -1);
  EXPECT_EQ(copy->raster.height, 8);
  ASSERT_NE(copy->raster.metafile, nullptr);
  EXPECT_NE(copy->raster.metafile, layer.raster.metafile);
  EXPECT_EQ(copy->raster.metafile->records, layer.raster.metafile->records);
}

TEST(Layer, ConvertTo) {
  Slide slide(RGB32(0, 0, 0, 0));
  Layer* layer = AddLayer(slide, 4, 1, 1, {0x30, 0, 0, 0});
  for (const std::int32_t bits : {-1, 2, 16, 33, 64}) EXPECT_FALSE(layer->ConvertTo(bits)) << bits;
  EXPECT_TRUE(layer->ConvertTo(4));
  EXPECT_EQ(layer->raster.bits, 4);
  layer->raster.palette[3] = 0x55443322;
  EXPECT_TRUE(layer->ConvertTo(8));
  EXPECT_EQ(RowBytes(layer->raster), (Bytes{3, 0, 0, 0}));
  layer->raster.paletteEntries = 256;
  EXPECT_TRUE(layer->ConvertTo(32));
  EXPECT_EQ(Words(layer->raster), WordList{0x55443322});
  EXPECT_TRUE(layer->ConvertTo(24));
  EXPECT_EQ(RowBytes(layer->raster), (Bytes{0x22, 0x33, 0x44, 0}));

  Layer empty(&slide);
  for (const std::int32_t bits : {0, 1, 4, 8}) EXPECT_FALSE(empty.ConvertTo(bits)) << bits;
  EXPECT_FALSE(empty.EnsureRasterIfMetafile());
  EXPECT_TRUE(layer->EnsureRasterIfMetafile());
  EXPECT_EQ(layer->raster.bits, 24) << "a raster keeps its depth";
}

}  // namespace
