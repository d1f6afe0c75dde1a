#ifndef MODULES_COMMON_LAYER_ALPHA_H_
#define MODULES_COMMON_LAYER_ALPHA_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "modules/common/page_builder.h"

// Layers of formats whose masks and opacity have no place of their own in a page: all of it goes into its alpha. Pages
// have 32 bits.

namespace modules {

// A share of a share, both in 255 steps.
inline std::uint32_t Share(std::uint32_t left, std::uint32_t right) { return (left * right + 127) / 255; }

void FadeRow(const std::uint8_t* by, Page& page, std::uint32_t y);
void FadePage(std::uint8_t by, Page& page);

// Where a mask lies, from the corner of the layer, and what counts around it.
struct MaskPlace {
  std::int64_t left;
  std::int64_t top;
  std::uint32_t width;
  std::uint32_t height;
  std::uint8_t outside;
};

// One row of a mask, fitted to the width of its layer.
void FitMaskRow(const MaskPlace& place, std::span<const std::uint8_t> maskRow, std::span<std::uint8_t> layerRow);

// `next(row)` gives the rows of the mask, each of its width, or false where there is no more.
template <typename Next>
void LayMask(const MaskPlace& place, Next next, Page& page) {
  std::vector<std::uint8_t> maskRow(place.width);
  std::vector<std::uint8_t> layerRow(static_cast<std::size_t>(page.width), place.outside);
  const std::int64_t bottom = place.top + place.height;
  for (std::int32_t y = 0; y < page.height; ++y) {
    if (y < place.top || y >= bottom) FadeRow(layerRow.data(), page, static_cast<std::uint32_t>(y));
  }
  for (std::int64_t y = place.top; y < bottom && y < page.height && next(maskRow.data()); ++y) {
    if (y < 0) continue;
    FitMaskRow(place, maskRow, layerRow);
    FadeRow(layerRow.data(), page, static_cast<std::uint32_t>(y));
  }
}

}  // namespace modules

#endif  // MODULES_COMMON_LAYER_ALPHA_H_
