#include "glib/color/reduce_indexed.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "glib/color/color_tree.h"
#include "glib/color/grey_value.h"
#include "glib/color/nearest_entry.h"
#include "glib/color/palette_diffusion.h"
#include "glib/raster/raster_block.h"

namespace glib {
namespace {

constexpr std::uint32_t kFewColors = 16;

using IndexTable = std::array<std::uint8_t, 256>;

struct IndexedSource {
  const std::uint8_t* pixels;
  std::uint32_t width;
  std::uint32_t height;
  const std::uint32_t* palette;
  std::uint32_t bits;
  bool aligned;

  std::size_t Stride() const { return aligned ? PaddedStride(width, bits) : PackedStride(width, bits); }
};

void Translate(const IndexedSource& source, const IndexTable& table, std::uint8_t* dest, std::size_t destStride) {
  for (std::uint32_t y = 0; y < source.height; ++y, dest += destStride) {
    const std::uint8_t* row = source.pixels + source.Stride() * y;
    for (std::uint32_t x = 0; x < source.width; ++x) {
      const std::uint32_t index = source.bits == 8 ? row[x] : x % 2 == 0 ? row[x / 2] >> 4U : row[x / 2] & 15U;
      dest[x] = table[index];
    }
  }
}

bool Dither(const IndexedSource& source, std::uint32_t count, std::uint8_t* dest, const std::uint32_t* palette,
            bool destAligned) {
  DitherTarget target{dest, {}, static_cast<std::int32_t>(count), destAligned};
  std::copy_n(palette, 256, target.palette);
  const auto dither = source.bits == 8 ? &DitherTarget::DitherIndexed8 : &DitherTarget::DitherIndexed4;
  return (target.*dither)(source.pixels, source.width, source.height, source.palette, source.aligned, nullptr, 0);
}

// The colours that the source uses, in the order of their indices.
std::uint32_t CollectUsed(const IndexedSource& source, std::uint32_t* colors) {
  std::array<bool, 256> used{};
  for (std::uint32_t y = 0; y < source.height; ++y) {
    const std::uint8_t* row = source.pixels + source.Stride() * y;
    for (std::uint32_t x = 0; x < source.width; ++x) used[row[x]] = true;
  }
  std::uint32_t count = 0;
  for (std::uint32_t i = 0; i < 256; ++i) {
    if (used[i]) colors[count++] = source.palette[i];
  }
  return count;
}

// The deepest tree over the colours themselves, each counted once. 0: no memory.
std::uint32_t MergeColors(const std::uint32_t* colors, std::uint32_t count, std::uint32_t* palette) {
  constexpr std::uint32_t kDepth = 8;
  const TreeSource image = {reinterpret_cast<const std::uint8_t*>(colors), count, 1, 4, std::size_t{count} * 4};
  std::uint32_t scratch[256] = {};
  std::uint8_t indices[256];
  ColorTree tree(image, scratch);
  tree.Init(kFewColors, kDepth);
  if (!tree.Classify() || !tree.Reduce(kFewColors)) return 0;
  tree.Assign(kFewColors, false, false, indices, sizeof(indices));
  std::copy_n(scratch, tree.colors, palette);
  return tree.colors;
}

}  // namespace

bool ReduceIndexed(const std::uint8_t* source, std::uint32_t width, std::uint32_t height,
                   const std::uint32_t* sourcePalette, std::uint32_t sourceBits, std::uint32_t targetBits,
                   bool sourceAligned, bool grayscale, bool dither, std::uint8_t* destination,
                   std::uint32_t* destPalette, bool destAligned) {
  const bool toBits = targetBits == 1 && (sourceBits == 8 || sourceBits == 4);
  const bool toNibbles = targetBits == 4 && sourceBits == 8;
  if (!toBits && !toNibbles) return false;
  const IndexedSource image = {source, width, height, sourcePalette, sourceBits, sourceAligned};
  const std::uint32_t used = sourceBits == 8 ? 256 : kFewColors;
  const std::size_t destStride = destAligned ? PaddedStride(width, 8) : width;
  IndexTable table{};
  std::fill_n(destPalette, 256, kOpaqueBlack);

  if (toBits) {
    destPalette[0] = kOpaqueWhite;
    if (dither && Dither(image, 2, destination, destPalette, destAligned)) return true;
    for (std::uint32_t i = 0; i < used; ++i) {
      const std::uint32_t word = sourcePalette[i];
      table[i] = ((word & 255) + (word >> 8 & 255) + (word >> 16 & 255)) / 3 < 127 ? 1 : 0;
    }
    Translate(image, table, destination, destStride);
    return true;
  }

  std::uint32_t colors[256];
  std::uint32_t count = CollectUsed(image, colors);
  if (count > kFewColors) {
    count = MergeColors(colors, count, destPalette);
  } else {
    std::copy_n(colors, count, destPalette);
  }
  if (count == 0) return false;
  if (!dither || !Dither(image, count, destination, destPalette, destAligned)) {
    for (std::uint32_t i = 0; i < used; ++i) {
      const std::uint32_t word = sourcePalette[i];
      table[i] = static_cast<std::uint8_t>(NearestEntryPlain(destPalette, count, static_cast<std::int32_t>(word & 255),
                                                             static_cast<std::int32_t>(word >> 8 & 255),
                                                             static_cast<std::int32_t>(word >> 16 & 255)));
    }
    Translate(image, table, destination, destStride);
  }
  if (grayscale) std::transform(destPalette, destPalette + kFewColors, destPalette, ToGrey);
  return true;
}

}  // namespace glib
