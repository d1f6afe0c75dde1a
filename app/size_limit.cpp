#include "app/size_limit.h"

#include <limits>
#include <memory>

#include "glib/model/film.h"
#include "glib/module_api/result_values.h"
#include "glib/module_api/save_settings.h"
#include "platform/file_operations.h"
#include "platform/pending_file.h"

namespace app {
namespace {

using Text = gen::basic_string<char>;

struct Measure {
  std::int64_t bytes = -1;  // -1: can't be found out
  std::int32_t pages = 0;
};

Measure MeasureFile(glib::Film& film, const Text& path) {
  glib::FileInfo* found = nullptr;
  const bool known = film.GetInfo(path.c_str(), found) == glib::RCOK;
  const std::unique_ptr<glib::FileInfo> info(found);
  if (!known || info == nullptr) return {};
  // A size that doesn't fit its field is larger than any limit.
  return {info->size >= 0 ? info->size : std::numeric_limits<std::int32_t>::max(), info->pages};
}

// The colours for `limit` bytes on a straight line through two colours in `floorBytes` and `items` colours in `bytes`,
// which are more than `floorBytes`.
std::int32_t EstimateColors(std::int32_t limit, std::int64_t floorBytes, std::int32_t items, std::int64_t bytes) {
  const double slope = static_cast<double>(bytes - floorBytes) / (items - 2);
  return static_cast<std::int32_t>(static_cast<double>(limit - floorBytes) / slope + 2.0);
}

}  // namespace

bool SearchColors(glib::GIFSave& desc, std::int64_t size, std::int32_t pages, std::int32_t limit,
                  const SaveTry& saveTry) {
  bool saved = false;
  if (desc.nfi == 0 && pages > 1) {
    desc.nfi = 1;
    size = saveTry();
    saved = size >= 0;
    if (size <= limit) return saved;
  }
  std::int32_t items = desc.paletteItems;
  if (items <= 2) return saved;
  desc.paletteItems = 2;
  const std::int64_t floorBytes = saveTry();
  if (floorBytes < 0 || floorBytes > limit) return floorBytes >= 0;
  // Every try that is still too big lies above the floor, so the estimates fall from try to try.
  for (std::int32_t next = EstimateColors(limit, floorBytes, items, size); next >= 2;) {
    items = next;
    desc.paletteItems = items;
    size = saveTry();
    if (size <= limit) return size >= 0;
    if (items == 2) return true;
    next = EstimateColors(limit, floorBytes, items, size);
    if (next >= items) next = items - 1;
  }
  return true;
}

SizeFit FitToSizeLimit(glib::Film& film, glib::GIFSave& desc, std::int32_t limit, const Text& path) {
  if (limit <= 0) return SizeFit::kTooBig;
  glib::Film measuring("", true);  // the film that is being saved is not to be disturbed
  const Measure saved = MeasureFile(measuring, path);
  if (saved.bytes < 0) return SizeFit::kTooBig;
  if (saved.bytes <= limit) return SizeFit::kFits;

  const platform::PendingFile temporary(platform::TemporaryFolder().c_str());
  const Text tryPath = temporary.Path();
  const auto saveTry = [&]() -> std::int64_t {
    if (film.Save(tryPath.c_str(), &desc) != glib::RCOK) return -1;
    return MeasureFile(measuring, tryPath).bytes;
  };
  if (!SearchColors(desc, saved.bytes, saved.pages, limit, saveTry)) return SizeFit::kTooBig;
  const std::int64_t last = MeasureFile(measuring, tryPath).bytes;
  if (last < 0 || (last > limit && last > saved.bytes)) return SizeFit::kTooBig;
  if (!platform::OverwriteContent(tryPath.c_str(), path.c_str())) return SizeFit::kLost;
  return last <= limit ? SizeFit::kFits : SizeFit::kTooBig;
}

}  // namespace app
