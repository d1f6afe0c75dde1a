#ifndef GLIB_COLOR_NEAREST_ENTRY_H_
#define GLIB_COLOR_NEAREST_ENTRY_H_

#include <cstdint>

namespace glib {

// Index of the entry nearest to a colour by the sum of squared differences of bytes 0, 1 and 2; the lowest index wins a
// tie. `count` is at least 1. Channels may have any value; squares and their sum wrap as signed 32-bit numbers.
std::uint32_t NearestEntryPlain(const std::uint32_t* palette, std::uint32_t count, std::int32_t c0, std::int32_t c1,
                                std::int32_t c2);

// The same search for many colours against one palette. Near the colour cube it learns, cell by cell, which entries can
// win there; further out it compares with all entries at once.
class NearestEntryFinder {
 public:
  // `palette` holds `count` (1 to 256) words; it is copied. `searches`: about how many are to come; few are not worth
  // learning for. Without the memory to learn it works all the same.
  NearestEntryFinder(const std::uint32_t* palette, std::uint32_t count, std::uint64_t searches);
  NearestEntryFinder(const NearestEntryFinder&) = delete;
  NearestEntryFinder& operator=(const NearestEntryFinder&) = delete;
  ~NearestEntryFinder();

  std::uint32_t Find(std::int32_t c0, std::int32_t c1, std::int32_t c2) {
    const std::uint32_t u0 = static_cast<std::uint32_t>(c0) + kBelow;
    const std::uint32_t u1 = static_cast<std::uint32_t>(c1) + kBelow;
    const std::uint32_t u2 = static_cast<std::uint32_t>(c2) + kBelow;
    if ((u0 | u1 | u2) >= kRange || cells_ == nullptr) return FindFar(c0, c1, c2);
    const std::uint32_t cell = (u2 >> kCellShift) << 12 | (u1 >> kCellShift) << 6 | u0 >> kCellShift;
    std::uint32_t list = cells_[cell];
    if (list <= kSingle) {
      if (list != kUnknown) return list - 1;
      list = Learn(cell);
      if (list <= kSingle) return list == kUnknown ? FindFar(c0, c1, c2) : list - 1;
    }
    const Candidate* candidate = candidates_ + (list >> 9);
    const Candidate* end = candidate + (list & 511);
    std::uint32_t best = 0xFFFFFFFF;
    for (; candidate != end; ++candidate) {
      // Squares come out right although the differences wrap. They stay below 2^20, so the index fits beside their sum,
      // and the least word is the first nearest entry.
      const std::uint32_t d0 = u0 - candidate->c0;
      const std::uint32_t d1 = u1 - candidate->c1;
      const std::uint32_t d2 = u2 - candidate->c2;
      const std::uint32_t word = (d0 * d0 + d1 * d1 + d2 * d2) << 8 | candidate->index;
      best = word < best ? word : best;
    }
    return best & 255;
  }

 private:
  // Cells of 8 values a channel over the values -128 to 383, where dithering keeps nearly all values.
  static constexpr std::uint32_t kBelow = 128;
  static constexpr std::uint32_t kRange = 512;
  static constexpr std::uint32_t kCellShift = 3;
  static constexpr std::uint32_t kCells = 1U << 18;
  // A cell holds 0, or 1 + the only entry that can win, or the place of its list with its length in the low 9 bits.
  static constexpr std::uint32_t kUnknown = 0;
  static constexpr std::uint32_t kSingle = 256;

  struct Candidate {
    std::uint16_t c0, c1, c2;  // plus kBelow
    std::uint16_t index;
  };
  // Lists begin at place 1, so that none is taken for an index; place and length share a word.
  static constexpr std::uint32_t kMaxCandidates = 1U << 19;

  std::uint32_t FindFar(std::int32_t c0, std::int32_t c1, std::int32_t c2) const;
  // kUnknown: no more room.
  std::uint32_t Learn(std::uint32_t cell);

  std::uint32_t count_;
  std::uint32_t candidateCount_ = 1;
  Candidate* candidates_ = nullptr;
  std::uint32_t* cells_ = nullptr;
  // Entries channel by channel, filled up to whole vectors with copies of the last one.
  alignas(64) std::int32_t channels_[3][256];
};

}  // namespace glib

#endif  // GLIB_COLOR_NEAREST_ENTRY_H_
