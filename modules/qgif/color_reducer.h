#ifndef MODULES_QGIF_COLOR_REDUCER_H_
#define MODULES_QGIF_COLOR_REDUCER_H_

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "glib/color/palette_mapper.h"
#include "modules/common/page_builder.h"
#include "modules/qgif/page_pixels.h"

namespace qgif {

struct ReducerSettings {
  std::uint32_t maxEntries = 256;  // 2 to 256, the transparent one included
  bool dither = false;
  bool changesOnly = false;  // frames hold what changes from page to page
  std::int32_t level = 0;    // of the palette: 1 fast, 8 best, 9 by the eye's measure, others the default
};

// Pages that have more colours than a table holds, brought to one palette.
class ColorReducer {
 public:
  // With `transparent` entry 0 is left for pixels without colour. The pages must outlive this object.
  ColorReducer(std::span<const modules::Page* const> pages, const PixelView& view, const ReducerSettings& settings,
               bool transparent);

  const std::vector<std::uint32_t>& Entries() const { return entries_; }  // opaque words

  // Indices of a page, one a byte, rows without padding. Pixels whose byte in `held` (may be null) isn't 0 keep what
  // stands in `indices`, take no error and pass none on; so do transparent ones, which get index 0.
  void Map(const modules::Page& page, const std::uint8_t* held, std::uint8_t* indices) const;

 private:
  PixelView view_;
  std::vector<std::uint32_t> entries_;
  std::unique_ptr<glib::PaletteMapper> mapper_;
};

}  // namespace qgif

#endif  // MODULES_QGIF_COLOR_REDUCER_H_
