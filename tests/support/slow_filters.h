#ifndef TESTS_SUPPORT_SLOW_FILTERS_H_
#define TESTS_SUPPORT_SLOW_FILTERS_H_

#include <cstdint>
#include <vector>

#include "glib/pixel/raster_view.h"

namespace test_support {

// What a 3 by 3 kernel makes of a 32-bit raster of at least 3 x 3, in double precision from its nine weights.
std::vector<std::uint32_t> SlowConvolve(const glib::RasterView& source, const float* weights, double scale,
                                        double bias);

// What a rank filter makes of it, by sorting the nine neighbours of every pixel.
std::vector<std::uint32_t> SlowRank(const glib::RasterView& source, std::size_t rank);

}  // namespace test_support

#endif  // TESTS_SUPPORT_SLOW_FILTERS_H_
