#include "glib/color/nearest_entry.h"

#include <algorithm>
#include <cstdlib>

// Highway compiles this file once for each instruction set.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "glib/color/nearest_entry.cpp"
#include "hwy/foreach_target.h"
// After it.
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace glib {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

using Words = hn::ScalableTag<std::uint32_t>;
using Numbers = hn::RebindToSigned<Words>;

template <typename V>
V SquareOf(V v) {
  return hn::Mul(v, v);
}

// Unsigned arithmetic, which may wrap, with a signed compare at the end. Each lane keeps its first best entry; the
// lowest index among the best lanes is the first of all.
std::uint32_t NearestOfAll(const std::int32_t (*channels)[256], std::uint32_t count, std::int32_t c0, std::int32_t c1,
                           std::int32_t c2) {
  const Words words;
  const Numbers numbers;
  const auto v0 = hn::Set(numbers, c0);
  const auto v1 = hn::Set(numbers, c1);
  const auto v2 = hn::Set(numbers, c2);
  const auto distancesAt = [&](std::size_t i) {
    const auto d0 = SquareOf(hn::BitCast(words, hn::Sub(v0, hn::LoadU(numbers, channels[0] + i))));
    const auto d1 = SquareOf(hn::BitCast(words, hn::Sub(v1, hn::LoadU(numbers, channels[1] + i))));
    const auto d2 = SquareOf(hn::BitCast(words, hn::Sub(v2, hn::LoadU(numbers, channels[2] + i))));
    return hn::BitCast(numbers, hn::Add(hn::Add(d0, d1), d2));
  };
  const std::size_t lanes = hn::Lanes(numbers);
  auto best = distancesAt(0);
  auto index = hn::Iota(numbers, 0);
  auto bestIndex = index;
  const auto step = hn::Set(numbers, static_cast<std::int32_t>(lanes));
  for (std::size_t i = lanes; i < count; i += lanes) {
    index = hn::Add(index, step);
    const auto distances = distancesAt(i);
    const auto nearer = hn::Lt(distances, best);
    best = hn::IfThenElse(nearer, distances, best);
    bestIndex = hn::IfThenElse(nearer, index, bestIndex);
  }
  const auto isBest = hn::Eq(best, hn::MinOfLanes(numbers, best));
  const auto first = hn::MinOfLanes(numbers, hn::IfThenElse(isBest, bestIndex, hn::Set(numbers, 255)));
  return static_cast<std::uint32_t>(hn::GetLane(first));
}

// For each entry the least and the greatest squared distance to the values `low` to `low + 7` of each channel. Gives
// the least of the greatest.
std::int32_t DistancesToCell(const std::int32_t (*channels)[256], std::uint32_t count, const std::int32_t* low,
                             std::int32_t* least) {
  const Numbers numbers;
  const std::size_t lanes = hn::Lanes(numbers);
  auto bound = hn::Set(numbers, 0x7FFFFFFF);
  const auto zero = hn::Zero(numbers);
  for (std::size_t i = 0; i < count; i += lanes) {
    auto near = zero;
    auto far = zero;
    for (std::size_t channel = 0; channel < 3; ++channel) {
      const auto value = hn::LoadU(numbers, channels[channel] + i);
      const auto above = hn::Sub(value, hn::Set(numbers, low[channel]));
      const auto below = hn::Sub(hn::Set(numbers, low[channel] + 7), value);
      const auto outside = hn::Max(zero, hn::Max(hn::Neg(above), hn::Neg(below)));
      near = hn::Add(near, SquareOf(outside));
      far = hn::Add(far, SquareOf(hn::Max(above, below)));
    }
    hn::StoreU(near, numbers, least + i);
    bound = hn::Min(bound, far);
  }
  return hn::GetLane(hn::MinOfLanes(numbers, bound));
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace glib
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace glib {

HWY_EXPORT(NearestOfAll);
HWY_EXPORT(DistancesToCell);

std::uint32_t NearestEntryPlain(const std::uint32_t* palette, std::uint32_t count, std::int32_t c0, std::int32_t c1,
                                std::int32_t c2) {
  const auto square = [](std::int32_t channel, std::uint32_t byte) {
    const std::uint32_t difference = static_cast<std::uint32_t>(channel) - (byte & 255);
    return difference * difference;
  };
  std::uint32_t best = 0;
  std::int32_t bestDistance = 0;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint32_t word = palette[i];
    const auto distance = static_cast<std::int32_t>(square(c0, word) + square(c1, word >> 8) + square(c2, word >> 16));
    if (i == 0 || distance < bestDistance) {
      best = i;
      bestDistance = distance;
    }
  }
  return best;
}

NearestEntryFinder::NearestEntryFinder(const std::uint32_t* palette, std::uint32_t count, std::uint64_t searches)
    : count_(count) {
  for (std::uint32_t i = 0; i < 256; ++i) {
    const std::uint32_t word = palette[std::min(i, count - 1)];
    for (std::uint32_t channel = 0; channel < 3; ++channel) {
      channels_[channel][i] = static_cast<std::int32_t>(word >> 8 * channel & 255);
    }
  }
  constexpr std::uint64_t kLearnFrom = 4096;
  if (searches < kLearnFrom) return;
  // Both are touched only where the colours are, and most of their pages never.
  cells_ = static_cast<std::uint32_t*>(std::calloc(kCells, sizeof(*cells_)));
  candidates_ = static_cast<Candidate*>(std::malloc(kMaxCandidates * sizeof(*candidates_)));
  if (candidates_ == nullptr) {
    std::free(cells_);
    cells_ = nullptr;
  }
}

NearestEntryFinder::~NearestEntryFinder() {
  std::free(cells_);
  std::free(candidates_);
}

std::uint32_t NearestEntryFinder::FindFar(std::int32_t c0, std::int32_t c1, std::int32_t c2) const {
  return HWY_DYNAMIC_DISPATCH(NearestOfAll)(channels_, count_, c0, c1, c2);
}

// An entry can win somewhere in the cell only if its least distance from it is not above the least of all greatest
// distances.
std::uint32_t NearestEntryFinder::Learn(std::uint32_t cell) {
  std::int32_t low[3];
  for (std::uint32_t channel = 0; channel < 3; ++channel) {
    const std::uint32_t part = cell >> 6 * channel & 63;
    low[channel] = static_cast<std::int32_t>(part << kCellShift) - static_cast<std::int32_t>(kBelow);
  }
  std::int32_t least[256];
  const std::int32_t bound = HWY_DYNAMIC_DISPATCH(DistancesToCell)(channels_, count_, low, least);
  const std::uint32_t first = candidateCount_;
  for (std::uint32_t i = 0; i < count_; ++i) {
    if (least[i] > bound) continue;
    if (candidateCount_ == kMaxCandidates) {
      candidateCount_ = first;
      return kUnknown;
    }
    Candidate& candidate = candidates_[candidateCount_++];
    candidate.c0 = static_cast<std::uint16_t>(static_cast<std::uint32_t>(channels_[0][i]) + kBelow);
    candidate.c1 = static_cast<std::uint16_t>(static_cast<std::uint32_t>(channels_[1][i]) + kBelow);
    candidate.c2 = static_cast<std::uint16_t>(static_cast<std::uint32_t>(channels_[2][i]) + kBelow);
    candidate.index = static_cast<std::uint16_t>(i);
  }
  const std::uint32_t found = candidateCount_ - first;
  if (found == 1) {
    candidateCount_ = first;
    return cells_[cell] = candidates_[first].index + 1U;
  }
  return cells_[cell] = first << 9 | found;
}

}  // namespace glib

#endif  // HWY_ONCE
