#include "app/save_output.h"

#include "app/attempt.h"
#include "app/converter.h"
#include "app/format_choice.h"
#include "app/size_limit.h"
#include "app/status_log.h"
#include "glib/model/film.h"
#include "glib/module_api/result_values.h"
#include "glib/module_api/save_settings.h"
#include "platform/file_operations.h"
#include "platform/pending_file.h"

namespace app {
namespace {

using Text = Converter::Text;
using platform::PendingFile;

// Names that others may take from under us before we give up.
constexpr int kNameTries = 1000;

bool MayReplace(const Text& path) {
  return !path.IsEmpty() && (!platform::Exists(path.c_str()) || platform::Deletable(path.c_str()));
}

bool TakeName(PendingFile& file, Target& target, const ConvertSettings& settings) {
  if (target.replace) return file.CommitReplacing(target.path.c_str()) == PendingFile::Outcome::kDone;
  for (int i = 0; i < kNameTries; ++i) {
    const PendingFile::Outcome outcome = file.Commit(target.path.c_str());
    if (outcome != PendingFile::Outcome::kTaken) return outcome == PendingFile::Outcome::kDone;
    target.path = Converter::FreeName(target.wanted, settings.outExt);
  }
  return false;
}

// False only if the saved file is lost.
bool KeepBelowLimit(glib::Film& film, const PendingFile& file, std::int32_t limit, glib::BaseFormatDesc& desc) {
  auto* gif = dynamic_cast<glib::GIFSave*>(&desc);
  if (gif == nullptr || limit <= 0) return true;
  const FormatKeeper keeper(desc);
  const SizeFit fit = FitToSizeLimit(film, *gif, limit, file.Path());
  if (fit != SizeFit::kFits) RunLog().Report(kTooSmall, "");
  return fit != SizeFit::kLost;
}

bool Save(glib::Film& film, Target& target, const ConvertSettings& settings, glib::BaseFormatDesc& desc,
          std::int32_t limit) {
  return Attempt([&] {
    // A file that can't be made has no path, and the save fails in its own words.
    PendingFile file(Converter::FolderOf(target.path).c_str());
    if (film.Save(file.Path(), &desc) != glib::RCOK) return false;
    if (!KeepBelowLimit(film, file, limit, desc)) return false;
    // The source is about to go, so the output has to be on the disk, then its name.
    if (settings.removeSources && !file.Flush()) return false;
    if (!TakeName(file, target, settings)) return false;
    if (settings.removeSources) file.Flush();
    return true;
  });
}

}  // namespace

bool FindTarget(const Text& path, const Text& source, const ConvertSettings& settings, Target& target) {
  target = Target{path, path, settings.overwrite};
  if (settings.overwrite) return MayReplace(path);
  if (settings.removeSources && platform::IsSameName(path.c_str(), source.c_str()) && MayReplace(path)) {
    target.replace = true;
  } else {
    target.path = Converter::FreeName(path, settings.outExt);
  }
  return true;
}

bool SaveChecked(glib::Film& film, Target& target, const ConvertSettings& settings, glib::BaseFormatDesc& desc) {
  return Save(film, target, settings, desc, settings.maxBytes);
}

bool SaveUnchecked(glib::Film& film, Target& target, const ConvertSettings& settings, glib::BaseFormatDesc& desc) {
  return Save(film, target, settings, desc, 0);
}

void RemoveSource(const Text& source, const platform::FileSet& outputs) {
  if (!outputs.Holds(source.c_str())) Converter::RemoveFile(source);
}

}  // namespace app
