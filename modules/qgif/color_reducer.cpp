#include "modules/qgif/color_reducer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace qgif {
namespace {

using modules::Page;
using Color = std::array<int, 3>;  // red, green, blue

constexpr std::uint64_t kSamples = 130000;
constexpr std::uint32_t kCellBits = 5;

Color ColorOf(std::uint32_t word) {
  return {static_cast<int>(word >> 16 & 255U), static_cast<int>(word >> 8 & 255U), static_cast<int>(word & 255U)};
}

// All samples that fall into one small cube of colours.
struct Cell {
  std::uint64_t count = 0;
  std::array<std::uint64_t, 3> sum{};

  double Mean(std::size_t axis) const { return static_cast<double>(sum[axis]) / static_cast<double>(count); }
};

struct Box {
  std::size_t begin = 0;
  std::size_t end = 0;
  double error = 0;  // sum of the squared distances to the mean
  std::size_t axis = 0;
};

// Running sums of a box, from which its squared error follows.
struct Sums {
  double count = 0;
  std::array<double, 3> sum{};
  std::array<double, 3> square{};

  void Add(const Cell& cell, double sign) {
    const double weight = sign * static_cast<double>(cell.count);
    count += weight;
    for (std::size_t k = 0; k < 3; ++k) {
      sum[k] += weight * cell.Mean(k);
      square[k] += weight * cell.Mean(k) * cell.Mean(k);
    }
  }
  double Error(std::size_t axis) const { return count > 0 ? square[axis] - sum[axis] * sum[axis] / count : 0; }
  double Error() const { return Error(0) + Error(1) + Error(2); }
};

std::vector<Cell> CollectCells(std::span<const Page* const> pages, const PixelView& view) {
  std::vector<Cell> cube(std::size_t{1} << (3 * kCellBits));
  std::uint64_t pixels = 0;
  for (const Page* page : pages) {
    pixels += static_cast<std::uint64_t>(page->width) * static_cast<std::uint64_t>(page->height);
  }
  const std::uint64_t step = pixels / kSamples | 1U;  // odd, so that it walks through the columns
  std::uint64_t next = 0;
  std::vector<std::uint32_t> row;
  for (const Page* page : pages) {
    row.resize(static_cast<std::size_t>(page->width));
    const auto entries = EntryWords(*page, view);
    for (std::uint32_t y = 0; y < static_cast<std::uint32_t>(page->height); ++y) {
      if (next >= row.size()) {
        next -= row.size();
        continue;
      }
      ReadWordRow(*page, y, view, entries, row.data());
      for (; next < row.size(); next += step) {
        if (row[next] == kTransparent) continue;
        const Color color = ColorOf(row[next]);
        std::size_t place = 0;
        for (const int level : color) place = place << kCellBits | static_cast<std::size_t>(level >> (8 - kCellBits));
        ++cube[place].count;
        for (std::size_t k = 0; k < 3; ++k) cube[place].sum[k] += static_cast<std::uint64_t>(color[k]);
      }
      next -= row.size();
    }
  }
  std::erase_if(cube, [](const Cell& cell) { return cell.count == 0; });
  return cube;
}

Box Measure(const std::vector<Cell>& cells, std::size_t begin, std::size_t end) {
  Sums sums;
  for (std::size_t i = begin; i < end; ++i) sums.Add(cells[i], 1);
  Box box{begin, end, end - begin > 1 ? sums.Error() : 0.0, 0};
  for (std::size_t k = 1; k < 3; ++k) {
    if (sums.Error(k) > sums.Error(box.axis)) box.axis = k;
  }
  return box;
}

// Where the two parts of a box have the least error, along its longest axis.
std::size_t BestCut(std::vector<Cell>& cells, const Box& box) {
  const auto first = cells.begin() + static_cast<std::ptrdiff_t>(box.begin);
  const auto last = cells.begin() + static_cast<std::ptrdiff_t>(box.end);
  std::sort(first, last, [&](const Cell& a, const Cell& b) { return a.Mean(box.axis) < b.Mean(box.axis); });
  Sums low;
  Sums high;
  for (std::size_t i = box.begin; i < box.end; ++i) high.Add(cells[i], 1);
  std::size_t best = box.begin + 1;
  double least = -1;
  for (std::size_t i = box.begin; i + 1 < box.end; ++i) {
    low.Add(cells[i], 1);
    high.Add(cells[i], -1);
    const double error = low.Error() + high.Error();
    if (least >= 0 && error >= least) continue;
    least = error;
    best = i + 1;
  }
  return best;
}

// The entry that is nearest, remembered for colours that come again.
class Nearest {
 public:
  Nearest(const std::vector<std::uint32_t>& entries, std::size_t first) : first_(first), kept_(kKept, kNone) {
    for (const std::uint32_t word : entries) colors_.push_back(ColorOf(word));
  }

  std::uint8_t Of(const Color& color) {
    const auto word = static_cast<std::uint32_t>(color[0] << 16 | color[1] << 8 | color[2]);
    std::uint32_t& kept = kept_[(word * 0x9E3779B1U) >> (32 - kKeptBits)];
    if (kept >> 8 != word || kept == kNone) kept = word << 8 | Search(color);
    return static_cast<std::uint8_t>(kept);
  }
  const Color& At(std::uint8_t index) const { return colors_[index]; }

