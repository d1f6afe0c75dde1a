#include "app/format_choice.h"

#include <algorithm>
#include <memory>

#include "glib/model/film.h"
#include "glib/module_api/result_values.h"

namespace app {
namespace {

constexpr std::int32_t kDefaultDepth = 24;
constexpr std::int32_t kMaxPaletteDepth = 8;

bool FillDepthAndDpi(glib::Film& film, const gen::basic_string<char>& path, glib::BaseFormatDesc& desc) {
  glib::FileInfo* found = nullptr;
  const bool known = film.GetInfo(path.c_str(), found) == glib::RCOK;
  const std::unique_ptr<glib::FileInfo> info(found);
  if (!known || info == nullptr) return false;
  if (desc.depth == 0) desc.depth = info->bits() != 0 ? info->bits() : kDefaultDepth;
  if (desc.dpiX == 0.0) desc.dpiX = info->dpiX;
  if (desc.dpiY == 0.0) desc.dpiY = info->dpiY;
  return true;
}

}  // namespace

FormatKeeper::FormatKeeper(glib::BaseFormatDesc& desc) : kept(desc), gif(dynamic_cast<glib::GIFSave*>(&desc)) {
  before.depth = desc.depth;
  before.dpiX = desc.dpiX;
  before.dpiY = desc.dpiY;
  before.firstSlide = desc.firstSlide;
  before.slideCount = desc.slideCount;
  if (gif == nullptr) return;
  before.paletteItems = gif->paletteItems;
  before.transparentIndex = gif->transparentIndex;
  before.nfi = gif->nfi;
}

FormatKeeper::~FormatKeeper() {
  kept.depth = before.depth;
  kept.dpiX = before.dpiX;
  kept.dpiY = before.dpiY;
  kept.firstSlide = before.firstSlide;
  kept.slideCount = before.slideCount;
  if (gif == nullptr) return;
  gif->paletteItems = before.paletteItems;
  gif->transparentIndex = before.transparentIndex;
  gif->nfi = before.nfi;
}

std::int32_t DepthForPalette(std::int32_t paletteItems) {
  std::int32_t depth = 0;
  while (depth <= kMaxPaletteDepth && paletteItems > 1 << depth) ++depth;
  return depth;
}

void TakeDepthAndDpi(glib::Film& film, const gen::basic_string<char>& path, glib::BaseFormatDesc& desc) {
  FillDepthAndDpi(film, path, desc);
}

void TakeFormat(glib::Film& film, const gen::basic_string<char>& path, glib::BaseFormatDesc& desc) {
  if (!FillDepthAndDpi(film, path, desc)) return;
  auto* gif = dynamic_cast<glib::GIFSave*>(&desc);
  if (gif != nullptr && gif->paletteItems == 0) {
    gif->paletteItems = 1 << std::clamp(desc.depth, 0, kMaxPaletteDepth);
  }
}

}  // namespace app
