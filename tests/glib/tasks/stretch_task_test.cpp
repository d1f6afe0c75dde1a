#include "glib/tasks/stretch_task.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/support/sample_film.h"

namespace {

glib::StretchParams Size(float width, float height, std::int32_t condition = 0) {
  glib::StretchParams params{};
  params.width = width;
  params.height = height;
  params.condition = condition;
  return params;
}

TEST(StretchTask, HoldsToItsCondition) {
  struct {
    glib::StretchParams params;
    bool done;
    std::int32_t width, height;
  } const cases[] = {
      {Size(40, 30), true, 40, 30},
      {Size(40, 0), true, 40, 40},
      {Size(40.9F, 20.9F), true, 40, 20},
      {Size(0, 0), false, 80, 40},
      {Size(-5, 0), false, 80, 40},
      {Size(160, 80, glib::kOnlyEnlarge), true, 160, 80},
      {Size(160, 40, glib::kOnlyEnlarge), false, 80, 40},
      {Size(160, 0, glib::kOnlyEnlarge), false, 80, 40},
      {Size(100, 0, glib::kOnlyReduce), false, 80, 40},
      {Size(80, 0, glib::kOnlyReduce), false, 80, 40},
      {Size(40, 0, glib::kOnlyReduce), true, 40, 40},
      {Size(40, 40, glib::kOnlyReduce), false, 80, 40},
      {Size(100, 5, 3), true, 100, 5},
      {Size(100, 5, -1), true, 100, 5},
  };
  for (const auto& c : cases) {
    test_support::SampleFilm sample;
    sample.AddSlide(80, 40);
    EXPECT_EQ(glib::TaskStretch(&sample.film, &c.params), c.done) << &c - cases;
    EXPECT_EQ(sample.Layer(0).raster.width, c.width) << &c - cases;
    EXPECT_EQ(sample.Layer(0).raster.height, c.height) << &c - cases;
  }
}

TEST(StretchTask, TakesPercentsOfTheFilm) {
  test_support::SampleFilm sample;
  sample.AddSlide(80, 40);
  glib::StretchParams params = Size(50, 10);
  params.widthIsPercent = 1;
  EXPECT_TRUE(glib::TaskStretch(&sample.film, &params));
  EXPECT_EQ(sample.Layer(0).raster.width, 40);
  EXPECT_EQ(sample.Layer(0).raster.height, 10);
}

TEST(StretchTask, RefusesAbsurdSizes) {
  for (const float size : {std::numeric_limits<float>::infinity(), 1e38F, std::nanf("")}) {
    test_support::SampleFilm sample;
    sample.AddSlide(8, 4);
    glib::StretchParams percent = Size(size, 4);
    percent.widthIsPercent = 1;
    for (const glib::StretchParams& params : {Size(size, 4), Size(8, size), percent}) {
      EXPECT_FALSE(glib::TaskStretch(&sample.film, &params)) << size;
      EXPECT_EQ(sample.Layer(0).raster.width, 8);
      EXPECT_EQ(sample.Layer(0).raster.height, 4);
    }
  }
}

TEST(StretchTask, RefusesSidesThatNoOutputHas) {
  test_support::SampleFilm sample;
  sample.AddSlide(8, 4);
  glib::StretchParams percent = Size(1e6F, 0);
  percent.widthIsPercent = 1;
  glib::StretchParams proportional = Size(0, 40000);
  proportional.proportional = 1;
  for (const glib::StretchParams& params : {Size(65536, 1), Size(1, 65536), percent, proportional}) {
    EXPECT_FALSE(glib::TaskStretch(&sample.film, &params));
    EXPECT_EQ(sample.Layer(0).raster.width, 8);
    EXPECT_EQ(sample.Layer(0).raster.height, 4);
  }
  const glib::StretchParams longest = Size(65535, 1);
  EXPECT_TRUE(glib::TaskStretch(&sample.film, &longest));
  EXPECT_EQ(sample.Layer(0).raster.width, 65535);
}

TEST(StretchTask, CentresOnTheCanvas) {
  struct {
    float width, height;
    std::int32_t x, y, canvasWidth, canvasHeight;
  } const cases[] = {
      {40, 40, 0, 10, 40, 30},  // the layer is 40 by 20, and begins at 0, 10
      {60, 20, 10, 0, 50, 20},  // and here at 10, 0
      {40, 20, 0, 0, 40, 20},   // nothing to fill
      {40, 21, 0, 0, 40, 20},   // less than a pixel
  };
  for (const auto& c : cases) {
    test_support::SampleFilm sample;
    sample.AddSlide(80, 40, [](std::int32_t, std::int32_t) { return 0xFF0000FFU; });
    glib::StretchParams params = Size(c.width, c.height);
    params.proportional = 1;
    params.fill = 1;
    EXPECT_TRUE(glib::TaskStretch(&sample.film, &params));
    const glib::Layer& layer = sample.Layer(0);
    EXPECT_EQ(layer.x, c.x) << &c - cases;
    EXPECT_EQ(layer.y, c.y) << &c - cases;
    EXPECT_EQ(layer.raster.width, c.canvasWidth) << &c - cases;
    EXPECT_EQ(layer.raster.height, c.canvasHeight) << &c - cases;
    EXPECT_EQ(sample.Pixel(0, 0, 0), 0xFF0000FFU) << &c - cases;
  }
}

}  // namespace
