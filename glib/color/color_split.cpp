#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <utility>

#include "glib/color/color_groups.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "glib/color/color_split.cpp"
#include "hwy/foreach_target.h"
//
#include "hwy/highway.h"

#ifndef GLIB_COLOR_COLOR_SPLIT_CPP_ONCE_
#define GLIB_COLOR_COLOR_SPLIT_CPP_ONCE_
namespace glib {
namespace {

constexpr std::size_t kBins = 32;

// Count and sums of places of some cells. Counts are scaled down so that the sums of all cells together fit: 1.3
// million x 1300.
struct alignas(16) Moments {
  std::int32_t lane[4];

  void Add(const Moments& other) {
    for (std::size_t k = 0; k < 4; ++k) lane[k] += other.lane[k];
  }
  void Subtract(const Moments& other) {
    for (std::size_t k = 0; k < 4; ++k) lane[k] -= other.lane[k];
  }
  // Squared length of the sum over the count: what the squared error falls by when this is a group of its own.
  double Energy() const {
    double squares = 0;
    for (std::size_t k = 1; k < 4; ++k) squares += static_cast<double>(lane[k]) * lane[k];
    return lane[0] == 0 ? 0 : squares / lane[0];
  }
};

// A cell as the splits move it about.
struct alignas(16) SplitCell {
  Moments moments;
  std::int16_t place[4];  // the last is 0
  std::uint32_t number;   // in the list that is split
};

struct Box {
  std::size_t begin;
  std::size_t end;
  double error;  // sum of the squared distances to the mean
  Moments moments;
  std::array<std::int16_t, 4> low;
  std::array<std::int16_t, 4> high;

  bool CanBeSplit() const { return low != high; }
};

// Part b of an axis holds the cells whose way from the low end x scale is b x 65536 and more.
using Bins = std::array<std::array<Moments, kBins>, 3>;
using Scale = std::array<std::int32_t, 4>;

inline std::uint32_t BinOf(const SplitCell& cell, const Box& box, const Scale& scale, std::size_t axis) {
  return static_cast<std::uint32_t>(cell.place[axis] - box.low[axis]) * static_cast<std::uint32_t>(scale[axis]) >> 16;
}

}  // namespace
}  // namespace glib
#endif  // GLIB_COLOR_COLOR_SPLIT_CPP_ONCE_

