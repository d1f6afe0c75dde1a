#ifndef GLIB_COLOR_DITHER_FEEDBACK_H_
#define GLIB_COLOR_DITHER_FEEDBACK_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "glib/color/color_page.h"
#include "glib/color/color_space.h"

namespace glib {

// Makes a palette fit for error diffusion: dithers the pages and moves each entry towards the mean of what its pixels
// asked for, before they were brought into range. That pushes the outer entries outwards, so that the diffusion reaches
// more colours. Unless `allPixels` is set the trial leaves out columns, rows and pages as their number allows.
void MoveToDitherTargets(std::span<const ColorPage> pages, bool grayscale, ColorMeasure measure, bool allPixels,
                         std::vector<std::uint32_t>& colors);

}  // namespace glib

#endif  // GLIB_COLOR_DITHER_FEEDBACK_H_
