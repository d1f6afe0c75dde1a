#include "modules/qpcx/ega_palette.h"

#include <algorithm>

namespace qpcx {
namespace {

constexpr std::uint32_t kColours = 16;

constexpr std::uint32_t kEga[kColours] = {
    0xFF000000, 0xFF0000AA, 0xFF00AA00, 0xFF00AAAA, 0xFFAA0000, 0xFFAA00AA, 0xFFAA5500, 0xFFAAAAAA,
    0xFF555555, 0xFF5555FF, 0xFF55FF55, 0xFF55FFFF, 0xFFFF5555, 0xFFFF55FF, 0xFFFFFF55, 0xFFFFFFFF,
};

}  // namespace

void FillMissingPalette(modules::Page& page) {
  if (page.bits != 4 || page.paletteEntries != kColours) return;
  const bool missing =
      std::all_of(page.palette, page.palette + kColours, [](std::uint32_t entry) { return entry == kEga[0]; });
  if (missing) std::copy(std::begin(kEga), std::end(kEga), page.palette);
}

}  // namespace qpcx
