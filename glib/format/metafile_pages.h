#ifndef GLIB_FORMAT_METAFILE_PAGES_H_
#define GLIB_FORMAT_METAFILE_PAGES_H_

#include <cstdint>

#include "glib/raster/raster_block.h"

namespace glib {

// Both draw a metafile into a new block from platform::AllocatePages, which the caller owns. Null: no metafile, one
// that can't be read, or no memory. A negative `width` or `height` is replaced by the size of the metafile's frame, the
// width by the horizontal resolution, the height by the vertical one, in dots per inch; a resolution of 0.0 counts as
// 72.0. The size is written also if the drawing then fails.

// 32 bits; what the metafile doesn't paint is 0, fully transparent, and what it paints is opaque.
std::uint8_t* RenderMetafile32(MetafileHandle metafile, double yDpi, double xDpi, std::int32_t& width,
                               std::int32_t& height);

// Padded rows of 1, 4, 8, 16, 24 or 32 bits (others count as 24), over the pixel word `background`. There is no
// palette: below 16 bits the pixels are the greys from black to white.
std::uint8_t* RenderMetafile(MetafileHandle metafile, std::int32_t bits, double yDpi, double xDpi, std::int32_t& width,
                             std::int32_t& height, std::uint32_t background);

// The size that the two would give; false for what they can't read.
bool MetafileSize(MetafileHandle metafile, double yDpi, double xDpi, std::int32_t& width, std::int32_t& height);

// Makes a block with pixels a metafile of the same size that holds them as a bitmap. False leaves it as it was.
bool WrapInMetafile(RasterBlock& block);

}  // namespace glib

#endif  // GLIB_FORMAT_METAFILE_PAGES_H_
