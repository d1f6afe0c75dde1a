#ifndef GLIB_TASKS_MIRROR_TASK_H_
#define GLIB_TASKS_MIRROR_TASK_H_

#include <cstdint>

namespace glib {

class Film;

struct MirrorParams {
  std::int32_t horizontal;  // not 0: top and bottom change places
  std::int32_t vertical;    // not 0: left and right change places
};

bool TaskMirror(Film* film, const void* params);

}  // namespace glib

#endif  // GLIB_TASKS_MIRROR_TASK_H_
