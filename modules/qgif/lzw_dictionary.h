#ifndef MODULES_QGIF_LZW_DICTIONARY_H_
#define MODULES_QGIF_LZW_DICTIONARY_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace qgif {

inline constexpr std::uint32_t kMaxEntries = 4096;

// The strings of an LZW encoder. A string is named by its code; an entry is a string and the pixel behind it.
//
// A hash table of which 96 KB are touched: a dense one of 2 MB needs no search, but its loads come from a slower cache,
// which cost more than the second look that 6 % of the searches take here.
class LzwDictionary {
 public:
  LzwDictionary() : slots_(kSlots) {}

  // Forgets all entries.
  void Reset() {
    // Wiping the slots in use instead of the table saves time where tables are short.
    for (std::uint32_t i = 0; i < used_; ++i) slots_[usedSlots_[i]] = 0;
    used_ = 0;
  }

  // Where the entry of a string and a pixel stands, or is to stand.
  struct Place {
    std::uint32_t slot;
    std::uint32_t code;  // 0: there is no such entry; 0 is a pixel's code and never that of an entry
  };
  Place Find(std::uint32_t code, std::uint32_t pixel) const {
    const std::uint32_t key = KeyOf(code, pixel);
    // The pixel is known early, the code at the last moment: its share of the slot costs no instruction.
    std::uint32_t slot = code * 2 + pixel * 0x9E5 % (kSlots / 2);
    for (;;) {
      const std::uint32_t entry = slots_[slot];
      const std::uint32_t rest = entry ^ key;  // of the right entry, its code
      if (rest < kMaxEntries) return {slot, rest};
      if (entry == 0) return {slot, 0};
      // Steps that differ from pixel to pixel: strings of two pixels would otherwise fill long rows of slots.
      slot = (slot + pixel * 2 + 1) % kSlots;
    }
  }

  // Makes `entry` the code of the string and the pixel that `slot` was found for.
  void Set(std::uint32_t slot, std::uint32_t code, std::uint32_t pixel, std::uint32_t entry) {
    slots_[slot] = KeyOf(code, pixel) | entry;
    usedSlots_[used_++] = static_cast<std::uint16_t>(slot);
  }
  // Takes back the entry that was set last.
  void Unset() { slots_[usedSlots_[--used_]] = 0; }

 private:
  static constexpr std::uint32_t kCodeBits = 12;  // below the key of a slot
  static constexpr std::uint32_t kSlots = 32768;
  static_assert(1U << kCodeBits == kMaxEntries);

  static std::uint32_t KeyOf(std::uint32_t code, std::uint32_t pixel) { return (code << 8 | pixel) << kCodeBits; }

  std::vector<std::uint32_t> slots_;  // key and code, 0: free
  std::array<std::uint16_t, kMaxEntries> usedSlots_{};
  std::uint32_t used_ = 0;
};

}  // namespace qgif

#endif  // MODULES_QGIF_LZW_DICTIONARY_H_
