#include "glib/color/nearest_entry.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <iterator>

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

// How much nearer each entry comes than entry `rival` at best, as a difference of squared distances, within the cell of
// `low` to `low + size - 1` a channel. That difference is linear in the colour, so it is greatest in a corner.
void Leads(const std::int32_t (*channels)[256], std::uint32_t count, std::uint32_t rival, const std::int32_t* low,
           std::int32_t size, std::int32_t* leads) {
  const Numbers numbers;
  for (std::size_t i = 0; i < count; i += hn::Lanes(numbers)) {
    auto lead = hn::Zero(numbers);
    for (std::size_t channel = 0; channel < 3; ++channel) {
      const auto value = hn::LoadU(numbers, channels[channel] + i);
      const auto other = hn::Set(numbers, channels[channel][rival]);
      const auto apart = hn::Sub(value, other);
      const auto atLow = hn::Sub(hn::Set(numbers, 2 * low[channel]), hn::Add(value, other));
      const auto atHigh = hn::Add(atLow, hn::Set(numbers, 2 * (size - 1)));
      lead = hn::Add(lead, hn::Max(hn::Mul(apart, atLow), hn::Mul(apart, atHigh)));
    }
    hn::StoreU(lead, numbers, leads + i);
  }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace glib
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace glib {

HWY_EXPORT(NearestOfAll);
HWY_EXPORT(Leads);

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
  // All are touched only where the colours are, and most of their pages never.
  candidates_ = static_cast<Candidate*>(std::malloc(kMaxCandidates * sizeof(*candidates_)));
  if (candidates_ == nullptr) return;
  cells_ = static_cast<std::uint32_t*>(std::calloc(std::size(kGrids) * kCells, sizeof(*cells_)));
}

NearestEntryFinder::~NearestEntryFinder() {
  std::free(cells_);
  std::free(candidates_);
}

std::uint32_t NearestEntryFinder::FindAmongAll(std::int32_t c0, std::int32_t c1, std::int32_t c2) const {
  return HWY_DYNAMIC_DISPATCH(NearestOfAll)(channels_, count_, c0, c1, c2);
}

std::uint32_t NearestEntryFinder::FindFar(std::int32_t c0, std::int32_t c1, std::int32_t c2) {
  std::size_t grid = 1;
  while (grid < std::size(kGrids) && !kGrids[grid].Holds(c0, c1, c2)) ++grid;
  if (grid == std::size(kGrids)) return FindAmongAll(c0, c1, c2);
  // With all places counted from the middle of the cube, an entry e is |v|^2 + e (e - 2v) from v. The first part is the
  // same for all entries; it may have wrapped, which keeps their order only if no second part brings it across the end
  // of the numbers.
  constexpr std::int32_t kMiddle = 128;
  const std::int32_t v0 = c0 - kMiddle;
  const std::int32_t v1 = c1 - kMiddle;
  const std::int32_t v2 = c2 - kMiddle;
  const auto square = [](std::int32_t v) { return static_cast<std::uint32_t>(v) * static_cast<std::uint32_t>(v); };
  const auto common = static_cast<std::int32_t>(square(v0) + square(v1) + square(v2));
  const std::int64_t most =
      2 * kMiddle * (std::int64_t{std::abs(v0)} + std::abs(v1) + std::abs(v2)) + 3 * std::int64_t{kMiddle} * kMiddle;
  if (std::abs(std::int64_t{common}) + most > INT32_MAX) return FindAmongAll(c0, c1, c2);

  const std::uint32_t list = ListOf(grid, kGrids[grid].CellOf(c0, c1, c2));
  if (list <= kSingle) return list != kUnknown ? list - 1 : FindAmongAll(c0, c1, c2);
  std::int64_t best = INT64_MAX;
  for (const Candidate& candidate : Candidates(list)) {
    const std::int32_t e0 = candidate.c0 - kMiddle;
    const std::int32_t e1 = candidate.c1 - kMiddle;
    const std::int32_t e2 = candidate.c2 - kMiddle;
    const std::int32_t rest = e0 * (e0 - 2 * v0) + e1 * (e1 - 2 * v1) + e2 * (e2 - 2 * v2);
    best = std::min(best, std::int64_t{rest} * 256 + candidate.index);
  }
  return static_cast<std::uint32_t>(best & 255);
}

// Entries that can win somewhere in the cell: those that no other one beats in the whole cell.
std::uint32_t NearestEntryFinder::Learn(const Grid& grid, std::uint32_t cell) {
  const std::int32_t size = 1 << grid.shift;
  std::int32_t low[3];
  for (std::uint32_t channel = 0; channel < 3; ++channel) {
    low[channel] = grid.first + static_cast<std::int32_t>(cell >> 6 * channel & 63) * size;
  }
  // The entry at the centre beats most of the others, which spares comparing all with all.
  const std::uint32_t central = FindAmongAll(low[0] + size / 2, low[1] + size / 2, low[2] + size / 2);
  std::int32_t leads[256];
  HWY_DYNAMIC_DISPATCH(Leads)(channels_, count_, central, low, size, leads);
  Candidate close[256];
  std::uint32_t closeCount = 0;
  for (std::uint32_t i = 0; i < count_; ++i) {
    const auto value = [this, i](std::size_t channel) { return static_cast<std::int16_t>(channels_[channel][i]); };
    close[closeCount] = {value(0), value(1), value(2), static_cast<std::uint16_t>(i)};
    closeCount += i == central || leads[i] > 0 || (leads[i] == 0 && i < central) ? 1 : 0;
  }
  if (candidateCount_ + closeCount > kMaxCandidates) return kUnknown;

  // Whoever is beaten leaves at once; that loses nothing, as who beat it stays or is beaten in turn by one that beats
  // both.
  const auto beats = [&low, size](const Candidate& winner, const Candidate& loser) {
    const auto lead = [&low, size](std::size_t channel, std::int32_t value, std::int32_t other) {
      return (value - other) * (2 * (value > other ? low[channel] + size - 1 : low[channel]) - value - other);
    };
    const std::int32_t losers =
        lead(0, loser.c0, winner.c0) + lead(1, loser.c1, winner.c1) + lead(2, loser.c2, winner.c2);
    return losers < 0 || (losers == 0 && winner.index < loser.index);
  };
  Candidate* list = candidates_ + candidateCount_;
  std::uint32_t found = 0;
  for (std::uint32_t i = 0; i < closeCount; ++i) {
    const Candidate& next = close[i];
    if (std::any_of(list, list + found, [&](const Candidate& kept) { return beats(kept, next); })) continue;
    const Candidate* end = std::remove_if(list, list + found, [&](const Candidate& kept) { return beats(next, kept); });
    found = static_cast<std::uint32_t>(end - list);
    list[found++] = next;
  }
  if (found == 1) return list->index + 1U;
  const std::uint32_t place = candidateCount_;
  candidateCount_ += found;
  return place << 9 | found;
}

}  // namespace glib

#endif  // HWY_ONCE
