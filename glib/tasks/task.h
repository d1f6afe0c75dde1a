#ifndef GLIB_TASKS_TASK_H_
#define GLIB_TASKS_TASK_H_

#include "gen/array_ptr.h"

namespace glib {

class Film;

// One step of the chain. Both the TASK and its record come from operator new; the chain that owns the TASK deletes
// both. A record has no destructor. A handler that can't do its work leaves the film as it was and gives false.
struct TASK {
  bool (*handler)(Film* film, const void* params);
  void* params;
};

}  // namespace glib

namespace gen {

template <>
struct element_deleter<glib::TASK> {
  static void Delete(glib::TASK* task) {
    ::operator delete(task->params);
    delete task;
  }
};

}  // namespace gen

#endif  // GLIB_TASKS_TASK_H_
