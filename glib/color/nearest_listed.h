#ifndef GLIB_COLOR_NEAREST_LISTED_H_
#define GLIB_COLOR_NEAREST_LISTED_H_

#include <cstddef>
#include <cstdint>

#include "glib/color/candidate_lists.h"

namespace glib {

// The index of the nearest entry for each of `count` colours, at a tie the lowest. Colours are words as ReadColors
// gives them; those without colour get index 0. Where `held` is not null, pixels with a byte other than 0 there are
// left as they are in `indices`.
void FindNearest(CandidateLists& lists, const std::uint32_t* colors, std::size_t count, const std::uint8_t* held,
                 std::uint8_t* indices);

}  // namespace glib

#endif  // GLIB_COLOR_NEAREST_LISTED_H_
