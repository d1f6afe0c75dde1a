#include "glib/format/depth_conversion.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "glib/color/quantize.h"
#include "glib/format/metafile_pages.h"
#include "glib/module_api/progress.h"
#include "glib/pixel/depth_rows.h"
#include "platform/pages.h"

namespace glib {
namespace {

constexpr std::uint32_t kBlackAndWhite[2] = {0xFF000000U, 0xFFFFFFFFU};

using platform::OwnedPages;

OwnedPages NewPages(std::size_t bytes) {
  return OwnedPages(static_cast<std::uint8_t*>(platform::AllocateUninitialisedPages(bytes)));
}

// The reports of a conversion by rows; small rasters and blocks without a callback send none.
class ConversionReports {
 public:
  explicit ConversionReports(const RasterBlock& block) : callback_(block.callback) {
    const auto width = static_cast<std::uint32_t>(block.width);
    const auto height = static_cast<std::uint32_t>(block.height);
    rows_ = callback_ == nullptr ? 0 : RowsPerReport(width, height);
    if (rows_ == 0) return;
    info_.total = height;
    info_.userValue = block.userValue;
    info_.text = "prepare...";
    Send(kStageBegins);
  }

  // False when the callback asks to stop in front of this row.
  bool Continue(std::int32_t row) {
    return rows_ == 0 || static_cast<std::uint32_t>(row) % rows_ != 0 || Send(row + 1);
  }

  void End() {
    if (rows_ != 0) Send(kStageEnds);
  }

 private:
  bool Send(std::int32_t current) {
    info_.current = current;
    return callback_(&info_) != 0;
  }

