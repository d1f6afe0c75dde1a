#ifndef GLIB_COLOR_PALETTE_DIFFUSION_H_
#define GLIB_COLOR_PALETTE_DIFFUSION_H_

#include <cstdint>

#include "glib/raster/raster_block.h"

namespace glib {

// Maps rasters to a given palette with error diffusion: every row from left to right, weights 7, 3, 5, 1 of 16, each
// share cut towards zero. The first and the last pixel of a row take errors and pass none on. Values are not limited to
// a byte before the search for the nearest entry.
//
// All members give false, with `dest` as it was, only when there is no memory. `callback` may be null; it gets reports
// with the text "dither...", and its answers count for nothing.
struct DitherTarget {
  std::uint8_t* dest;  // one index a byte
  std::uint32_t palette[256];
  std::int32_t count;  // entries in use, 1 to 256
  bool destAligned;    // rows are padded to 4 bytes, else not at all

  // Pixels of 4 bytes, whose fourth is not looked at, in rows without padding.
  bool DitherRgb32(const std::uint8_t* source, std::uint32_t width, std::uint32_t height, ProgressCallback callback,
                   std::uintptr_t user);
  // Indices into 256 words. Rows are padded to 4 bytes with `sourceAligned`, else to whole bytes.
  bool DitherIndexed8(const std::uint8_t* source, std::uint32_t width, std::uint32_t height,
                      const std::uint32_t* sourcePalette, bool sourceAligned, ProgressCallback callback,
                      std::uintptr_t user);
  // The same with two indices a byte, the first in the high half.
  bool DitherIndexed4(const std::uint8_t* source, std::uint32_t width, std::uint32_t height,
                      const std::uint32_t* sourcePalette, bool sourceAligned, ProgressCallback callback,
                      std::uintptr_t user);
};

}  // namespace glib

#endif  // GLIB_COLOR_PALETTE_DIFFUSION_H_
