#include "modules/qtga/tga.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "modules/common/byte_reader.h"
#include "modules/qtga/tga_rows.h"

namespace qtga {
namespace {

constexpr std::uint32_t kOpaque = 0xFF000000;

std::uint32_t FromFive(std::uint32_t value) { return (value & 31U) << 3 | (value & 31U) >> 2; }

// A pixel word of a colour in 2 bytes (with an alpha bit), 3 or 4.
std::uint32_t ColourOf(const std::uint8_t* bytes, std::uint32_t count) {
  const std::uint32_t two = bytes[0] | static_cast<std::uint32_t>(bytes[1]) << 8;
  if (count == 2) {
    const std::uint32_t alpha = (two & 0x8000U) != 0 ? kOpaque : 0;
    return alpha | FromFive(two >> 10) << 16 | FromFive(two >> 5) << 8 | FromFive(two);
  }
  const std::uint32_t three = two | static_cast<std::uint32_t>(bytes[2]) << 16;
  return count == 3 ? three | kOpaque : three | static_cast<std::uint32_t>(bytes[3]) << 24;
}

// The map as pixel words by index, 2^16 at most. Entries that the file lacks are black.
std::vector<std::uint32_t> ReadMap(std::span<const std::uint8_t> file, const TgaHeader& header) {
  std::vector<std::uint32_t> map(header.mapFirst, kOpaque);
  modules::ByteReader in(file);
  in.Seek(std::min(header.mapAt, file.size()));
  bool anyAlpha = false;
  for (std::uint32_t i = 0; i < header.mapCount; ++i) {
    const auto entry = in.Take(header.mapBytes);
    if (entry.size() < header.mapBytes) break;
    map.push_back(ColourOf(entry.data(), header.mapBytes));
    anyAlpha = anyAlpha || (header.mapBytes == 4 && map.back() >> 24 != 0);
  }
  // Of an entry with alpha only "not to be seen" can be kept.
  for (std::uint32_t& colour : map) {
    if (!anyAlpha || colour >> 24 != 0) colour |= kOpaque;
  }
  return map;
}

void SetPalette(const TgaHeader& header, const std::vector<std::uint32_t>& map, modules::Page& page) {
  if (page.bits != 8) return;
  if (header.kind == TgaKind::kGrey || map.empty()) {
    modules::SetGrayRamp(page, 256);
    return;
  }
  page.paletteEntries = static_cast<std::uint32_t>(std::min<std::size_t>(map.size(), 256));
  std::copy_n(map.begin(), page.paletteEntries, page.palette);
}

// Turns a row of the file into one of the page. Both are the same for 8, 24 and 32 bits.
class RowWriter {
 public:
  RowWriter(const TgaHeader& header, const std::vector<std::uint32_t>& map) : header_(header), map_(map) {}

  void Write(std::span<const std::uint8_t> row, std::uint32_t bits, std::uint8_t* target) const {
    const std::uint32_t step = bits / 8;
    for (std::uint32_t x = 0; x < header_.width; ++x, target += step) {
      const std::uint32_t pixel = PixelOf(row.data() + std::size_t{x} * header_.pixelBytes);
      for (std::uint32_t i = 0; i < step; ++i) target[i] = static_cast<std::uint8_t>(pixel >> (8 * i));
    }
  }

 private:
  std::uint32_t PixelOf(const std::uint8_t* bytes) const {
    if (header_.kind == TgaKind::kColour) return ColourOf(bytes, header_.pixelBytes);
    if (header_.kind == TgaKind::kGrey) return bytes[0] * 0x010101U | static_cast<std::uint32_t>(bytes[1]) << 24;
    const std::size_t index = bytes[0] | static_cast<std::size_t>(bytes[1]) << 8;
    return index < map_.size() ? map_[index] : kOpaque;
  }

