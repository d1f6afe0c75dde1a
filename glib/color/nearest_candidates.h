#ifndef GLIB_COLOR_NEAREST_CANDIDATES_H_
#define GLIB_COLOR_NEAREST_CANDIDATES_H_

#include <cstddef>
#include <cstdint>

#include "glib/color/color_space.h"

namespace glib {

// Entries that compete for a place, side by side for vectors.
//
// An entry's key for a place is (its squared length - 2 x dot product with the place) x 256 + its index: what it has
// more than the squared distance is the same for all entries, so the least key is the nearest entry, at a tie the one
// with the lowest index. Places are below 1300 an axis and squared lengths below 3.3 million, so keys fit 32 bits.
struct alignas(32) CandidateGroup {
  static constexpr std::size_t kSize = 8;

  std::int32_t redGreen[kSize];  // -2 x red in the lower half, -2 x green in the upper
  std::int32_t blue[kSize];      // -2 x blue, the upper half is 0
  std::int32_t base[kSize];      // squared length x 256 + index

  void Set(std::size_t i, const Place& place, std::uint32_t index);
  void Copy(std::size_t i, const CandidateGroup& from, std::size_t j) {
    redGreen[i] = from.redGreen[j];
    blue[i] = from.blue[j];
    base[i] = from.base[j];
  }
};

// Two axes in the halves of a word.
inline std::int32_t PairOf(std::int32_t lower, std::int32_t upper) {
  return static_cast<std::int32_t>((static_cast<std::uint32_t>(lower) & 0xFFFFU) | static_cast<std::uint32_t>(upper)
                                                                                       << 16);
}

inline void CandidateGroup::Set(std::size_t i, const Place& place, std::uint32_t index) {
  redGreen[i] = PairOf(-2 * place[0], -2 * place[1]);
  blue[i] = PairOf(-2 * place[2], 0);
  base[i] = SquaredDistance(place, {0, 0, 0}) * 256 + static_cast<std::int32_t>(index);
}

}  // namespace glib

#endif  // GLIB_COLOR_NEAREST_CANDIDATES_H_
