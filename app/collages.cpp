#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <vector>

#include "app/attempt.h"
#include "app/collage_layout.h"
#include "app/converter.h"
#include "app/format_choice.h"
#include "app/save_output.h"
#include "app/status_log.h"
#include "glib/model/film.h"
#include "glib/model/film_body.h"
#include "glib/module_api/result_values.h"
#include "glib/module_api/save_settings.h"
#include "platform/file_identity.h"
#include "platform/file_operations.h"

namespace app {
namespace {

using Text = Converter::Text;

constexpr std::int32_t kSheetColors = 256;

// The names that sheets take, and what becomes of those of earlier runs. With `overwrite` the names are given as if
// all files that match them had been deleted at the start. In truth an earlier sheet stands until a new one has taken
// its name, and the others go at the end, when every new sheet stands: one that could not be saved, on a full disk say,
// costs no earlier one.
class SheetNames {
 public:
  explicit SheetNames(const ConvertSettings& run);

  // Where to read a source from: nowhere if it is an earlier sheet that this run does away with.
  const char* PlaceOf(std::uint32_t source) const { return gone[source] ? "" : settings.files.At(source)->c_str(); }
  // The place for the next sheet; the same again until it is taken.
  Target Next();
  void Taken(const Text& path) { sheets.Add(path.c_str()); }
  void NotTaken() { complete = false; }
  const platform::FileSet& Sheets() const { return sheets; }
  void RemoveEarlier() const;

 private:
  Text Numbered(int index) const;
  bool IsSheetName(const Text& path) const;

  const ConvertSettings& settings;
  std::vector<bool> gone;     // by source
  std::vector<Text> earlier;  // replaced or removed
  platform::FileSet sheets;   // of this run
  int number = 0;             // all names below are taken
  bool complete = true;       // no sheet of this run failed
};

SheetNames::SheetNames(const ConvertSettings& run) : settings(run), gone(run.files.count) {
  if (!settings.overwrite) return;
  platform::FileSet sources;
  for (std::uint32_t i = 0; i < gone.size(); ++i) sources.Add(settings.files.At(i)->c_str());
  platform::FileSet earlierSheets;
  for (const Text& path : Converter::ListMatching(settings.destFolder, Text("collage*") + settings.outExt)) {
    if (IsSheetName(path)) {
      earlierSheets.Add(path.c_str());
    } else if (sources.Holds(path.c_str())) {
      continue;  // its name only begins like that of a sheet, and it is about to be read
    }
    earlier.push_back(path);
  }
  for (std::uint32_t i = 0; i < gone.size(); ++i) gone[i] = earlierSheets.Holds(settings.files.At(i)->c_str());
}

Text SheetNames::Numbered(int index) const {
  Text digits;
  if (index != 0) gen::Format(digits, "(%d)", index);
  return settings.destFolder + "\\collage" + digits + settings.outExt;
}

bool SheetNames::IsSheetName(const Text& path) const {
  const std::string_view start = "\\collage";
  std::string_view name = path.c_str();
  name.remove_prefix(settings.destFolder.Length());
  if (name.substr(0, start.size()) != start) return false;
  name.remove_prefix(start.size());
  if (name.size() > 1 && name.front() == '(') {
    return path == Numbered(static_cast<int>(std::strtol(name.data() + 1, nullptr, 10)));
  }
  return path == Numbered(0);
}

Target SheetNames::Next() {
  for (;; ++number) {
    const Text path = Numbered(number);
    if (!platform::Exists(path.c_str())) return {Numbered(0), path, false};
    const bool isEarlier = std::find(earlier.begin(), earlier.end(), path) != earlier.end();
    if (isEarlier && !sheets.Holds(path.c_str()) && platform::Deletable(path.c_str())) return {path, path, true};
  }
}

void SheetNames::RemoveEarlier() const {
  if (sheets.IsEmpty() || !complete) return;
  for (const Text& path : earlier) {
    if (!sheets.Holds(path.c_str())) Converter::RemoveFile(path);
  }
}

class CollageRun {
 public:
  CollageRun(Converter& driver, glib::Film& sheetFilm, const ConvertSettings& run, glib::BaseFormatDesc& format);

  bool Make();

 private:
  void TakeBatch(std::uint32_t base, std::uint32_t batch);
  bool Load(std::uint32_t index);
  void TakeSlides(std::uint32_t index, std::uint32_t slideCount);
  void BeginSheet();
  bool AddImage(std::uint32_t index, std::uint32_t slide);
  bool IsFull() const { return sheet->layers.count >= perSheet; }
  void SaveCollage();
  bool LayOut();
  void RemoveSources();

  // What has become of a source.
  struct Fate {
    bool used = false;
    bool lost = false;  // a sheet that it is on could not be saved
  };

