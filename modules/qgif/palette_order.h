#ifndef MODULES_QGIF_PALETTE_ORDER_H_
#define MODULES_QGIF_PALETTE_ORDER_H_

#include <cstdint>
#include <span>
#include <vector>

#include "glib/color/color_space.h"
#include "modules/common/page_builder.h"
#include "modules/qgif/page_pixels.h"

namespace qgif {

// Orders the colours of a table (opaque words) that several pages share, for files whose frames hold only what changes
// from page to page: colours of the frames that need the fewest come first, so that such frames have low indices and
// short codes. Frames are taken for what the nearest colours of their changed pixels are.
void OrderForChanges(std::span<const modules::Page* const> pages, const PixelView& view, glib::ColorMeasure measure,
                     std::vector<std::uint32_t>& colors);

}  // namespace qgif

#endif  // MODULES_QGIF_PALETTE_ORDER_H_
