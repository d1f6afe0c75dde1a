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

// Gives how many rows of all planes there were.
std::uint64_t ReadPlanes(const PsdFile& psd, std::uint32_t planes, PlaneReader& reader, modules::Page& page) {
  std::vector<std::uint8_t> row(psd.width);
  std::uint64_t rows = 0;
  for (std::uint32_t plane = 0; plane < planes; ++plane) {
    const Channel channel = ChannelAt(psd, plane, static_cast<std::uint32_t>(page.bits));
    for (std::uint32_t y = 0; y < psd.height; ++y, ++rows) {
      if (!reader.Next(row.data(), channel != Channel::kAlpha)) return rows;
      PutRow(channel, row.data(), page, y);
    }
  }
  return rows;
}

}  // namespace

std::uint32_t LoadMerged(const PsdFile& psd, glib::ImageDataExchange& exchange) {
  PlaneReader reader(psd.merged, {psd.width, psd.height, psd.depth, psd.channels});
  if (!reader.Known()) return modules::Fail(exchange, glib::NSUP, "The picture's compression is not supported");
  if (!reader.Believable()) return modules::Fail(exchange, glib::IERR, "The picture is larger than its data can be");
  const std::uint32_t bits = MergedBits(psd);
  modules::Page* page = modules::AddPage(exchange, psd.width, psd.height, bits);
  if (page == nullptr) return glib::NSUP;
  page->dpiX = psd.dpiX;
  page->dpiY = psd.dpiY;
  if (bits <= 8) FillPalette(psd, *page);

  const std::uint32_t planes = ColourChannels(psd) + (bits == 32 ? 1 : 0);
  const std::uint64_t rows = ReadPlanes(psd, planes, reader, *page);
  if (rows < std::uint64_t{planes} * psd.height) {
    // Rows follow plane by plane, so that none is whole before the last plane; its colours are worth having.
    const std::uint32_t result = modules::EndOfRows(exchange, rows != 0 ? 1 : 0, 2);
    if (result != glib::RCOK) return result;
  }
  FinishColours(psd, *page);
  if (bits == 32) {
    MakeOpaqueIfEmpty(*page);
    if (psd.layerCount < 0) TakeWhiteOut(*page);
  }
  return glib::RCOK;
}

}  // namespace qpsd
