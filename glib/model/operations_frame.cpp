#include "glib/model/operations_frame.h"

#include "glib/model/film_body.h"
#include "glib/model/range.h"

namespace glib {
namespace {

struct Walk {
  std::uint32_t first;
  std::uint32_t end;
  std::uint32_t reportBase;       // index that counts as 0 in the reports
  bool namesSlides;               // the text tells the slide
  ProgressCallback slideReports;  // or null
  ProgressCallback workReports;   // or null
};

bool Run(FilmBody& body, const Walk& walk, ProgressInfo& info, const SlideWork& work) {
  const auto report = [&](std::int32_t current) {
    info.current = current;
    return walk.slideReports == nullptr || walk.slideReports(&info) != 0;
  };
  report(kStageBegins);
  bool done = true;
  for (std::uint32_t i = walk.first; i < walk.end && done; ++i) {
    if (walk.namesSlides) gen::Format(info.text, "Slide %d", static_cast<int>(i + 1));
    done =
        report(static_cast<std::int32_t>(i - walk.reportBase + 1)) && work(*body.slides.At(i), walk.workReports, &info);
  }
  report(kStageEnds);
  return done;
}

}  // namespace

bool WalkSlides(Film& film, const char* stage, std::uint32_t first, std::uint32_t count, const SlideWork& work) {
  FilmBody& body = film.body();
  std::uint32_t end = 0;
  if (!RangeEnd(first, count, body.slides.count, end)) return false;
  ProgressInfo info;
  info.total = body.slides.count;
  info.userValue = body.userValue;
  info.text = stage;
  return Run(body, {first, end, 0, false, body.callback, body.callback}, info, work);
}

bool WalkSlidesOrRows(Film& film, const char* stage, std::uint32_t first, std::uint32_t count, const SlideWork& work) {
  FilmBody& body = film.body();
  std::uint32_t end = 0;
  if (!RangeEnd(first, count, body.slides.count, end)) return false;
  const std::uint32_t rows = RowsPerReport(film.Width(Film::kWholeFilm), film.Height(Film::kWholeFilm));
  const bool perSlide = body.callback != nullptr && end >= 2 && rows == 0;
  ProgressInfo info;
  info.total = end;
  info.userValue = body.userValue;
  if (perSlide) info.text = stage;
  return Run(body, {first, end, first, end > 1, perSlide ? body.callback : nullptr, perSlide ? nullptr : body.callback},
             info, work);
}

}  // namespace glib
