#ifndef GLIB_RASTER_RASTER_BLOCK_H_
#define GLIB_RASTER_RASTER_BLOCK_H_

#include <cstddef>
#include <cstdint>

namespace platform {
class Metafile;
}

namespace glib {

struct ProgressInfo;

// Gets a record that is valid during the call; an answer of 0 asks to stop where the operation says that it may.
using ProgressCallback = std::uint8_t (*)(ProgressInfo*);

using MetafileHandle = platform::Metafile*;

// Bytes of a row that is padded to a multiple of 4 bytes.
constexpr std::size_t PaddedStride(std::size_t width, std::size_t bits) { return (width * bits + 31) / 32 * 4; }

// Bytes of a row that is padded to whole bytes only.
constexpr std::size_t PackedStride(std::size_t width, std::size_t bits) { return (width * bits + 7) / 8; }

// Bytes of a raster with rows of `stride` bytes; 0 when it has no pixels or needs more than 32 bits, which no
// allocation serves. Negative sizes have no pixels.
constexpr std::size_t RasterBytes(std::int32_t width, std::int32_t height, std::size_t stride) {
  if (width <= 0 || height <= 0 || stride == 0 || stride > 0xFFFFFFFFU) return 0;
  const std::size_t bytes = stride * static_cast<std::size_t>(height);
  return bytes > 0xFFFFFFFFU ? 0 : bytes;
}

// The same for padded rows of `bits` a pixel.
constexpr std::size_t PaddedBytes(std::int32_t width, std::int32_t height, std::int32_t bits) {
  if (width <= 0 || bits <= 0) return 0;
  return RasterBytes(width, height, PaddedStride(static_cast<std::size_t>(width), static_cast<std::size_t>(bits)));
}

// Pixels or a metafile, with palette and processing settings: what all pixel code works on. The members stand in the
// order in which layers and module pages have them.
//
// Rows are stored top row first. By `bits` a row holds: 32: words as ToPixel makes them, never padded; 24: bytes blue,
// green, red; 8: one palette index a byte; 4: palette indices, high half of a byte first; 1: palette indices, highest
// bit first. Rows below 32 bits are padded to 4 bytes, those of 8 bits and less only to whole bytes if `rowsAligned` is
// 0.
struct RasterBlock {
  RasterBlock() = default;
  RasterBlock(const RasterBlock&) = delete;
  RasterBlock& operator=(const RasterBlock&) = delete;
  ~RasterBlock() { Release(); }

  // Gives up pixels and metafile, which are freed if they are owned, and leaves the block empty (`bits` -1).
  void Release();

  // Makes this a block that holds `handle` alone, or a copy of it with `copy`. Sizes may be negative: the size of the
  // metafile's frame.
  void SetMetafile(MetafileHandle handle, std::int32_t newWidth, std::int32_t newHeight, bool copy);

  // Stride in bytes of the rows as `bits` and `rowsAligned` say.
  std::size_t Stride() const {
    const auto w = static_cast<std::size_t>(width);
    const auto depth = static_cast<std::size_t>(bits);
    return bits <= 8 && rowsAligned == 0 ? PackedStride(w, depth) : PaddedStride(w, depth);
  }

  std::int32_t bits = -1;  // -1 empty; 0 metafile only; 1, 4, 8, 24, 32 bits a pixel
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::uint8_t owned = 1;          // pixels and metafile are released with the block
  std::uint8_t* pixels = nullptr;  // from platform::AllocatePages
  MetafileHandle metafile = nullptr;
  std::uint32_t palette[256] = {};  // words as ToPixel makes them
  std::uint8_t ditherOnReduce = 1;  // a reduction to a palette diffuses its error
  std::uint8_t grayscale = 0;       // a reduction to a palette gives greys
  std::uint8_t rowsAligned = 1;
  std::uint32_t treeDepth = 0;  // of the colour tree of a reduction; 0 or 1: automatic
  std::uint32_t paletteEntries = 256;
  ProgressCallback callback = nullptr;  // for conversions of this block
  std::uintptr_t userValue = 0;
};

static_assert(offsetof(RasterBlock, bits) == 0 && offsetof(RasterBlock, width) == 4 &&
              offsetof(RasterBlock, height) == 8 && offsetof(RasterBlock, owned) == 12);

}  // namespace glib

#endif  // GLIB_RASTER_RASTER_BLOCK_H_