  Converter& converter;
  glib::Film& film;
  const ConvertSettings& settings;
  glib::BaseFormatDesc& desc;
  glib::Film scratch;
  std::uint64_t perSheet;
  SheetNames names;
  std::unique_ptr<glib::Slide> sheet;
  std::vector<std::uint32_t> onSheet;  // sources of its layers
  std::vector<Fate> fates;
};

CollageRun::CollageRun(Converter& driver, glib::Film& sheetFilm, const ConvertSettings& run,
                       glib::BaseFormatDesc& format)
    : converter(driver),
      film(sheetFilm),
      settings(run),
      desc(format),
      scratch("", false),
      perSheet(static_cast<std::uint64_t>(run.collageColumns) * static_cast<std::uint64_t>(run.collageRows)),
      names(run),
      fates(run.files.count) {
  glib::ProgressCallback callback = nullptr;
  std::uintptr_t userValue = 0;
  film.GetCallback(callback, userValue);
  scratch.SetCallback(callback, userValue);
  scratch.SetBackground(film.GetBackground(glib::Film::kWholeFilm), 0, glib::Film::kAll);
}

bool CollageRun::Make() {
  const std::uint32_t count = settings.files.count;
  for (std::uint32_t base = 0; base < count;) {
    const auto batch = static_cast<std::uint32_t>(std::min<std::uint64_t>(count - base, perSheet));
    TakeBatch(base, batch);
    base += batch;
  }
  names.RemoveEarlier();
  if (settings.removeSources) RemoveSources();
  return !names.Sheets().IsEmpty();
}

// The sources of a batch fill a sheet if each has one image; with more they fill several.
void CollageRun::TakeBatch(std::uint32_t base, std::uint32_t batch) {
  Attempt([&] {
    TakeDepthAndDpi(scratch, names.PlaceOf(base), desc);
    return true;
  });
  for (std::uint32_t index = base; index < base + batch; ++index) {
    RunLog().Report(kSourceName, Converter::NameOf(*settings.files.At(index)));
    if (!Load(index)) {
      RunLog().Report(kLoadingFailed, "");
      continue;
    }
    RunLog().Report(kLoaded, "");
    converter.RunChain(&scratch, &settings);
    TakeSlides(index, settings.separatePages ? scratch.Count() : std::min(scratch.Count(), 1U));
    scratch.Clear();
  }
  if (sheet != nullptr) SaveCollage();
}

bool CollageRun::Load(std::uint32_t index) {
  return Attempt([&] { return scratch.Load(names.PlaceOf(index), &desc) == glib::RCOK; });
}

void CollageRun::TakeSlides(std::uint32_t index, std::uint32_t slideCount) {
  for (std::uint32_t slide = 0; slide < slideCount; ++slide) {
    if (sheet == nullptr) BeginSheet();
    if (!Attempt([&] { return AddImage(index, slide); })) fates[index].lost = true;
    if (IsFull()) SaveCollage();
  }
  if (settings.collageFlag != 0 && sheet != nullptr) SaveCollage();
}

void CollageRun::BeginSheet() {
  sheet = std::make_unique<glib::Slide>(film.GetBackground(glib::Film::kWholeFilm));
  onSheet.clear();
}

bool CollageRun::AddImage(std::uint32_t index, std::uint32_t slide) {
  const glib::Layer* image = scratch.body().GetSlide(slide)->GetLayer(0);
  if (image == nullptr) return false;
  std::unique_ptr<glib::Layer> copy(image->Clone(sheet.get()));
  if (copy->raster.pixels == nullptr && copy->raster.metafile == nullptr) return false;  // no memory for it
  // A metafile of no size of its own gets one only when it is drawn.
  if (copy->raster.width <= 0 || copy->raster.height <= 0) copy->EnsureRasterIfMetafile();
  onSheet.push_back(index);
  sheet->AddLayer(copy.release());
  fates[index].used = true;
  return true;
}

// The sheet goes into the film of the run, where it is saved, and is gone afterwards, whatever came of it.
void CollageRun::SaveCollage() {
  if (sheet->layers.count == 0) {
    sheet.reset();
    return;
  }
  const bool laidOut = Attempt([&] { return LayOut(); });
  film.body().AddSlide(sheet.release());
  RunLog().Report(kSaving, "");
  const FormatKeeper keeper(desc);
  // A sheet has the colours of many sources, so no single one of them tells how many it needs.
  auto* gif = dynamic_cast<glib::GIFSave*>(&desc);
  if (gif != nullptr && gif->paletteItems == 0) gif->paletteItems = kSheetColors;
  Target target = names.Next();
  if (laidOut && SaveChecked(film, target, settings, desc)) {
    names.Taken(target.path);
    RunLog().Report(kReady, "");
  } else {
    for (const std::uint32_t index : onSheet) fates[index].lost = true;
    names.NotTaken();
    RunLog().Report(kConvertingFailed, "");
  }
  film.Clear();
}

bool CollageRun::LayOut() {
  const std::uint32_t count = sheet->layers.count;
  std::vector<CollageCell> cells(count);
  for (std::uint32_t i = 0; i < count; ++i) {
    const glib::RasterBlock& raster = sheet->GetLayer(i)->raster;
    cells[i].width = raster.width;
    cells[i].height = raster.height;
  }
  if (!LayOutSheet({settings.collageColumns, settings.collageRows, settings.collageGapX, settings.collageGapY},
                   cells)) {
    return false;
  }
  for (std::uint32_t i = 0; i < count; ++i) {
    const CollageCell& cell = cells[i];
    glib::Layer& layer = *sheet->GetLayer(i);
    layer.SetPosition(cell.x, cell.y);
    if (cell.canvasWidth > 0 && cell.canvasHeight > 0) layer.ResizeCanvas(cell.canvasWidth, cell.canvasHeight);
  }
  sheet->stale = true;
  return true;
}

void CollageRun::RemoveSources() {
  for (std::uint32_t i = 0; i < fates.size(); ++i) {
    if (fates[i].used && !fates[i].lost) RemoveSource(*settings.files.At(i), names.Sheets());
  }
}

}  // namespace

bool Converter::MakeCollages(glib::Film& film, ConvertSettings& settings, glib::BaseFormatDesc& desc) {
  if (settings.collageColumns <= 0 || settings.collageRows <= 0) return false;
  if (!EnsureFolder(settings.destFolder)) {
    RunLog().Report(kFolderFailed, settings.destFolder);
    return false;
  }
  return CollageRun(*this, film, settings, desc).Make();
}

}  // namespace app
