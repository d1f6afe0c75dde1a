#include "app/converter.h"

#include <cstdint>

#include "app/format_choice.h"
#include "app/status_log.h"
#include "glib/model/film.h"
#include "glib/module_api/save_settings.h"

namespace app {

bool Converter::Run(ConvertSettings& settings, glib::BaseFormatDesc& desc) {
  if (settings.log) RunLog().path = settings.logPath;
  glib::Film film("", false);
  film.SetCallback(OnProgress, reinterpret_cast<std::uintptr_t>(this));
  glib::RGB32 background(0, 0, 0, static_cast<std::uint8_t>(settings.background >> 24));
  background.SetRgb(settings.background);
  film.SetBackground(background, 0, glib::Film::kAll);
  if (const auto* gif = dynamic_cast<const glib::GIFSave*>(&desc)) desc.depth = DepthForPalette(gif->paletteItems);
  if (settings.unite) return UniteFiles(film, settings, desc);
  if (settings.collage) return MakeCollages(film, settings, desc);
  return ConvertFiles(film, settings, desc);
}

}  // namespace app
