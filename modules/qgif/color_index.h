#ifndef MODULES_QGIF_COLOR_INDEX_H_
#define MODULES_QGIF_COLOR_INDEX_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "modules/qgif/page_pixels.h"

namespace qgif {

// A set of at most 256 words, each with its number in the order in which they came.
class ColorIndex {
 public:
  ColorIndex() { slots_.fill(kFree); }

  std::uint32_t Count() const { return static_cast<std::uint32_t>(words_.size()); }
  const std::vector<std::uint32_t>& Words() const { return words_; }
  bool HasTransparent() const { return Find(kTransparent) >= 0; }

  // Number of the word, or -1.
  int Find(std::uint32_t word) const {
    const std::int16_t found = slots_[SlotOf(word)];
    return found;
  }

  // Adds the word unless it is there. False: there is no room for it below `limit` words.
  bool Add(std::uint32_t word, std::uint32_t limit) {
    const std::size_t slot = SlotOf(word);
    if (slots_[slot] != kFree) return true;
    if (Count() >= limit) return false;
    slots_[slot] = static_cast<std::int16_t>(words_.size());
    words_.push_back(word);
    return true;
  }

 private:
  static constexpr std::size_t kSlots = 1024;  // at most a quarter is used, so that a free one is always near
  static constexpr std::int16_t kFree = -1;

  std::size_t SlotOf(std::uint32_t word) const {
    std::size_t slot = word * 0x9E3779B1U >> 22;
    while (slots_[slot] != kFree && words_[static_cast<std::size_t>(slots_[slot])] != word) slot = (slot + 1) % kSlots;
    return slot;
  }

  std::array<std::int16_t, kSlots> slots_{};
  std::vector<std::uint32_t> words_;
};

}  // namespace qgif

#endif  // MODULES_QGIF_COLOR_INDEX_H_
