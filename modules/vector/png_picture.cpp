#include <algorithm>

#include "modules/common/limits.h"
#include "modules/common/png_reader.h"
#include "modules/vector/picture.h"

namespace modules {
namespace {

// One index to a byte.
void Spread(Page& page, std::uint32_t y, std::uint8_t* to) {
  const std::uint8_t* from = Row(page, y);
  const auto bits = static_cast<std::uint32_t>(page.bits);
  const std::uint32_t perByte = 8 / bits;
  for (std::uint32_t x = 0; x < static_cast<std::uint32_t>(page.width); ++x) {
    const std::uint32_t shift = 8 - bits * (x % perByte + 1);
    to[x] = static_cast<std::uint8_t>(from[x / perByte] >> shift & ((1U << bits) - 1));
  }
}

}  // namespace

bool DecodePng(std::span<const std::uint8_t> bytes, Picture& picture) {
  PngReader reader(bytes);
  if (!reader.ReadHeader(false) || !SizeAllowed(reader.Width(), reader.Height())) return false;
  glib::ImageDataExchange pages;
  gen::basic_string<char> message;
  pages.message = &message;
  pages.AllocateRaster = glib::AllocateRaster;
  pages.FreeRaster = glib::FreeRaster;
  Page* page = AddPage(pages, reader.Width(), reader.Height(), reader.Bits());
  if (page == nullptr) return false;
  reader.FillPalette(*page);
  if (!reader.ReadRows(*page) && !reader.AnyRow()) return false;
  if (!picture.Allocate(reader.Width(), reader.Height(), std::max(reader.Bits(), 8U))) return false;
  std::copy(std::begin(page->palette), std::end(page->palette), picture.palette);
  picture.paletteEntries = page->paletteEntries;
  for (std::uint32_t y = 0; y < picture.height; ++y) {
    if (page->bits < 8) {
      Spread(*page, y, picture.Row(y));
    } else {
      std::copy_n(Row(*page, y), picture.width * picture.bits / 8, picture.Row(y));
    }
  }
  return true;
}

}  // namespace modules
