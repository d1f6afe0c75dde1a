#include <cstddef>
#include <cstdint>
#include <cstring>

#include "app/attempt.h"
#include "app/converter.h"
#include "app/status_log.h"
#include "glib/model/film.h"
#include "glib/model/film_body.h"

namespace app {
namespace {

// Lays `count` pixels on `background`, a pixel word, and makes them opaque. The three colours are worked out two in one
// word: each is c * (256 - inverse) + b * inverse, at most 255 * 256, shifted right by 8, so no carry leaves its half.
void FlattenPixels(std::uint8_t* pixels, std::size_t count, std::uint32_t background) {
  constexpr std::uint32_t kOuter = 0x00FF00FF;
  const std::uint32_t backOuter = background & kOuter;
  const std::uint32_t backMiddle = background >> 8 & 0xFF;
  for (std::size_t i = 0; i < count; ++i, pixels += 4) {
    std::uint32_t pixel;
    std::memcpy(&pixel, pixels, 4);
    const std::uint32_t inverse = 255 - (pixel >> 24);
    const std::uint32_t outer = ((pixel & kOuter) * (256 - inverse) + backOuter * inverse) >> 8 & kOuter;
    const std::uint32_t middle = ((pixel >> 8 & 0xFF) * (256 - inverse) + backMiddle * inverse) & 0xFF00;
    pixel = 0xFF000000 | outer | middle;
    std::memcpy(pixels, &pixel, 4);
  }
}

void FlattenSlides(glib::Film& film) {
  const std::uint32_t background = glib::ToPixel(film.GetBackground(glib::Film::kWholeFilm));
  for (std::uint32_t i = 0; i < film.Count(); ++i) {
    if (film.LayerCount(i) != 1 && !film.MergeLayers(i, 0, glib::Film::kAll)) return;
    if (film.LayerBits(i, 0) != 32) continue;
    glib::Slide& slide = *film.body().GetSlide(i);
    const glib::RasterBlock& raster = slide.GetLayer(0)->raster;
    if (raster.pixels == nullptr) continue;
    FlattenPixels(raster.pixels, static_cast<std::size_t>(raster.width) * static_cast<std::size_t>(raster.height),
                  background);
    slide.stale = true;
  }
}

}  // namespace

bool Converter::RunChain(glib::Film* film, const ConvertSettings* settings) {
  RunLog().Report(kProcessing, "");
  for (std::uint32_t i = 0; i < settings->tasks.count; ++i) {
    const glib::TASK& task = *settings->tasks.At(i);
    Attempt([&] { return task.handler(film, task.params); });
  }
  if (settings->delay != 0) film->SetDelay(static_cast<std::uint32_t>(settings->delay), 0, glib::Film::kAll);
  if (settings->flattenAlpha) {
    Attempt([&] {
      FlattenSlides(*film);
      return true;
    });
  }
  RunLog().Report(kOk, "");
  return true;
}

}  // namespace app
