#include "modules/qpsd/merged_picture.h"

#include <vector>

#include "modules/qpsd/channels.h"
#include "modules/qpsd/planes.h"

namespace qpsd {
namespace {

void FillPalette(const PsdFile& psd, modules::Page& page) {
  constexpr std::uint32_t kEntries = 256;
  if (psd.mode == ColourMode::kBitmap) {
    modules::SetEntry(page, 0, 255, 255, 255);
    modules::SetEntry(page, 1, 0, 0, 0);
    page.paletteEntries = 2;
  } else if (psd.mode != ColourMode::kIndexed || psd.palette.size() < 3 * kEntries) {
    modules::SetGrayRamp(page, kEntries);
  } else {
    for (std::uint32_t i = 0; i < kEntries; ++i) {
      const bool transparent = psd.transparentIndex == static_cast<std::int32_t>(i);
      modules::SetEntry(page, i, psd.palette[i], psd.palette[kEntries + i], psd.palette[2 * kEntries + i],
                        transparent ? 0 : 255);
    }
    page.paletteEntries = psd.paletteEntries;
  }
}

}  // namespace

std::uint32_t LoadMerged(const PsdFile& psd, glib::ImageDataExchange& exchange) {
  const PlaneSplitter splitter(psd.merged, {psd.width, psd.height, psd.depth}, psd.channels);
  if (!splitter.Known()) return modules::Fail(exchange, glib::NSUP, "The picture's compression is not supported");
  const std::uint32_t bits = MergedBits(psd);
  const std::uint32_t shown = ColourChannels(psd) + (bits == 32 ? 1 : 0);
  if (!splitter.Believable(shown)) {
    return modules::Fail(exchange, glib::IERR, "The picture is larger than its data can be");
  }
  modules::Page* page = modules::AddPage(exchange, psd.width, psd.height, bits);
  if (page == nullptr) return glib::NSUP;
  page->dpiX = psd.dpiX;
  page->dpiY = psd.dpiY;
  if (bits <= 8) FillPalette(psd, *page);

  std::vector<ChannelPlane> planes;
  for (std::uint32_t i = 0; i < shown; ++i) planes.push_back({ChannelAt(psd, i, bits), splitter.Plane(i)});
  const RowCounts rows = ReadPlanes(psd, planes, *page);
  if (rows.fewest < psd.height) {
    // A plane that ends early leaves the others' colours, which are worth having.
    const std::uint32_t result = modules::EndOfRows(exchange, rows.most != 0 ? 1 : 0, 2);
    if (result != glib::RCOK) return result;
  }
  FinishLab(psd, *page);
  if (bits == 32) {
    modules::MakeOpaqueIfEmpty(*page, 0, psd.height);
    if (psd.layerCount < 0) TakeWhiteOut(*page);
  }
  ApplyProfile(psd, *page);
  return glib::RCOK;
}

}  // namespace qpsd
