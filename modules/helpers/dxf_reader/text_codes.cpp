#include "modules/helpers/dxf_reader/text_codes.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "modules/vector/letters.h"

namespace dxf {
namespace {

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

void AppendUtf8(std::uint32_t code, std::string& text) {
  if (code < 0x80) {
    text += static_cast<char>(code);
  } else if (code < 0x800) {
    text += static_cast<char>(0xC0 | code >> 6);
    text += static_cast<char>(0x80 | (code & 0x3F));
  } else {
    text += static_cast<char>(0xE0 | code >> 12);
    text += static_cast<char>(0x80 | (code >> 6 & 0x3F));
    text += static_cast<char>(0x80 | (code & 0x3F));
  }
}

// "\U+" and four digits at `at`: the character, and `at` behind it.
bool TakeUnicode(std::string_view text, std::size_t& at, std::string& plain) {
  if (text.size() - at < 7 || text.substr(at, 3) != "\\U+") return false;
  std::uint32_t code = 0;
  for (std::size_t i = at + 3; i < at + 7; ++i) {
    const int digit = HexDigit(text[i]);
    if (digit < 0) return false;
    code = code * 16 + static_cast<std::uint32_t>(digit);
  }
  AppendUtf8(code, plain);
  at += 7;
  return true;
}

// A character in UTF-8 at `at`, below the sixteen bits' end; false if there is none.
bool TakeUtf8(std::string_view text, std::size_t& at, std::uint32_t& code) {
  const auto byte = [&](std::size_t i) { return static_cast<std::uint32_t>(static_cast<unsigned char>(text[i])); };
  const std::uint32_t first = byte(at);
  const std::size_t more = first >= 0xE0 && first < 0xF0 ? 2 : first >= 0xC2 && first < 0xE0 ? 1 : 0;
  if (more == 0 || text.size() - at <= more) return false;
  code = first & (more == 2 ? 0x0FU : 0x1FU);
  for (std::size_t i = 1; i <= more; ++i) {
    if ((byte(at + i) & 0xC0) != 0x80) return false;
    code = code << 6 | (byte(at + i) & 0x3F);
  }
  at += more + 1;
  return true;
}

}  // namespace

std::string PlainText(std::string_view text) {
  std::string plain;
  for (std::size_t at = 0; at < text.size();) {
    if (TakeUnicode(text, at, plain)) continue;
    if (text.size() - at < 3 || text[at] != '%' || text[at + 1] != '%') {
      plain += text[at++];
      continue;
    }
    switch (text[at + 2]) {
      case 'd':
      case 'D':
        plain += "\u00B0";
        break;
      case 'p':
      case 'P':
        plain += "\u00B1";
        break;
      case 'c':
      case 'C':
        plain += "\u00D8";
        break;
      case '%':
        plain += '%';
        break;
      default:  // lines above and below
        break;
    }
    at += 3;
  }
  return plain;
}

std::vector<std::string> LinesOfMText(std::string_view text) {
  std::vector<std::string> lines(1);
  for (std::size_t at = 0; at < text.size();) {
    const char c = text[at];
    if (TakeUnicode(text, at, lines.back())) continue;
    if (c == '{' || c == '}') {
      ++at;
    } else if (c == '\\' && at + 1 < text.size()) {
      const char mark = text[at + 1];
      at += 2;
      if (mark == 'P' || mark == 'X') {
        lines.emplace_back();
      } else if (mark == '~') {
        lines.back() += ' ';
      } else if (mark == '\\' || mark == '{' || mark == '}') {
        lines.back() += mark;
      } else if (mark == 'S') {  // one thing over another
        for (; at < text.size() && text[at] != ';'; ++at)
          lines.back() += text[at] == '^' || text[at] == '#' ? '/' : text[at];
        ++at;
      } else if (std::string_view("LlOoKk").find(mark) == std::string_view::npos) {
        while (at < text.size() && text[at] != ';') ++at;
        ++at;
      }
    } else {
      lines.back() += c;
      ++at;
    }
  }
  for (std::string& line : lines) line = PlainText(line);
  return lines;
}

std::vector<std::string> Wrapped(const std::vector<std::string>& lines, double most) {
  std::vector<std::string> wrapped;
  for (const std::string& line : lines) {
    std::string done;
    std::size_t at = 0;
    while (at < line.size()) {
      const std::size_t end = std::min(line.find(' ', at + 1), line.size());
      const std::string word = line.substr(at, end - at);
      if (!done.empty() && modules::TextLength(Wide(done + word)) > most) {
        wrapped.push_back(std::exchange(done, word.substr(word[0] == ' ' ? 1 : 0)));
      } else {
        done += word;
      }
      at = end;
    }
    wrapped.push_back(done);
  }
  return wrapped;
}

std::u16string Wide(std::string_view text) {
  std::u16string wide;
  for (std::size_t at = 0; at < text.size();) {
    std::uint32_t code = 0;
    if (!TakeUtf8(text, at, code)) code = static_cast<unsigned char>(text[at++]);
    wide += static_cast<char16_t>(code);
  }
  return wide;
}

}  // namespace dxf
