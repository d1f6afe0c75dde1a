#ifndef TESTS_SUPPORT_SAMPLE_FILM_H_
#define TESTS_SUPPORT_SAMPLE_FILM_H_

#include <cstdint>
#include <functional>

#include "glib/model/film.h"
#include "glib/model/film_body.h"

namespace test_support {

// A film of slides in memory, without any module.
class SampleFilm {
 public:
  using PixelAt = std::function<std::uint32_t(std::int32_t x, std::int32_t y)>;

  // A slide of one 32-bit layer whose pixel words `at` gives.
  glib::Slide& AddSlide(std::int32_t width, std::int32_t height, const PixelAt& at);
  // The same with words that tell where a pixel stood: 0xFF000000 + y * 4096 + x.
  glib::Slide& AddSlide(std::int32_t width, std::int32_t height);
  // A further layer of a slide.
  glib::Layer& AddLayer(glib::Slide& slide, std::int32_t width, std::int32_t height, const PixelAt& at);

  std::uint32_t Pixel(std::uint32_t slide, std::int32_t x, std::int32_t y, std::uint32_t layer = 0) const;
  glib::Layer& Layer(std::uint32_t slide, std::uint32_t layer = 0) const;

  glib::Film film{nullptr, true};
};

// The word that AddSlide gives a pixel.
inline std::uint32_t PlaceWord(std::int32_t x, std::int32_t y) {
  return 0xFF000000U + static_cast<std::uint32_t>(y) * 4096U + static_cast<std::uint32_t>(x);
}

// Gives a layer a raster of the depth `bits` whose rows `fill` writes.
void SetRows(glib::Layer& layer, std::int32_t width, std::int32_t height, std::int32_t bits,
             const std::function<void(std::uint8_t* row, std::int32_t y)>& fill);

}  // namespace test_support

#endif  // TESTS_SUPPORT_SAMPLE_FILM_H_
