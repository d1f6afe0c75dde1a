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

}  // namespace

std::optional<std::vector<CountedColor>> CountExactColors(std::span<const ColorPage> pages, bool grayscale) {
  ColorTable table;
  std::vector<std::uint32_t> row;
  for (const ColorPage& page : pages) {
    row.resize(page.width);
    // Rows that lie apart have more colours between them than neighbours: pictures with many are found out sooner.
    const std::uint32_t step = std::max(page.height / 32, 1U);
    for (std::uint32_t first = 0; first < step; ++first) {
      for (std::uint64_t y = first; y < page.height; y += step) {
        ReadColors(page, static_cast<std::uint32_t>(y), grayscale, row.data());
        if (!table.AddRow(row)) return std::nullopt;
      }
    }
  }
  return table.Colors();
}

}  // namespace glib
