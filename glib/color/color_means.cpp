#include "glib/color/color_means.h"

#include <algorithm>

#include "glib/color/color_groups.h"
#include "glib/color/nearest_candidates.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "glib/color/color_means.cpp"
#include "hwy/foreach_target.h"
//
#include "glib/color/nearest_candidates-inl.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace glib {
namespace HWY_NAMESPACE {

void NearestOfCells(const ColorCell* cells, std::size_t count, const CandidateGroup* groups, std::size_t groupCount,
                    std::uint8_t* indices) {
  for (std::size_t i = 0; i < count; ++i) {
    const Place& place = cells[i].place;
    indices[i] = NearestOf(groups, groupCount, PairOf(place[0], place[1]), place[2]);
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace glib
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace glib {

HWY_EXPORT(NearestOfCells);

namespace {

// For each cell the index of its nearest entry.
void AssignCells(std::span<const ColorCell> cells, const ColorSpace& space, std::span<const FineColor> entries,
                 std::uint8_t* indices) {
  constexpr std::size_t kSize = CandidateGroup::kSize;
  std::vector<CandidateGroup> groups((entries.size() + kSize - 1) / kSize);
  for (std::size_t i = 0; i < groups.size() * kSize; ++i) {
    const std::size_t entry = std::min(i, entries.size() - 1);
    groups[i / kSize].Set(i % kSize, space.PlaceOf(entries[entry]), static_cast<std::uint32_t>(entry));
  }
  HWY_DYNAMIC_DISPATCH(NearestOfCells)(cells.data(), cells.size(), groups.data(), groups.size(), indices);
}

}  // namespace

std::vector<std::uint64_t> MoveToMeans(std::span<const ColorCell> cells, const ColorSpace& space, int passes,
                                       std::vector<FineColor>& entries) {
  std::vector<std::uint8_t> nearest(cells.size());
  std::vector<ColorGroup> groups;
  for (int pass = 1; pass <= passes; ++pass) {
    AssignCells(cells, space, entries, nearest.data());
    groups.assign(entries.size(), {});
    for (std::size_t i = 0; i < cells.size(); ++i) groups[nearest[i]].Add(cells[i]);
    for (std::size_t i = 0; i < entries.size(); ++i) {
      if (groups[i].count == 0) continue;
      for (std::size_t k = 0; k < 3; ++k) {
        const auto mean = static_cast<std::int32_t>((groups[i].sum[k] + groups[i].count / 2) / groups[i].count);
        const std::int32_t way = mean - entries[i][k];
        const std::int32_t moved = entries[i][k] + (pass == passes ? way : way * 9 / 5);
        entries[i][k] = static_cast<std::uint16_t>(std::clamp<std::int32_t>(moved, 0, kFineMax));
      }
    }
  }
  std::vector<std::uint64_t> counts;
  for (const ColorGroup& group : groups) counts.push_back(static_cast<std::uint64_t>(group.count));
  return counts;
}

}  // namespace glib
#endif  // HWY_ONCE
