#include "glib/model/film.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "glib/model/film_body.h"
#include "glib/model/operations_frame.h"
#include "tests/support/layers.h"
#include "tests/support/progress_recorder.h"

namespace {

using glib::Film;
using glib::RGB32;
using glib::Slide;
using test_support::AddLayer32;
using test_support::ProgressRecorder;

class FilmTest : public testing::Test {
 protected:
  // A slide with one layer of this size.
  Slide* AddSlide(std::int32_t width, std::int32_t height) {
    auto* slide = new Slide(RGB32(255, 255, 255, 0));
    AddLayer32(*slide, 0, 0, width, height, 0xFF000000);
    film.body().AddSlide(slide);
    return slide;
  }
  void Record() { film.SetCallback(ProgressRecorder::Callback, recorder.UserValue()); }
  std::string Taken() { return std::exchange(recorder.reports, ""); }
  std::pair<std::int32_t, std::int32_t> Size(std::uint32_t slide) const {
    std::pair<std::int32_t, std::int32_t> size;
    film.GetSize(size.first, size.second, slide);
    return size;
  }

  Film film{nullptr, true};
  ProgressRecorder recorder;
};

using Pair = std::pair<std::int32_t, std::int32_t>;

TEST_F(FilmTest, Sizes) {
  EXPECT_EQ(Size(Film::kWholeFilm), (Pair{0, 0}));
  AddSlide(100, 50);
  AddSlide(40, 200);
  EXPECT_EQ(Size(Film::kWholeFilm), (Pair{100, 200}));
  EXPECT_EQ(Size(1), (Pair{40, 200}));
  EXPECT_EQ(Size(2), (Pair{0, 0}));
  EXPECT_EQ(film.Width(0), 100U);
  EXPECT_EQ(film.Height(Film::kWholeFilm), 200U);
}

TEST_F(FilmTest, BackgroundOfFilmAndSlides) {
  EXPECT_EQ(film.GetBackground(Film::kWholeFilm), RGB32(255, 255, 255, 0));
  AddSlide(1, 1);
  AddSlide(1, 1);
  film.SetBackground(RGB32(1, 2, 3, 0), 1, Film::kAll);
  EXPECT_EQ(film.GetBackground(0), RGB32(255, 255, 255, 0));
  EXPECT_EQ(film.GetBackground(1), RGB32(1, 2, 3, 0));
  EXPECT_EQ(film.GetBackground(Film::kWholeFilm), RGB32(1, 2, 3, 0));
  film.SetBackground(RGB32(4, 5, 6, 0), 2, Film::kAll);
  EXPECT_EQ(film.GetBackground(1), RGB32(1, 2, 3, 0)) << "a range that doesn't fit changes only the film";
  EXPECT_EQ(film.GetBackground(2), RGB32(4, 5, 6, 0));
}

TEST_F(FilmTest, DelayRanges) {
  EXPECT_FALSE(film.SetDelay(5, 0, Film::kAll));
  for (int i = 0; i < 4; ++i) AddSlide(1, 1);
  EXPECT_TRUE(film.SetDelay(20, 1, 2));
  EXPECT_TRUE(film.SetDelay(30, 3, 0xFFFFFFFE)) << "the end is cut, also where the sum would wrap";
  EXPECT_TRUE(film.SetDelay(99, 0, 0));
  EXPECT_FALSE(film.SetDelay(99, 4, Film::kAll));
  std::vector<std::uint32_t> delays;
  for (std::uint32_t i = 0; i < 4; ++i) delays.push_back(film.body().slides.At(i)->delay);
  EXPECT_EQ(delays, (std::vector<std::uint32_t>{10, 20, 20, 30}));
}

TEST_F(FilmTest, OneSlideOrTheCurrentOne) {
  EXPECT_EQ(film.LayerCount(Film::kCurrentSlide), -1);
  AddSlide(1, 1);
  AddLayer32(*AddSlide(3, 1), 0, 0, 1, 1, 0xFF0000FF);
  EXPECT_EQ(film.LayerCount(Film::kCurrentSlide), 1);
  film.body().current = 1;
  EXPECT_EQ(film.LayerCount(Film::kCurrentSlide), 2);
  EXPECT_EQ(film.LayerCount(2), -1);
  EXPECT_EQ(film.LayerBits(1, 1), 32);
  EXPECT_EQ(film.LayerBits(1, 2), -1);
  EXPECT_EQ(film.LayerBits(2, 0), -1);
  EXPECT_FALSE(film.MergeLayers(2, 0, Film::kAll));
  EXPECT_TRUE(film.MergeLayers(Film::kCurrentSlide, 0, Film::kAll));
  EXPECT_EQ(film.LayerCount(1), 1);
  EXPECT_TRUE(film.ConvertBits(24, 1, 0));
  EXPECT_FALSE(film.ConvertBits(24, 1, 1));
  EXPECT_FALSE(film.ConvertBits(24, 2, 0));
  std::uint8_t* pixels = nullptr;
  std::uint32_t* palette = nullptr;
  glib::MetafileHandle metafile = nullptr;
  EXPECT_EQ(film.GetRaster(Film::kCurrentSlide, pixels, palette, metafile), 24);
  EXPECT_EQ(film.GetRaster(2, pixels, palette, metafile), -1);
  film.Clear();
  EXPECT_TRUE(film.IsEmpty());
  EXPECT_EQ(film.body().current, 0U);
}

TEST_F(FilmTest, ConvertBitsReportsToTheFilm) {
  Record();
  AddSlide(500, 500);
  EXPECT_TRUE(film.ConvertBits(24, 0, 0));
  EXPECT_EQ(Taken().substr(0, 18), "-1/500 prepare...,");
}

TEST_F(FilmTest, CropReportsEachSlide) {
  Record();
  for (int i = 0; i < 3; ++i) AddSlide(10, 10);
  EXPECT_TRUE(film.Crop(0, 0, 4, 5, 1, Film::kAll));
  EXPECT_EQ(Taken(), "-1/3 crop..., 2/3 crop..., 3/3 crop..., -2/3 crop...");
  EXPECT_EQ(Size(0), (Pair{10, 10}));
  EXPECT_EQ(Size(2), (Pair{4, 5}));
  EXPECT_TRUE(film.Crop({8, 7, 10, 10}, 0, 1));
  EXPECT_EQ(Size(0), (Pair{2, 3}));
}

TEST_F(FilmTest, CropOfTheWholeFilmOrOfNothingFails) {
  Record();
  AddSlide(100, 50);
  AddSlide(40, 200);
  EXPECT_FALSE(film.Crop(0, 0, 100, 200, 0, Film::kAll));
  EXPECT_FALSE(film.Crop(5, 5, 101, 300, 0, Film::kAll));
  EXPECT_FALSE(film.Crop(0, 0, 0, 5, 0, Film::kAll));
  EXPECT_FALSE(film.Crop(0, 0, 5, 0, 0, Film::kAll));
  EXPECT_FALSE(film.Crop(0, 0, 5, 5, 2, Film::kAll));
  EXPECT_EQ(Taken(), "");
  // Slides that are smaller on both axes stay, the film's crop is done all the same.
  EXPECT_TRUE(film.Crop(0, 0, 100, 199, 0, Film::kAll));
  EXPECT_EQ(Size(0), (Pair{100, 50}));
  EXPECT_EQ(Size(1), (Pair{40, 199}));
}

TEST_F(FilmTest, AnEmptyRangeIsReportedAndDone) {
  Record();
  AddSlide(10, 10);
  EXPECT_TRUE(film.Crop(0, 0, 4, 5, 0, 0));
  EXPECT_EQ(Taken(), "-1/1 crop..., -2/1 crop...");
  EXPECT_EQ(Size(0), (Pair{10, 10}));
}

TEST_F(FilmTest, AStopKeepsWhatIsDoneAndStillReportsTheEnd) {
  Record();
  for (int i = 0; i < 3; ++i) AddSlide(10, 10);
  recorder.stopAt = 2;
  EXPECT_FALSE(film.Crop(0, 0, 4, 5, 0, Film::kAll));
  EXPECT_EQ(Taken(), "-1/3 crop..., 1/3 crop..., 2/3 crop..., -2/3 crop...");
  EXPECT_EQ(Size(0), (Pair{4, 5}));
  EXPECT_EQ(Size(1), (Pair{10, 10}));
  recorder.stopAt = 1;
  EXPECT_FALSE(film.Crop(0, 0, 2, 2, 0, Film::kAll));
  EXPECT_EQ(Size(0), (Pair{4, 5}));
  recorder.stopAt = -1;
  EXPECT_TRUE(film.Crop(0, 0, 2, 2, 0, Film::kAll)) << "the answer to the begin report doesn't count";
}

TEST_F(FilmTest, MirrorNeedsADirection) {
  Record();
  AddSlide(10, 10);
  EXPECT_FALSE(film.Mirror(false, false, 0, Film::kAll));
  EXPECT_EQ(Taken(), "");
  EXPECT_TRUE(film.Mirror(true, false, 0, Film::kAll));
  EXPECT_EQ(Taken(), "-1/1 mirror..., 1/1 mirror..., -2/1 mirror...");
  EXPECT_FALSE(film.Mirror(true, true, 1, Film::kAll));
}

TEST_F(FilmTest, ColorEffectReportsEachSlide) {
  Record();
  AddSlide(10, 10);
  const double arguments[4] = {};
  EXPECT_TRUE(film.ColorEffect(0xFFFF, arguments, 0, Film::kAll)) << "the slide's result doesn't count";
  EXPECT_EQ(Taken(), "-1/1 color's effect..., 1/1 color's effect..., -2/1 color's effect...");
}

TEST_F(FilmTest, NothingIsReportedWithoutACallback) {
  AddSlide(10, 10);
  EXPECT_TRUE(film.Crop(0, 0, 4, 5, 0, Film::kAll));
  EXPECT_EQ(Size(0), (Pair{4, 5}));
}

// What a work in a frame sees of its call.
struct Seen {
  std::string calls;
  glib::SlideWork Work(bool result = true) {
    return [this, result](Slide&, glib::ProgressCallback callback, const glib::ProgressInfo* progress) {
      calls += callback == nullptr ? "[quiet " : "[callback ";
      calls += std::string(progress->text.c_str()) + "]";
      return result;
    };
  }
};

TEST_F(FilmTest, FrameBySlides) {
  Record();
  AddSlide(10, 10);
  AddSlide(10, 10);
  Seen seen;
  EXPECT_TRUE(glib::WalkSlides(film, "stretch...", 0, Film::kAll, seen.Work()));
  EXPECT_EQ(seen.calls, "[callback stretch...][callback stretch...]");
  EXPECT_EQ(Taken(), "-1/2 stretch..., 1/2 stretch..., 2/2 stretch..., -2/2 stretch...");
  Seen failing;
  EXPECT_FALSE(glib::WalkSlides(film, "stretch...", 0, Film::kAll, failing.Work(false)));
  EXPECT_EQ(failing.calls, "[callback stretch...]");
  EXPECT_EQ(Taken(), "-1/2 stretch..., 1/2 stretch..., -2/2 stretch...");
}

TEST_F(FilmTest, FrameBySlidesOrRows) {
  Record();
  AddSlide(10, 10);
  AddSlide(10, 10);
  Seen small;
  EXPECT_TRUE(glib::WalkSlidesOrRows(film, "rotate...", 0, Film::kAll, small.Work()));
  EXPECT_EQ(small.calls, "[quiet Slide 1][quiet Slide 2]");
  EXPECT_EQ(Taken(), "-1/2 rotate..., 1/2 Slide 1, 2/2 Slide 2, -2/2 Slide 2");

  // The end of the range counts, not its length, and the reports count from its first slide.
  Seen second;
  EXPECT_TRUE(glib::WalkSlidesOrRows(film, "rotate...", 1, Film::kAll, second.Work()));
  EXPECT_EQ(second.calls, "[quiet Slide 2]");
  EXPECT_EQ(Taken(), "-1/2 rotate..., 1/2 Slide 2, -2/2 Slide 2");

  Seen single;
  EXPECT_TRUE(glib::WalkSlidesOrRows(film, "rotate...", 0, 1, single.Work()));
  EXPECT_EQ(single.calls, "[callback ]");
  EXPECT_EQ(Taken(), "");

  AddSlide(600, 600);
  Seen large;
  EXPECT_TRUE(glib::WalkSlidesOrRows(film, "rotate...", 0, Film::kAll, large.Work()));
  EXPECT_EQ(large.calls, "[callback Slide 1][callback Slide 2][callback Slide 3]");
  EXPECT_EQ(Taken(), "");

  Seen nobody;
  film.SetCallback(nullptr, 0);
  EXPECT_FALSE(glib::WalkSlidesOrRows(film, "rotate...", 0, Film::kAll, nobody.Work(false)));
  EXPECT_EQ(nobody.calls, "[quiet Slide 1]");
  EXPECT_FALSE(glib::WalkSlidesOrRows(film, "rotate...", 3, Film::kAll, nobody.Work()));
}

}  // namespace
