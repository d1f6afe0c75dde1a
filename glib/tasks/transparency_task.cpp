#include "glib/tasks/transparency_task.h"

#include <algorithm>
#include <vector>

#include "glib/model/film.h"
#include "glib/model/film_body.h"

namespace glib {
namespace {

constexpr std::uint32_t kColorMask = 0x00FFFFFF;

// Colours of pixel words, each once: further equal ones would only cost time.
std::vector<std::uint32_t> PixelColors(const TransparencyParams& params) {
  std::vector<std::uint32_t> colors;
  for (std::int32_t i = 0; i < params.count; ++i) {
    RGB32 color(0, 0, 0, 0);
    color.SetRgb(params.Colors()[i]);
    colors.push_back(ToPixel(color));
  }
  std::sort(colors.begin(), colors.end());
  colors.erase(std::unique(colors.begin(), colors.end()), colors.end());
  return colors;
}

}  // namespace

// One pass over the row a colour, while the row is in the cache: each is a loop without branches.
void ClearAlphaOfColors(std::uint32_t* row, std::size_t pixelCount, const std::uint32_t* colors,
                        std::size_t colorCount) {
  for (std::size_t c = 0; c < colorCount; ++c) {
    const std::uint32_t color = colors[c];
    for (std::size_t i = 0; i < pixelCount; ++i) {
      const std::uint32_t bare = row[i] & kColorMask;
      row[i] = bare == color ? bare : row[i];
    }
  }
}

bool TaskTransparency(Film* film, const void* params) {
  const std::vector<std::uint32_t> colors = PixelColors(*static_cast<const TransparencyParams*>(params));
  for (std::uint32_t s = 0; s < film->Count(); ++s) {
    if (film->LayerCount(s) != 1 && !film->MergeLayers(s, 0, Film::kAll)) return false;
    if (!film->ConvertBits(32, s, 0)) return false;
    Slide* slide = film->body().GetSlide(s);
    const RasterBlock& raster = slide->GetLayer(0)->raster;
    if (raster.pixels == nullptr || raster.width <= 0) continue;
    const auto width = static_cast<std::size_t>(raster.width);
    auto* row = reinterpret_cast<std::uint32_t*>(raster.pixels);
    for (std::int32_t y = 0; y < raster.height; ++y, row += width) {
      ClearAlphaOfColors(row, width, colors.data(), colors.size());
    }
    slide->stale = true;
  }
  return true;
}

}  // namespace glib
