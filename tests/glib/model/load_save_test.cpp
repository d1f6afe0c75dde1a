// Loading and saving through modules that do what their source tells them (tests/modules_fixture/script.h).

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>

#include "glib/model/film.h"
#include "glib/model/film_body.h"
#include "glib/module_api/result_values.h"
#include "tests/support/progress_recorder.h"
#include "tests/support/temporary_folder.h"

namespace {

using glib::Film;
using test_support::ProgressRecorder;

constexpr std::uint32_t kStop = 0x53544F50;

class LoadSaveTest : public testing::Test {
 protected:
  std::string Path(const std::string& name) const { return folder_.Text(name); }
  std::string Source(const std::string& name, const std::string& commands) const {
    return folder_.Write(name, "GIF89a\n" + commands);
  }
  std::uint32_t Load(const std::string& commands) { return film.Load(Source("in.gif", commands).c_str(), nullptr); }
  // What the module was given, without the settings.
  std::string Saved() {
    EXPECT_EQ(film.Save(Path("out.gif").c_str(), &desc), glib::RCOK);
    const std::string text = folder_.Read("out.gif");
    return text.substr(text.find('\n') + 1);
  }
  void Record() { film.SetCallback(ProgressRecorder::Callback, recorder.UserValue()); }
  std::string Taken() { return std::exchange(recorder.reports, ""); }
  std::string Message() const { return film.body().message.c_str(); }
  // Widths of all slides' lowest layers, which tell them apart.
  std::string Widths() const {
    std::ostringstream text;
    for (std::uint32_t i = 0; i < film.Count(); ++i) text << film.Width(i) << " ";
    return text.str();
  }

  Film film{ZEFA_BUILD_FOLDER "/modules_fixture", true};
  glib::GIFSave desc;
  ProgressRecorder recorder;

