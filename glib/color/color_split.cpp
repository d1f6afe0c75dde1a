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

// Sums of places and count of some cells. Counts are scaled down so that the sums of all cells together fit: 1.3
// million x 1300.
struct alignas(16) Moments {
  std::int32_t lane[4];

  std::int32_t Count() const { return lane[3]; }

  void Add(const Moments& other) {
    for (std::size_t k = 0; k < 4; ++k) lane[k] += other.lane[k];
  }
  void Subtract(const Moments& other) {
    for (std::size_t k = 0; k < 4; ++k) lane[k] -= other.lane[k];
  }
  // Squared length of the sum over the count: what the squared error falls by when this is a group of its own.
  double Energy() const {
    double squares = 0;
    for (std::size_t k = 0; k < 3; ++k) squares += static_cast<double>(lane[k]) * lane[k];
    return Count() == 0 ? 0 : squares / Count();
  }
};

// A cell as the splits move it about.
struct alignas(16) SplitCell {
  Moments moments;
  std::int16_t place[4];  // the last is 0
  std::uint32_t number;   // in the list that is split
};

// What is known of the cells of a box.
struct Extent {
  Moments moments;
  std::int64_t squares;  // sum of the squared lengths of their places
  std::array<std::int16_t, 4> low;
  std::array<std::int16_t, 4> high;
};

struct Box : Extent {
  std::size_t begin;
  std::size_t end;
  std::size_t side;  // which of the two arrays holds its cells
  double error;      // sum of the squared distances to the mean

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

void MeasureExtent(const SplitCell* cells, std::size_t count, Extent& extent) {
  extent = {};
  std::memcpy(extent.low.data(), cells[0].place, sizeof(extent.low));
  extent.high = extent.low;
  for (std::size_t i = 0; i < count; ++i) {
    extent.moments.Add(cells[i].moments);
    for (std::size_t k = 0; k < 3; ++k) {
      extent.squares += std::int64_t{cells[i].moments.lane[k]} * cells[i].place[k];
      extent.low[k] = std::min(extent.low[k], cells[i].place[k]);
      extent.high[k] = std::max(extent.high[k], cells[i].place[k]);
    }
  }
}

#else

void MeasureExtent(const SplitCell* cells, std::size_t count, Extent& extent) {
  const hn::FixedTag<std::int32_t, 4> d;
  const hn::FixedTag<std::int16_t, 4> dPlace;
  const hn::FixedTag<std::int64_t, 2> dWide;
  auto low = hn::LoadU(dPlace, cells[0].place);
  auto high = low;
  auto moments = hn::Zero(d);
  auto squares = hn::Zero(dWide);
  for (std::size_t i = 0; i < count; ++i) {
    const auto place = hn::LoadU(dPlace, cells[i].place);
    low = hn::Min(low, place);
    high = hn::Max(high, place);
    const auto own = hn::Load(d, cells[i].moments.lane);
    moments = hn::Add(moments, own);
    const auto wide = hn::PromoteTo(d, place);  // the fourth lane is 0
    squares = hn::Add(squares, hn::MulEven(own, wide));
    squares = hn::Add(squares, hn::MulEven(hn::Shuffle2301(own), hn::Shuffle2301(wide)));
  }
  hn::Store(moments, d, extent.moments.lane);
  hn::StoreU(low, dPlace, extent.low.data());
  hn::StoreU(high, dPlace, extent.high.data());
  alignas(16) std::int64_t sums[2];
  hn::Store(squares, dWide, sums);
  extent.squares = sums[0] + sums[1];
}

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
HWY_EXPORT(MeasureExtent);

namespace {

Box Measure(const std::vector<SplitCell>& cells, std::size_t side, std::size_t begin, std::size_t end) {
  Box box{};
  HWY_DYNAMIC_DISPATCH(MeasureExtent)(cells.data() + begin, end - begin, box);
  box.begin = begin;
  box.end = end;
  box.side = side;
  if (box.CanBeSplit()) box.error = std::max(0.0, static_cast<double>(box.squares) - box.moments.Energy());
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
      if (bins[k][bin].Count() == 0) continue;
      lower.Add(bins[k][bin]);
      Moments upper = box.moments;
      upper.Subtract(lower);
      if (upper.Count() == 0) break;
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

// Moves a box to the other array, the lower part before the upper, and gives where that begins. Each cell is written to
// both ends, of which one counts: a branch would be guessed wrong half of the time.
std::size_t Partition(const std::vector<SplitCell>& cells, const Box& box, const Scale& scale, const Cut& cut,
                      std::vector<SplitCell>& moved) {
  std::size_t lower = box.begin;
  std::size_t upper = box.end - 1;
  for (std::size_t i = box.begin; i < box.end; ++i) {
    const SplitCell cell = cells[i];
    const std::size_t isLower = BinOf(cell, box, scale, cut.axis) <= cut.bin ? 1 : 0;
    moved[lower] = cell;
    moved[upper] = cell;
    lower += isLower;
    upper -= 1 - isLower;
  }
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
    result[i].moments.lane[3] = count;
    result[i].place[3] = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      result[i].place[k] = cells[i].place[k];
      result[i].moments.lane[k] = count * cells[i].place[k];
    }
  }
  return result;
}

}  // namespace

std::vector<ColorGroup> SplitCells(std::span<const ColorCell> cells, std::size_t wanted) {
  std::array<std::vector<SplitCell>, 2> sides = {SplitCellsOf(cells), std::vector<SplitCell>(cells.size())};
  std::vector<Box> boxes;  // a heap with the largest error on top
  if (!cells.empty()) boxes.push_back(Measure(sides[0], 0, 0, cells.size()));
  const auto less = [](const Box& a, const Box& b) {
    return a.error != b.error ? a.error < b.error : a.begin > b.begin;
  };
  while (!boxes.empty() && boxes.size() < wanted && boxes.front().CanBeSplit()) {
    std::pop_heap(boxes.begin(), boxes.end(), less);
    const Box box = boxes.back();
    const Scale scale = ScaleOf(box);
    const Cut cut = BestCut(sides[box.side], box, scale);
    const std::size_t other = 1 - box.side;
    const std::size_t half = Partition(sides[box.side], box, scale, cut, sides[other]);
    boxes.back() = Measure(sides[other], other, box.begin, half);
    std::push_heap(boxes.begin(), boxes.end(), less);
    boxes.push_back(Measure(sides[other], other, half, box.end));
    std::push_heap(boxes.begin(), boxes.end(), less);
  }
  std::vector<ColorGroup> groups;
  for (const Box& box : boxes) {
    ColorGroup& group = groups.emplace_back();
    for (std::size_t i = box.begin; i < box.end; ++i) group.Add(cells[sides[box.side][i].number]);
  }
  return groups;
}

}  // namespace glib
#endif  // HWY_ONCE
