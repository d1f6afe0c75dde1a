#include "glib/color/candidate_lists.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace glib {

CandidateLists::CandidateLists(std::span<const std::uint32_t> colors, std::uint32_t firstIndex, ColorMeasure measure)
    : firstIndex_(firstIndex), all_(colors.size()), lists_(std::size_t{1} << 3 * kBits) {
  const ColorSpace space(measure);
  for (const std::uint32_t color : colors) entries_.push_back(space.PlaceOf(FineOf(color)));
  for (std::uint32_t level = 0; level < 256; ++level) {
    const Place place = space.PlaceOf(FineOf(level * 0x010101U));
    red_[level] = PairOf(place[0], 0);
    green_[level] = PairOf(0, place[1]);
    blue_[level] = place[2];
  }
  std::iota(all_.begin(), all_.end(), std::uint8_t{0});
  for (unsigned bits = kCoarsestBits; bits < kBits; ++bits) {
    coarse_[bits - kCoarsestBits].resize(std::size_t{1} << 3 * bits);
  }
}

CandidateLists::Cube CandidateLists::CornersOf(std::uint32_t cube, unsigned bits) const {
  const auto level = [&](unsigned channel) { return cube >> (2 - channel) * bits & ((1U << bits) - 1); };
  const unsigned shift = 8 - bits;
  const auto first = [&](unsigned channel) { return level(channel) << shift; };
  const auto last = [&](unsigned channel) { return ((level(channel) + 1) << shift) - 1; };
  const auto place = [&](std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
    return Place{static_cast<std::int16_t>(red_[red]), static_cast<std::int16_t>(green_[green] >> 16),
                 static_cast<std::int16_t>(blue_[blue])};
  };
  return {place(first(0), first(1), first(2)), place(last(0), last(1), last(2))};
}

// Those not farther from the nearest corner than some entry is from the farthest.
std::vector<std::uint8_t> CandidateLists::Rivals(std::span<const std::uint8_t> entries, const Cube& cube) const {
  std::array<std::int32_t, 256> nearest;
  std::int32_t bound = std::numeric_limits<std::int32_t>::max();
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const Place& entry = entries_[entries[i]];
    std::int32_t near = 0;
    std::int32_t far = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      const std::int32_t below = cube.low[k] - entry[k];
      const std::int32_t above = entry[k] - cube.high[k];
      const std::int32_t inner = std::max(0, std::max(below, above));
      const std::int32_t outer = std::max(-below, -above);
      near += inner * inner;
      far += outer * outer;
    }
    nearest[i] = near;
    bound = std::min(bound, far);
  }
  std::vector<std::uint8_t> rivals;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    if (nearest[i] <= bound) rivals.push_back(entries[i]);
  }
  return rivals;
}

// Drops entries that the one nearest to the middle beats everywhere in the cube. The difference of two squared
// distances is linear, so that one corner decides.
void CandidateLists::DropBeaten(const Cube& cube, std::vector<std::uint8_t>& entries) const {
  const auto toMiddle = [&](std::uint8_t entry) {
    std::int32_t sum = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      const std::int32_t twice = 2 * entries_[entry][k] - cube.low[k] - cube.high[k];
      sum += twice * twice;
    }
    return sum;
  };
  const std::uint8_t best = *std::min_element(
      entries.begin(), entries.end(), [&](std::uint8_t a, std::uint8_t b) { return toMiddle(a) < toMiddle(b); });
  const Place& winner = entries_[best];
  std::erase_if(entries, [&](std::uint8_t entry) {
    const Place& other = entries_[entry];
    std::int32_t most = 0;  // squared distance of the winner less that of the other, at the corner best for the other
    for (std::size_t k = 0; k < 3; ++k) {
      const std::int32_t corner = other[k] > winner[k] ? cube.high[k] : cube.low[k];
      most += (winner[k] - other[k]) * (winner[k] + other[k] - 2 * corner);
    }
    return most < 0;
  });
}

const std::vector<std::uint8_t>& CandidateLists::CoarseList(std::uint32_t cube, unsigned bits) {
  std::vector<std::uint8_t>& list = coarse_[bits - kCoarsestBits][cube];
  if (!list.empty()) return list;
  if (bits == kCoarsestBits) return list = Rivals(all_, CornersOf(cube, bits));
  const std::uint32_t mask = (1U << bits) - 1;
  const std::uint32_t around =
      (cube >> 2 * bits) >> 1 << 2 * (bits - 1) | (cube >> bits & mask) >> 1 << (bits - 1) | (cube & mask) >> 1;
  return list = Rivals(CoarseList(around, bits - 1), CornersOf(cube, bits));
}

void CandidateLists::MakeList(std::uint32_t cube) {
  const std::uint32_t around = cube >> 11 << 8 | (cube >> 6 & 15U) << 4 | (cube >> 1 & 15U);
  const Cube corners = CornersOf(cube, kBits);
  std::vector<std::uint8_t> entries = Rivals(CoarseList(around, kBits - 1), corners);
  DropBeaten(corners, entries);

  constexpr std::size_t kSize = CandidateGroup::kSize;
  const std::size_t first = groups_.size();
  const std::size_t count = (entries.size() + kSize - 1) / kSize;
  groups_.resize(first + count);
  for (std::size_t i = 0; i < count * kSize; ++i) {
    const std::uint8_t entry = entries[std::min(i, entries.size() - 1)];
    groups_[first + i / kSize].Set(i % kSize, entries_[entry], entry + firstIndex_);
  }
  lists_[cube] = {static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(count)};
}

}  // namespace glib
