#ifndef GLIB_MODEL_OVER_ROWS_H_
#define GLIB_MODEL_OVER_ROWS_H_

#include <cstddef>
#include <cstdint>

namespace glib {

// The plain ways to lay a row on another one. A row is `count` 32-bit pixels, in memory blue, green, red, alpha,
// colours not multiplied by alpha. Rows need no alignment; `source` and `target` may be the same row, but may not
// overlap in part. Below, s and d are a colour of source and target, sa and da their alphas. The `...Plain` forms take
// one pixel after the other; the others equal them on every processor.

// Colours d + ((s - d) * sa >> 8); alpha becomes sa.
void MixRow(std::uint32_t* target, const std::uint32_t* source, std::size_t count);
void MixRowPlain(std::uint32_t* target, const std::uint32_t* source, std::size_t count);

// The same on a target that is `color` all over and isn't read.
void MixRowOnColor(std::uint32_t* target, const std::uint32_t* source, std::uint32_t color, std::size_t count);
void MixRowOnColorPlain(std::uint32_t* target, const std::uint32_t* source, std::uint32_t color, std::size_t count);

// With p = sa * da / 255, colours (s * (255 + p - da) + d * (da - p)) / 255; alpha becomes sa + da, at most 255.
void OverRow(std::uint32_t* target, const std::uint32_t* source, std::size_t count);
void OverRowPlain(std::uint32_t* target, const std::uint32_t* source, std::size_t count);

// In place, with b a colour of the pixel word `background`: colours c * alpha / 255 - alpha + b, from 0 to 255; alpha
// stays. Exact for a white background, shifted by the difference from white for others.
void LayOnBackground(std::uint32_t* row, std::uint32_t background, std::size_t count);
void LayOnBackgroundPlain(std::uint32_t* row, std::uint32_t background, std::size_t count);

}  // namespace glib

#endif  // GLIB_MODEL_OVER_ROWS_H_
