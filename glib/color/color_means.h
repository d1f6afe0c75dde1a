#ifndef GLIB_COLOR_COLOR_MEANS_H_
#define GLIB_COLOR_COLOR_MEANS_H_

#include <cstdint>
#include <span>
#include <vector>

#include "glib/color/color_samples.h"

namespace glib {

// Moves each entry towards the mean of the cells that are nearest to it, `passes` times: in all passes but the last
// past the mean, which gets there sooner. Entries without a cell stay. 1 to 256 entries, at least one pass. Gives how
// many pixels each entry had in the last pass.
std::vector<std::uint64_t> MoveToMeans(std::span<const ColorCell> cells, const ColorSpace& space, int passes,
                                       std::vector<FineColor>& entries);

}  // namespace glib

#endif  // GLIB_COLOR_COLOR_MEANS_H_
