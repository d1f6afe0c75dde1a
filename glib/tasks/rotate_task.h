#ifndef GLIB_TASKS_ROTATE_TASK_H_
#define GLIB_TASKS_ROTATE_TASK_H_

#include <cstdint>

namespace glib {

class Film;

struct RotateParams {
  float angle;  // degrees, clockwise
  std::int32_t interpolate;
};

// Turns all slides. An angle of 0 refuses, and so does one that is no number.
bool TaskRotate(Film* film, const void* params);

}  // namespace glib

#endif  // GLIB_TASKS_ROTATE_TASK_H_
