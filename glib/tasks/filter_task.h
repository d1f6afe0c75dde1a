#ifndef GLIB_TASKS_FILTER_TASK_H_
#define GLIB_TASKS_FILTER_TASK_H_

#include <cstdint>

namespace glib {

class Film;

inline constexpr std::int32_t kNoFilter = -1;

struct FilterParams {
  std::int32_t filter;  // number of a filter of Layer::FilterLayer
};

bool TaskFilter(Film* film, const void* params);

}  // namespace glib

#endif  // GLIB_TASKS_FILTER_TASK_H_
