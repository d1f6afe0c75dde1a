#include "glib/format/depth_conversion.h"

#include <gtest/gtest.h>

#include <vector>

#include "glib/color/quantize.h"
#include "glib/format/metafile_pages.h"
#include "glib/module_api/progress.h"
#include "platform/metafile/metafile.h"
#include "platform/pages.h"
#include "tests/support/layers.h"
#include "tests/support/progress_recorder.h"

namespace {

using glib::RasterBlock;
using test_support::RowBytes;
using test_support::Words;
using Bytes = std::vector<std::uint8_t>;

constexpr double kDpi = 72.0;
constexpr std::uint32_t kWhite = 0xFFFFFFFF;

void Fill(RasterBlock& block, std::int32_t bits, std::int32_t width, std::int32_t height, const Bytes& rows) {
  block.bits = bits;
  block.width = width;
  block.height = height;
  block.pixels = test_support::NewPages(rows);
  for (std::uint32_t i = 0; i < 256; ++i) block.palette[i] = 0x40000000U + i;
}

TEST(DepthConversion, EveryDepthTo32) {
  struct Case {
    std::int32_t bits;
    std::int32_t width;
    Bytes rows;
    std::vector<std::uint32_t> words;
  };
  const Case cases[] = {
      {1, 3, {0xA0, 9, 9, 9, 0x40, 9, 9, 9}, {0x40000001, 0x40000000, 0x40000001, 0x40000000, 0x40000001, 0x40000000}},
      {4,
       3,
       {0x12, 0x3F, 9, 9, 0x45, 0x6F, 9, 9},
       {0x40000001, 0x40000002, 0x40000003, 0x40000004, 0x40000005, 0x40000006}},
      {8, 3, {1, 2, 3, 9, 4, 5, 255, 9}, {0x40000001, 0x40000002, 0x40000003, 0x40000004, 0x40000005, 0x400000FF}},
      {24, 1, {1, 2, 3, 9, 4, 5, 6, 9}, {0xFF030201, 0xFF060504}},
      {32, 1, {1, 2, 3, 4, 5, 6, 7, 8}, {0x04030201, 0x08070605}},
  };
  for (const Case& c : cases) {
    RasterBlock block;
    Fill(block, c.bits, c.width, 2, c.rows);
    ASSERT_TRUE(glib::ToDepth32(block, kDpi, kDpi)) << c.bits;
    EXPECT_EQ(Words(block), c.words) << c.bits;
    EXPECT_EQ(block.width, c.width);
  }
}

TEST(DepthConversion, PackedRowsAreReadAsTheyStand) {
  RasterBlock block;
  block.rowsAligned = 0;
  Fill(block, 8, 3, 2, {1, 2, 3, 4, 5, 6});
  ASSERT_TRUE(glib::ToDepth32(block, kDpi, kDpi));
  EXPECT_EQ(Words(block),
            (std::vector<std::uint32_t>{0x40000001, 0x40000002, 0x40000003, 0x40000004, 0x40000005, 0x40000006}));
}

TEST(DepthConversion, EveryDepthTo24WithZeroPadding) {
  struct Case {
    std::int32_t bits;
    std::int32_t width;
    Bytes rows;
    Bytes result;
  };
  const Case cases[] = {
      {8, 2, {1, 2, 9, 9}, {1, 0, 0, 2, 0, 0, 0, 0}},    {4, 1, {0xF0, 9, 9, 9}, {15, 0, 0, 0}},
      {1, 2, {0x40, 9, 9, 9}, {0, 0, 0, 1, 0, 0, 0, 0}}, {32, 1, {7, 8, 9, 0}, {7, 8, 9, 0}},
      {24, 1, {7, 8, 9, 200}, {7, 8, 9, 200}},
  };
  for (const Case& c : cases) {
    RasterBlock block;
    Fill(block, c.bits, c.width, 1, c.rows);
    ASSERT_TRUE(glib::ToDepth24(block, kDpi, kDpi, kWhite)) << c.bits;
    EXPECT_EQ(block.bits, 24);
    EXPECT_EQ(RowBytes(block), c.result) << c.bits;
  }
}

TEST(DepthConversion, IndicesTo8) {
  struct Case {
    std::int32_t bits;
    bool aligned;
    Bytes rows;
    Bytes result;
    std::uint32_t entries;
  };
  const Case cases[] = {
      {1, true, {0xA0, 9, 9, 9, 0x40, 9, 9, 9}, {1, 0, 1, 0, 0, 1, 0, 0}, 2},
      {1, false, {0xA0, 9, 9, 9, 0x40, 9, 9, 9}, {1, 0, 1, 0, 1, 0}, 2},
      {4, true, {0x12, 0x3F, 9, 9, 0x45, 0x6F, 9, 9}, {1, 2, 3, 0, 4, 5, 6, 0}, 16},
      {8, false, {1, 2, 3, 9, 4, 5, 6, 9}, {1, 2, 3, 4, 5, 6}, 256},
  };
  for (const Case& c : cases) {
    RasterBlock block;
    Fill(block, c.bits, 3, 2, c.rows);
    ASSERT_TRUE(glib::ToDepth8(block, c.aligned, kDpi, kDpi)) << c.bits;
    EXPECT_EQ(block.bits, 8);
    EXPECT_EQ(block.rowsAligned, c.aligned ? 1 : 0);
    EXPECT_EQ(RowBytes(block), c.result) << c.bits;
    EXPECT_EQ(block.paletteEntries, c.entries);
    EXPECT_EQ(block.palette[1], 0x40000001U) << "the palette stays";
  }
}

TEST(DepthConversion, ColoursTo8ThroughTheQuantiser) {
  RasterBlock colours;
  Fill(colours, 24, 2, 1, {0, 0, 255, 255, 0, 0, 0, 0});
  colours.paletteEntries = 4;
  ASSERT_TRUE(glib::ToDepth8(colours, true, kDpi, kDpi));
  EXPECT_EQ(colours.bits, 8);
  EXPECT_EQ(colours.paletteEntries, 2U) << "as many as there are";

  // Fewer entries than 256 in an 8-bit block ask for that many colours.
  RasterBlock indexed;
  Fill(indexed, 8, 4, 1, {0, 1, 2, 3});
  for (std::uint32_t i = 0; i < 4; ++i) indexed.palette[i] = 0xFF000000U + i * 80;
  indexed.paletteEntries = 2;
  ASSERT_TRUE(glib::ToDepth8(indexed, true, kDpi, kDpi));
  EXPECT_EQ(indexed.bits, 8);
  EXPECT_EQ(indexed.paletteEntries, 2U);
  EXPECT_TRUE(indexed.pixels[0] < 2 && indexed.pixels[3] < 2);
}

TEST(DepthConversion, NothingToConvert) {
  RasterBlock empty;
  EXPECT_TRUE(glib::ToDepth32(empty, kDpi, kDpi));
  EXPECT_TRUE(glib::ToDepth24(empty, kDpi, kDpi, kWhite));
  EXPECT_FALSE(glib::ToDepth8(empty, true, kDpi, kDpi));
  EXPECT_EQ(empty.bits, -1);

  RasterBlock done;
  Fill(done, 8, 1, 1, {5, 0, 0, 0});
  const std::uint8_t* pixels = done.pixels;
  EXPECT_TRUE(glib::ToDepth8(done, true, kDpi, kDpi));
  EXPECT_EQ(done.pixels, pixels);
}

TEST(DepthConversion, AFailedRenderingLeavesTheMetafile) {
  RasterBlock block;
  block.SetMetafile(test_support::NewMetafile(0, 0), -1, -1, false);
  EXPECT_FALSE(glib::ToDepth32(block, kDpi, kDpi));
  EXPECT_FALSE(glib::ToDepth24(block, kDpi, kDpi, kWhite));
  EXPECT_FALSE(glib::ToDepth8(block, true, kDpi, kDpi));
  EXPECT_EQ(block.bits, 0);
  EXPECT_NE(block.metafile, nullptr);
  EXPECT_EQ(block.width, -1);
}

TEST(DepthConversion, PixelsBesideAMetafileAreExpandedWithoutIt) {
  RasterBlock block;
  Fill(block, 24, 1, 1, {1, 2, 3, 0});
  block.metafile = test_support::NewMetafile(2540, 2540);
  ASSERT_TRUE(glib::ToDepth32(block, kDpi, kDpi));
  EXPECT_EQ(Words(block), (std::vector<std::uint32_t>{0xFF030201}));
  EXPECT_EQ(block.metafile, nullptr);
}

TEST(DepthConversion, SetPixels32CopiesOrTakesOver) {
  RasterBlock block;
  Fill(block, 8, 1, 1, {5, 0, 0, 0});
  Bytes words = {1, 2, 3, 4, 5, 6, 7, 8};
  glib::SetPixels32(block, words.data(), 2, 1, true);
  EXPECT_EQ(Words(block), (std::vector<std::uint32_t>{0x04030201, 0x08070605}));
  EXPECT_NE(block.pixels, words.data());
  std::uint8_t* pages = test_support::NewPages(words);
  glib::SetPixels32(block, pages, 1, 2, false);
  EXPECT_EQ(block.pixels, pages);
  EXPECT_EQ(block.height, 2);
}

TEST(DepthConversion, ExpandRowWithoutAPalette) {
  const std::uint8_t row = 0x80;
  std::uint32_t words[2] = {};
  glib::ExpandRow(words, &row, nullptr, 2, 1);
  EXPECT_EQ(words[0], 0xFFFFFFFFU);
  EXPECT_EQ(words[1], 0xFF000000U);
}

// 500 x 500 pixels: 3 reports, each 166 rows from the first.
struct Reporting {
  explicit Reporting(std::int32_t side, std::int32_t bits) {
    block.callback = test_support::ProgressRecorder::Callback;
    block.userValue = recorder.UserValue();
    const auto size = static_cast<std::size_t>(side);
    Fill(block, bits, side, side, Bytes(glib::PaddedStride(size, static_cast<std::size_t>(bits)) * size, 0x11));
  }
  test_support::ProgressRecorder recorder;
  RasterBlock block;
};

TEST(DepthConversion, LargeRastersReportByRows) {
  constexpr const char* kReports =
      "-1/500 prepare..., 1/500 prepare..., 167/500 prepare..., 333/500 prepare..., 499/500 prepare..., "
      "-2/500 prepare...";
  Reporting to32(500, 8);
  EXPECT_TRUE(glib::ToDepth32(to32.block, kDpi, kDpi));
  EXPECT_EQ(to32.recorder.reports, kReports);
  Reporting to24(500, 4);
  EXPECT_TRUE(glib::ToDepth24(to24.block, kDpi, kDpi, kWhite));
  EXPECT_EQ(to24.recorder.reports, kReports);
  Reporting to8(500, 4);
  EXPECT_TRUE(glib::ToDepth8(to8.block, true, kDpi, kDpi));
  EXPECT_EQ(to8.recorder.reports, kReports);
  Reporting quiet(300, 8);
  EXPECT_TRUE(glib::ToDepth32(quiet.block, kDpi, kDpi));
  EXPECT_EQ(quiet.recorder.reports, "");
}

TEST(DepthConversion, AStopLeavesTheRestOfTheRowsUnset) {
  Reporting to32(500, 8);
  to32.recorder.stopAt = 167;
  EXPECT_TRUE(glib::ToDepth32(to32.block, kDpi, kDpi));
  EXPECT_EQ(to32.recorder.reports, "-1/500 prepare..., 1/500 prepare..., 167/500 prepare..., -2/500 prepare...");
  const auto words = Words(to32.block);
  ASSERT_EQ(words.size(), 250000U);
  EXPECT_EQ(words[165 * 500 + 499], 0x40000011U);
  EXPECT_EQ(words[166 * 500], 0U);
  EXPECT_EQ(words.back(), 0U);

  Reporting to8(500, 4);
  to8.recorder.stopAt = 167;
  EXPECT_FALSE(glib::ToDepth8(to8.block, true, kDpi, kDpi));
  EXPECT_EQ(to8.block.bits, 4) << "the block is as it was";
  EXPECT_EQ(to8.block.pixels[0], 0x11);
}

TEST(MetafilePages, SizeFromTheFrame) {
  struct Case {
    std::int32_t width;
    std::int32_t height;
    double yDpi;
    double xDpi;
    std::int32_t expectedWidth;
    std::int32_t expectedHeight;
  };
  // A frame of 2 by 1 inches and a bit less than a pixel.
  constexpr Case kCases[] = {
      {-1, -1, 72.0, 72.0, 144, 72}, {-1, -1, 300.0, 100.0, 200, 301}, {-1, -1, 0.0, 0.0, 144, 72},
      {10, -1, 72.0, 72.0, 10, 72},  {-5, 20, 72.0, 72.0, 144, 20},    {0, 0, 72.0, 72.0, 0, 0},
      {-1, -1, 72.0, 1e300, 0, 72},
  };
  const glib::MetafileHandle metafile = test_support::NewMetafile(5090, 2550);
  for (const Case& c : kCases) {
    std::int32_t width = c.width;
    std::int32_t height = c.height;
    platform::FreePages(glib::RenderMetafile32(metafile, c.yDpi, c.xDpi, width, height));
    EXPECT_EQ(width, c.expectedWidth) << c.width << " at " << c.xDpi;
    EXPECT_EQ(height, c.expectedHeight) << c.height << " at " << c.yDpi;
    width = c.width;
    height = c.height;
    platform::FreePages(glib::RenderMetafile(metafile, 24, c.yDpi, c.xDpi, width, height, kWhite));
    EXPECT_EQ(width, c.expectedWidth);
    EXPECT_EQ(height, c.expectedHeight);
  }
  platform::DeleteEnhMetaFile(metafile);
  std::int32_t size = -1;
  EXPECT_EQ(glib::RenderMetafile32(nullptr, kDpi, kDpi, size, size), nullptr);
}

}  // namespace
