#ifndef GLIB_TASKS_APPLY_PALETTE_H_
#define GLIB_TASKS_APPLY_PALETTE_H_

#include <cstdint>

namespace glib {

class Film;

// Forces all slides onto one palette; each becomes a single layer of 8 bits with all 256 `entries`, of which its pixels
// use the first `count` (at most 256) only.
//
// With `diffuse` the pixels are dithered against the palette itself. Without it a slide is reduced, with dithering, to
// a palette of its own, whose colours are then replaced by the nearest given ones.
//
// `transparentIndex` is -1 until a slide of 32 bits is met. From that slide on it is 255: pixels with alpha 0 get this
// index, and no opaque pixel has it unless the slide uses all 256 entries. Slides without alpha are opaque.
//
// False: a slide could not be brought to one layer of 8 bits, or no memory. The slides before it are converted.
bool ApplyPalette(Film& film, const std::uint32_t* entries, std::uint32_t count, bool diffuse,
                  std::int32_t& transparentIndex);

}  // namespace glib

#endif  // GLIB_TASKS_APPLY_PALETTE_H_
