#ifndef TESTS_SUPPORT_SLOW_SCALING_H_
#define TESTS_SUPPORT_SLOW_SCALING_H_

#include <cstdint>
#include <vector>

#include "glib/pixel/raster_view.h"

namespace test_support {

// What scaling must give, pixel after pixel from the formulas, with no step shared between pixels. The block has padded
// rows; padding is 0.
std::vector<std::uint8_t> SlowScale(const glib::RasterView& source, std::int32_t width, std::int32_t height,
                                    bool smooth);

}  // namespace test_support

#endif  // TESTS_SUPPORT_SLOW_SCALING_H_
