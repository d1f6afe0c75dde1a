#include "glib/pixel/mirror.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>

#include "glib/raster/raster_block.h"

namespace glib {
namespace {

void SwapRows(std::uint8_t* pixels, std::size_t stride, std::size_t height) {
  for (std::size_t y = 0; y < height / 2; ++y) {
    std::uint8_t* upper = pixels + y * stride;
    std::swap_ranges(upper, upper + stride, pixels + (height - 1 - y) * stride);
  }
}

void ReverseTriples(std::uint8_t* row, std::size_t width) {
  std::uint8_t* left = row;
  std::uint8_t* right = row + 3 * width;
  for (std::size_t i = 0; i < width / 2; ++i) {
    right -= 3;
    std::swap_ranges(left, left + 3, right);
    left += 3;
  }
}

void ReverseRow(std::uint8_t* row, std::int32_t bits, std::size_t width) {
  if (bits == 32) {
    auto* words = reinterpret_cast<std::uint32_t*>(row);
    std::reverse(words, words + width);
  } else if (bits == 24) {
    ReverseTriples(row, width);
  } else {
    std::reverse(row, row + width);
  }
}

// One index out of and into a row of 1 or 4 bits.
std::uint32_t IndexAt(const std::uint8_t* row, std::size_t x, std::size_t bits) {
  const std::size_t bit = x * bits;
  return row[bit / 8] >> (8 - bits - bit % 8) & ((1U << bits) - 1);
}

void PutIndex(std::uint8_t* row, std::size_t x, std::size_t bits, std::uint32_t index) {
  const std::size_t bit = x * bits;
  row[bit / 8] = static_cast<std::uint8_t>(row[bit / 8] | index << (8 - bits - bit % 8));
}

bool ReversePackedRows(std::uint8_t* pixels, std::size_t stride, std::size_t bits, std::size_t width,
                       std::size_t height) {
  const std::unique_ptr<std::uint8_t[]> scratch(new (std::nothrow) std::uint8_t[stride]);
  if (scratch == nullptr) return false;
  for (std::size_t y = 0; y < height; ++y) {
    std::uint8_t* row = pixels + y * stride;
    std::fill_n(scratch.get(), stride, std::uint8_t{0});
    for (std::size_t x = 0; x < width; ++x) PutIndex(scratch.get(), x, bits, IndexAt(row, width - 1 - x, bits));
    std::memcpy(row, scratch.get(), stride);
  }
  return true;
}

}  // namespace

bool MirrorRaster(std::uint8_t* pixels, std::int32_t bits, bool rowsAligned, std::int32_t width, std::int32_t height,
                  bool horizontal, bool vertical) {
  const bool packed = bits == 1 || bits == 4;
  if (!packed && bits != 8 && bits != 24 && bits != 32) return false;
  if (pixels == nullptr || width < 1 || height < 1 || (!horizontal && !vertical)) return false;
  const auto w = static_cast<std::size_t>(width);
  const auto h = static_cast<std::size_t>(height);
  const auto depth = static_cast<std::size_t>(bits);
  const std::size_t stride = rowsAligned ? PaddedStride(w, depth) : PackedStride(w, depth);
  if (vertical && !packed) {
    for (std::size_t y = 0; y < h; ++y) ReverseRow(pixels + y * stride, bits, w);
  }
  if (horizontal) {
    SwapRows(pixels, stride, h);
  } else if (packed) {
    return ReversePackedRows(pixels, stride, depth, w, h);
  }
  return true;
}

}  // namespace glib
