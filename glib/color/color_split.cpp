#include <algorithm>
#include <limits>
#include <utility>

#include "glib/color/color_groups.h"

namespace glib {
namespace {

constexpr std::size_t kBins = 32;

// Count and sums of places of some cells. 2^32 pixels of 1300 a cell leave room for a million cells.
struct Moments {
  std::int64_t count = 0;
  std::array<std::int64_t, 3> sum{};

  void Add(const Moments& other) {
    count += other.count;
    for (std::size_t k = 0; k < 3; ++k) sum[k] += other.sum[k];
  }
  // Squared length of the sum over the count: what the squared error falls by when this is a group of its own.
  double Energy() const {
    double squares = 0;
    for (const std::int64_t axis : sum) squares += static_cast<double>(axis) * static_cast<double>(axis);
    return count == 0 ? 0 : squares / static_cast<double>(count);
  }
};

Moments MomentsOf(const ColorCell& cell) {
  Moments moments{cell.count, {}};
  for (std::size_t k = 0; k < 3; ++k) moments.sum[k] = std::int64_t{cell.count} * cell.place[k];
  return moments;
}

struct Box {
  std::size_t begin = 0;
  std::size_t end = 0;
  double error = 0;  // sum of the squared distances to the mean; 0 if it can't be split
  Moments moments;
  Place low{};
  Place high{};
};

// Which of kBins equal parts of the box's range a place lies in.
struct Bins {
  Place low;
  std::array<std::uint32_t, 3> scale;

  explicit Bins(const Box& box) : low(box.low) {
    for (std::size_t k = 0; k < 3; ++k) {
      scale[k] = static_cast<std::uint32_t>((kBins << 16) / static_cast<std::size_t>(box.high[k] - box.low[k] + 1));
    }
  }
  std::size_t Of(const Place& place, std::size_t axis) const {
    return static_cast<std::uint32_t>(place[axis] - low[axis]) * scale[axis] >> 16;
  }
};

Box Measure(const std::vector<ColorCell>& cells, std::size_t begin, std::size_t end) {
  Box box{begin, end, 0, {}, cells[begin].place, cells[begin].place};
  std::int64_t squares = 0;
  for (std::size_t i = begin; i < end; ++i) {
    const ColorCell& cell = cells[i];
    box.moments.Add(MomentsOf(cell));
    std::int32_t square = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      square += cell.place[k] * cell.place[k];
      box.low[k] = std::min(box.low[k], cell.place[k]);
      box.high[k] = std::max(box.high[k], cell.place[k]);
    }
    squares += std::int64_t{cell.count} * square;
  }
  if (box.low != box.high) box.error = std::max(0.0, static_cast<double>(squares) - box.moments.Energy());
  return box;
}

// The last bin of the lower part, on an axis.
struct Cut {
  std::size_t axis = 0;
  std::size_t bin = 0;
};

Cut BestCut(const std::vector<ColorCell>& cells, const Box& box, const Bins& bins) {
  std::array<std::array<Moments, kBins>, 3> parts{};
  for (std::size_t i = box.begin; i < box.end; ++i) {
    const Moments moments = MomentsOf(cells[i]);
    for (std::size_t k = 0; k < 3; ++k) parts[k][bins.Of(cells[i].place, k)].Add(moments);
  }
  Cut best;
  double most = -1;
  for (std::size_t k = 0; k < 3; ++k) {
    Moments lower;
    for (std::size_t bin = 0; bin + 1 < kBins; ++bin) {
      if (parts[k][bin].count == 0) continue;
      lower.Add(parts[k][bin]);
      if (lower.count == box.moments.count) break;
      Moments upper = box.moments;
      upper.count -= lower.count;
      for (std::size_t j = 0; j < 3; ++j) upper.sum[j] -= lower.sum[j];
      const double energy = lower.Energy() + upper.Energy();
      if (energy <= most) continue;
      most = energy;
      best = {k, bin};
    }
  }
  return best;
}

ColorGroup GroupOf(const std::vector<ColorCell>& cells, const Box& box) {
  ColorGroup group;
  for (std::size_t i = box.begin; i < box.end; ++i) group.Add(cells[i]);
  return group;
}

}  // namespace

std::vector<ColorGroup> SplitCells(std::vector<ColorCell>& cells, std::size_t wanted) {
  std::vector<Box> boxes;  // a heap with the largest error on top
  if (!cells.empty()) boxes.push_back(Measure(cells, 0, cells.size()));
  const auto less = [](const Box& a, const Box& b) {
    return a.error != b.error ? a.error < b.error : a.begin > b.begin;
  };
  while (!boxes.empty() && boxes.size() < wanted && boxes.front().low != boxes.front().high) {
    std::pop_heap(boxes.begin(), boxes.end(), less);
    const Box box = boxes.back();
    const Bins bins(box);
    const Cut cut = BestCut(cells, box, bins);
    const auto middle = std::partition(cells.begin() + static_cast<std::ptrdiff_t>(box.begin),
                                       cells.begin() + static_cast<std::ptrdiff_t>(box.end),
                                       [&](const ColorCell& cell) { return bins.Of(cell.place, cut.axis) <= cut.bin; });
    const auto half = static_cast<std::size_t>(middle - cells.begin());
    boxes.back() = Measure(cells, box.begin, half);
    std::push_heap(boxes.begin(), boxes.end(), less);
    boxes.push_back(Measure(cells, half, box.end));
    std::push_heap(boxes.begin(), boxes.end(), less);
  }
  std::vector<ColorGroup> groups;
  for (const Box& box : boxes) groups.push_back(GroupOf(cells, box));
  return groups;
}

}  // namespace glib
