#include "modules/common/code_page.h"

#include <iconv.h>

#include <algorithm>
#include <optional>

namespace modules {
namespace {

constexpr std::uint8_t kSymbols = 2;

const char* CodePageOf(std::uint8_t charset) {
  switch (charset) {
    case 128:
      return "CP932";  // Japanese
    case 129:
      return "CP949";  // Korean
    case 134:
      return "CP936";  // Chinese, simplified
    case 136:
      return "CP950";  // Chinese, traditional
    case 161:
      return "CP1253";  // Greek
    case 162:
      return "CP1254";  // Turkish
    case 163:
      return "CP1258";  // Vietnamese
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

class Table {
 public:
  explicit Table(std::uint8_t charset) : table_(iconv_open("UTF-16LE", CodePageOf(charset))) {}
  ~Table() {
    if (Ok()) iconv_close(table_);
  }
  Table(const Table&) = delete;
  Table& operator=(const Table&) = delete;

  bool Ok() const { return table_ != reinterpret_cast<iconv_t>(-1); }

  // The one unit that the bytes stand for.
  std::optional<char16_t> UnitOf(std::span<const std::uint8_t> bytes) const {
    char from[2] = {};
    std::copy_n(bytes.begin(), bytes.size(), from);
    char to[2];
    char* in = from;
    char* out = to;
    std::size_t inLeft = bytes.size();
    std::size_t outLeft = sizeof(to);
    iconv(table_, nullptr, nullptr, nullptr, nullptr);
    if (iconv(table_, &in, &inLeft, &out, &outLeft) == static_cast<std::size_t>(-1) || outLeft != 0) return {};
    return static_cast<char16_t>(static_cast<unsigned char>(to[0]) | static_cast<unsigned char>(to[1]) << 8);
  }

 private:
  iconv_t table_;
};

}  // namespace

std::u16string DecodeText(std::span<const std::uint8_t> bytes, std::uint8_t charset,
                          std::vector<std::int32_t>* advances) {
  const bool ascii = std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte < 0x80; });
  if (charset == kSymbols || ascii) return {bytes.begin(), bytes.end()};
  const Table table(charset);
  if (!table.Ok()) return {bytes.begin(), bytes.end()};
  if (advances != nullptr && advances->size() != bytes.size()) advances = nullptr;
  std::u16string text;
  for (std::size_t at = 0; at < bytes.size();) {
    std::size_t used = 1;
    std::optional<char16_t> unit = table.UnitOf(bytes.subspan(at, 1));
    if (!unit && at + 1 < bytes.size()) {
      unit = table.UnitOf(bytes.subspan(at, 2));
      used = unit ? 2 : 1;
    }
    if (advances != nullptr) {
      std::int32_t& advance = (*advances)[text.size()];
      advance = (*advances)[at];
      if (used == 2)
        advance = static_cast<std::int32_t>(static_cast<std::uint32_t>(advance) +
                                            static_cast<std::uint32_t>((*advances)[at + 1]));
    }
    text.push_back(unit.value_or(bytes[at]));
    at += used;
  }
  if (advances != nullptr) advances->resize(text.size());
  return text;
}

}  // namespace modules
