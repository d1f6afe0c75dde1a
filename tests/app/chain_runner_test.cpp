#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <new>
#include <vector>

#include "app/converter.h"
#include "glib/model/film.h"
#include "glib/model/film_body.h"
#include "platform/pages.h"

namespace app {
namespace {

// As the rule is told, a byte at a time.
std::uint8_t Blend(std::uint8_t colour, std::uint8_t background, std::uint8_t alpha) {
  const int inverse = 255 - alpha;
  return static_cast<std::uint8_t>(colour + (((background - colour) * inverse) >> 8));
}

// Gives the film a slide with a layer of these pixels.
void AddSlide(glib::Film& film, const std::vector<std::uint8_t>& bytes, std::int32_t bits, std::int32_t width,
              std::int32_t height) {
  auto* slide = new glib::Slide(glib::RGB32(9, 9, 9, 0));
  auto* layer = new glib::Layer(slide);
  auto* pixels = static_cast<std::uint8_t*>(platform::AllocatePages(bytes.size()));
  std::memcpy(pixels, bytes.data(), bytes.size());
  layer->SetRaster(0, 0, width, height, pixels, nullptr, bits);
  slide->AddLayer(layer);
  film.body().AddSlide(slide);
}

std::vector<std::uint8_t> PixelsOf(glib::Film& film, std::uint32_t slide, std::size_t size) {
  const std::uint8_t* pixels = film.body().GetSlide(slide)->GetLayer(0)->raster.pixels;
  return {pixels, pixels + size};
}

TEST(ChainRunner, FlattensEveryAlphaOnTheBackgroundOfTheFilm) {
  glib::Film film("", true);
  film.SetBackground(glib::RGB32(200, 3, 127, 0), 0, glib::Film::kAll);
  std::vector<std::uint8_t> bytes;
  for (int alpha = 0; alpha < 256; ++alpha) {
    for (int colour = 0; colour < 256; ++colour) {
      for (const int byte : {colour, 255 - colour, colour ^ 0x55, alpha})
        bytes.push_back(static_cast<std::uint8_t>(byte));
    }
  }
  AddSlide(film, bytes, 32, 256, 256);
  film.body().GetSlide(0)->RefreshFlat();
  ConvertSettings settings;
  settings.flattenAlpha = true;
  EXPECT_TRUE(Converter().RunChain(&film, &settings));
  const std::vector<std::uint8_t> got = PixelsOf(film, 0, bytes.size());
  const std::uint8_t background[3] = {127, 3, 200};
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const std::uint8_t alpha = bytes[i | 3];
    ASSERT_EQ(got[i], i % 4 == 3 ? 255 : Blend(bytes[i], background[i % 4], alpha)) << "byte " << i;
  }
  EXPECT_TRUE(film.body().GetSlide(0)->stale);
}

TEST(ChainRunner, LeavesWhatHasNoAlpha) {
  glib::Film film("", true);
  const std::vector<std::uint8_t> indices = {0, 1, 2, 3};
  AddSlide(film, indices, 8, 4, 1);
  AddSlide(film, {1, 2, 3, 0}, 32, 1, 1);
  ConvertSettings settings;
  settings.flattenAlpha = true;
  settings.delay = 5;
  Converter().RunChain(&film, &settings);
  EXPECT_EQ(PixelsOf(film, 0, 4), indices);
  EXPECT_EQ(PixelsOf(film, 1, 4), (std::vector<std::uint8_t>{254, 254, 254, 255}));
  EXPECT_EQ(film.body().GetSlide(0)->delay, 5U);
}

TEST(ChainRunner, MergesTheLayersOfASlideFirst) {
  glib::Film film("", true);
  AddSlide(film, {1, 2, 3, 255}, 32, 1, 1);
  glib::Slide* slide = film.body().GetSlide(0);
  auto* second = new glib::Layer(slide);
  auto* pixel = static_cast<std::uint8_t*>(platform::AllocatePages(4));
  const std::uint8_t bytes[4] = {40, 50, 60, 255};
  std::memcpy(pixel, bytes, 4);
  second->SetPixels(0, 0, 1, 1, pixel);
  slide->AddLayer(second);
  ConvertSettings settings;
  settings.flattenAlpha = true;
  Converter().RunChain(&film, &settings);
  EXPECT_EQ(film.LayerCount(0), 1);
  EXPECT_EQ(PixelsOf(film, 0, 4), (std::vector<std::uint8_t>{40, 50, 60, 255}));
}

TEST(ChainRunner, GoesOnBehindAStepThatFails) {
  static int calls;
  calls = 0;
  ConvertSettings settings;
  const auto fails = [](glib::Film*, const void*) { return ++calls, false; };
  const auto needsTooMuch = [](glib::Film*, const void*) -> bool { throw std::bad_alloc(); };
  settings.tasks.Append(new glib::TASK{fails, nullptr});
  settings.tasks.Append(new glib::TASK{needsTooMuch, nullptr});
  settings.tasks.Append(new glib::TASK{fails, nullptr});
  glib::Film film("", true);
  EXPECT_TRUE(Converter().RunChain(&film, &settings));
  EXPECT_EQ(calls, 2);
}

}  // namespace
}  // namespace app
