#ifndef GLIB_COLOR_EXACT_COLORS_H_
#define GLIB_COLOR_EXACT_COLORS_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "glib/color/color_page.h"

namespace glib {

struct CountedColor {
  std::uint32_t color;
  std::uint32_t count;  // 2^32 - 1: so many or more
  bool operator==(const CountedColor&) const = default;
};

// More colours than this don't make a better palette than a histogram does, and photographs get there soon.
inline constexpr std::size_t kMaxExactColors = 16384;

// All colours of the pages with their counts, in no order that means anything; transparent pixels have none.
// Nothing: there are more than kMaxExactColors.
std::optional<std::vector<CountedColor>> CountExactColors(std::span<const ColorPage> pages, bool grayscale);

}  // namespace glib

#endif  // GLIB_COLOR_EXACT_COLORS_H_
