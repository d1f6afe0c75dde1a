#include "glib/color/candidate_lists.h"

#include <algorithm>
#include <cstring>
#include <limits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "glib/color/candidate_lists.cpp"
#include "hwy/foreach_target.h"
//
#include "hwy/highway.h"

#ifndef GLIB_COLOR_CANDIDATE_LISTS_CPP_ONCE_
#define GLIB_COLOR_CANDIDATE_LISTS_CPP_ONCE_
namespace glib {
namespace {

// Room for the entries that stay, in columns.
struct Rivals {
  alignas(64) std::int32_t axes[3][CandidateLists::Columns::kCapacity];
  alignas(64) std::int32_t numbers[CandidateLists::Columns::kCapacity];
  std::size_t count;
};

constexpr std::int32_t kFarthest = std::numeric_limits<std::int32_t>::max();

}  // namespace
}  // namespace glib
#endif  // GLIB_COLOR_CANDIDATE_LISTS_CPP_ONCE_

HWY_BEFORE_NAMESPACE();
namespace glib {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// The entries that may be nearest to a colour of the cube.
void FindRivals(const CandidateLists::Columns& entries, const CandidateLists::Cube& cube, Rivals& rivals) {
  const hn::CappedTag<std::int32_t, 16> d;
  using V = hn::Vec<decltype(d)>;
  const std::size_t lanes = hn::Lanes(d);
  // First those not farther from the nearest corner than some entry is from the farthest.
  HWY_ALIGN std::int32_t nearest[CandidateLists::Columns::kCapacity];
  V bound = hn::Set(d, kFarthest);
  for (std::size_t i = 0; i < entries.count; i += lanes) {
    V near = hn::Zero(d);
    V far = hn::Zero(d);
    for (std::size_t k = 0; k < 3; ++k) {
      const V entry = hn::LoadU(d, entries.axes[k] + i);
      const V below = hn::Sub(hn::Set(d, cube.low[k]), entry);
      const V above = hn::Sub(entry, hn::Set(d, cube.high[k]));
      const V inner = hn::Max(hn::Zero(d), hn::Max(below, above));
      const V outer = hn::Min(below, above);
      near = hn::Add(near, hn::Mul(inner, inner));
      far = hn::Add(far, hn::Mul(outer, outer));
    }
    hn::Store(near, d, nearest + i);
    bound = hn::Min(bound, far);
  }
  const V beyond = hn::Add(hn::MinOfLanes(d, bound), hn::Set(d, 1));
  std::size_t count = 0;
  for (std::size_t i = 0; i < entries.count; i += lanes) {
    const auto stays = hn::Lt(hn::Load(d, nearest + i), beyond);
    if (hn::AllFalse(d, stays)) continue;
    // Whole vectors: storing the selected lanes alone is slow on some processors.
    for (std::size_t k = 0; k < 3; ++k) {
      hn::StoreU(hn::Compress(hn::LoadU(d, entries.axes[k] + i), stays), d, rivals.axes[k] + count);
    }
    hn::StoreU(hn::Compress(hn::LoadU(d, entries.numbers + i), stays), d, rivals.numbers + count);
    count += hn::CountTrue(d, stays);
  }
  rivals.count = count;
}

// Drops entries that another one beats everywhere in the cube, until `enough` are left or as many as `rounds` have been
// held against the rest: those nearest to the middle, which beat the most. The difference of two squared distances is
// linear, so that one corner decides.
void DropBeaten(const CandidateLists::Cube& cube, std::size_t enough, int rounds, Rivals& rivals) {
  const hn::CappedTag<std::int32_t, 16> d;
  using V = hn::Vec<decltype(d)>;
  const std::size_t lanes = hn::Lanes(d);
  HWY_ALIGN std::int32_t toMiddle[CandidateLists::Columns::kCapacity];  // squared, four times
  for (std::size_t i = 0; i < rivals.count; i += lanes) {
    V sum = hn::Zero(d);
    for (std::size_t k = 0; k < 3; ++k) {
      const V twice = hn::Sub(hn::Add(hn::Load(d, rivals.axes[k] + i), hn::Load(d, rivals.axes[k] + i)),
                              hn::Set(d, cube.low[k] + cube.high[k]));
      sum = hn::Add(sum, hn::Mul(twice, twice));
    }
    hn::Store(sum, d, toMiddle + i);
  }
  for (int round = 0; round < rounds && rivals.count > enough; ++round) {
    const std::size_t best = static_cast<std::size_t>(std::min_element(toMiddle, toMiddle + rivals.count) - toMiddle);
    if (toMiddle[best] == kFarthest) break;  // each has had its turn
    toMiddle[best] = kFarthest;
    std::int32_t winner[3];
    for (std::size_t k = 0; k < 3; ++k) winner[k] = rivals.axes[k][best];
    std::size_t count = 0;
    for (std::size_t i = 0; i < rivals.count; i += lanes) {
      V most = hn::Zero(d);  // squared distance of the winner less that of the other, at the corner best for the other
      for (std::size_t k = 0; k < 3; ++k) {
        const V other = hn::Load(d, rivals.axes[k] + i);
        const V own = hn::Set(d, winner[k]);
        const V corner = hn::IfThenElse(hn::Gt(other, own), hn::Set(d, 2 * cube.high[k]), hn::Set(d, 2 * cube.low[k]));
        most = hn::Add(most, hn::Mul(hn::Sub(own, other), hn::Sub(hn::Add(own, other), corner)));
      }
      const auto stays = hn::And(hn::Not(hn::Lt(most, hn::Zero(d))), hn::FirstN(d, rivals.count - i));
      for (std::size_t k = 0; k < 3; ++k) {
        hn::StoreU(hn::Compress(hn::Load(d, rivals.axes[k] + i), stays), d, rivals.axes[k] + count);
      }
      hn::StoreU(hn::Compress(hn::Load(d, rivals.numbers + i), stays), d, rivals.numbers + count);
      hn::StoreU(hn::Compress(hn::Load(d, toMiddle + i), stays), d, toMiddle + count);
      count += hn::CountTrue(d, stays);
    }
    rivals.count = count;
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace glib
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace glib {

HWY_EXPORT(FindRivals);
HWY_EXPORT(DropBeaten);

namespace {

constexpr std::int32_t kNowhere = 15000;  // 3 x 15000 squared fits 32 bits

std::size_t Padded(std::size_t count) {
  constexpr std::size_t kAlign = 16;
  return (count + kAlign - 1) / kAlign * kAlign;
}

// Appends the columns of a list to the pool and gives their place.
std::uint32_t StoreColumns(const Rivals& rivals, std::vector<std::int32_t>& pool) {
  const std::size_t first = pool.size();
  const std::size_t length = Padded(rivals.count);
  pool.resize(first + 4 * length, kNowhere);
  for (std::size_t k = 0; k < 4; ++k) {
    const std::int32_t* column = k < 3 ? rivals.axes[k] : rivals.numbers;
    std::copy(column, column + rivals.count, pool.begin() + static_cast<std::ptrdiff_t>(first + k * length));
  }
  return static_cast<std::uint32_t>(first);
}

// The factor by which levels become places of an axis, or 0.
std::int32_t ScaleOf(const ColorSpace& space, std::size_t channel) {
  constexpr std::int32_t kOne = 1 << CandidateLists::kScaleBits;
  std::int32_t least = 0;
  std::int32_t most = std::numeric_limits<std::int32_t>::max() / 256;
  for (std::int32_t level = 1; level < 256; ++level) {
    const std::int32_t first = space.Axis(channel, static_cast<std::size_t>(level) * 16) * kOne - kOne / 2;
    least = std::max(least, (first + level - 1) / level);
    most = std::min(most, (first + kOne - 1) / level);
  }
  return least <= most && space.Axis(channel, 0) == 0 ? least : 0;
}

}  // namespace

CandidateLists::CandidateLists(std::span<const std::uint32_t> colors, std::uint32_t firstIndex, ColorMeasure measure)
    : entries_((colors.size() + CandidateGroup::kSize - 1) / CandidateGroup::kSize),
      lists_(std::size_t{1} << 3 * kBits) {
  const ColorSpace space(measure);
  for (std::uint32_t level = 0; level < 256; ++level) {
    const Place place = space.PlaceOf(FineOf(level * 0x010101U));
    red_[level] = PairOf(place[0], 0);
    green_[level] = PairOf(0, place[1]);
    blue_[level] = place[2];
  }
  for (std::size_t k = 0; k < 3; ++k) axisScales_[k] = ScaleOf(space, k);
  if (axisScales_[0] == 0 || axisScales_[1] == 0 || axisScales_[2] == 0) axisScales_ = {};
  Rivals all;
  all.count = colors.size();
  for (std::size_t i = 0; i < colors.size(); ++i) {
    const Place place = space.PlaceOf(FineOf(colors[i]));
    entries_[i / CandidateGroup::kSize].Set(i % CandidateGroup::kSize, place,
                                            static_cast<std::uint32_t>(i) + firstIndex);
    for (std::size_t k = 0; k < 3; ++k) all.axes[k][i] = place[k];
    all.numbers[i] = static_cast<std::int32_t>(i);
  }
  all_ = {StoreColumns(all, pool_), static_cast<std::uint32_t>(all.count)};
  for (unsigned bits = kCoarsestBits; bits < kBits; ++bits) {
    coarse_[bits - kCoarsestBits].resize(std::size_t{1} << 3 * bits);
  }
  groups_.reserve(4096);
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

CandidateLists::Columns CandidateLists::ColumnsOf(const Stored& stored) const {
  const std::int32_t* first = pool_.data() + stored.first;
  const std::size_t length = Padded(stored.count);
  return {{first, first + length, first + 2 * length}, first + 3 * length, stored.count};
}

// Valid until the next list is stored.
CandidateLists::Columns CandidateLists::CoarseList(std::uint32_t cube, unsigned bits) {
  if (bits < kCoarsestBits) return ColumnsOf(all_);
  Stored& stored = coarse_[bits - kCoarsestBits][cube];
  if (stored.count == 0) {
    const std::uint32_t mask = (1U << bits) - 1;
    const std::uint32_t around =
        (cube >> 2 * bits) >> 1 << 2 * (bits - 1) | (cube >> bits & mask) >> 1 << (bits - 1) | (cube & mask) >> 1;
    const Cube corners = CornersOf(cube, bits);
    Rivals rivals;
    HWY_DYNAMIC_DISPATCH(FindRivals)(CoarseList(around, bits - 1), corners, rivals);
    HWY_DYNAMIC_DISPATCH(DropBeaten)(corners, 1, 1, rivals);
    stored = {StoreColumns(rivals, pool_), static_cast<std::uint32_t>(rivals.count)};
  }
  return ColumnsOf(stored);
}

void CandidateLists::MakeList(std::uint32_t cube) {
  const std::uint32_t around = cube >> 11 << 8 | (cube >> 6 & 15U) << 4 | (cube >> 1 & 15U);
  const Cube corners = CornersOf(cube, kBits);
  Rivals rivals;
  HWY_DYNAMIC_DISPATCH(FindRivals)(CoarseList(around, kBits - 1), corners, rivals);
  constexpr std::size_t kSize = CandidateGroup::kSize;
  // A group is looked at as a whole, and a second one costs more than all that is done here once: against the one entry
  // nearest to the middle 62 % of the pixels of photographs had one group, against four 78 %, against all 79 %.
  constexpr int kRounds = 4;
  HWY_DYNAMIC_DISPATCH(DropBeaten)(corners, kSize, kRounds, rivals);
  const std::size_t first = groups_.size();
  const std::size_t count = (rivals.count + kSize - 1) / kSize;
  groups_.resize(first + count);
  for (std::size_t i = 0; i < count * kSize; ++i) {
    const auto entry = static_cast<std::size_t>(rivals.numbers[std::min(i, rivals.count - 1)]);
    groups_[first + i / kSize].Copy(i % kSize, entries_[entry / kSize], entry % kSize);
  }
  lists_[cube] = static_cast<std::uint32_t>(first << kCountBits | count);
}

}  // namespace glib
#endif  // HWY_ONCE
