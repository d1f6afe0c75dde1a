#include "glib/color/palette_mapper.h"

#include <algorithm>
#include <cstddef>

#include "glib/color/damped_diffusion.h"
#include "glib/color/nearest_listed.h"

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
      firstIndex_(colors.empty() ? 0 : settings.firstIndex),
      colors_(AtLeastBlack(colors)),
      lists_(colors_, firstIndex_, MeasureOf(settings.level)) {}

void PaletteMapper::Map(const ColorPage& page, const std::uint8_t* held, std::uint8_t* indices) {
  if (settings_.dither) return Dither(page, held, indices);
  std::vector<std::uint32_t> row(page.width);
  for (std::uint32_t y = 0; y < page.height; ++y) {
    const std::size_t start = std::size_t{y} * page.width;
    ReadColors(page, y, settings_.grayscale, row.data());
    FindNearest(lists_, row.data(), row.size(), held == nullptr ? nullptr : held + start, indices + start);
  }
}

void PaletteMapper::Dither(const ColorPage& page, const std::uint8_t* held, std::uint8_t* indices) {
  constexpr std::size_t kRows = DampedDiffusion::kBandRows;
  const std::size_t width = page.width;
  DampedDiffusion diffusion(lists_, colors_, firstIndex_, DiffusionStrength(colors_.size()), width);
  std::vector<std::uint32_t> band(width * kRows);
  for (std::size_t y = 0; y < page.height; y += kRows) {
    const std::size_t rows = std::min(kRows, page.height - y);
    for (std::size_t row = 0; row < rows; ++row) {
      ReadColors(page, static_cast<std::uint32_t>(y + row), settings_.grayscale, band.data() + row * width);
    }
    if (held != nullptr) {
      for (std::size_t i = 0; i < rows * width; ++i) {
        if (held[y * width + i] != 0) band[i] = kHeldPixel;
      }
    }
    diffusion.DiffuseBand(band.data(), rows, indices + y * width);
  }
}

}  // namespace glib
