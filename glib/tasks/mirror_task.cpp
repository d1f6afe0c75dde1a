#include "glib/tasks/mirror_task.h"

#include "glib/model/film.h"

namespace glib {

bool TaskMirror(Film* film, const void* params) {
  const auto& mirror = *static_cast<const MirrorParams*>(params);
  if (mirror.horizontal == 0 && mirror.vertical == 0) return false;
  return film->Mirror(mirror.horizontal != 0, mirror.vertical != 0, 0, Film::kAll);
}

}  // namespace glib
