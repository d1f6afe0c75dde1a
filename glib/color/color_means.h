#ifndef GLIB_COLOR_COLOR_MEANS_H_
#define GLIB_COLOR_COLOR_MEANS_H_

#include <cstdint>
#include <span>
#include <vector>

#include "glib/color/color_samples.h"

namespace glib {

// Moves each entry towards the mean of the cells that are nearest to it, `passes` times: in all passes but the last
// past the mean, which gets there sooner. Entries without a cell stay. At most 256 entries.
void MoveToMeans(std::span<const ColorCell> cells, const ColorSpace& space, int passes,
                 std::vector<FineColor>& entries);

// For each cell the index of its nearest entry.
void AssignCells(std::span<const ColorCell> cells, const ColorSpace& space, std::span<const FineColor> entries,
                 std::uint8_t* indices);

}  // namespace glib

#endif  // GLIB_COLOR_COLOR_MEANS_H_
