#include "glib/tasks/filter_task.h"

#include "glib/model/film.h"

namespace glib {

bool TaskFilter(Film* film, const void* params) {
  const std::int32_t filter = static_cast<const FilterParams*>(params)->filter;
  return filter != kNoFilter && film->Filter(static_cast<std::uint32_t>(filter), 0, Film::kAll);
}

}  // namespace glib
