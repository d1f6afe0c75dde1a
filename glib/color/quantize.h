#ifndef GLIB_COLOR_QUANTIZE_H_
#define GLIB_COLOR_QUANTIZE_H_

#include <cstdint>

#include "glib/raster/raster_block.h"

namespace glib {

inline constexpr std::uint32_t kQuantizeFailed = 0xFFFFFFFF;

// Turns a block of 4, 8, 24 or 32 bits into an 8-bit one with a palette of at most `colors` (at most 256) entries, by
// an adaptive colour tree. Gives the number of entries, or kQuantizeFailed (no memory, other depths, a stop answer),
// which leaves the block unchanged. `alignRows`: rows of the result are padded to 4 bytes. `ditherOnReduce`,
// `grayscale` and `treeDepth` of the block steer the work; reports go through its callback.
std::uint32_t Quantize(RasterBlock& block, std::uint32_t colors, bool alignRows);

}  // namespace glib

#endif  // GLIB_COLOR_QUANTIZE_H_
