#include "glib/color/quantize.h"

#include <algorithm>
#include <bit>
#include <cstddef>

#include "glib/color/color_tree.h"
#include "glib/color/grey_value.h"
#include "glib/color/reduce_indexed.h"
#include "glib/module_api/progress.h"
#include "platform/pages.h"

namespace glib {
namespace {

constexpr std::uint32_t kMostColors = 256;

// What the block gets if all goes well.
struct Result {
  std::uint8_t* pixels;
  std::size_t stride;
  std::uint32_t palette[256];  // begins as that of the block
};

// Reports through the block's callback. Once a report is answered with 0 the work is to stop.
class Reports {
 public:
  Reports(const RasterBlock& block, std::uint32_t total) : callback(block.callback) {
    info_.total = total;
    info_.userValue = block.userValue;
    info_.text = "Quantize...";
  }

  // For the marks, whose answers don't count.
  void Mark(std::int32_t mark) { Send(mark); }

  bool Position(std::int32_t current) {
    if (!Send(current)) stopped = true;
    return !stopped;
  }

  const ProgressCallback callback;
  bool stopped = false;

 private:
  bool Send(std::int32_t current) {
    info_.current = current;
    return callback == nullptr || callback(&info_) != 0;
  }

  ProgressInfo info_;
};

bool ReportTree(void* user, std::uint32_t, std::uint32_t value) {
  return static_cast<Reports*>(user)->Position(static_cast<std::int32_t>(value + 1));
}

std::uint32_t ReduceIndices(const RasterBlock& block, std::uint32_t colors, bool alignRows, Result& result) {
  if (block.bits != 4 && block.bits != 8) return kQuantizeFailed;
  const std::uint32_t targetBits = colors == 1 ? 1U : static_cast<std::uint32_t>(std::bit_width(colors - 1));
  const bool done =
      ReduceIndexed(block.pixels, static_cast<std::uint32_t>(block.width), static_cast<std::uint32_t>(block.height),
                    block.palette, static_cast<std::uint32_t>(block.bits), targetBits, block.rowsAligned != 0,
                    block.grayscale != 0, block.ditherOnReduce != 0, result.pixels, result.palette, alignRows);
  return done ? 1U << targetBits : kQuantizeFailed;
}

// All 256 greys, without a tree.
std::uint32_t MakeGreys(const RasterBlock& block, Result& result) {
  const auto width = static_cast<std::uint32_t>(block.width);
  const auto height = static_cast<std::uint32_t>(block.height);
  const std::uint32_t pixelBytes = static_cast<std::uint32_t>(block.bits) / 8;
  Reports reports(block, height);
  const std::uint32_t every = reports.callback == nullptr ? 0 : RowsPerReport(width, height);
  if (every != 0) reports.Mark(kStageBegins);
  for (std::uint32_t y = 0; y < height; ++y) {
    if (every != 0 && y % every == 0 && !reports.Position(static_cast<std::int32_t>(y))) break;
    const std::uint8_t* pixel = block.pixels + block.Stride() * y;
    std::uint8_t* out = result.pixels + result.stride * y;
    for (std::uint32_t x = 0; x < width; ++x, pixel += pixelBytes) {
      out[x] = static_cast<std::uint8_t>(GreyValue(pixel[0], pixel[1], pixel[2]));
    }
  }
  if (every != 0) reports.Mark(kStageEnds);
  for (std::uint32_t i = 0; i < 256; ++i) result.palette[i] = kOpaqueBlack | i * 0x010101;
  return reports.stopped ? kQuantizeFailed : kMostColors;
}

std::uint32_t ReduceColors(const RasterBlock& block, std::uint32_t colors, Result& result) {
  const TreeSource image = {block.pixels, static_cast<std::uint32_t>(block.width),
                            static_cast<std::uint32_t>(block.height), static_cast<std::uint32_t>(block.bits) / 8,
                            block.Stride()};
  Reports reports(block, 100);
  reports.Mark(kStageBegins);
  ColorTree tree(image, result.palette);
  if (reports.callback != nullptr) tree.SetProgress(ReportTree, &reports, ProgressSteps(image.width * image.height));
  tree.Init(colors, block.treeDepth);
  const bool reduced = tree.Classify() && tree.Reduce(colors);
  if (reduced) tree.Assign(colors, block.ditherOnReduce != 0, block.grayscale != 0, result.pixels, result.stride);
  reports.Mark(kStageEnds);
  if (!reduced || reports.stopped) return kQuantizeFailed;
  if (block.grayscale != 0) std::transform(result.palette, result.palette + tree.colors, result.palette, ToGrey);
  return tree.colors;
}

}  // namespace

std::uint32_t Quantize(RasterBlock& block, std::uint32_t colors, bool alignRows) {
  if (block.pixels == nullptr || block.width <= 0 || block.height <= 0 || colors == 0) return kQuantizeFailed;
  const auto width = static_cast<std::size_t>(block.width);
  const auto height = static_cast<std::size_t>(block.height);
  Result result{};
  result.stride = alignRows ? PaddedStride(width, 8) : width;
  result.pixels = static_cast<std::uint8_t*>(platform::AllocateUninitialisedPages(result.stride * height));
  if (result.pixels == nullptr) return kQuantizeFailed;
  for (std::size_t y = 0; y < height; ++y) {
    std::fill(result.pixels + result.stride * y + width, result.pixels + result.stride * (y + 1), std::uint8_t{0});
  }
  std::copy_n(block.palette, 256, result.palette);

  std::uint32_t count = kQuantizeFailed;
  if (block.bits < 24) {
    count = ReduceIndices(block, colors, alignRows, result);
  } else if (block.bits == 24 || block.bits == 32) {
    count = block.grayscale != 0 && colors == kMostColors ? MakeGreys(block, result)
                                                          : ReduceColors(block, std::min(colors, kMostColors), result);
  }
  if (count == kQuantizeFailed) {
    platform::FreePages(result.pixels);
    return kQuantizeFailed;
  }
  block.Release();
  block.bits = 8;
  block.owned = 1;
  block.pixels = result.pixels;
  block.rowsAligned = alignRows ? 1 : 0;
  std::copy_n(result.palette, 256, block.palette);
  return count;
}

}  // namespace glib
