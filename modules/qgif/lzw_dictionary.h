#ifndef MODULES_QGIF_LZW_DICTIONARY_H_
#define MODULES_QGIF_LZW_DICTIONARY_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>

namespace qgif {

inline constexpr std::uint32_t kMaxEntries = 4096;

// The strings of an LZW encoder. A string is named by its code; an entry is a string and the pixel behind it.
//
// Entries stand in a dense table, so that one load finds them. With many colours those whose pixel repeats the last one
// of the string have a small table of their own: the long runs of drawings then stay within the first cache. With 16
// and fewer the dense table does so by itself.
class LzwDictionary {
 public:
  // The system hands out zeroed pages one by one as they are touched, so that a small picture doesn't pay for 2 MB.
  LzwDictionary() : slots_(static_cast<std::uint16_t*>(std::calloc(kSlots, sizeof(std::uint16_t)))) {
    if (slots_ == nullptr) throw std::bad_alloc();
  }

  // Forgets all entries. `codeSize` is at most 8.
  void Reset(std::uint32_t codeSize) {
    // Wiping the few slots in use instead of the table saves a fifth of the time.
    for (std::uint32_t i = 0; i < used_; ++i) slots_[usedSlots_[i]] = 0;
    used_ = 0;
    codeSize_ = codeSize;
  }

  static bool HasRepeats(std::uint32_t codeSize) { return codeSize > 4; }

  // Where the entry of `code` and `pixel` stands; `last` is the last pixel of the string. kRepeats is HasRepeats.
  template <bool kRepeats>
  std::uint32_t SlotOf(std::uint32_t code, std::uint32_t pixel, std::uint32_t last) const {
    return kRepeats && pixel == last ? kFirstRepeat + code : code << codeSize_ | pixel;
  }
  // Code of the entry, or 0 for none: 0 is a pixel's code and never that of an entry.
  std::uint32_t At(std::uint32_t slot) const { return slots_[slot]; }

  void Set(std::uint32_t slot, std::uint32_t code) {
    slots_[slot] = static_cast<std::uint16_t>(code);
    usedSlots_[used_++] = slot;
  }
  // Takes back the entry that was set last.
  void Unset() { slots_[usedSlots_[--used_]] = 0; }

 private:
  static constexpr std::uint32_t kFirstRepeat = kMaxEntries << 8;
  static constexpr std::size_t kSlots = std::size_t{kFirstRepeat} + kMaxEntries;

  struct Free {
    void operator()(std::uint16_t* slots) const { std::free(slots); }
  };
  std::unique_ptr<std::uint16_t[], Free> slots_;
  std::array<std::uint32_t, kMaxEntries> usedSlots_{};
  std::uint32_t used_ = 0;
  std::uint32_t codeSize_ = 2;
};

}  // namespace qgif

#endif  // MODULES_QGIF_LZW_DICTIONARY_H_
