#ifndef GLIB_COLOR_COLOR_GROUPS_H_
#define GLIB_COLOR_COLOR_GROUPS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "glib/color/color_samples.h"

namespace glib {

// Cells that one entry of a palette stands for. Sums are weighted by the counts of the cells.
struct ColorGroup {
  std::int64_t count = 0;
  std::array<std::int64_t, 3> sum{};     // of the means
  std::array<std::int64_t, 3> places{};  // of the places

  void Add(const ColorCell& cell) {
    count += cell.count;
    for (std::size_t k = 0; k < 3; ++k) {
      sum[k] += std::int64_t{cell.count} * cell.mean[k];
      places[k] += std::int64_t{cell.count} * cell.place[k];
    }
  }
  void Add(const ColorGroup& other) {
    count += other.count;
    for (std::size_t k = 0; k < 3; ++k) {
      sum[k] += other.sum[k];
      places[k] += other.places[k];
    }
  }
};

// Splits the cells into at most `wanted` groups, always the one with the largest squared error, where the error falls
// most. Fewer groups: every place is a group of its own.
std::vector<ColorGroup> SplitCells(std::span<const ColorCell> cells, std::size_t wanted);

// Merges pairs, those first that add the least squared error, until `wanted` groups are left.
void MergeGroups(std::vector<ColorGroup>& groups, std::size_t wanted);

}  // namespace glib

#endif  // GLIB_COLOR_COLOR_GROUPS_H_
