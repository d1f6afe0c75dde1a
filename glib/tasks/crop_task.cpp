#include "glib/tasks/crop_task.h"

#include <optional>

#include "glib/model/film.h"
#include "glib/tasks/pixel_length.h"

namespace glib {
namespace {

std::optional<std::int32_t> Length(std::int32_t isPercent, float value, std::uint32_t whole) {
  return CutToInteger(isPercent == 1 ? PercentOf(whole, value) : value);
}

std::optional<std::int32_t> FromFarEdge(std::uint32_t whole, std::int32_t margin) {
  return CutToInteger(static_cast<double>(whole) - margin);
}

}  // namespace

bool TaskCrop(Film* film, const void* params) {
  const auto& crop = *static_cast<const CropParams*>(params);
  const std::uint32_t width = film->Width(Film::kWholeFilm);
  const std::uint32_t height = film->Height(Film::kWholeFilm);
  const auto left = Length(crop.leftIsPercent, crop.left, width);
  const auto top = Length(crop.topIsPercent, crop.top, height);
  auto right = Length(crop.rightIsPercent, crop.right, width);
  auto bottom = Length(crop.bottomIsPercent, crop.bottom, height);
  if (crop.margins != 0) {
    if (right) right = FromFarEdge(width, *right);
    if (bottom) bottom = FromFarEdge(height, *bottom);
  }
  if (!left || !top || !right || !bottom) return false;
  if (*left >= *right || *top >= *bottom) return false;
  return film->Crop(Rectangle{*left, *top, *right, *bottom}, 0, film->Count());
}

}  // namespace glib
