#ifndef GLIB_TASKS_COLOR_EFFECT_TASK_H_
#define GLIB_TASKS_COLOR_EFFECT_TASK_H_

#include <cstddef>

namespace glib {

class Film;

// The effect's number and room for more arguments than any effect reads.
inline constexpr std::size_t kColorEffectValues = 8;

struct ColorEffectParams {
  double values[kColorEffectValues];  // number of the effect, its arguments, then zeros
};

// An effect of -1 refuses, and so does a value that is no number.
bool TaskColorEffect(Film* film, const void* params);

}  // namespace glib

#endif  // GLIB_TASKS_COLOR_EFFECT_TASK_H_
