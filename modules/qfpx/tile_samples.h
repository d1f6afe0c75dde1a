#ifndef MODULES_QFPX_TILE_SAMPLES_H_
#define MODULES_QFPX_TILE_SAMPLES_H_

#include <cstdint>
#include <span>

#include "modules/qfpx/image_contents.h"

namespace qfpx {

struct TileSize {
  std::uint32_t width = 0;
  std::uint32_t height = 0;

  std::size_t Pixels() const { return std::size_t{width} * height; }
};

// One tile as its descriptor has it.
struct Tile {
  std::uint32_t compression = 0;
  std::uint32_t subtype = 0;  // of one colour: its samples; of a JPEG: how to read it
  std::span<const std::uint8_t> data;
};

// Decodes into `samples`, which has room for the tile: for each pixel the channels in the order of the contents. False:
// the tile is damaged, or in a form that is not supported.
bool ReadTile(const Tile& tile, const TileSize& size, const ImageContents& contents, const PropertySet& properties,
              std::span<std::uint8_t> samples);

}  // namespace qfpx

#endif  // MODULES_QFPX_TILE_SAMPLES_H_
