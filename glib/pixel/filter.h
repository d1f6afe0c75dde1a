#ifndef GLIB_PIXEL_FILTER_H_
#define GLIB_PIXEL_FILTER_H_

#include <cstdint>

#include "gen/basic_string.h"
#include "glib/raster/raster_block.h"

namespace glib {

// The kernels of 3 by 3 weights.
enum class FilterKernel { kBlur, kSharpen, kEmboss };

// Filters over the neighbourhood of each pixel of a 32-bit raster, in place. The rows that are still needed are held
// aside, so that no pixel is made of changed ones.
struct RasterFilter {
  ProgressCallback callback = nullptr;
  std::uintptr_t userValue = 0;
  gen::basic_string<char> stage;  // goes before the reports' own text

  // Weighs the nine pixels of each neighbourhood. At an edge the missing neighbours are the pixel itself to the left
  // and right, the edge row above and below. Alpha is the mean of the nine, cut, with every kernel. False: less than 3
  // rows or columns, which changes nothing, or a stop answer, which leaves the rows done so far.
  bool ConvolveRaster(std::uint8_t* pixels, std::int32_t width, std::int32_t height, FilterKernel kernel) const;

  // Each pixel inside becomes the neighbour (itself among them) that stands at `rank`, 0 to 8, by brightness. Of
  // neighbours with that brightness it is the first in reading order. The outermost rows and columns stay. False after
  // a stop.
  bool RankRaster(std::uint8_t* pixels, std::int32_t width, std::int32_t height, std::uint32_t rank) const;
};

// What the sum of nine channel values becomes: the blur's mean, rounded, and the mean of alpha, cut. Exact for 0 to
// 2295.
constexpr std::uint32_t BlurMean(std::uint32_t sum) { return (2 * sum + 9) * 3641 >> 16; }
constexpr std::uint32_t AlphaMean(std::uint32_t sum) { return sum * 7282 >> 16; }

}  // namespace glib

#endif  // GLIB_PIXEL_FILTER_H_
