#include "modules/vector/picture.h"

#include <algorithm>
#include <memory>

#include "modules/common/limits.h"

namespace modules {
namespace {

constexpr std::uint32_t kDibHeader = 40;

void PutLong(std::vector<std::uint8_t>& bytes, std::uint32_t value) {
  for (int shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<std::uint8_t>(value >> shift));
}

}  // namespace

bool Picture::Allocate(std::uint32_t newWidth, std::uint32_t newHeight, std::uint32_t newBits) {
  if (!SizeAllowed(newWidth, newHeight)) return false;
  width = newWidth;
  height = newHeight;
  bits = newBits;
  rows.assign(Stride() * height, 0);
  return true;
}

void Picture::SetGrays() {
  paletteEntries = 256;
  for (std::uint32_t i = 0; i < 256; ++i) palette[i] = 0xFF000000 | i * 0x010101;
}

std::vector<std::uint8_t> Picture::Dib() const {
  const std::uint32_t entries = bits <= 8 ? std::uint32_t{1} << bits : 0;
  std::vector<std::uint8_t> dib;
  dib.reserve(kDibHeader + 4 * entries + rows.size());
  PutLong(dib, kDibHeader);
  PutLong(dib, width);
  PutLong(dib, ~height + 1);  // the top row comes first
  PutLong(dib, 1 | bits << 16);
  PutLong(dib, 0);
  PutLong(dib, static_cast<std::uint32_t>(rows.size()));
  PutLong(dib, 0);
  PutLong(dib, 0);
  PutLong(dib, entries);
  PutLong(dib, 0);
  for (std::uint32_t i = 0; i < entries; ++i) PutLong(dib, palette[i] & 0xFFFFFF);
  dib.insert(dib.end(), rows.begin(), rows.end());
  return dib;
}

Page* AddPicturePage(glib::ImageDataExchange& exchange, const Picture& picture) {
  Page* page = AddPage(exchange, picture.width, picture.height, picture.bits);
  if (page == nullptr) return nullptr;
  std::copy(picture.rows.begin(), picture.rows.end(), page->pixels);
  if (picture.bits <= 8) {
    std::copy(std::begin(picture.palette), std::end(picture.palette), page->palette);
    page->paletteEntries = picture.paletteEntries;
  }
  return page;
}

Page* AddRecordedPage(glib::ImageDataExchange& exchange, platform::MetafileRecorder& recorder) {
  const std::unique_ptr<platform::Metafile> metafile(recorder.Close());
  return AddMetafilePage(exchange, metafile->records);
}

}  // namespace modules
