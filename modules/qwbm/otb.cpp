#include "modules/qwbm/otb.h"

#include <algorithm>
#include <cstring>

#include "modules/common/byte_reader.h"

namespace qwbm {
namespace {

// Bits of the first byte.
constexpr std::uint8_t kMoreFollows = 0x80;  // another byte of such bits
constexpr std::uint8_t kCompressed = 0x40;
constexpr std::uint8_t kPaletteFollows = 0x20;
constexpr std::uint8_t kWideSides = 0x10;  // sides of 16 bits instead of 8

}  // namespace

modules::Verdict ReadOtbHeader(std::span<const std::uint8_t> file, OtbHeader& header) {
  modules::ByteReader in(file);
  const std::uint8_t first = in.Byte();
  for (std::uint8_t more = first; (more & kMoreFollows) != 0;) more = in.Byte();
  header.width = (first & kWideSides) != 0 ? in.BigWord() : in.Byte();
  header.height = (first & kWideSides) != 0 ? in.BigWord() : in.Byte();
  const std::uint8_t depth = in.Byte();
  header.size = in.Position();
  if (in.Failed()) return {glib::IERR, "The file ends within its header"};
  if ((first & (kCompressed | kPaletteFollows)) != 0 || depth != 1) return {glib::NSUP, "The picture has colours"};
  if (!modules::SizeAllowed(header.width, header.height)) return {glib::NSUP, "The picture has no pixels or too many"};
  return modules::kFine;
}

std::uint32_t LoadOtb(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange) {
  OtbHeader header;
  const modules::Verdict verdict = ReadOtbHeader(file, header);
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
  for (std::uint32_t y = 0; y < rows; ++y) std::memcpy(modules::Row(*page, y), data.data() + y * rowBytes, rowBytes);
  return modules::EndOfRows(exchange, rows, header.height);
}

}  // namespace qwbm
