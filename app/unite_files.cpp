#include <cstdint>
#include <vector>

#include "app/attempt.h"
#include "app/converter.h"
#include "app/format_choice.h"
#include "app/save_output.h"
#include "app/status_log.h"
#include "glib/model/film.h"
#include "glib/module_api/result_values.h"
#include "glib/module_api/save_settings.h"
#include "platform/file_identity.h"

namespace app {
namespace {

using Text = Converter::Text;

Text OutputPath(const ConvertSettings& settings) {
  Text path = settings.destFile;
  if (path.IsEmpty()) {
    path = settings.destFolder + "\\" + settings.uniteName;
    Converter::ChangeExtension(path, settings.uniteName, settings.outExt);
  }
  Converter::CleanName(path);
  return path;
}

// Appends all sources; gives those that could be loaded.
std::vector<Text> AppendFiles(glib::Film& film, const ConvertSettings& settings, glib::BaseFormatDesc& desc) {
  std::vector<Text> loaded;
  for (std::uint32_t i = 0; i < settings.files.count; ++i) {
    const Text& source = *settings.files.At(i);
    RunLog().Report(kSourceName, Converter::NameOf(source));
    const bool good = Attempt([&] { return film.Append(source.c_str(), &desc) == glib::RCOK; });
    RunLog().Report(good ? kOk : kLoadingFailed, "");
    if (good) loaded.push_back(source);
  }
  return loaded;
}

}  // namespace

bool Converter::UniteFiles(glib::Film& film, ConvertSettings& settings, glib::BaseFormatDesc& desc) {
  const Text path = OutputPath(settings);
  // A whole path brings its own folder; one without a folder would name the file instead.
  const Text folder = settings.destFile.IsEmpty() ? settings.destFolder : FolderOf(path);
  if (!EnsureFolder(folder)) {
    RunLog().Report(kFolderFailed, folder);
    return false;
  }
  Target target;
  if (!FindTarget(path, "", settings, target)) return false;

  const FormatKeeper keeper(desc);
  const std::vector<Text> loaded = AppendFiles(film, settings, desc);
  RunChain(&film, &settings);
  desc.firstSlide = 0;
  desc.slideCount = film.Count();
  RunLog().Report(kSaving, "");
  if (settings.files.count != 0) {
    Attempt([&] {
      TakeFormat(film, *settings.files.At(0), desc);
      return true;
    });
  }
  RunLog().Report(kSaving, "");
  const bool saved = SaveChecked(film, target, settings, desc);
  if (saved && settings.removeSources) {
    platform::FileSet output;
    output.Add(target.path.c_str());
    for (const Text& source : loaded) RemoveSource(source, output);
  }
  RunLog().Report(saved ? kTaskFinished : kConvertingFailed, "");
  return saved;
}

}  // namespace app