HWY_BEFORE_NAMESPACE();
namespace glib {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR

void FillBins(const SplitCell* cells, const Box& box, const Scale& scale, Bins& bins) {
  for (std::size_t i = box.begin; i < box.end; ++i) {
    for (std::size_t k = 0; k < 3; ++k) bins[k][BinOf(cells[i], box, scale, k)].Add(cells[i].moments);
  }
}

#else

void FillBins(const SplitCell* cells, const Box& box, const Scale& scale, Bins& bins) {
  const hn::FixedTag<std::int32_t, 4> d;
  const hn::FixedTag<std::int16_t, 4> dPlace;
  const auto low = hn::PromoteTo(d, hn::LoadU(dPlace, box.low.data()));
  const auto factor = hn::LoadU(d, scale.data());
  for (std::size_t i = box.begin; i < box.end; ++i) {
    const auto way = hn::Sub(hn::PromoteTo(d, hn::LoadU(dPlace, cells[i].place)), low);
    alignas(16) std::int32_t bin[4];
    hn::Store(hn::ShiftRight<16>(hn::Mul(way, factor)), d, bin);
    const auto moments = hn::Load(d, cells[i].moments.lane);
    for (std::size_t k = 0; k < 3; ++k) {
      std::int32_t* there = bins[k][static_cast<std::size_t>(bin[k])].lane;
      hn::Store(hn::Add(hn::Load(d, there), moments), d, there);
    }
  }
}

#endif

}  // namespace HWY_NAMESPACE
}  // namespace glib
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace glib {

HWY_EXPORT(FillBins);

namespace {

Box Measure(const std::vector<SplitCell>& cells, std::size_t begin, std::size_t end) {
  Box box{begin, end, 0, {}, {}, {}};
  std::memcpy(box.low.data(), cells[begin].place, sizeof(box.low));
  box.high = box.low;
  std::int64_t squares = 0;
  for (std::size_t i = begin; i < end; ++i) {
    const SplitCell& cell = cells[i];
    box.moments.Add(cell.moments);
    for (std::size_t k = 0; k < 3; ++k) {
      squares += std::int64_t{cell.moments.lane[k + 1]} * cell.place[k];
      box.low[k] = std::min(box.low[k], cell.place[k]);
      box.high[k] = std::max(box.high[k], cell.place[k]);
    }
  }
  if (box.CanBeSplit()) box.error = std::max(0.0, static_cast<double>(squares) - box.moments.Energy());
  return box;
}

// The last bin of the lower part, on an axis.
struct Cut {
  std::size_t axis = 0;
  std::size_t bin = 0;
};

Cut BestCut(const std::vector<SplitCell>& cells, const Box& box, const Scale& scale) {
  Bins bins{};
  HWY_DYNAMIC_DISPATCH(FillBins)(cells.data(), box, scale, bins);
  Cut best;
  double most = -1;
  for (std::size_t k = 0; k < 3; ++k) {
    Moments lower{};
    for (std::size_t bin = 0; bin + 1 < kBins; ++bin) {
      if (bins[k][bin].lane[0] == 0) continue;
      lower.Add(bins[k][bin]);
      Moments upper = box.moments;
      upper.Subtract(lower);
      if (upper.lane[0] == 0) break;
      const double energy = lower.Energy() + upper.Energy();
      if (energy <= most) continue;
      most = energy;
      best = {k, bin};
    }
  }
  return best;
}

Scale ScaleOf(const Box& box) {
  Scale scale{};
  for (std::size_t k = 0; k < 3; ++k) scale[k] = (std::int32_t{kBins} << 16) / (box.high[k] - box.low[k] + 1);
  return scale;
}

// Puts the lower part of a box before the upper and gives where that begins. Each cell is written to both sides, of
// which one counts: a branch would be guessed wrong half of the time.
std::size_t Partition(std::vector<SplitCell>& cells, const Box& box, const Scale& scale, const Cut& cut,
                      std::vector<SplitCell>& scratch) {
  std::size_t lower = box.begin;
  std::size_t upper = box.end - 1;
  for (std::size_t i = box.begin; i < box.end; ++i) {
    const SplitCell cell = cells[i];
    const std::size_t isLower = BinOf(cell, box, scale, cut.axis) <= cut.bin ? 1 : 0;
    scratch[lower] = cell;
    scratch[upper] = cell;
    lower += isLower;
    upper -= 1 - isLower;
  }
  std::copy(scratch.begin() + static_cast<std::ptrdiff_t>(box.begin),
            scratch.begin() + static_cast<std::ptrdiff_t>(box.end),
            cells.begin() + static_cast<std::ptrdiff_t>(box.begin));
  return lower;
}

std::vector<SplitCell> SplitCellsOf(std::span<const ColorCell> cells) {
  std::uint64_t total = 0;
  for (const ColorCell& cell : cells) total += cell.count;
  // At most a million, and one more for each cell that would have none.
  const int shift = std::max(0, static_cast<int>(std::bit_width(total)) - 20);
  std::vector<SplitCell> result(cells.size());
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const auto count = static_cast<std::int32_t>(std::max(cells[i].count >> shift, 1U));
    result[i].number = static_cast<std::uint32_t>(i);
    result[i].moments.lane[0] = count;
    result[i].place[3] = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      result[i].place[k] = cells[i].place[k];
      result[i].moments.lane[k + 1] = count * cells[i].place[k];
    }
  }
  return result;
}

}  // namespace

std::vector<ColorGroup> SplitCells(std::span<const ColorCell> cells, std::size_t wanted) {
  std::vector<SplitCell> parts = SplitCellsOf(cells);
  std::vector<SplitCell> scratch(parts.size());
  std::vector<Box> boxes;  // a heap with the largest error on top
  if (!parts.empty()) boxes.push_back(Measure(parts, 0, parts.size()));
  const auto less = [](const Box& a, const Box& b) {
    return a.error != b.error ? a.error < b.error : a.begin > b.begin;
  };
  while (!boxes.empty() && boxes.size() < wanted && boxes.front().CanBeSplit()) {
    std::pop_heap(boxes.begin(), boxes.end(), less);
    const Box box = boxes.back();
    const Scale scale = ScaleOf(box);
    const Cut cut = BestCut(parts, box, scale);
    const std::size_t half = Partition(parts, box, scale, cut, scratch);
    boxes.back() = Measure(parts, box.begin, half);
    std::push_heap(boxes.begin(), boxes.end(), less);
    boxes.push_back(Measure(parts, half, box.end));
    std::push_heap(boxes.begin(), boxes.end(), less);
  }
  std::vector<ColorGroup> groups;
  for (const Box& box : boxes) {
    ColorGroup& group = groups.emplace_back();
    for (std::size_t i = box.begin; i < box.end; ++i) group.Add(cells[parts[i].number]);
  }
  return groups;
}

}  // namespace glib
#endif  // HWY_ONCE
