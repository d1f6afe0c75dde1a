#include "tests/support/sample_film.h"

#include <cstring>

#include "glib/module_api/exchange.h"

namespace test_support {

glib::Slide& SampleFilm::AddSlide(std::int32_t width, std::int32_t height, const PixelAt& at) {
  auto* slide = new glib::Slide(glib::RGB32(255, 255, 255, 0));
  AddLayer(*slide, width, height, at);
  film.body().AddSlide(slide);
  return *slide;
}

glib::Slide& SampleFilm::AddSlide(std::int32_t width, std::int32_t height) {
  return AddSlide(width, height, PlaceWord);
}

glib::Layer& SampleFilm::AddLayer(glib::Slide& slide, std::int32_t width, std::int32_t height, const PixelAt& at) {
  auto* layer = new glib::Layer(&slide);
  SetRows(*layer, width, height, 32, [&at, width](std::uint8_t* row, std::int32_t y) {
    for (std::int32_t x = 0; x < width; ++x, row += 4) {
      const std::uint32_t word = at(x, y);
      std::memcpy(row, &word, 4);
    }
  });
  slide.AddLayer(layer);
  return *layer;
}

glib::Layer& SampleFilm::Layer(std::uint32_t slide, std::uint32_t layer) const {
  return *film.body().GetSlide(slide)->GetLayer(layer);
}

std::uint32_t SampleFilm::Pixel(std::uint32_t slide, std::int32_t x, std::int32_t y, std::uint32_t layer) const {
  const glib::RasterBlock& raster = Layer(slide, layer).raster;
  std::uint32_t word = 0;
  std::memcpy(
      &word,
      raster.pixels +
          (static_cast<std::size_t>(y) * static_cast<std::size_t>(raster.width) + static_cast<std::size_t>(x)) * 4,
      4);
  return word;
}

void SetRows(glib::Layer& layer, std::int32_t width, std::int32_t height, std::int32_t bits,
             const std::function<void(std::uint8_t* row, std::int32_t y)>& fill) {
  std::uint8_t* pixels = glib::AllocateRaster(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height),
                                              static_cast<std::uint32_t>(bits));
  const std::size_t stride = glib::PaddedStride(static_cast<std::size_t>(width), static_cast<std::size_t>(bits));
  for (std::int32_t y = 0; y < height; ++y) fill(pixels + static_cast<std::size_t>(y) * stride, y);
  layer.SetRaster(0, 0, width, height, pixels, nullptr, bits);
}

}  // namespace test_support
