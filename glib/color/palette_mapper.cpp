#include "glib/color/palette_mapper.h"

#include <cstddef>

#include "glib/color/nearest_entry.h"

namespace glib {
namespace {

// A search needs an entry to find.
std::vector<std::uint32_t> AtLeastBlack(std::span<const std::uint32_t> colors) {
  if (colors.empty()) return {kOpaqueAlpha};
  return {colors.begin(), colors.end()};
}

}  // namespace

PaletteMapper::PaletteMapper(std::span<const std::uint32_t> colors, const MapSettings& settings)
    : settings_(settings),
      colors_(AtLeastBlack(colors)),
      lists_(colors_, colors.empty() ? 0 : settings.firstIndex, MeasureOf(settings.level)) {}

void PaletteMapper::Map(const ColorPage& page, const std::uint8_t* held, std::uint8_t* indices) {
  std::vector<std::uint32_t> row(page.width);
  for (std::uint32_t y = 0; y < page.height; ++y) {
    const std::size_t start = std::size_t{y} * page.width;
    ReadColors(page, y, settings_.grayscale, row.data());
    FindNearest(lists_, row.data(), row.size(), held == nullptr ? nullptr : held + start, indices + start);
  }
}

}  // namespace glib
