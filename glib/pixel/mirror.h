#ifndef GLIB_PIXEL_MIRROR_H_
#define GLIB_PIXEL_MIRROR_H_

#include <cstdint>

namespace glib {

// Mirrors a raster of 1, 4, 8, 24 or 32 bits in place. `horizontal`: at a horizontal axis, rows change places;
// `vertical`: at a vertical axis, each row is reversed. At 1 and 4 bits `horizontal` has the upper hand when both are
// asked for. False: other bits, no pixels, neither direction, or no memory for a row; the raster stays as it was.
bool MirrorRaster(std::uint8_t* pixels, std::int32_t bits, bool rowsAligned, std::int32_t width, std::int32_t height,
                  bool horizontal, bool vertical);

}  // namespace glib

#endif  // GLIB_PIXEL_MIRROR_H_
