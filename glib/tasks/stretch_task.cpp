#include "glib/tasks/stretch_task.h"

#include <optional>

#include "glib/model/film.h"
#include "glib/model/film_body.h"
#include "glib/tasks/pixel_length.h"

namespace glib {
namespace {

bool ConditionMet(std::int32_t condition, Film& film, float width, float height) {
  const double filmWidth = film.Width(Film::kWholeFilm);
  const double filmHeight = film.Height(Film::kWholeFilm);
  if (condition == kOnlyEnlarge) return filmWidth < width && filmHeight < height;
  if (condition == kOnlyReduce) return (width == 0 || filmWidth > width) && (height == 0 || filmHeight > height);
  return true;
}

// Puts every layer in the middle of a canvas of `width` by `height`. A layer that can't be enlarged stays as it is.
void CentreOnCanvas(Film& film, float width, float height) {
  const auto dx = CutToInteger((static_cast<double>(width) - film.Width(Film::kWholeFilm)) * 0.5);
  const auto dy = CutToInteger((static_cast<double>(height) - film.Height(Film::kWholeFilm)) * 0.5);
  if (!dx || !dy || (*dx < 1 && *dy < 1)) return;
  for (std::uint32_t s = 0; s < film.Count(); ++s) {
    Slide* slide = film.body().GetSlide(s);
    for (std::uint32_t l = 0; l < slide->layers.count; ++l) {
      Layer* layer = slide->GetLayer(l);
      layer->SetPosition(*dx, *dy);
      const auto canvasWidth = CutToInteger(static_cast<double>(width) - layer->x);
      const auto canvasHeight = CutToInteger(static_cast<double>(height) - layer->y);
      if (canvasWidth > 0 && canvasHeight > 0) layer->ResizeCanvas(*canvasWidth, *canvasHeight);
    }
    slide->stale = true;
  }
}

}  // namespace

bool TaskStretch(Film* film, const void* params) {
  const auto& stretch = *static_cast<const StretchParams*>(params);
  float width = stretch.width;
  float height = stretch.height;
  if (stretch.widthIsPercent == 1) width = PercentOf(film->Width(Film::kWholeFilm), width);
  if (stretch.heightIsPercent == 1) height = PercentOf(film->Height(Film::kWholeFilm), height);

  if (!ConditionMet(stretch.condition, *film, width, height)) return false;
  if (!(width > 0) && !(height > 0)) return false;
  const auto wholeWidth = CutToInteger(width);
  const auto wholeHeight = CutToInteger(height);
  if (!wholeWidth || !wholeHeight) return false;
  const bool proportional = stretch.proportional != 0;
  if (!film->Stretch(*wholeWidth, *wholeHeight, stretch.smooth, proportional, 0, Film::kAll)) return false;
  if (proportional && stretch.fill != 0) CentreOnCanvas(*film, width, height);
  return true;
}

}  // namespace glib
