#ifndef GLIB_COLOR_ASSIGN_PALETTE_H_
#define GLIB_COLOR_ASSIGN_PALETTE_H_

#include <cstdint>

#include "glib/raster/raster_block.h"

namespace glib {

// Rewrites the indices of an 8-bit raster, whose rows are padded to 4 bytes, from one palette to the nearest entries of
// another (1 to 256 entries each; the lowest of equally near ones). Indices at or past `oldCount` become 0. Padding is
// left alone. `callback` may be null; it gets reports with the text "assign...", and its answers count for nothing.
void AssignPalette(std::uint8_t* pixels, const std::uint32_t* oldPalette, std::uint32_t oldCount,
                   const std::uint32_t* newPalette, std::uint32_t newCount, std::uint32_t width, std::uint32_t height,
                   ProgressCallback callback, std::uintptr_t user);

}  // namespace glib

#endif  // GLIB_COLOR_ASSIGN_PALETTE_H_