  ProgressCallback callback_;
  std::uint32_t rows_ = 0;
  ProgressInfo info_;
};

// The block then holds these pixels alone. Its settings and its ownership stay.
void StoreRaster(RasterBlock& block, std::uint8_t* pixels, std::int32_t width, std::int32_t height, std::int32_t bits) {
  block.Release();
  block.width = width;
  block.height = height;
  block.bits = bits;
  block.pixels = pixels;
}

// Calls convert(target row, source row) for all rows of the block. Rows after a stop are zero.
template <typename Convert>
void ConvertRows(const RasterBlock& block, std::uint8_t* target, std::size_t targetStride, ConversionReports& reports,
                 Convert convert) {
  const std::size_t sourceStride = block.Stride();
  const std::uint8_t* source = block.pixels;
  for (std::int32_t row = 0; row < block.height; ++row) {
    if (!reports.Continue(row)) {
      std::memset(target, 0, targetStride * static_cast<std::size_t>(block.height - row));
      return;
    }
    convert(target, source);
    target += targetStride;
    source += sourceStride;
  }
}

// A copy of the pixels at 32 bits, or null.
OwnedPages WidenedPixels(const RasterBlock& block, ConversionReports& reports) {
  OwnedPages target = NewPages(PaddedBytes(block.width, block.height, 32));
  if (target == nullptr) return target;
  const auto width = static_cast<std::size_t>(block.width);
  ConvertRows(block, target.get(), 4 * width, reports, [&](std::uint8_t* to, const std::uint8_t* from) {
    auto* words = reinterpret_cast<std::uint32_t*>(to);
    if (block.bits == 24) {
      WidenRow(words, from, width);
    } else {
      ExpandRow(words, from, block.palette, block.width, block.bits);
    }
  });
  return target;
}

bool ReduceColors(RasterBlock& block, bool aligned) {
  const std::uint32_t made = Quantize(block, std::min(block.paletteEntries, 256U), aligned);
  if (made == kQuantizeFailed) return false;
  block.paletteEntries = made;
  return true;
}

// Reduces a copy at 32 bits, so that the block is whole if the reduction fails.
bool ReduceThroughCopy(RasterBlock& block, bool aligned, double yDpi, double xDpi) {
  RasterBlock copy;
  std::copy_n(block.palette, 256, copy.palette);
  copy.ditherOnReduce = block.ditherOnReduce;
  copy.grayscale = block.grayscale;
  copy.treeDepth = block.treeDepth;
  copy.paletteEntries = block.paletteEntries;
  copy.callback = block.callback;
  copy.userValue = block.userValue;
  copy.width = block.width;
  copy.height = block.height;
  if (block.pixels == nullptr || block.bits == 32) {
    copy.pixels = RenderMetafile32(block.metafile, yDpi, xDpi, copy.width, copy.height);
  } else {
    ConversionReports reports(block);
    copy.pixels = WidenedPixels(block, reports).release();
    reports.End();
  }
  copy.bits = 32;
  if (copy.pixels == nullptr || !ReduceColors(copy, aligned)) return false;
  StoreRaster(block, copy.pixels, copy.width, copy.height, copy.bits);
  copy.pixels = nullptr;
  std::copy_n(copy.palette, 256, block.palette);
  block.rowsAligned = copy.rowsAligned;
  block.paletteEntries = copy.paletteEntries;
  return true;
}

bool UnpackIndices(RasterBlock& block, bool aligned) {
  const auto width = static_cast<std::size_t>(block.width);
  const std::size_t stride = aligned ? PaddedStride(width, 8) : width;
  OwnedPages target = NewPages(RasterBytes(block.width, block.height, stride));
  if (target == nullptr) return false;
  ConversionReports reports(block);
  const std::size_t sourceStride = block.Stride();
  for (std::int32_t row = 0; row < block.height; ++row) {
    if (!reports.Continue(row)) {
      reports.End();
      return false;
    }
    std::uint8_t* to = target.get() + stride * static_cast<std::size_t>(row);
    UnpackRow(to, block.pixels + sourceStride * static_cast<std::size_t>(row), width, block.bits);
    std::memset(to + width, 0, stride - width);
  }
  if (block.bits < 8) block.paletteEntries = block.bits == 1 ? 2 : 16;
  StoreRaster(block, target.release(), block.width, block.height, 8);
  block.rowsAligned = aligned ? 1 : 0;
  reports.End();
  return true;
}

}  // namespace

void SetPixels32(RasterBlock& block, std::uint8_t* pixels, std::int32_t width, std::int32_t height, bool copy) {
  if (!copy) return StoreRaster(block, pixels, width, height, 32);
  const std::size_t bytes = PaddedBytes(width, height, 32);
  StoreRaster(block, nullptr, width, height, 32);
  block.pixels = NewPages(bytes).release();
  if (block.pixels != nullptr) std::memcpy(block.pixels, pixels, bytes);
}

void ExpandRow(std::uint32_t* target, const std::uint8_t* source, const std::uint32_t* palette, std::int32_t width,
               std::int32_t bits) {
  const auto count = static_cast<std::size_t>(std::max(width, 0));
  if (bits == 8) {
    ExpandBytes(target, source, palette, count);
  } else if (bits == 4) {
    ExpandNibbles(target, source, palette, count);
  } else {
    ExpandBits(target, source, palette == nullptr ? kBlackAndWhite : palette, count);
  }
}

bool ToDepth32(RasterBlock& block, double yDpi, double xDpi) {
  if (block.pixels == nullptr || block.bits == 32) {
    if (block.metafile == nullptr) return true;
    std::int32_t width = block.width;
    std::int32_t height = block.height;
    std::uint8_t* pixels = RenderMetafile32(block.metafile, yDpi, xDpi, width, height);
    if (pixels == nullptr) return false;
    StoreRaster(block, pixels, width, height, 32);
    return true;
  }
  ConversionReports reports(block);
  OwnedPages pixels = WidenedPixels(block, reports);
  const bool done = pixels != nullptr;
  if (done) StoreRaster(block, pixels.release(), block.width, block.height, 32);
  reports.End();
  return done;
}

bool ToDepth24(RasterBlock& block, double yDpi, double xDpi, std::uint32_t background) {
  if (block.pixels == nullptr || block.bits == 24) {
    if (block.metafile == nullptr) return true;
    std::int32_t width = block.width;
    std::int32_t height = block.height;
    std::uint8_t* pixels = RenderMetafile(block.metafile, 24, yDpi, xDpi, width, height, background);
    if (pixels == nullptr) return false;
    StoreRaster(block, pixels, width, height, 24);
    return true;
  }
  const auto width = static_cast<std::size_t>(block.width);
  OwnedPages target = NewPages(PaddedBytes(block.width, block.height, 24));
  if (target == nullptr) return false;
  const std::size_t stride = PaddedStride(width, 24);
  std::vector<std::uint32_t> words(block.bits == 32 ? 0 : width);
  ConversionReports reports(block);
  ConvertRows(block, target.get(), stride, reports, [&](std::uint8_t* to, const std::uint8_t* from) {
    if (block.bits == 32) {
      NarrowRow(to, reinterpret_cast<const std::uint32_t*>(from), width);
    } else {
      ExpandRow(words.data(), from, block.palette, block.width, block.bits);
      NarrowRow(to, words.data(), width);
    }
    std::memset(to + 3 * width, 0, stride - 3 * width);
  });
  StoreRaster(block, target.release(), block.width, block.height, 24);
  reports.End();
  return true;
}

bool ToDepth8(RasterBlock& block, bool aligned, double yDpi, double xDpi) {
  if (block.pixels == nullptr && block.metafile == nullptr) return false;
  const bool indexed = block.bits == 8;
  if (indexed && block.paletteEntries == 256 && (block.rowsAligned != 0) == aligned) return true;
  if (block.metafile != nullptr || (indexed && block.paletteEntries < 256)) {
    return ReduceThroughCopy(block, aligned, yDpi, xDpi);
  }
  return block.bits > 8 ? ReduceColors(block, aligned) : UnpackIndices(block, aligned);
}

}  // namespace glib