 private:
  test_support::TemporaryFolder folder_;
};

TEST_F(LoadSaveTest, LoadReplacesWhatTheFilmHolds) {
  ASSERT_EQ(Load("page width=1\npage width=2\n"), glib::RCOK);
  EXPECT_EQ(Widths(), "1 2 ");
  EXPECT_STREQ(film.body().slides.At(0)->name.c_str(), Path("in.gif").c_str());
  ASSERT_EQ(Load("page width=3\n"), glib::RCOK);
  EXPECT_EQ(Widths(), "3 ");
  const std::string more = Source("more.gif", "page width=4\npage width=5\n");
  ASSERT_EQ(film.Append(more.c_str(), nullptr), glib::RCOK);
  EXPECT_EQ(Widths(), "3 4 5 ");
  // New slides come in by swaps: each changes places with the one that stood there.
  const std::string other = Source("other.gif", "page width=6\npage width=7\n");
  ASSERT_EQ(film.Insert(other.c_str(), nullptr, 0), glib::RCOK);
  EXPECT_EQ(Widths(), "6 7 5 3 4 ");
}

TEST_F(LoadSaveTest, InsertPastTheEndIsRefusedWithoutAReport) {
  Record();
  const std::string path = Source("in.gif", "page\n");
  EXPECT_EQ(film.Insert(path.c_str(), nullptr, 0), glib::BADA);
  EXPECT_EQ(Taken(), "");
  EXPECT_EQ(film.Insert(path.c_str(), nullptr, 0xFFFFFFFF), glib::RCOK);
  EXPECT_EQ(film.Insert(path.c_str(), nullptr, 1), glib::BADA);
  EXPECT_EQ(film.Count(), 1U);
}

TEST_F(LoadSaveTest, WhatTheModuleSees) {
  film.SetBackground(glib::RGB32(0x11, 0x22, 0x33, 0), 0, Film::kAll);
  ASSERT_EQ(film.Load(Source("in.gif", "page\nshow\n").c_str(), &desc), glib::RCOK);
  EXPECT_EQ(Message(), "id=30000003 size=ffffffff word=30000003 film=1 callback=0 background=112233 raster=1");
  const std::string block = "GIF89a\npage width=9\nshow\n";
  ASSERT_EQ(film.AppendMemory(block.data(), static_cast<std::uint32_t>(block.size()), glib::kGifFormatId, nullptr),
            glib::RCOK);
  EXPECT_EQ(Widths(), "2 9 ");
  EXPECT_EQ(Message(), "id=30000003 size=00000019 word=none film=1 callback=0 background=112233 raster=1");
  EXPECT_TRUE(film.body().slides.At(1)->name.IsEmpty()) << "a block is no text";
  film.Clear();
  EXPECT_EQ(Message(), "");
}

TEST_F(LoadSaveTest, ReportsAroundTheModule) {
  Record();
  ASSERT_EQ(Load("report 3 10\npage\n"), glib::RCOK);
  EXPECT_EQ(Taken(), "-3/0, 3/10 Loading, -4/0");
  recorder.stopAt = 3;
  EXPECT_EQ(Load("report 3 10\npage\n"), kStop);
  EXPECT_EQ(Taken(), "-3/0, 3/10 Loading, -4/0");
  EXPECT_TRUE(film.IsEmpty());
  recorder.stopAt = -3;
  EXPECT_EQ(Load("page\n"), glib::RCOK) << "the answer to a begin report doesn't count";
  Taken();
  glib::FileInfo* info = nullptr;
  EXPECT_EQ(film.GetInfo(Source("info.gif", "info bits=4 pages=3\n").c_str(), info), glib::RCOK);
  EXPECT_EQ(info->bits(), 4);
  EXPECT_EQ(info->pages, 3);
  delete info;
  EXPECT_EQ(Taken(), "-3/0, -4/0");
  Saved();
  EXPECT_EQ(Taken(), "-3/0, -4/0");
}

TEST_F(LoadSaveTest, AFailedLoadAddsNothing) {
  ASSERT_EQ(Load("page\n"), glib::RCOK);
  const std::string bad = Source("bad.gif", "page\npage owned=0\nmessage broken\nresult DAMG\n");
  EXPECT_EQ(film.Append(bad.c_str(), nullptr), 0x44414D47U);
  EXPECT_EQ(Message(), "broken");
  EXPECT_EQ(film.Count(), 1U);
  EXPECT_EQ(film.Append(Path("missing.gif").c_str(), nullptr), glib::NSUP);
  EXPECT_EQ(Message(), "");
  EXPECT_EQ(film.Append(Source("none.gif", "").c_str(), nullptr), glib::IERR) << "success without a page";
  EXPECT_EQ(film.Count(), 1U);
  EXPECT_EQ(film.Load(bad.c_str(), nullptr), 0x44414D47U);
  EXPECT_EQ(film.Count(), 0U) << "a load that replaces has cleared the film before";
}

TEST_F(LoadSaveTest, LayersOfOneSlide) {
  ASSERT_EQ(Load("page slide=0\npage slide=0 x=3 name=upper visible=0 background=010203\npage slide=1\n"), glib::RCOK);
  ASSERT_EQ(film.Count(), 2U);
  EXPECT_EQ(film.LayerCount(0), 2);
  EXPECT_EQ(film.LayerCount(1), 1);
  EXPECT_EQ(film.Width(0), 5U);
  EXPECT_EQ(film.GetBackground(0), glib::RGB32(1, 2, 3, 0));
  EXPECT_STREQ(film.body().slides.At(0)->GetLayer(1)->name.c_str(), "upper");
}

TEST_F(LoadSaveTest, Thumbnails) {
  const std::string path = Source("in.gif", "page\nthumbnail RCOK\n");
  ASSERT_EQ(film.Load(path.c_str(), nullptr), glib::RCOK);
  ASSERT_EQ(film.LoadThumbnail(path.c_str(), 1, 16, 12), glib::RCOK);
  EXPECT_EQ(Widths(), "2 16 ") << "a thumbnail is added";
  EXPECT_EQ(film.Height(1), 12U);
  EXPECT_TRUE(film.body().slides.At(1)->GetLayer(0)->name.IsEmpty());
  Source("bad.gif", "thumbnail DAMG\n");
  EXPECT_EQ(film.LoadThumbnail(Path("bad.gif").c_str(), 0, 16, 12), 0x44414D47U);
  EXPECT_EQ(film.Count(), 2U);
}

TEST_F(LoadSaveTest, SavedPages) {
  ASSERT_EQ(Load("page fill=count dpix=100 dpiy=200 delay=33\n"), glib::RCOK);
  desc.dpiX = 300.0;
  EXPECT_EQ(
      Saved(),
      "exchange id=ffffffff size=ffffffff pages=1 film=1 callback=0 raster=1\n"
      "page bits=8 width=2 height=2 owned=0 aligned=1 slide=0 x=0 y=0 delay=33 dpi=300x200 visible=1 name=Layer 1 "
      "background=ffffff entries=256 pixels=00010405 palette=ff00ff00ff01fe01ff02fd02ff03fc03\n");
  EXPECT_EQ(desc.slideCount, 1U);
  const std::string again = Saved();
  EXPECT_EQ(Saved(), again) << "a save doesn't change the film";
}

TEST_F(LoadSaveTest, SavedRanges) {
  ASSERT_EQ(Load("page\npage width=1 height=1 fill=7\n"), glib::RCOK);
  film.body().slides.At(0)->layers.Clear();
  desc.slideCount = 50;
  const std::string saved = Saved();
  EXPECT_NE(saved.find("pages=1 "), std::string::npos) << saved;
  EXPECT_NE(saved.find(" slide=1 "), std::string::npos) << "the empty slide keeps its number";
  desc.firstSlide = 1;
  EXPECT_NE(Saved().find(" slide=0 "), std::string::npos) << "numbers count from the first slide of the range";
  Record();
  desc.firstSlide = 0;
  desc.slideCount = 1;
  EXPECT_EQ(film.Save(Path("out.gif").c_str(), &desc), glib::IERR) << "nothing to hand over";
  EXPECT_EQ(Taken(), "-3/0, -4/0");
  desc.firstSlide = 2;
  EXPECT_EQ(film.Save(Path("out.gif").c_str(), &desc), glib::BADA);
  EXPECT_EQ(Taken(), "");
  desc.firstSlide = 0;
  desc.slideCount = glib::kAllSlides;
  EXPECT_EQ(film.Save(Path("refuse-FULL").c_str(), &desc), 0x46554C4CU) << "a module's result passes through";
  EXPECT_EQ(desc.slideCount, 2U);
  glib::BaseFormatDesc unknown(0x12345678);
  EXPECT_EQ(film.Save(Path("out.gif").c_str(), &unknown), glib::NSUP);
}

TEST_F(LoadSaveTest, StacksAreSavedAsOneImage) {
  // Bytes of 255 are white and opaque at 32 bits.
  ASSERT_EQ(Load("page slide=0 bits=32 width=1 height=1 fill=255 background=000000\n"
                 "page slide=0 bits=32 width=1 height=1 x=1 fill=128 background=000000\n"),
            glib::RCOK);
  const std::string saved = Saved();
  // 255 * 255 >> 8 = 254, 128 * 128 >> 8 = 64, with the layers' own alpha.
  EXPECT_NE(saved.find("bits=32 width=2 height=1 "), std::string::npos) << saved;
  EXPECT_NE(saved.find("pixels=fefefeff40404080"), std::string::npos) << saved;
}

}  // namespace
