#include "modules/qimg/cut.h"

#include <algorithm>
#include <cstring>

#include "modules/common/byte_reader.h"

namespace qimg {
namespace {

constexpr std::size_t kPaletteHeader = 40;
constexpr std::size_t kPaletteBlock = 512;  // an entry never lies across the end of a block
constexpr std::size_t kPaletteEntry = 6;

std::uint8_t Scaled(std::uint32_t value, std::uint32_t highest) {
  return static_cast<std::uint8_t>((std::min(value, highest) * 255 + highest / 2) / highest);
}

// False, with the page as it was, if this is no palette of entries for all screens.
bool ReadPalette(std::span<const std::uint8_t> file, modules::Page& page) {
  constexpr std::uint8_t kForAllScreens = 10;
  modules::ByteReader in(file);
  if (in.Byte() != 'A' || in.Byte() != 'H') return false;
  in.Skip(4);
  if (in.Byte() != kForAllScreens) return false;
  in.Skip(5);
  const std::uint32_t highestIndex = in.Word();
  const std::uint32_t highest[] = {in.Word(), in.Word(), in.Word()};
  if (in.Failed() || file.size() < kPaletteHeader + kPaletteEntry) return false;
  if (std::any_of(std::begin(highest), std::end(highest), [](std::uint32_t value) { return value == 0; })) return false;
  in.Seek(kPaletteHeader);
  const std::uint32_t count = std::min(highestIndex, 255U) + 1;
  for (std::uint32_t i = 0; i < count && in.Left() >= kPaletteEntry; ++i) {
    const std::size_t left = kPaletteBlock - in.Position() % kPaletteBlock;
    if (left < kPaletteEntry) in.Skip(left);
    const std::uint8_t red = Scaled(in.Word(), highest[0]);
    const std::uint8_t green = Scaled(in.Word(), highest[1]);
    modules::SetEntry(page, i, red, green, Scaled(in.Word(), highest[2]));
  }
  page.paletteEntries = count;
  return true;
}

// Runs of one row until its end code, its end or that of the data.
void ReadRow(std::span<const std::uint8_t> data, std::span<std::uint8_t> row) {
  modules::ByteReader in(data);
  std::size_t filled = 0;
  while (filled < row.size()) {
    const std::uint8_t code = in.Byte();
    if (code == 0) return;
    const std::size_t count = std::min<std::size_t>(code & 0x7FU, row.size() - filled);
    if ((code & 0x80U) != 0) {
      std::memset(row.data() + filled, in.Byte(), count);
    } else {
      in.Read(row.data() + filled, count);
    }
    filled += count;
  }
}

}  // namespace

modules::Verdict ReadCutHeader(std::span<const std::uint8_t> file, CutHeader& header) {
  modules::ByteReader in(file);
  header.width = in.Word();
  header.height = in.Word();
  in.Skip(2);
  if (in.Failed()) return {glib::IERR, "The file ends within its header"};
  if (!modules::SizeAllowed(header.width, header.height)) return {glib::NSUP, "The picture has no pixels or too many"};
  return modules::kFine;
}

std::uint32_t LoadCut(std::span<const std::uint8_t> file, std::span<const std::uint8_t> paletteFile,
                      glib::ImageDataExchange& exchange) {
  CutHeader header;
  const modules::Verdict verdict = ReadCutHeader(file, header);
  if (verdict.result != glib::RCOK) return modules::Fail(exchange, verdict);
  modules::ByteReader in(file.subspan(kCutHeader));
  if (!modules::SizeBelievable(header.width, header.height, in.Left())) {
    return modules::Fail(exchange, glib::IERR, "The picture is larger than its data can be");
  }
  modules::Page* page = modules::AddPage(exchange, header.width, header.height, 8);
  if (page == nullptr) return glib::NSUP;
  if (!ReadPalette(paletteFile, *page)) modules::SetGrayRamp(*page, 256);
  std::uint32_t y = 0;
  for (; y < header.height; ++y) {
    const auto data = in.Take(in.Word());
    if (in.Failed()) break;
    ReadRow(data, {modules::Row(*page, y), header.width});
  }
  return modules::EndOfRows(exchange, y, header.height);
}

}  // namespace qimg
