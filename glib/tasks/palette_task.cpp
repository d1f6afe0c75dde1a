#include "glib/tasks/palette_task.h"

#include <string>

#include "glib/color/palette_file.h"
#include "glib/module_api/save_settings.h"
#include "glib/tasks/apply_palette.h"
#include "platform/any_case_path.h"

namespace glib {

bool TaskPalette(Film* film, const void* params) {
  const auto& record = *static_cast<const PaletteParams*>(params);
  const std::string path = platform::FindFileInAnyCase(record.file);
  PaletteData palette;
  if (!ReadPaletteFile(path.c_str(), palette)) return false;
  std::int32_t transparentIndex = -1;
  if (!ApplyPalette(*film, palette.entries, palette.count, record.mode != 1, transparentIndex)) return false;
  if (auto* gif = dynamic_cast<GIFSave*>(record.format)) gif->transparentIndex = transparentIndex;
  if (auto* png = dynamic_cast<PNGSave*>(record.format)) png->transparentIndex = transparentIndex;
  return true;
}

}  // namespace glib
