#ifndef GLIB_COLOR_NEAREST_ENTRY_H_
#define GLIB_COLOR_NEAREST_ENTRY_H_

#include <cstddef>
#include <cstdint>
#include <span>

namespace glib {

// Index of the entry nearest to a colour by the sum of squared differences of bytes 0, 1 and 2; the lowest index wins a
// tie. `count` is at least 1. Channels may have any value; squares and their sum wrap as signed 32-bit numbers.
std::uint32_t NearestEntryPlain(const std::uint32_t* palette, std::uint32_t count, std::int32_t c0, std::int32_t c1,
                                std::int32_t c2);

// The same search for many colours against one palette. It learns, cell by cell of the space around the colour cube,
// which entries can win there; far out cells are larger, and at last it compares with all entries at once.
class NearestEntryFinder {
 public:
  // `palette` holds `count` (1 to 256) words; it is copied. `searches`: about how many are to come; few are not worth
  // learning for. Without the memory to learn it works all the same.
  NearestEntryFinder(const std::uint32_t* palette, std::uint32_t count, std::uint64_t searches);
  NearestEntryFinder(const NearestEntryFinder&) = delete;
  NearestEntryFinder& operator=(const NearestEntryFinder&) = delete;
  ~NearestEntryFinder();

  std::uint32_t Find(std::int32_t c0, std::int32_t c1, std::int32_t c2) {
    if (!kGrids[0].Holds(c0, c1, c2)) return FindFar(c0, c1, c2);
    const std::uint32_t list = ListOf(0, kGrids[0].CellOf(c0, c1, c2));
    if (list <= kSingle) return list != kUnknown ? list - 1 : FindAmongAll(c0, c1, c2);
    std::uint32_t best = 0xFFFFFFFF;
    for (const Candidate& candidate : Candidates(list)) {
      // The sum stays below 2^24, so the index fits beside it, and the least word is the first nearest entry.
      const std::int32_t d0 = c0 - candidate.c0;
      const std::int32_t d1 = c1 - candidate.c1;
      const std::int32_t d2 = c2 - candidate.c2;
      const std::uint32_t word = static_cast<std::uint32_t>(d0 * d0 + d1 * d1 + d2 * d2) << 8 | candidate.index;
      best = word < best ? word : best;
    }
    return best & 255;
  }

 private:
  // A cube of values in 64 cells a channel.
  struct Grid {
    std::int32_t first;   // the least value of a channel
    std::uint32_t shift;  // of the size of a cell

    std::uint32_t Place(std::int32_t c) const {
      return static_cast<std::uint32_t>(c) - static_cast<std::uint32_t>(first);
    }
    bool Holds(std::int32_t c0, std::int32_t c1, std::int32_t c2) const {
      return (Place(c0) | Place(c1) | Place(c2)) >> shift < 64;
    }
    std::uint32_t CellOf(std::int32_t c0, std::int32_t c1, std::int32_t c2) const {
      return (Place(c2) >> shift) << 12 | (Place(c1) >> shift) << 6 | Place(c0) >> shift;
    }
  };
  // Dithering keeps nearly all values in the first where the palette can follow the picture, else errors pile up.
  static constexpr Grid kGrids[] = {{-128, 3}, {-2048, 6}, {-16384, 9}, {-131072, 12}, {-1048576, 15}};
  static constexpr std::uint32_t kCells = 1U << 18;  // of each grid
  // A cell holds 0, or 1 + the only entry that can win, or the place of its list with its length in the low 9 bits.
  static constexpr std::uint32_t kUnknown = 0;
  static constexpr std::uint32_t kSingle = 256;

  struct Candidate {
    std::int16_t c0, c1, c2;
    std::uint16_t index;
  };
  // Lists begin at place 1, so that none is taken for an index; place and length share a word.
  static constexpr std::uint32_t kMaxCandidates = 1U << 19;

  std::span<const Candidate> Candidates(std::uint32_t list) const {
    return {candidates_ + (list >> 9), std::size_t{list & 511}};
  }

  // What a cell of a grid holds, which it learns first where it isn't known. kUnknown: it can't.
  std::uint32_t ListOf(std::size_t grid, std::uint32_t cell) {
    if (cells_ == nullptr) return kUnknown;
    std::uint32_t& list = cells_[grid * kCells + cell];
    if (list == kUnknown) list = Learn(kGrids[grid], cell);
    return list;
  }

  std::uint32_t FindFar(std::int32_t c0, std::int32_t c1, std::int32_t c2);
  std::uint32_t FindAmongAll(std::int32_t c0, std::int32_t c1, std::int32_t c2) const;
  std::uint32_t Learn(const Grid& grid, std::uint32_t cell);

  std::uint32_t count_;
  std::uint32_t candidateCount_ = 1;
  Candidate* candidates_ = nullptr;
  std::uint32_t* cells_ = nullptr;  // grid by grid
  // Entries channel by channel, filled up to whole vectors with copies of the last one.
  alignas(64) std::int32_t channels_[3][256] = {};
};

}  // namespace glib

#endif  // GLIB_COLOR_NEAREST_ENTRY_H_
