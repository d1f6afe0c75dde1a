#include "glib/tasks/color_effect_task.h"

#include <cmath>
#include <cstdint>

#include "glib/model/film.h"
#include "glib/tasks/pixel_length.h"

namespace glib {

bool TaskColorEffect(Film* film, const void* params) {
  const auto& values = static_cast<const ColorEffectParams*>(params)->values;
  for (const double value : values) {
    if (!std::isfinite(value)) return false;
  }
  const auto effect = CutToInteger(values[0]);
  if (!effect || *effect == -1) return false;
  return film->ColorEffect(static_cast<std::uint32_t>(*effect), values + 1, 0, Film::kAll);
}

}  // namespace glib
