#include "glib/tasks/palette_task.h"

namespace glib {

// No palette file can be read yet: refuses.
bool TaskPalette(Film*, const void*) { return false; }

}  // namespace glib
