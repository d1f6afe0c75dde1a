#include "glib/color/color_samples.h"

#include <algorithm>

namespace glib {
namespace {

// A cell while it is being filled; its sums fit 2^32 / 255 pixels.
struct Sums {
  std::uint32_t count = 0;
  std::uint32_t red = 0;
  std::uint32_t green = 0;
  std::uint32_t blue = 0;
};
constexpr std::uint64_t kMaxSamples = std::uint64_t{1} << 23;  // an odd step can give twice as many

class Histogram {
 public:
  void Add(std::uint32_t color) {
    const std::uint32_t red = color >> 16 & 255U;
    const std::uint32_t green = color >> 8 & 255U;
    const std::uint32_t blue = color & 255U;
    std::uint32_t& number = numbers_[(red >> 2) << 12 | (green >> 2) << 6 | blue >> 2];
    if (number == 0) {
      cells_.emplace_back();
      number = static_cast<std::uint32_t>(cells_.size());
    }
    Sums& sums = cells_[number - 1];
    ++sums.count;
    sums.red += red;
    sums.green += green;
    sums.blue += blue;
  }

  const std::vector<Sums>& Cells() const { return cells_; }

 private:
  // A list beside the cube: few of its quarter of a million cells are touched.
  std::vector<std::uint32_t> numbers_ = std::vector<std::uint32_t>(std::size_t{1} << 18);  // 0: no cell yet
  std::vector<Sums> cells_;
};

std::uint16_t FineMean(std::uint32_t sum, std::uint32_t count) {
  return static_cast<std::uint16_t>((std::uint64_t{sum} * 16 + count / 2) / count);
}

}  // namespace

std::vector<ColorCell> CellsOf(std::span<const CountedColor> colors, const ColorSpace& space) {
  std::vector<ColorCell> cells;
  cells.reserve(colors.size());
  for (const CountedColor& counted : colors) {
    const FineColor mean = FineOf(counted.color);
    cells.push_back({space.PlaceOf(mean), mean, counted.count});
  }
  return cells;
}

std::vector<ColorCell> SampleCells(std::span<const ColorPage> pages, bool grayscale, std::uint64_t samples,
                                   const ColorSpace& space) {
  std::uint64_t pixels = 0;
  for (const ColorPage& page : pages) pixels += page.PixelCount();
  // Odd, so that it walks through the columns of pages whose width is a power of two.
  const std::uint64_t step = pixels / std::min(samples, kMaxSamples) | 1U;
  Histogram histogram;
  std::vector<std::uint32_t> row;
  std::uint64_t next = 0;
  for (const ColorPage& page : pages) {
    row.resize(page.width);
    for (std::uint32_t y = 0; y < page.height; ++y) {
      if (next < page.width) {
        const std::size_t count = ReadEveryNthColor(page, y, next, step, grayscale, row.data());
        for (std::size_t i = 0; i < count; ++i) {
          if (HasColor(row[i])) histogram.Add(row[i]);
        }
        next += count * step;
      }
      next -= page.width;
    }
  }
  std::vector<ColorCell> cells;
  cells.reserve(histogram.Cells().size());
  for (const Sums& sums : histogram.Cells()) {
    const FineColor mean = {FineMean(sums.red, sums.count), FineMean(sums.green, sums.count),
                            FineMean(sums.blue, sums.count)};
    cells.push_back({space.PlaceOf(mean), mean, sums.count});
  }
  return cells;
}

}  // namespace glib
