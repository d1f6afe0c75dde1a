#include "glib/color/quantize.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "glib/module_api/progress.h"
#include "platform/pages.h"
#include "tests/support/color_rasters.h"
#include "tests/support/plain_quantizer.h"

namespace {

using color_rasters::Recipe;
using color_rasters::Texture;
using glib::kQuantizeFailed;
using glib::Quantize;
using glib::RasterBlock;

// Everything that a callback is told; it asks to stop at report number `stopAt`.
struct Recorder {
  struct Report {
    std::uint32_t total;
    std::int32_t current;
    std::string text;
    bool operator==(const Report&) const = default;
  };
  std::vector<Report> reports;
  std::size_t stopAt = static_cast<std::size_t>(-1);

  static std::uint8_t Callback(glib::ProgressInfo* info) {
    auto* self = reinterpret_cast<Recorder*>(info->userValue);
    self->reports.push_back({info->total, info->current, info->text.c_str()});
    return self->reports.size() - 1 == self->stopAt ? 0 : 1;
  }
};

struct Steering {
  std::uint32_t colors = 256;
  bool dither = false;
  bool grayscale = false;
  bool alignRows = true;
  std::uint32_t treeDepth = 0;
  Recorder* recorder = nullptr;
};

void Steer(RasterBlock& block, const Steering& steering) {
  block.ditherOnReduce = steering.dither ? 1 : 0;
  block.grayscale = steering.grayscale ? 1 : 0;
  block.treeDepth = steering.treeDepth;
  if (steering.recorder == nullptr) return;
  block.callback = Recorder::Callback;
  block.userValue = reinterpret_cast<std::uintptr_t>(steering.recorder);
}

std::string Describe(const Recipe& recipe, const Steering& steering) {
  return "bits " + std::to_string(recipe.bits) + " size " + std::to_string(recipe.width) + "x" +
         std::to_string(recipe.height) + " texture " + std::to_string(static_cast<int>(recipe.texture)) + " seed " +
         std::to_string(recipe.seed) + " aligned " + std::to_string(recipe.aligned) + " of " +
         std::to_string(recipe.colors) + " colors " + std::to_string(steering.colors) + " dither " +
         std::to_string(steering.dither) + " grey " + std::to_string(steering.grayscale) + " depth " +
         std::to_string(steering.treeDepth);
}

// Runs both forms on the same raster. Gives the number of entries.
std::uint32_t ExpectLikePlain(const Recipe& recipe, Steering steering) {
  SCOPED_TRACE(Describe(recipe, steering));
  RasterBlock block, plainBlock;
  Make(recipe, block);
  Make(recipe, plainBlock);
  Recorder plainRecorder;
  if (steering.recorder != nullptr) plainRecorder.stopAt = steering.recorder->stopAt;
  Steer(block, steering);
  const std::uint32_t count = Quantize(block, steering.colors, steering.alignRows);
  const bool reports = steering.recorder != nullptr;
  if (reports) steering.recorder = &plainRecorder;
  Steer(plainBlock, steering);
  EXPECT_EQ(plain::Quantize(plainBlock, steering.colors, steering.alignRows), count);
  if (reports) {
    const auto& own = reinterpret_cast<Recorder*>(block.userValue)->reports;
    EXPECT_TRUE(own == plainRecorder.reports) << own.size() << " reports, plain " << plainRecorder.reports.size();
  }
  EXPECT_EQ(plainBlock.bits, block.bits);
  EXPECT_EQ(plainBlock.rowsAligned, block.rowsAligned);
  for (std::size_t i = 0; i < 256; ++i) {
    if (plainBlock.palette[i] == block.palette[i]) continue;
    ADD_FAILURE() << "entry " << i << " is " << std::hex << block.palette[i] << ", plain " << plainBlock.palette[i];
    return count;
  }
  const std::size_t stride = block.Stride();
  const std::size_t size = stride * static_cast<std::size_t>(block.height);
  const auto differs = std::mismatch(block.pixels, block.pixels + size, plainBlock.pixels);
  if (differs.first != block.pixels + size) {
    const auto at = static_cast<std::size_t>(differs.first - block.pixels);
    ADD_FAILURE() << "pixel " << at % stride << ", " << at / stride << " is " << int{*differs.first} << ", plain "
                  << int{*differs.second};
  }
  return count;
}

// A block of 24 bits with these colours (red x 65536 + green x 256 + blue) in one row.
void MakeRow(const std::vector<std::uint32_t>& colors, RasterBlock& block) {
  block.bits = 24;
  block.width = static_cast<std::int32_t>(colors.size());
  block.height = 1;
  block.ditherOnReduce = 0;
  block.pixels = static_cast<std::uint8_t*>(platform::AllocatePages(block.Stride()));
  for (std::size_t i = 0; i < colors.size(); ++i) std::memcpy(block.pixels + 3 * i, &colors[i], 3);
}

TEST(QuantizeByHand, OneColour) {
  RasterBlock block;
  MakeRow({0x123456, 0x123456, 0x123456}, block);
  EXPECT_EQ(1U, Quantize(block, 256, true));
  EXPECT_EQ(8, block.bits);
  EXPECT_EQ(0xFF123456, block.palette[0]);
  EXPECT_EQ(std::vector<std::uint8_t>({0, 0, 0, 0}), std::vector<std::uint8_t>(block.pixels, block.pixels + 4));
}

TEST(QuantizeByHand, MeansRoundToNearest) {
  RasterBlock block;
  MakeRow({0x020202, 0x030303}, block);  // sums of 5 over two pixels
  EXPECT_EQ(1U, Quantize(block, 256, true));
  EXPECT_EQ(0xFF030303, block.palette[0]);
}

// 128, the centre of the root, and 129 fall into different halves; entries are numbered lower half first.
TEST(QuantizeByHand, CentreBelongsToLowerHalf) {
  RasterBlock block;
  MakeRow({0x000081, 0x000080, 0x000080}, block);
  EXPECT_EQ(2U, Quantize(block, 256, false));
  EXPECT_EQ(0xFF000080, block.palette[0]);
  EXPECT_EQ(0xFF000081, block.palette[1]);
  EXPECT_EQ(std::vector<std::uint8_t>({1, 0, 0}), std::vector<std::uint8_t>(block.pixels, block.pixels + 3));
  EXPECT_EQ(0, block.rowsAligned);
}

// The children of the root are numbered by bit 0 of channel 0 (blue), bit 1 of channel 1, bit 2 of channel 2.
TEST(QuantizeByHand, EntriesFollowTheOrderOfTheTree) {
  RasterBlock block;
  MakeRow({0xFF0000, 0x00FF00, 0x0000FF, 0x000000}, block);
  EXPECT_EQ(4U, Quantize(block, 4, true));
  EXPECT_EQ(0xFF000000, block.palette[0]);
  EXPECT_EQ(0xFF0000FF, block.palette[1]);
  EXPECT_EQ(0xFF00FF00, block.palette[2]);
  EXPECT_EQ(0xFFFF0000, block.palette[3]);
}

// Two light leaves weigh the same, so both go in one pass and their parent's mean takes their place: the palette ends
// smaller than asked for.
TEST(QuantizeByHand, EqualWeightsGoTogether) {
  RasterBlock block;
  MakeRow({0x000000, 0x000046, 0x0000FF, 0x0000FF, 0x0000FF}, block);
  EXPECT_EQ(2U, Quantize(block, 2, true));
  EXPECT_EQ(0xFF000023, block.palette[0]);
  EXPECT_EQ(0xFF0000FF, block.palette[1]);
}

TEST(QuantizeByHand, TwoGreysAreWhiteAndBlack) {
  struct Case {
    std::vector<std::uint32_t> colors;
    std::vector<std::uint8_t> indices;
  };
  // The padding byte is inverted along with the pixels where entry 0 was the darker one.
  const Case cases[] = {{{0x101010, 0xE0E0E0, 0xE0E0E0}, {1, 0, 0, 1}},
                        {{0x000081, 0x008000}, {1, 0, 0, 0}}};  // entry 0 is the second colour: grey 75 against 38
  for (const Case& c : cases) {
    RasterBlock block;
    MakeRow(c.colors, block);
    block.grayscale = 1;
    EXPECT_EQ(2U, Quantize(block, 2, true));
    EXPECT_EQ(0xFFFFFFFF, block.palette[0]);
    EXPECT_EQ(0xFF000000, block.palette[1]);
    EXPECT_EQ(c.indices, std::vector<std::uint8_t>(block.pixels, block.pixels + 4));
  }
}

TEST(QuantizeByHand, AllGreysNeedNoTree) {
  RasterBlock block;
  MakeRow({0x0000FF, 0x00FF00, 0xFF0000, 0xFFFFFF}, block);
  block.grayscale = 1;
  EXPECT_EQ(256U, Quantize(block, 256, true));
  EXPECT_EQ(std::vector<std::uint8_t>({76, 149, 28, 255}), std::vector<std::uint8_t>(block.pixels, block.pixels + 4));
  EXPECT_EQ(0xFF4C4C4C, block.palette[76]);
}

#ifndef __SANITIZE_ADDRESS__  // which needs more memory than this allows
TEST(QuantizeDeathTest, NoMemoryForNodesEndsTheProgram) {
  RasterBlock block;
  color_rasters::Make({24, 600, 500, Texture::kNoise}, block);
  block.treeDepth = 8;
  const auto reduce = [&block] {
    std::size_t pages = 0;
    std::FILE* status = std::fopen("/proc/self/statm", "r");
    if (status == nullptr || std::fscanf(status, "%zu", &pages) != 1) std::exit(2);
    std::fclose(status);
    const rlimit limit = {pages * 4096 + (8U << 20), RLIM_INFINITY};
    if (setrlimit(RLIMIT_AS, &limit) != 0) std::exit(2);
    Quantize(block, 256, true);
  };
  EXPECT_EXIT(reduce(), testing::ExitedWithCode(1), "^Unable to quantize image, Memory allocation failed\n$");
}
#endif

TEST(QuantizeByHand, RefusesAndLeavesTheBlock) {
  RasterBlock block;
  MakeRow({0x010203}, block);
  const std::uint8_t* pixels = block.pixels;
  EXPECT_EQ(kQuantizeFailed, Quantize(block, 0, true));
  for (const std::int32_t bits : {-1, 0, 1, 16}) {
    block.bits = bits;
    EXPECT_EQ(kQuantizeFailed, Quantize(block, 16, true));
    EXPECT_EQ(bits, block.bits);
  }
  block.bits = 8;  // already indexed: only 16 and 2 colours can be asked for
  EXPECT_EQ(kQuantizeFailed, Quantize(block, 256, true));
  EXPECT_EQ(kQuantizeFailed, Quantize(block, 5, true));
  block.bits = 4;
  EXPECT_EQ(kQuantizeFailed, Quantize(block, 16, true));
  EXPECT_EQ(pixels, block.pixels);
  block.bits = 24;
  block.height = 0;
  EXPECT_EQ(kQuantizeFailed, Quantize(block, 16, true));
}

// Of a source with indices 0 to 3 only the dark ones become black: the mean of the bytes, cut, is below 127.
TEST(QuantizeByHand, IndicesToBlackAndWhite) {
  for (const std::int32_t bits : {4, 8}) {
    RasterBlock block;
    color_rasters::Make({bits, 4, 1}, block);
    const std::uint8_t nibbles[] = {0x01, 0x23};
    const std::uint8_t bytes[] = {0, 1, 2, 3};
    std::copy_n(bits == 4 ? nibbles : bytes, bits == 4 ? 2 : 4, block.pixels);
    block.palette[0] = 0x7E7F7F;  // a sum of 380
    block.palette[1] = 0x7F7F7F;  // 381
    block.palette[2] = 0x000000;
    block.palette[3] = 0xFF00FF;
    block.ditherOnReduce = 0;
    block.grayscale = 1;
    EXPECT_EQ(2U, Quantize(block, 2, true));
    EXPECT_EQ(0xFFFFFFFF, block.palette[0]);
    EXPECT_EQ(0xFF000000, block.palette[1]);
    EXPECT_EQ(std::vector<std::uint8_t>({1, 0, 1, 0}), std::vector<std::uint8_t>(block.pixels, block.pixels + 4));
  }
}

TEST(QuantizeByHand, ForeignPixelsAreNotFreed) {
  std::vector<std::uint8_t> foreign(12, 7);
  RasterBlock block;
  block.bits = 24;
  block.width = 4;
  block.height = 1;
  block.owned = 0;
  block.pixels = foreign.data();
  EXPECT_EQ(1U, Quantize(block, 16, true));
  EXPECT_NE(foreign.data(), block.pixels);
  EXPECT_EQ(1, block.owned);
  EXPECT_EQ(7, foreign[11]);
}

TEST(QuantizeLikePlain, SmallRasters) {
  std::uint32_t seed = 0;
  for (const std::int32_t bits : {24, 32}) {
    for (const Texture texture : {Texture::kNoise, Texture::kEdges, Texture::kFew, Texture::kPhoto}) {
      for (std::int32_t size = 1; size <= 70; size += 1 + size / 6) {
        const Recipe recipe = {bits, size, 71 - size, texture, 1 + seed * 7 % 300, ++seed};
        for (const std::uint32_t colors : {1U, 2U, 5U, 16U, 17U, 64U, 65U, 255U, 300U}) {
          ExpectLikePlain(recipe, {colors, seed % 2 == 0, colors % 3 == 0, seed % 3 == 0, 0});
        }
      }
    }
  }
}

TEST(QuantizeLikePlain, Depths) {
  for (std::uint32_t depth = 0; depth <= 9; ++depth) {
    for (const std::uint32_t colors : {1U, 2U, 30U, 256U}) {
      for (const bool dither : {false, true}) {
        ExpectLikePlain({24, 61, 37, Texture::kEdges, 0, depth + 5}, {colors, dither, colors == 2, true, depth});
        ExpectLikePlain({32, 160, 130, Texture::kPhoto, 0, depth}, {colors, dither, colors == 2, true, depth});
      }
    }
  }
}

// Large enough for cells, and partly for tables of cells.
TEST(QuantizeLikePlain, LargerRasters) {
  std::uint32_t seed = 100;
  for (const std::int32_t bits : {24, 32}) {
    for (const Texture texture : {Texture::kNoise, Texture::kEdges, Texture::kFew, Texture::kPhoto}) {
      for (const std::uint32_t colors : {1U, 2U, 4U, 7U, 16U, 63U, 128U, 256U}) {
        const Recipe recipe = {bits, 301 + static_cast<std::int32_t>(seed % 4), 177, texture, seed % 40 * 13 + 1, seed};
        ExpectLikePlain(recipe, {colors, false, false, seed % 2 == 0, 0});
        ExpectLikePlain(recipe, {colors, true, colors == 2, true, 0});
        ++seed;
      }
    }
  }
}

// Many pixels in few cells: sums pass what a packed word holds, cells get tables.
TEST(QuantizeLikePlain, CrowdedCells) {
  for (const std::uint32_t spread : {1U, 3U, 9U, 20U}) {
    const Recipe recipe = {32, 700, 300, Texture::kFew, spread * spread, spread};
    for (const std::uint32_t colors : {2U, 16U, 256U}) ExpectLikePlain(recipe, {colors, false, false, true, 0});
  }
  // All within two cells a channel, at the dark end, whose cells hold nine values a channel.
  for (const std::uint32_t colors : {3U, 4U, 12U, 256U}) {
    RasterBlock block, plainBlock;
    const Recipe recipe = {24, 400, 200, Texture::kNoise, 0, colors};
    for (RasterBlock* one : {&block, &plainBlock}) {
      Make(recipe, *one);
      one->ditherOnReduce = 0;
      for (std::size_t i = 0; i < one->Stride() * 200; ++i)
        one->pixels[i] = static_cast<std::uint8_t>(one->pixels[i] % 14);
    }
    EXPECT_EQ(plain::Quantize(plainBlock, colors, true), Quantize(block, colors, true));
    EXPECT_EQ(0, std::memcmp(block.palette, plainBlock.palette, sizeof(block.palette)));
    EXPECT_EQ(0, std::memcmp(block.pixels, plainBlock.pixels, block.Stride() * 200));
  }
}

// More nodes than a tree may have: it loses its deepest level, once or twice, on the way.
TEST(QuantizeLikePlain, NodeLimit) {
  const Recipe recipe = {24, 500, 400, Texture::kNoise, 0, 9};
  for (const std::uint32_t depth : {6U, 7U, 8U}) {
    ExpectLikePlain(recipe, {200, false, false, true, depth});
  }
}

TEST(QuantizeLikePlain, IndexedSources) {
  std::uint32_t seed = 1000;
  for (const std::int32_t bits : {4, 8}) {
    for (const Texture texture : {Texture::kNoise, Texture::kEdges}) {
      for (const std::uint32_t used : {1U, 2U, 15U, 16U, 17U, 40U, 256U}) {
        for (const std::uint32_t colors : {1U, 2U, 3U, 9U, 16U, 17U}) {
          ++seed;
          const Recipe recipe = {bits,         static_cast<std::int32_t>(1 + seed % 37), 23, texture, used, seed,
                                 seed % 2 == 0};
          ExpectLikePlain(recipe, {colors, seed % 3 == 0, seed % 5 == 0, seed % 4 < 2, 0});
          ExpectLikePlain(recipe, {colors, seed % 3 != 0, seed % 5 == 0, seed % 4 < 2, 0});
        }
      }
    }
  }
}

TEST(QuantizeReports, LikePlain) {
  struct Case {
    std::int32_t bits, width, height;
    bool grayscale;
  };
  // One row that is wider than the pixels between two reports; sizes on both sides of the least that reports; greys.
  const Case cases[] = {{24, 139383, 1, false}, {32, 139383, 1, false}, {24, 89999, 1, false}, {24, 700, 300, false},
                        {32, 700, 300, false},  {24, 700, 300, true},   {32, 20, 10, true},    {24, 3, 60000, false}};
  for (const Case& c : cases) {
    for (const Texture texture : {Texture::kPhoto, Texture::kFew, Texture::kNoise}) {
      Recorder recorder;
      ExpectLikePlain({c.bits, c.width, c.height, texture, 20, 3}, {256, false, c.grayscale, true, 0, &recorder});
    }
  }
}

TEST(QuantizeReports, SmallRastersSendTheMarksAlone) {
  Recorder recorder;
  ExpectLikePlain({24, 89999, 1, Texture::kNoise, 0, 3}, {16, false, false, true, 0, &recorder});
  const std::vector<Recorder::Report> marks = {{100, -1, "Quantize..."}, {100, -2, "Quantize..."}};
  EXPECT_TRUE(recorder.reports == marks);
}

TEST(QuantizeReports, AStopAnswerLeavesTheBlock) {
  for (const bool grayscale : {false, true}) {
    for (std::size_t stopAt = 0; stopAt < 60; ++stopAt) {
      Recorder recorder;
      recorder.stopAt = stopAt;
      const Recipe recipe = {24, 1000, 300, Texture::kPhoto, 0, 3};
      const std::uint32_t count = ExpectLikePlain(recipe, {256, false, grayscale, true, 0, &recorder});
      EXPECT_EQ(-2, recorder.reports.back().current);
      // Answers to the two marks don't count.
      EXPECT_EQ(stopAt == 0 || stopAt >= recorder.reports.size() - 1, count != kQuantizeFailed) << stopAt;
      if (stopAt >= recorder.reports.size()) break;
    }
  }
}

}  // namespace
