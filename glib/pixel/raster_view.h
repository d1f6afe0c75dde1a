#ifndef GLIB_PIXEL_RASTER_VIEW_H_
#define GLIB_PIXEL_RASTER_VIEW_H_

#include <cstddef>
#include <cstdint>

#include "glib/raster/raster_block.h"

namespace glib {

// A raster that a kernel reads and doesn't own. Rows stand top row first, in the layouts of RasterBlock.
struct RasterView {
  const std::uint8_t* pixels = nullptr;
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::int32_t bits = 0;
  const std::uint32_t* palette = nullptr;  // 256 words; used at 8 bits and less
  bool rowsAligned = true;                 // false: rows of 8 bits and less are padded to whole bytes only

  std::size_t Stride() const {
    const auto w = static_cast<std::size_t>(width);
    const auto depth = static_cast<std::size_t>(bits);
    return bits <= 8 && !rowsAligned ? PackedStride(w, depth) : PaddedStride(w, depth);
  }
  const std::uint8_t* Row(std::int32_t y) const { return pixels + static_cast<std::size_t>(y) * Stride(); }
};

inline RasterView ViewOf(const RasterBlock& block) {
  return {block.pixels, block.width, block.height, block.bits, block.palette, block.rowsAligned != 0};
}

}  // namespace glib

#endif  // GLIB_PIXEL_RASTER_VIEW_H_
