#include "glib/tasks/rotate_task.h"

#include <cmath>

#include "glib/model/film.h"

namespace glib {

bool TaskRotate(Film* film, const void* params) {
  const auto& rotate = *static_cast<const RotateParams*>(params);
  if (rotate.angle == 0 || !std::isfinite(rotate.angle)) return false;
  return film->Rotate(rotate.angle, rotate.interpolate != 0, 0, Film::kAll);
}

}  // namespace glib
