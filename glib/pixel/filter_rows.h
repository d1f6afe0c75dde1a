#ifndef GLIB_PIXEL_FILTER_ROWS_H_
#define GLIB_PIXEL_FILTER_ROWS_H_

#include <cstddef>
#include <cstdint>

#include "glib/pixel/filter.h"

namespace glib {

// Kernels of the filters. A row is `width` words, at least 3; `out` overlaps none of the rows that are read.

// One row of a weighted filter, from the old rows above, at and below it.
void ConvolveRow(const std::uint32_t* upper, const std::uint32_t* middle, const std::uint32_t* lower, std::size_t width,
                 FilterKernel kernel, std::uint32_t* out);

// The same for a single pixel of that row.
std::uint32_t ConvolvePixel(const std::uint32_t* upper, const std::uint32_t* middle, const std::uint32_t* lower,
                            std::size_t width, std::size_t x, FilterKernel kernel);

// Brightness of each pixel: the sum of its colours, divided by 3 and cut.
void BrightnessRow(const std::uint32_t* row, std::size_t width, std::uint8_t* out);

// For the pixels 1 to `width` - 2 of a row, from the brightness of the old rows: which of the nine neighbours, 0 to 8
// in reading order, stands at `rank`, 0, 4 or 8. `scratch` has room for 3 x `width` bytes.
void RankRow(const std::uint8_t* upper, const std::uint8_t* middle, const std::uint8_t* lower, std::size_t width,
             std::uint32_t rank, std::uint8_t* scratch, std::uint8_t* out);

}  // namespace glib

#endif  // GLIB_PIXEL_FILTER_ROWS_H_
