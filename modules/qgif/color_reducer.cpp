#include "modules/qgif/color_reducer.h"

#include "glib/color/adaptive_palette.h"
#include "glib/color/color_page.h"
#include "modules/qgif/palette_order.h"

namespace qgif {
namespace {

using modules::Page;

// A page as the palette library sees it, with the entries that the settings make of an indexed one.
struct PageView {
  PageView(const Page& page, const PixelView& view) {
    color.pixels = page.pixels;
    color.strideBytes = page.Stride();
    color.width = static_cast<std::uint32_t>(page.width);
    color.height = static_cast<std::uint32_t>(page.height);
    color.bits = static_cast<std::uint32_t>(page.bits);
    if (IsIndexed(page)) {
      entries = EntryWords(page, view);
      color.palette = entries.data();
    }
  }
  PageView(const PageView&) = delete;
  PageView& operator=(const PageView&) = delete;

  std::array<std::uint32_t, 256> entries{};
  glib::ColorPage color;
};

}  // namespace

ColorReducer::ColorReducer(std::span<const Page* const> pages, const PixelView& view, const ReducerSettings& settings,
                           bool transparent)
    : view_(view) {
  std::vector<std::unique_ptr<PageView>> views;
  std::vector<glib::ColorPage> colorPages;
  for (const Page* page : pages) {
    views.push_back(std::make_unique<PageView>(*page, view));
    colorPages.push_back(views.back()->color);
  }
  glib::PaletteSettings palette;
  palette.maxColors = settings.maxEntries - (transparent ? 1 : 0);
  palette.level = glib::PaletteLevelOf(settings.level);
  palette.grayscale = view.grayscale;
  palette.dither = settings.dither;
  glib::AdaptivePalette found = glib::BuildAdaptivePalette(colorPages, palette);
  if (settings.changesOnly) OrderForChanges(pages, view, glib::MeasureOf(palette.level), found.colors);

  glib::MapSettings map;
  map.firstIndex = transparent ? 1 : 0;
  map.level = palette.level;
  map.grayscale = view.grayscale;
  map.dither = settings.dither && !found.exact;
  mapper_ = std::make_unique<glib::PaletteMapper>(found.colors, map);

  if (transparent || found.colors.empty()) entries_.push_back(kOpaque);
  entries_.insert(entries_.end(), found.colors.begin(), found.colors.end());
}

void ColorReducer::Map(const Page& page, const std::uint8_t* held, std::uint8_t* indices) const {
  mapper_->Map(PageView(page, view_).color, held, indices);
}

}  // namespace qgif
