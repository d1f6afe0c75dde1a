#ifndef GLIB_FORMAT_DEPTH_CONVERSION_H_
#define GLIB_FORMAT_DEPTH_CONVERSION_H_

#include <cstdint>

#include "glib/raster/raster_block.h"

namespace glib {

// Conversions of a raster block in place. False leaves the block as it was: no memory, or a metafile that can't be
// rendered. Reports go through the block's own callback with the text "prepare...".

bool ToDepth32(RasterBlock& block, double yDpi, double xDpi);
// `background` is a pixel word that a rendered metafile is laid on.
bool ToDepth24(RasterBlock& block, double yDpi, double xDpi, std::uint32_t background);
// To indices in at most `paletteEntries` colours. Rows are padded to 4 bytes with `aligned`, else to whole bytes. A
// stop answer gives false.
bool ToDepth8(RasterBlock& block, bool aligned, double yDpi, double xDpi);

// Makes the block a 32-bit one with these pixels: a copy of them, or the block itself, which must then come from
// platform::AllocatePages. Without memory for a copy the block is left without pixels.
void SetPixels32(RasterBlock& block, std::uint8_t* pixels, std::int32_t width, std::int32_t height, bool copy);

// One row of 1, 4 or 8 bits to 32-bit words. A null palette at 1 bit means opaque black and opaque white.
void ExpandRow(std::uint32_t* target, const std::uint8_t* source, const std::uint32_t* palette, std::int32_t width,
               std::int32_t bits);

}  // namespace glib

#endif  // GLIB_FORMAT_DEPTH_CONVERSION_H_
