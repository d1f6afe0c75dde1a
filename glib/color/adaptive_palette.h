#ifndef GLIB_COLOR_ADAPTIVE_PALETTE_H_
#define GLIB_COLOR_ADAPTIVE_PALETTE_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "glib/color/color_page.h"
#include "glib/color/color_space.h"

namespace glib {

// How much time a palette may take, and what it should be good for.
enum class PaletteLevel { kFast, kDefault, kBest, kPerceptual };

// From the units digit of the quantisation setting: 1 is fast, 8 best, 9 perceptual, others as the next lower one and
// 0 as the default. Negative settings count as 0.
PaletteLevel PaletteLevelOf(std::int32_t quantize);

// Distances for this level; mapping has to use the same.
ColorMeasure MeasureOf(PaletteLevel level);

struct PaletteSettings {
  std::size_t maxColors = 256;  // 1 to 256; others are brought to the nearest of these
  PaletteLevel level = PaletteLevel::kDefault;
  bool grayscale = false;  // colours become grey before anything else
  bool dither = false;     // the palette is for error diffusion, which reaches colours between the entries
};

struct AdaptivePalette {
  std::vector<std::uint32_t> colors;  // words with alpha 255, the most frequent first; empty if no pixel has a colour
  bool exact = false;                 // these are all colours of the pages, so that mapping changes nothing
};

// The colours that stand best for all pages together. Transparent pixels take no part. The same pages and settings give
// the same palette on every processor.
AdaptivePalette BuildAdaptivePalette(std::span<const ColorPage> pages, const PaletteSettings& settings);

}  // namespace glib

#endif  // GLIB_COLOR_ADAPTIVE_PALETTE_H_
