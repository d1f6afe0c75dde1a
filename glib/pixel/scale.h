#ifndef GLIB_PIXEL_SCALE_H_
#define GLIB_PIXEL_SCALE_H_

#include <cstdint>

#include "glib/pixel/raster_view.h"

namespace glib {

// Scales a raster in one pass over the target. Without `smooth` each target pixel is a source pixel, indices stay
// indices and the depth stays. With it the result has 32 bits and its four channels are interpolated alike.
struct RasterScaler {
  std::uintptr_t userValue = 0;  // handed back in the reports
  std::int32_t smooth = 0;

  // A new block from platform::AllocatePages with padded rows, which the caller owns; null without memory, for sizes
  // below 1, and for a raster of more than 32 bits of bytes. A stop answer leaves the remaining rows zero.
  std::uint8_t* ScaleRaster(const RasterView& source, std::int32_t targetWidth, std::int32_t targetHeight,
                            ProgressCallback callback) const;
};

}  // namespace glib

#endif  // GLIB_PIXEL_SCALE_H_
