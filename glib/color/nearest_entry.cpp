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

// For each entry the least squared distance from the values `low` to `low + size - 1` of each channel. Gives the least
// of all entries' greatest distances.
std::int32_t DistancesToCell(const std::int32_t (*channels)[256], std::uint32_t count, const std::int32_t* low,
                             std::int32_t size, std::int32_t* least) {
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
      const auto below = hn::Sub(hn::Set(numbers, low[channel] + size - 1), value);
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
  // All are touched only where the colours are, and most of their pages never.
  candidates_ = static_cast<Candidate*>(std::malloc(kMaxCandidates * sizeof(*candidates_)));
  if (candidates_ == nullptr) return;
  nearCells_ = static_cast<std::uint32_t*>(std::calloc(kCells, sizeof(*nearCells_)));
  farCells_ = static_cast<std::uint32_t*>(std::calloc(kCells, sizeof(*farCells_)));
}

NearestEntryFinder::~NearestEntryFinder() {
  std::free(nearCells_);
  std::free(farCells_);
  std::free(candidates_);
}

std::uint32_t NearestEntryFinder::FindAmongAll(std::int32_t c0, std::int32_t c1, std::int32_t c2) const {
  return HWY_DYNAMIC_DISPATCH(NearestOfAll)(channels_, count_, c0, c1, c2);
}

// Entries that can win somewhere in the cell. First those whose least distance is not above the least of all greatest
// ones; from these, those that no other one beats in the whole cell.
std::uint32_t NearestEntryFinder::Learn(const Grid& grid, std::uint32_t cell) {
  const std::int32_t size = 1 << grid.shift;
  std::int32_t low[3];
  for (std::uint32_t channel = 0; channel < 3; ++channel) {
    low[channel] = grid.first + static_cast<std::int32_t>(cell >> 6 * channel & 63) * size;
  }
  std::int32_t least[256];
  const std::int32_t bound = HWY_DYNAMIC_DISPATCH(DistancesToCell)(channels_, count_, low, size, least);
  std::uint8_t close[256];
  std::uint32_t closeCount = 0;
  for (std::uint32_t i = 0; i < count_; ++i) {
    close[closeCount] = static_cast<std::uint8_t>(i);
    closeCount += least[i] <= bound ? 1 : 0;
  }
  if (candidateCount_ + closeCount > kMaxCandidates) return kUnknown;

  Candidate* list = candidates_ + candidateCount_;
  Candidate* end = list;
  Candidate central{};
  std::int32_t centralDistance = 0x7FFFFFFF;
  for (std::uint32_t k = 0; k < closeCount; ++k) {
    const std::uint32_t i = close[k];
    const auto value = [this, i](std::size_t channel) { return static_cast<std::int16_t>(channels_[channel][i]); };
    *end = {value(0), value(1), value(2), static_cast<std::uint16_t>(i)};
    const auto apart = [low, size](std::size_t channel, std::int32_t v) {
      const std::int32_t difference = v - low[channel] - size / 2;
      return difference * difference;
    };
    const std::int32_t distance = apart(0, end->c0) + apart(1, end->c1) + apart(2, end->c2);
    if (distance < centralDistance) {
      centralDistance = distance;
      central = *end;
    }
    ++end;
  }
  // The entry at the centre beats most of the others, which spares comparing all with all. Whoever is beaten leaves at
  // once; that loses nothing, as who beat it stays or is beaten in turn by one that beats both.
  const auto isBeatenBy = [&low, size](const Candidate& winner) {
    return [&low, size, winner](const Candidate& other) {
      return other.index != winner.index && Beats(winner, other, low, size);
    };
  };
  end = std::remove_if(list, end, isBeatenBy(central));
  for (Candidate* winner = list; winner < end; ++winner) {
    Candidate* kept = std::remove_if(list, winner, isBeatenBy(*winner));
    const auto left = winner - kept;  // earlier ones that are gone
    end = std::remove_if(winner + 1, end, isBeatenBy(*winner));
    if (left != 0) {
      std::copy(winner, end, kept);
      end -= left;
      winner -= left;
    }
  }
  const auto found = static_cast<std::uint32_t>(end - list);
  if (found == 1) return list->index + 1U;
  const std::uint32_t place = candidateCount_;
  candidateCount_ += found;
  return place << 9 | found;
}

// The difference of two squared distances is linear in the colour, so it is greatest in a corner of the cell.
bool NearestEntryFinder::Beats(const Candidate& winner, const Candidate& loser, const std::int32_t* low,
                               std::int32_t size) {
  const auto most = [low, size](std::size_t channel, std::int32_t w, std::int32_t l) {
    const std::int32_t value = w < l ? low[channel] + size - 1 : low[channel];
    return (value - w) * (value - w) - (value - l) * (value - l);
  };
  const std::int32_t difference =
      most(0, winner.c0, loser.c0) + most(1, winner.c1, loser.c1) + most(2, winner.c2, loser.c2);
  return difference < 0 || (difference == 0 && winner.index < loser.index);
}

}  // namespace glib

#endif  // HWY_ONCE
