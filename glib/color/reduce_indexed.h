#ifndef GLIB_COLOR_REDUCE_INDEXED_H_
#define GLIB_COLOR_REDUCE_INDEXED_H_

#include <cstdint>

namespace glib {

// Brings a raster of 8 or 4 bits (`sourceBits`) down to 4 bits, from 8 only, or to 1 bit (`targetBits`). Indices are
// written a byte each all the same. Rows are padded to 4 bytes where `sourceAligned` and `destAligned` say so, else to
// whole bytes. False, with `destination` not to be used: other depths, or no memory.
//
// 1 bit gives opaque white and opaque black. 4 bits give up to 16 colours of the source, made by a colour tree if it
// uses more; `grayscale` turns them into greys. The other entries of `destPalette` (256 words) are opaque black and not
// referred to. Bytes behind the pixels of a row are left alone.
bool ReduceIndexed(const std::uint8_t* source, std::uint32_t width, std::uint32_t height,
                   const std::uint32_t* sourcePalette, std::uint32_t sourceBits, std::uint32_t targetBits,
                   bool sourceAligned, bool grayscale, bool dither, std::uint8_t* destination,
                   std::uint32_t* destPalette, bool destAligned);

}  // namespace glib

#endif  // GLIB_COLOR_REDUCE_INDEXED_H_
