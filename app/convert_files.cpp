#include <algorithm>
#include <cstdint>

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

// The source tree is repeated below the destination folder.
Text OutputPath(const Text& source, const ConvertSettings& settings) {
  Text path = settings.destFile;
  if (path.IsEmpty()) {
    const std::uint32_t root = std::min(settings.sourceFolder.Length(), source.Length());
    Text relative = source.Right(source.Length() - root);
    if (relative.c_str()[0] == '\\') relative = relative.Right(relative.Length() - 1);
    path = settings.destFolder + "\\" + relative;
    Converter::ChangeExtension(path, relative, settings.outExt);
  }
  Converter::CleanName(path);
  return path;
}

// A name without a dot stays whole, whatever its folder is called.
Text PagePath(const Text& path, std::uint32_t slide, const Text& ext) {
  const std::int32_t dot = path.ReverseFind('.');
  Text number;
  gen::Format(number, "_p%d", static_cast<int>(slide));
  return (dot <= path.ReverseFind('\\') ? path : path.Left(static_cast<std::uint32_t>(dot))) + number + ext;
}

// One source on its way to its outputs.
class SourceConversion {
 public:
  SourceConversion(Converter& driver, glib::Film& sourceFilm, const Text& sourcePath, const ConvertSettings& run,
                   glib::BaseFormatDesc& format)
      : converter(driver), film(sourceFilm), source(sourcePath), settings(run), desc(format) {}

  void Convert();

 private:
  bool Load();
  bool SaveWhole(Target& target);
  void SavePages(const Text& path, std::uint32_t last);

  Converter& converter;
  glib::Film& film;
  const Text& source;
  const ConvertSettings& settings;
  glib::BaseFormatDesc& desc;
  platform::FileSet outputs;
  bool complete = true;  // nothing of the source was left out
};

void SourceConversion::Convert() {
  const FormatKeeper keeper(desc);
  film.Clear();
  RunLog().Report(kSourceName, Converter::NameOf(source));
  if (!Attempt([&] { return Load(); })) {
    RunLog().Report(kLoadingFailed, "");
    return;
  }
  RunLog().Report(kOk, "");

  const Text path = OutputPath(source, settings);
  const Text folder = Converter::FolderOf(path);
  if (!Converter::EnsureFolder(folder)) {
    RunLog().Report(kFolderFailed, folder);
    return;
  }
  Target target;
  if (!FindTarget(path, source, settings, target)) return;

  const std::uint32_t slides = film.Count();
  const std::uint32_t first = std::min(desc.firstSlide, slides);
  const std::uint64_t end = std::uint64_t{desc.firstSlide} + desc.slideCount;
  const std::uint32_t last =
      desc.slideCount == glib::kAllSlides ? slides : static_cast<std::uint32_t>(std::min<std::uint64_t>(end, slides));
  desc.firstSlide = first;
  converter.RunChain(&film, &settings);
  RunLog().Report(kSaving, "");
  if (last > 1 && settings.separatePages) {
    SavePages(target.path, last);
    RunLog().Report(kReady, "");
  } else {
    RunLog().Report(SaveWhole(target) ? kReady : kConvertingFailed, "");
  }
  if (settings.removeSources && complete && !outputs.IsEmpty()) RemoveSource(source, outputs);
}

bool SourceConversion::Load() {
  if (film.Load(source.c_str(), &desc) != glib::RCOK) return false;
  TakeFormat(film, source, desc);
  return true;
}

bool SourceConversion::SaveWhole(Target& target) {
  complete = SaveChecked(film, target, settings, desc);
  if (complete) outputs.Add(target.path.c_str());
  return complete;
}

void SourceConversion::SavePages(const Text& path, std::uint32_t last) {
  desc.slideCount = 1;
  for (; desc.firstSlide < last; ++desc.firstSlide) {
    Target page;
    if (!FindTarget(PagePath(path, desc.firstSlide, settings.outExt), source, settings, page)) {
      complete = false;
    } else if (SaveUnchecked(film, page, settings, desc)) {
      outputs.Add(page.path.c_str());
    } else {
      RunLog().Report(kConvertingFailed, "");
      complete = false;
    }
  }
}

}  // namespace

bool Converter::ConvertFiles(glib::Film& film, ConvertSettings& settings, glib::BaseFormatDesc& desc) {
  for (std::uint32_t i = 0; i < settings.files.count; ++i) {
    SourceConversion(*this, film, *settings.files.At(i), settings, desc).Convert();
  }
  RunLog().Report(kTaskFinished, "");
  return true;
}

}  // namespace app
