#include "glib/color/exact_colors.h"

namespace glib {
namespace {

// At most half of the slots are in use, so that a free one is near.
class ColorTable {
 public:
  // False: there is no room for another colour.
  bool Add(std::uint32_t color, std::uint64_t count) {
    std::size_t slot = color * 0x9E3779B1U >> (32 - kSlotBits);
    while (slots_[slot] != 0) {
      CountedColor& there = colors_[slots_[slot] - 1U];
      if (there.color == color) {
        there.count += count;
        return true;
      }
      slot = (slot + 1) % kSlots;
    }
    if (colors_.size() == kMaxExactColors) return false;
    colors_.push_back({color, count});
    slots_[slot] = static_cast<std::uint16_t>(colors_.size());
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

  std::vector<CountedColor> Take() { return std::move(colors_); }

 private:
  static constexpr unsigned kSlotBits = 15;
  static constexpr std::size_t kSlots = std::size_t{1} << kSlotBits;

  std::vector<std::uint16_t> slots_ = std::vector<std::uint16_t>(kSlots);  // 0: free, else 1 + place in colors_
  std::vector<CountedColor> colors_;
};

}  // namespace

std::optional<std::vector<CountedColor>> CountExactColors(std::span<const ColorPage> pages, bool grayscale) {
  ColorTable table;
  std::vector<std::uint32_t> row;
  for (const ColorPage& page : pages) {
    row.resize(page.width);
    for (std::uint32_t y = 0; y < page.height; ++y) {
      ReadColors(page, y, grayscale, row.data());
      if (!table.AddRow(row)) return std::nullopt;
    }
  }
  return table.Take();
}

}  // namespace glib
