#include "glib/color/exact_colors.h"

#include <algorithm>

namespace glib {
namespace {

// At most half of the slots are in use, so that a free one is near.
class ColorTable {
 public:
  // False: there is no room for another colour.
  bool Add(std::uint32_t color, std::size_t count) {
    std::size_t slot = color * 0x9E3779B1U >> (32 - kSlotBits);
    while (slots_[slot].color != color) {
      if (slots_[slot].color == kNoColor) {
        if (++used_ > kMaxExactColors) return false;
        slots_[slot].color = color;
        break;
      }
      slot = (slot + 1) % kSlots;
    }
    std::uint32_t& there = slots_[slot].count;
    there = static_cast<std::uint32_t>(std::min<std::uint64_t>(there + std::uint64_t{count}, 0xFFFFFFFFU));
    return true;
  }

  // Runs of one colour are looked up once.
  bool AddRow(std::span<const std::uint32_t> row) {
    for (std::size_t x = 0; x < row.size();) {
      const std::size_t first = x;
      while (++x < row.size() && row[x] == row[first]) {
      }
      if (HasColor(row[first]) && !Add(row[first], x - first)) return false;
    }
    return true;
  }

  std::vector<CountedColor> Colors() const {
    std::vector<CountedColor> colors;
    colors.reserve(used_);
    for (const CountedColor& slot : slots_) {
      if (slot.color != kNoColor) colors.push_back(slot);
    }
    return colors;
  }

 private:
  static constexpr unsigned kSlotBits = 15;
  static constexpr std::size_t kSlots = std::size_t{1} << kSlotBits;
  static_assert(kSlots == 2 * kMaxExactColors);

  std::vector<CountedColor> slots_ = std::vector<CountedColor>(kSlots);
  std::size_t used_ = 0;
};

// Calls `visit` with row after row, until it gives false; gives whether it never did. Rows that lie apart have more
// colours between them than neighbours: pictures with many are found out sooner.
template <typename Visit>
bool VisitRows(std::span<const ColorPage> pages, bool grayscale, Visit visit) {
  std::vector<std::uint32_t> row;
  for (const ColorPage& page : pages) {
    row.resize(page.width);
    const std::uint32_t step = std::max(page.height / 32, 1U);
    for (std::uint32_t first = 0; first < step; ++first) {
      for (std::uint64_t y = first; y < page.height; y += step) {
        ReadColors(page, static_cast<std::uint32_t>(y), grayscale, row.data());
        if (!visit(row)) return false;
      }
    }
  }
  return true;
}

// Whether a look at some rows proves that there are too many colours to count. Marks that share a place are one, so
// that the colours are never fewer than the marks.
bool HasTooMany(std::span<const ColorPage> pages, bool grayscale) {
  constexpr unsigned kMarkBits = 16;
  constexpr std::size_t kEnoughPixels = 8 * kMaxExactColors;
  std::uint64_t allPixels = 0;
  for (const ColorPage& page : pages) allPixels += page.PixelCount();
  if (allPixels <= kMaxExactColors) return false;
  std::vector<std::uint8_t> marks(std::size_t{1} << kMarkBits);
  std::size_t pixels = 0;
  std::size_t marked = 0;
  VisitRows(pages, grayscale, [&](std::span<const std::uint32_t> row) {
    for (const std::uint32_t color : row) {
      std::uint8_t& mark = marks[color * 0x9E3779B1U >> (32 - kMarkBits)];
      marked += 1U - mark;
      mark = 1;
    }
    pixels += row.size();
    return pixels < kEnoughPixels && marked <= kMaxExactColors + 1;  // what has no colour makes a mark, too
  });
  return marked > kMaxExactColors + 1;
}

}  // namespace

std::optional<std::vector<CountedColor>> CountExactColors(std::span<const ColorPage> pages, bool grayscale) {
  if (HasTooMany(pages, grayscale)) return std::nullopt;
  ColorTable table;
  if (!VisitRows(pages, grayscale, [&](std::span<const std::uint32_t> row) { return table.AddRow(row); })) {
    return std::nullopt;
  }
  return table.Colors();
}

}  // namespace glib
