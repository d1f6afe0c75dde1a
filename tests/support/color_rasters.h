#ifndef TESTS_SUPPORT_COLOR_RASTERS_H_
#define TESTS_SUPPORT_COLOR_RASTERS_H_

#include <cstdint>

#include "glib/raster/raster_block.h"

// Rasters for colour reduction, the same for the same arguments on every machine.
namespace color_rasters {

enum class Texture {
  kNoise,  // any colour
  kEdges,  // channels on and beside the boundaries of the cells of a colour tree, 0 and 255 included
  kFew,    // `colors` different colours, in runs
  kPhoto,  // soft light and shade with some grain
};

struct Recipe {
  std::int32_t bits = 24;
  std::int32_t width = 1;
  std::int32_t height = 1;
  Texture texture = Texture::kNoise;
  std::uint32_t colors = 256;  // for kFew, and for the indices of 4 and 8 bits
  std::uint32_t seed = 1;
  bool aligned = true;
};

// Fills an empty block. Indexed blocks get a palette of the texture and random indices; the fourth byte of 32-bit
// pixels, palette entries and the padding of rows are noise.
void Make(const Recipe& recipe, glib::RasterBlock& block);

}  // namespace color_rasters

#endif  // TESTS_SUPPORT_COLOR_RASTERS_H_
