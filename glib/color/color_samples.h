#ifndef GLIB_COLOR_COLOR_SAMPLES_H_
#define GLIB_COLOR_COLOR_SAMPLES_H_

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "glib/color/color_page.h"
#include "glib/color/color_space.h"
#include "glib/color/exact_colors.h"

namespace glib {

// Pixels of like colour: their mean and number.
struct ColorCell {
  Place place;
  FineColor mean;
  std::uint32_t count;
};

// One cell a colour.
std::vector<ColorCell> CellsOf(std::span<const CountedColor> colors, const ColorSpace& space);

// The cells of a histogram with 6 bits a channel, over every n-th pixel of all pages so that there are about `samples`.
std::vector<ColorCell> SampleCells(std::span<const ColorPage> pages, bool grayscale, std::uint64_t samples,
                                   const ColorSpace& space);

}  // namespace glib

#endif  // GLIB_COLOR_COLOR_SAMPLES_H_
