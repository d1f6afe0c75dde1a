#include "modules/qwmf/wmf_text.h"

#include <iconv.h>

namespace qwmf {
namespace {

constexpr std::uint8_t kSymbols = 2;

const char* CodePageOf(std::uint8_t charset) {
  switch (charset) {
    case 161:
      return "CP1253";  // Greek
    case 162:
      return "CP1254";  // Turkish
    case 177:
      return "CP1255";  // Hebrew
    case 178:
      return "CP1256";  // Arabic
    case 186:
      return "CP1257";  // Baltic
    case 204:
      return "CP1251";  // Cyrillic
    case 222:
      return "CP874";  // Thai
    case 238:
      return "CP1250";  // Central European
    default:
      return "CP1252";
  }
}

bool IsAscii(std::span<const std::uint8_t> bytes) {
  for (const std::uint8_t byte : bytes) {
    if (byte >= 0x80) return false;
  }
  return true;
}

}  // namespace

std::u16string DecodeText(std::span<const std::uint8_t> bytes, std::uint8_t charset) {
  std::u16string text(bytes.begin(), bytes.end());
  if (charset == kSymbols || IsAscii(bytes)) return text;
  const iconv_t table = iconv_open("UTF-16LE", CodePageOf(charset));
  if (table == reinterpret_cast<iconv_t>(-1)) return text;
  for (char16_t& unit : text) {
    char from = static_cast<char>(unit);
    char to[2];
    char* in = &from;
    char* out = to;
    std::size_t inLeft = 1;
    std::size_t outLeft = sizeof(to);
    if (iconv(table, &in, &inLeft, &out, &outLeft) == static_cast<std::size_t>(-1) || outLeft != 0) continue;
    unit = static_cast<char16_t>(static_cast<unsigned char>(to[0]) | static_cast<unsigned char>(to[1]) << 8);
  }
  iconv_close(table);
  return text;
}

}  // namespace qwmf
