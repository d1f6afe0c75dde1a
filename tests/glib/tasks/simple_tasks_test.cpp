#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "glib/tasks/color_effect_task.h"
#include "glib/tasks/filter_task.h"
#include "glib/tasks/mirror_task.h"
#include "glib/tasks/rotate_task.h"
#include "tests/support/sample_film.h"

// The steps that hand their numbers straight to one operation of the film.

namespace {

TEST(MirrorTask, TurnsTheDirectionsRound) {
  struct {
    glib::MirrorParams params;
    bool done;
    std::int32_t x, y;  // where the first pixel comes from
  } const cases[] = {{{0, 0}, false, 0, 0}, {{1, 0}, true, 0, 1}, {{0, 1}, true, 2, 0}, {{-1, 7}, true, 2, 1}};
  for (const auto& c : cases) {
    test_support::SampleFilm sample;
    sample.AddSlide(3, 2);
    EXPECT_EQ(glib::TaskMirror(&sample.film, &c.params), c.done);
    EXPECT_EQ(sample.Pixel(0, 0, 0), test_support::PlaceWord(c.x, c.y));
  }
}

TEST(RotateTask, TurnsClockwise) {
  test_support::SampleFilm sample;
  sample.AddSlide(3, 2);
  const glib::RotateParams params{90, 0};
  EXPECT_TRUE(glib::TaskRotate(&sample.film, &params));
  EXPECT_EQ(sample.Layer(0).raster.width, 2);
  EXPECT_EQ(sample.Layer(0).raster.height, 3);
  EXPECT_EQ(sample.Pixel(0, 1, 0), test_support::PlaceWord(0, 0));
  EXPECT_EQ(sample.Pixel(0, 0, 2), test_support::PlaceWord(2, 1));
}

TEST(RotateTask, RefusesWhatIsNoAngle) {
  test_support::SampleFilm sample;
  sample.AddSlide(3, 2);
  for (const float angle : {0.0F, -0.0F, std::numeric_limits<float>::infinity(), std::nanf("")}) {
    const glib::RotateParams params{angle, 1};
    EXPECT_FALSE(glib::TaskRotate(&sample.film, &params)) << angle;
  }
  EXPECT_EQ(sample.Layer(0).raster.width, 3);
}

TEST(FilterTask, RefusesNoFilter) {
  test_support::SampleFilm sample;
  sample.AddSlide(3, 2);
  for (const std::int32_t filter : {-1, 7, -2, std::numeric_limits<std::int32_t>::max()}) {
    const glib::FilterParams params{filter};
    EXPECT_FALSE(glib::TaskFilter(&sample.film, &params)) << filter;
    EXPECT_EQ(sample.Pixel(0, 1, 1), test_support::PlaceWord(1, 1));
  }
}

TEST(ColorEffectTask, HandsItsArgumentsOn) {
  test_support::SampleFilm sample;
  sample.AddSlide(1, 1, [](std::int32_t, std::int32_t) { return 0x80102030U; });
  const glib::ColorEffectParams shift{{4, 1, -2, 3}};
  EXPECT_TRUE(glib::TaskColorEffect(&sample.film, &shift));
  EXPECT_EQ(sample.Pixel(0, 0, 0), 0x80131E31U);
}

TEST(ColorEffectTask, RefusesWhatIsNoNumber) {
  test_support::SampleFilm sample;
  sample.AddSlide(1, 1);
  const double infinity = std::numeric_limits<double>::infinity();
  for (const glib::ColorEffectParams& params :
       {glib::ColorEffectParams{{-1}}, glib::ColorEffectParams{{infinity}}, glib::ColorEffectParams{{0, infinity}},
        glib::ColorEffectParams{{4, 1, 2, std::nan("")}}, glib::ColorEffectParams{{1e10}}}) {
    EXPECT_FALSE(glib::TaskColorEffect(&sample.film, &params));
    EXPECT_EQ(sample.Pixel(0, 0, 0), test_support::PlaceWord(0, 0));
  }
}

}  // namespace
