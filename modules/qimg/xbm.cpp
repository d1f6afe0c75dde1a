#include "modules/qimg/xbm.h"

#include "modules/qimg/c_text.h"

namespace qimg {
namespace {

// The first pixel is the lowest bit.
std::uint8_t Mirrored(std::uint32_t byte) {
  byte = (byte & 0xF0U) >> 4 | (byte & 0x0FU) << 4;
  byte = (byte & 0xCCU) >> 2 | (byte & 0x33U) << 2;
  return static_cast<std::uint8_t>((byte & 0xAAU) >> 1 | (byte & 0x55U) << 1);
}

// The next number of the list; false at its end, or at what is no number.
bool NextNumber(CText& text, std::uint32_t& number) {
  std::string_view word = text.Next();
  if (word == ",") word = text.Next();
  const auto value = NumberOf(word);
  if (value) number = *value;
  return value.has_value();
}

std::uint32_t ReadRows(CText text, const XbmHeader& header, modules::Page& page) {
  const std::uint32_t rowBytes = (header.width + 7) / 8;
  for (std::uint32_t y = 0; y < header.height; ++y) {
    std::uint8_t* const row = modules::Row(page, y);
    for (std::uint32_t i = 0; i < rowBytes; i += header.words ? 2 : 1) {
      std::uint32_t number = 0;
      if (!NextNumber(text, number)) return y;
      row[i] = Mirrored(number & 0xFFU);
      if (header.words && i + 1 < rowBytes) row[i + 1] = Mirrored(number >> 8 & 0xFFU);
    }
  }
  return header.height;
}

}  // namespace

modules::Verdict ReadXbmHeader(std::span<const std::uint8_t> file, XbmHeader& header) {
  CText text(file);
  for (std::string_view word = text.Next(); word != "{"; word = text.Next()) {
    if (word.empty()) return {glib::IERR, "The file ends before its picture"};
    if (word == "short") header.words = true;
    if (word != "define") continue;
    const std::string_view name = text.Next();
    const auto value = NumberOf(text.Next());
    if (!value) continue;
    if (name.ends_with("width")) header.width = *value;
    if (name.ends_with("height")) header.height = *value;
  }
  header.size = text.Position();
  if (!modules::SizeAllowed(header.width, header.height)) return {glib::NSUP, "The picture has no pixels or too many"};
  return modules::kFine;
}

std::uint32_t LoadXbm(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange) {
  XbmHeader header;
  const modules::Verdict verdict = ReadXbmHeader(file, header);
  if (verdict.result != glib::RCOK) return modules::Fail(exchange, verdict);
  const auto list = file.subspan(header.size);
  if (!modules::SizeBelievable(header.width, header.height, list.size())) {
    return modules::Fail(exchange, glib::IERR, "The picture is larger than its data can be");
  }
  modules::Page* page = modules::AddPage(exchange, header.width, header.height, 1);
  if (page == nullptr) return glib::NSUP;
  modules::SetInkOnPaper(*page);
  return modules::EndOfRows(exchange, ReadRows(CText(list), header, *page), header.height);
}

}  // namespace qimg
