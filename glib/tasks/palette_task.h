#ifndef GLIB_TASKS_PALETTE_TASK_H_
#define GLIB_TASKS_PALETTE_TASK_H_

#include <cstdint>

namespace glib {

class BaseFormatDesc;
class Film;

struct PaletteParams {
  const char* file;        // stands in the same block as the record
  std::int32_t mode;       // 1: the slide's own palette is mapped to that of the file; others: diffusion against it
  BaseFormatDesc* format;  // gets the transparent index, or -1; not owned
};

// Forces all slides onto the palette of a file; see ReadPaletteFile and ApplyPalette. The command line gives the file's
// name in lower case, so that a file whose name has another case is found as well.
bool TaskPalette(Film* film, const void* params);

}  // namespace glib

#endif  // GLIB_TASKS_PALETTE_TASK_H_