  const TgaHeader& header_;
  const std::vector<std::uint32_t>& map_;
};

void MirrorRow(std::uint8_t* row, std::uint32_t width, std::size_t step) {
  for (std::uint32_t left = 0, right = width - 1; left < right; ++left, --right) {
    std::swap_ranges(row + left * step, row + (left + 1) * step, row + right * step);
  }
}

std::uint32_t ReadRows(std::span<const std::uint8_t> file, const TgaHeader& header,
                       const std::vector<std::uint32_t>& map, modules::Page& page) {
  TgaRows rows(file.subspan(std::min(header.dataAt, file.size())), header.packed, header.pixelBytes);
  const RowWriter writer(header, map);
  const auto bits = static_cast<std::uint32_t>(page.bits);
  const bool sameForm = bits == header.pixelBytes * 8;
  std::vector<std::uint8_t> row(std::size_t{header.width} * header.pixelBytes);
  for (std::uint32_t y = 0; y < header.height; ++y) {
    if (!rows.Read(row)) return y;
    std::uint8_t* const target = modules::Row(page, header.topDown ? y : header.height - 1 - y);
    if (sameForm) {
      std::memcpy(target, row.data(), row.size());
    } else {
      writer.Write(row, bits, target);
    }
    if (header.rightToLeft) MirrorRow(target, header.width, bits / 8);
  }
  return header.height;
}

}  // namespace

modules::Verdict ReadTgaHeader(std::span<const std::uint8_t> file, TgaHeader& header) {
  constexpr std::uint32_t kPackedKinds = 8;
  constexpr std::uint32_t kFromRight = 0x10;
  constexpr std::uint32_t kFromTop = 0x20;
  modules::ByteReader in(file);
  const std::size_t idLength = in.Byte();
  const bool hasMap = in.Byte() == 1;
  const std::uint32_t kind = in.Byte();
  header.mapFirst = in.Word();
  header.mapCount = in.Word();
  header.mapBytes = (in.Byte() + 7U) / 8;
  in.Skip(4);
  header.width = in.Word();
  header.height = in.Word();
  const std::uint32_t bits = in.Byte();
  const std::uint32_t attributes = in.Byte();
  if (in.Failed()) return {glib::IERR, "The file ends within its header"};
  const std::uint32_t plainKind = kind >= kPackedKinds ? kind - kPackedKinds : kind;
  if (plainKind < 1 || plainKind > 3) return {glib::NSUP, "The kind of picture is unusual"};
  header.kind = static_cast<TgaKind>(plainKind);
  header.packed = kind >= kPackedKinds;
  header.topDown = (attributes & kFromTop) != 0;
  header.rightToLeft = (attributes & kFromRight) != 0;
  header.pixelBytes = (bits + 7) / 8;
  header.alphaBit = bits == 16 && (attributes & 15U) == 1;
  header.mapAt = kTgaHeaderBytes + idLength;
  header.dataAt = header.mapAt + (hasMap ? std::size_t{header.mapCount} * header.mapBytes : 0);
  const bool usual = header.kind == TgaKind::kColour ? header.pixelBytes >= 2 && header.pixelBytes <= 4
                                                     : header.pixelBytes == 1 || header.pixelBytes == 2;
  const bool usualMap = header.mapBytes >= 2 && header.mapBytes <= 4;
  if (!usual || (hasMap && header.kind == TgaKind::kMapped && !usualMap)) {
    return {glib::NSUP, "The number of bits is unusual"};
  }
  if (!hasMap || header.kind != TgaKind::kMapped) header.mapFirst = header.mapCount = 0;
  if (!modules::SizeAllowed(header.width, header.height)) return {glib::NSUP, "The picture has no pixels or too many"};
  return modules::kFine;
}

std::uint32_t TgaPageBits(const TgaHeader& header) {
  switch (header.kind) {
    case TgaKind::kMapped:
      return header.pixelBytes == 1 ? 8 : 24;
    case TgaKind::kGrey:
      return header.pixelBytes == 1 ? 8 : 32;
    default:
      return header.pixelBytes == 4 || header.alphaBit ? 32 : 24;
  }
}

std::uint32_t LoadTga(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange) {
  TgaHeader header;
  const modules::Verdict verdict = ReadTgaHeader(file, header);
  if (verdict.result != glib::RCOK) return modules::Fail(exchange, verdict);
  if (!modules::SizeBelievable(header.width, header.height, file.size())) {
    return modules::Fail(exchange, glib::IERR, "The picture is larger than its data can be");
  }
  modules::Page* page = modules::AddPage(exchange, header.width, header.height, TgaPageBits(header));
  if (page == nullptr) return glib::NSUP;
  const auto map = ReadMap(file, header);
  SetPalette(header, map, *page);
  const std::uint32_t rows = ReadRows(file, header, map, *page);
  if (page->bits == 32) modules::MakeOpaqueIfEmpty(*page, header.topDown ? 0 : header.height - rows, rows);
  return modules::EndOfRows(exchange, rows, header.height);
}

}  // namespace qtga