 private:
  static constexpr std::uint32_t kKeptBits = 14;
  static constexpr std::size_t kKept = std::size_t{1} << kKeptBits;
  static constexpr std::uint32_t kNone = 0xFFFFFFFF;

  std::uint32_t Search(const Color& color) const {
    std::size_t best = first_;
    int least = 0x7FFFFFFF;
    for (std::size_t i = first_; i < colors_.size(); ++i) {
      int distance = 0;
      for (std::size_t k = 0; k < 3; ++k) distance += (color[k] - colors_[i][k]) * (color[k] - colors_[i][k]);
      if (distance >= least) continue;
      least = distance;
      best = i;
    }
    return static_cast<std::uint32_t>(best);
  }

  std::size_t first_;
  std::vector<Color> colors_;
  std::vector<std::uint32_t> kept_;
};

}  // namespace

ColorReducer::ColorReducer(std::span<const Page* const> pages, const PixelView& view, const ReducerSettings& settings,
                           bool transparent)
    : view_(view), settings_(settings), transparent_(transparent) {
  std::vector<Cell> cells = CollectCells(pages, view);
  std::vector<Box> boxes;
  if (!cells.empty()) boxes.push_back(Measure(cells, 0, cells.size()));
  const std::size_t wanted = settings.maxEntries - (transparent ? 1 : 0);
  while (!boxes.empty() && boxes.size() < wanted) {
    const auto worst =
        std::max_element(boxes.begin(), boxes.end(), [](const Box& a, const Box& b) { return a.error < b.error; });
    if (worst->end - worst->begin < 2) break;
    const std::size_t cut = BestCut(cells, *worst);
    const Box high = Measure(cells, cut, worst->end);
    *worst = Measure(cells, worst->begin, cut);
    boxes.push_back(high);
  }
  if (transparent) entries_.push_back(kOpaque);
  for (const Box& box : boxes) {
    Sums sums;
    for (std::size_t i = box.begin; i < box.end; ++i) sums.Add(cells[i], 1);
    std::uint32_t word = kOpaque;
    for (std::size_t k = 0; k < 3; ++k) {
      word |= static_cast<std::uint32_t>(std::lround(sums.sum[k] / sums.count)) << (16 - 8 * k);
    }
    entries_.push_back(word);
  }
  // Only pixels that no sample met can be left.
  if (entries_.size() == (transparent ? 1U : 0U)) entries_.push_back(kOpaque);
}

void ColorReducer::Map(const Page& page, const std::uint8_t* held, std::uint8_t* indices) const {
  constexpr int kFraction = 16;  // parts of a level in which errors are carried
  const auto width = static_cast<std::size_t>(page.width);
  const auto entries = EntryWords(page, view_);
  Nearest nearest(entries_, transparent_ ? 1 : 0);
  // Full diffusion of the error makes pictures noisier than the eye likes: half of it is passed on, with few colours a
  // little more.
  const int many = static_cast<int>(std::clamp<std::size_t>(entries_.size(), 32, 256));
  const int strength = settings_.dither ? 154 - 26 * (many - 32) / 224 : 0;  // of 256
  std::vector<std::uint32_t> row(width);
  std::vector<Color> errors(width + 2, Color{});  // those for the next row; pixel x has place x + 1
  for (std::uint32_t y = 0; y < static_cast<std::uint32_t>(page.height); ++y) {
    ReadWordRow(page, y, view_, entries, row.data());
    std::uint8_t* target = indices + y * width;
    Color ahead{};
    Color below{};       // for the next row at x
    Color belowRight{};  // for the next row at x + 1
    Color here = errors[1];
    for (std::size_t x = 0; x < width; ++x) {
      const Color carried = {here[0] + ahead[0], here[1] + ahead[1], here[2] + ahead[2]};
      here = errors[x + 2];
      const bool hole = row[x] == kTransparent;
      Color error{};
      if (hole) {
        target[x] = 0;
      } else if (held == nullptr || held[y * width + x] == 0) {
        Color color = ColorOf(row[x]);
        for (std::size_t k = 0; k < 3; ++k) {
          // Arithmetic shift: rounds down for both signs, after half is added.
          color[k] = std::clamp((color[k] * kFraction + carried[k] + kFraction / 2) >> 4, 0, 255);
        }
        target[x] = nearest.Of(color);
        for (std::size_t k = 0; k < 3; ++k) {
          error[k] = (color[k] - nearest.At(target[x])[k]) * kFraction * strength / 256;
        }
      }
      for (std::size_t k = 0; k < 3; ++k) {
        ahead[k] = error[k] * 7 / 16;
        errors[x][k] = below[k] + error[k] * 3 / 16;
        below[k] = belowRight[k] + error[k] * 5 / 16;
        belowRight[k] = error[k] / 16;
      }
    }
    errors[width] = below;
  }
}

}  // namespace qgif
