#include "modules/qwbm/bitmap.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "modules/common/byte_reader.h"

namespace qwbm {
namespace {

// Bits of the first byte of an over-the-air bitmap.
constexpr std::uint8_t kMoreFollows = 0x80;  // another byte of such bits
constexpr std::uint8_t kCompressed = 0x40;
constexpr std::uint8_t kPaletteFollows = 0x20;
constexpr std::uint8_t kWideSides = 0x10;  // sides of 16 bits instead of 8

// Seven bits a byte, the high ones first; the eighth says that another byte follows. What can't be a side is one too
// large.
std::uint32_t ReadNumber(modules::ByteReader& in) {
  constexpr std::uint32_t kTooLarge = 0xFFFFFFFF;
  std::uint32_t number = 0;
  for (;;) {
    const std::uint32_t byte = in.Byte();
    number = number > kTooLarge >> 8 ? kTooLarge >> 1 : number << 7 | (byte & 127U);
    if ((byte & kMoreFollows) == 0) return number;
  }
}

modules::Verdict CheckSides(const BitmapHeader& header) {
  if (modules::SizeAllowed(header.width, header.height)) return modules::kFine;
  return {glib::NSUP, "The picture has no pixels or too many"};
}

constexpr modules::Verdict kCutHeader{glib::IERR, "The file ends within its header"};

}  // namespace

modules::Verdict ReadOtbHeader(std::span<const std::uint8_t> file, BitmapHeader& header) {
  modules::ByteReader in(file);
  const std::uint8_t first = in.Byte();
  for (std::uint8_t more = first; (more & kMoreFollows) != 0;) more = in.Byte();
  header.width = (first & kWideSides) != 0 ? in.BigWord() : in.Byte();
  header.height = (first & kWideSides) != 0 ? in.BigWord() : in.Byte();
  const std::uint8_t depth = in.Byte();
  header.size = in.Position();
  if (in.Failed()) return kCutHeader;
  if ((first & (kCompressed | kPaletteFollows)) != 0 || depth != 1) return {glib::NSUP, "The picture has colours"};
  return CheckSides(header);
}

modules::Verdict ReadWbmpHeader(std::span<const std::uint8_t> file, BitmapHeader& header) {
  modules::ByteReader in(file);
  const std::uint32_t type = ReadNumber(in);
  for (std::uint8_t more = in.Byte(); (more & kMoreFollows) != 0;) more = in.Byte();
  header.width = ReadNumber(in);
  header.height = ReadNumber(in);
  header.size = in.Position();
  header.setIsInk = false;
  if (in.Failed()) return kCutHeader;
  if (type != 0) return {glib::NSUP, "The picture is of an unknown type"};
  return CheckSides(header);
}

std::uint32_t LoadBitmap(std::span<const std::uint8_t> file, ReadHeaderFunction& readHeader,
                         glib::ImageDataExchange& exchange) {
  BitmapHeader header;
  const modules::Verdict verdict = readHeader(file, header);
  if (verdict.result != glib::RCOK) return modules::Fail(exchange, verdict);
  const auto data = file.subspan(header.size);
  const std::size_t rowBytes = (header.width + 7) / 8;
  const auto rows = static_cast<std::uint32_t>(std::min<std::size_t>(data.size() / rowBytes, header.height));
  if (!modules::SizeBelievable(header.width, header.height, data.size())) {
    return modules::Fail(exchange, glib::IERR, "The picture is larger than its data can be");
  }
  modules::Page* page = modules::AddPage(exchange, header.width, header.height, 1);
  if (page == nullptr) return glib::NSUP;
  modules::SetInkOnPaper(*page);
  if (!header.setIsInk) std::swap(page->palette[0], page->palette[1]);
  for (std::uint32_t y = 0; y < rows; ++y) std::memcpy(modules::Row(*page, y), data.data() + y * rowBytes, rowBytes);
  return modules::EndOfRows(exchange, rows, header.height);
}

}  // namespace qwbm
