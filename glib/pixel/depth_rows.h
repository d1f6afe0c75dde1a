#ifndef GLIB_PIXEL_DEPTH_ROWS_H_
#define GLIB_PIXEL_DEPTH_ROWS_H_

#include <cstddef>
#include <cstdint>

namespace glib {

// Rows from one pixel layout to another. `count` is in pixels; rows need no alignment and may not overlap. Nothing is
// written behind the last pixel. The `...Plain` forms take one pixel after the other; the others equal them.

// Blue, green, red to words with alpha 255.
void WidenRow(std::uint32_t* target, const std::uint8_t* source, std::size_t count);
void WidenRowPlain(std::uint32_t* target, const std::uint8_t* source, std::size_t count);

// Words to blue, green, red; alpha is dropped.
void NarrowRow(std::uint8_t* target, const std::uint32_t* source, std::size_t count);
void NarrowRowPlain(std::uint8_t* target, const std::uint32_t* source, std::size_t count);

// Indices of 8, 4 or 1 bits to the words of a palette of 256, 16 or 2 entries.
void ExpandBytes(std::uint32_t* target, const std::uint8_t* source, const std::uint32_t* palette, std::size_t count);
void ExpandNibbles(std::uint32_t* target, const std::uint8_t* source, const std::uint32_t* palette, std::size_t count);
void ExpandBits(std::uint32_t* target, const std::uint8_t* source, const std::uint32_t* palette, std::size_t count);
void ExpandBitsPlain(std::uint32_t* target, const std::uint8_t* source, const std::uint32_t* palette,
                     std::size_t count);

// Indices of 8, 4 or 1 bits to one index a byte.
void UnpackRow(std::uint8_t* target, const std::uint8_t* source, std::size_t count, std::int32_t bits);

}  // namespace glib

#endif  // GLIB_PIXEL_DEPTH_ROWS_H_
