#include "modules/common/layer_alpha.h"

#include <algorithm>

namespace modules {

void FadeRow(const std::uint8_t* by, Page& page, std::uint32_t y) {
  std::uint8_t* alpha = Row(page, y) + 3;
  for (std::int32_t x = 0; x < page.width; ++x, alpha += 4) *alpha = static_cast<std::uint8_t>(Share(*alpha, by[x]));
}

void FadePage(std::uint8_t by, Page& page) {
  if (by == 255) return;
  const std::vector<std::uint8_t> row(static_cast<std::size_t>(page.width), by);
  for (std::int32_t y = 0; y < page.height; ++y) FadeRow(row.data(), page, static_cast<std::uint32_t>(y));
}

void FitMaskRow(const MaskPlace& place, std::span<const std::uint8_t> maskRow, std::span<std::uint8_t> layerRow) {
  const std::int64_t first = std::max<std::int64_t>(0, -place.left);
  const std::int64_t last =
      std::min<std::int64_t>(place.width, static_cast<std::int64_t>(layerRow.size()) - place.left);
  for (std::int64_t x = first; x < last; ++x) {
    layerRow[static_cast<std::size_t>(x + place.left)] = maskRow[static_cast<std::size_t>(x)];
  }
}

}  // namespace modules
