// Cutting a layer and enlarging its canvas: the raster gets another size, no pixel another value.

#include <algorithm>
#include <cstring>

#include "glib/model/layer.h"
#include "glib/model/slide.h"
#include "platform/pages.h"

namespace glib {
namespace {

// The bits behind the last pixel of a row become 0, or a wider canvas would show them.
void ClearUnusedBits(std::uint8_t* row, std::size_t count, std::size_t bits) {
  const std::size_t bytes = PackedStride(count, bits);
  const std::size_t unused = bytes * 8 - count * bits;
  row[bytes - 1] = static_cast<std::uint8_t>(row[bytes - 1] >> unused << unused);
}

// Row of `count` pixels out of a row of indices that doesn't begin at a byte: all bits move up by `shift`.
void CopyShifted(std::uint8_t* target, const std::uint8_t* source, std::size_t sourceBytes, std::size_t count,
                 std::size_t bits, unsigned shift) {
  const std::size_t bytes = PackedStride(count, bits);
  for (std::size_t i = 0; i < bytes; ++i) {
    const unsigned next = i + 1 < sourceBytes ? source[i + 1] : 0U;
    target[i] = static_cast<std::uint8_t>(unsigned{source[i]} << shift | next >> (8 - shift));
  }
}

// A block of the same depth and row padding as `raster`, its bytes not set; null without memory.
std::uint8_t* NewBlock(const RasterBlock& raster, std::int32_t width, std::int32_t height, std::size_t& stride) {
  const auto bits = static_cast<std::size_t>(raster.bits);
  const auto count = static_cast<std::size_t>(width);
  stride = raster.bits <= 8 && raster.rowsAligned == 0 ? PackedStride(count, bits) : PaddedStride(count, bits);
  return static_cast<std::uint8_t*>(platform::AllocateUninitialisedPages(RasterBytes(width, height, stride)));
}

void FillPixels24(std::uint8_t* row, std::size_t count, RGB32 colour) {
  for (std::size_t i = 0; i < count; ++i) {
    row[3 * i] = colour.blue;
    row[3 * i + 1] = colour.green;
    row[3 * i + 2] = colour.red;
  }
}

}  // namespace

bool Layer::CropLayer(const Rectangle& rectangle) {
  return CropLayer(rectangle.left, rectangle.top, rectangle.Width(), rectangle.Height());
}

bool Layer::CropLayer(std::int32_t newX, std::int32_t newY, std::int32_t width, std::int32_t height) {
  if (raster.metafile != nullptr && !EnsureRaster()) return false;
  if (raster.pixels == nullptr) return false;
  const std::int32_t left = std::max(newX, x);
  const std::int32_t top = std::max(newY, y);
  std::int64_t wide = width;
  std::int64_t high = height;
  // What a rectangle has before a displaced layer is no part of the layer. At the slide's corner the size counts from
  // the corner.
  if (x != 0 || y != 0) {
    wide -= std::int64_t{left} - newX;
    high -= std::int64_t{top} - newY;
  }
  const std::int64_t column = std::int64_t{left} - x;
  const std::int64_t row = std::int64_t{top} - y;
  wide = std::min(wide, raster.width - column);
  high = std::min(high, raster.height - row);
  if (wide <= 0 || high <= 0) return false;
  if (wide == raster.width && high == raster.height) return false;

  const auto bits = static_cast<std::size_t>(raster.bits);
  const auto count = static_cast<std::size_t>(wide);
  const auto newWidth = static_cast<std::int32_t>(wide);
  const auto newHeight = static_cast<std::int32_t>(high);
  const std::size_t sourceStride = raster.Stride();
  std::size_t stride = 0;
  std::uint8_t* block = NewBlock(raster, newWidth, newHeight, stride);
  if (block == nullptr) return false;

  const std::size_t firstBit = static_cast<std::size_t>(column) * bits;
  const auto shift = static_cast<unsigned>(firstBit % 8);
  const std::size_t rowBytes = PackedStride(count, bits);
  const std::uint8_t* source = raster.pixels + sourceStride * static_cast<std::size_t>(row) + firstBit / 8;
  std::uint8_t* target = block;
  for (std::int32_t i = 0; i < newHeight; ++i) {
    if (shift == 0) {
      std::memcpy(target, source, rowBytes);
    } else {
      CopyShifted(target, source, sourceStride - firstBit / 8, count, bits, shift);
    }
    ClearUnusedBits(target, count, bits);
    std::memset(target + rowBytes, 0, stride - rowBytes);
    source += sourceStride;
    target += stride;
  }
  SetRaster(left, top, newWidth, newHeight, block, nullptr, raster.bits);
  return true;
}

bool Layer::ResizeCanvas(std::int32_t width, std::int32_t height) {
  if (width == 0 || height == 0) return false;
  if (raster.metafile != nullptr && raster.pixels == nullptr) {
    raster.width = width;
    raster.height = height;
    return true;
  }
  if (raster.pixels == nullptr || width < 0 || height < 0) return false;
  const auto count = static_cast<std::size_t>(width);
  const std::size_t oldStride = raster.Stride();
  std::size_t stride = 0;
  std::uint8_t* block = NewBlock(raster, width, height, stride);
  if (block == nullptr) return false;

  // Only what the old rows don't cover is filled; a 24-bit row is filled as a whole, as pixels and words don't meet.
  const RGB32 background = slide->background;
  const std::size_t kept = std::min(oldStride, stride);
  for (std::int32_t i = 0; i < height; ++i) {
    std::uint8_t* row = block + stride * static_cast<std::size_t>(i);
    const std::size_t copied = i < raster.height ? kept : 0;
    if (raster.bits == 32) {
      std::fill_n(reinterpret_cast<std::uint32_t*>(row + copied), (stride - copied) / 4, ToPixel(background));
    } else if (raster.bits == 24) {
      FillPixels24(row, count, background);
      std::memset(row + 3 * count, 0, stride - 3 * count);
    } else {
      std::memset(row + copied, 0, stride - copied);
    }
    if (copied != 0) std::memcpy(row, raster.pixels + oldStride * static_cast<std::size_t>(i), copied);
  }
  SetRaster(x, y, width, height, block, nullptr, raster.bits);
  return true;
}

}  // namespace glib
