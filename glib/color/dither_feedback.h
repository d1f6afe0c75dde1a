#ifndef GLIB_COLOR_DITHER_FEEDBACK_H_
#define GLIB_COLOR_DITHER_FEEDBACK_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "glib/color/color_page.h"
#include "glib/color/color_space.h"

namespace glib {

// Makes a palette fit for error diffusion: dithers every `step`-th column and row of the pages and moves each entry
// towards the mean of what its pixels asked for, before they were brought into range. That pushes the outer entries
// outwards, so that the diffusion reaches more colours.
void MoveToDitherTargets(std::span<const ColorPage> pages, bool grayscale, ColorMeasure measure, std::size_t step,
                         std::vector<std::uint32_t>& colors);

}  // namespace glib

#endif  // GLIB_COLOR_DITHER_FEEDBACK_H_
