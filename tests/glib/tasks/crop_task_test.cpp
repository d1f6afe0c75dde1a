#include "glib/tasks/crop_task.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/support/sample_film.h"

namespace {

glib::CropParams Params(bool percent, bool margins, float left, float top, float right, float bottom) {
  const std::int32_t p = percent ? 1 : 0;
  return {p, left, p, top, p, right, p, bottom, margins ? 1 : 0};
}

TEST(CropTask, WorksTheRectangleOut) {
  struct {
    const char* name;
    glib::CropParams params;
    std::int32_t left, top, width, height;
  } const cases[] = {
      {"pixels", Params(false, false, 5, 6, 25, 16), 5, 6, 20, 10},
      {"percent", Params(true, false, 10, 10, 90, 90), 20, 10, 160, 80},
      {"margins", Params(false, true, 10, 20, 30, 40), 10, 20, 160, 40},
      {"margins in percent", Params(true, true, 5, 10, 5, 20), 10, 10, 180, 70},
      {"cut towards zero", Params(false, false, 1.9F, 2.9F, 3.9F, 4.9F), 1, 2, 2, 2},
      {"past the edges", Params(false, false, 150, 50, 340, 140), 150, 50, 50, 50},
      {"one pixel", Params(false, false, 199, 99, 200, 100), 199, 99, 1, 1},
  };
  for (const auto& c : cases) {
    test_support::SampleFilm sample;
    sample.AddSlide(200, 100);
    EXPECT_TRUE(glib::TaskCrop(&sample.film, &c.params)) << c.name;
    EXPECT_EQ(sample.Layer(0).raster.width, c.width) << c.name;
    EXPECT_EQ(sample.Layer(0).raster.height, c.height) << c.name;
    EXPECT_EQ(sample.Pixel(0, 0, 0), test_support::PlaceWord(c.left, c.top)) << c.name;
    EXPECT_EQ(sample.Pixel(0, c.width - 1, c.height - 1),
              test_support::PlaceWord(c.left + c.width - 1, c.top + c.height - 1))
        << c.name;
  }
}

TEST(CropTask, RefusesEmptyAndAbsurdRectangles) {
  const float infinity = std::numeric_limits<float>::infinity();
  const glib::CropParams cases[] = {
      Params(false, false, 10, 10, 10, 20),
      Params(false, false, 10, 30, 20, 20),
      Params(false, true, 100, 0, 100, 0),
      Params(false, false, 0, 0, 200, 100),
      Params(false, true, 0, 0, 0, 0),
      Params(false, false, 0, 0, infinity, 10),
      Params(true, false, -infinity, 0, 10, 10),
      Params(false, false, -1e30F, 0, 10, 10),
      Params(false, true, 0, 0, -2147483648.0F, 5),
      Params(true, false, 0, 0, 1e38F, 10),
      Params(false, false, std::numeric_limits<float>::quiet_NaN(), 0, 10, 10),
  };
  for (const glib::CropParams& params : cases) {
    test_support::SampleFilm sample;
    sample.AddSlide(200, 100);
    EXPECT_FALSE(glib::TaskCrop(&sample.film, &params)) << &params - cases;
    EXPECT_EQ(sample.Layer(0).raster.width, 200) << &params - cases;
    EXPECT_EQ(sample.Layer(0).raster.height, 100) << &params - cases;
  }
}

// Percents are those of the largest slide, and all slides get the same rectangle.
TEST(CropTask, MeasuresTheWholeFilm) {
  test_support::SampleFilm sample;
  sample.AddSlide(50, 100);
  sample.AddSlide(200, 20);
  const glib::CropParams params = Params(true, false, 10, 10, 50, 50);
  EXPECT_TRUE(glib::TaskCrop(&sample.film, &params));
  EXPECT_EQ(sample.Layer(0).raster.width, 30);
  EXPECT_EQ(sample.Layer(0).raster.height, 40);
  EXPECT_EQ(sample.Layer(1).raster.width, 80);
  EXPECT_EQ(sample.Layer(1).raster.height, 10);
}

TEST(CropTask, RefusesAnEmptyFilm) {
  test_support::SampleFilm sample;
  const glib::CropParams params = Params(false, false, 0, 0, 10, 10);
  EXPECT_FALSE(glib::TaskCrop(&sample.film, &params));
}

}  // namespace
