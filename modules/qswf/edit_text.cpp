#include "modules/qswf/edit_text.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace qswf {
namespace {

constexpr std::size_t kMaxText = 65536;
constexpr double kGutter = 40;  // between the box and its text, twips

std::string ReadText(BitReader& in) {
  std::string text;
  modules::ByteReader& bytes = in.Aligned();
  for (char c = 0; !bytes.AtEnd() && (c = static_cast<char>(bytes.Byte())) != '\0';) {
    if (text.size() < kMaxText) text += c;
  }
  return text;
}

// UTF-8 where it is, else Latin 1; beyond sixteen bits a question mark.
std::u16string Wide(std::string_view text) {
  std::u16string wide;
  const auto byte = [&](std::size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U; };
  for (std::size_t i = 0; i < text.size();) {
    const std::uint32_t first = byte(i);
    const std::size_t more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : first >= 0xC2 ? 1 : 0;
    std::uint32_t code = more == 0 ? first : first & (0x3FU >> more);
    bool whole = true;
    for (std::size_t k = 1; k <= more; ++k) {
      whole = whole && (byte(i + k) & 0xC0) == 0x80;
      code = code << 6 | (byte(i + k) & 0x3F);
    }
    i += whole ? more + 1 : 1;
    if (!whole) code = first;
    wide += code > 0xFFFF ? u'?' : static_cast<char16_t>(code);
  }
  return wide;
}

// What a tag says of an attribute; empty if nothing.
std::string_view Attribute(std::string_view tag, std::string_view name) {
  const std::size_t at = tag.find(name);
  if (at == std::string_view::npos) return {};
  std::string_view rest = tag.substr(at + name.size());
  if (rest.size() < 3 || rest[0] != '=') return {};
  const char quote = rest[1];
  rest.remove_prefix(2);
  return rest.substr(0, rest.find(quote));
}

char Character(std::string_view name) {
  constexpr std::pair<std::string_view, char> kNames[] = {{"amp", '&'},  {"lt", '<'},    {"gt", '>'},
                                                          {"quot", '"'}, {"apos", '\''}, {"nbsp", ' '}};
  for (const auto& [known, c] : kNames) {
    if (name == known) return c;
  }
  return '\0';
}

void TakeTag(std::string_view tag, EditText& edit, std::string& plain) {
  const auto begins = [&](std::string_view name) { return tag.substr(0, name.size()) == name; };
  if (begins("br") || begins("BR") || begins("/p") || begins("/P")) plain += '\n';
  if (!begins("font") && !begins("FONT") && !begins("p ") && !begins("P ")) return;
  if (!plain.empty()) return;  // how the text begins is how all of it looks
  for (const std::string_view name : {"size", "SIZE"}) {
    const double size = std::strtod(std::string(Attribute(tag, name)).c_str(), nullptr);
    if (size > 0) edit.height = std::min(size, 1000.0) * 20;
  }
  for (const std::string_view name : {"color", "COLOR"}) {
    const std::string color(Attribute(tag, name));
    if (color.size() != 7 || color[0] != '#') continue;
    const auto rgb = std::strtoul(color.c_str() + 1, nullptr, 16);
    edit.color = {static_cast<std::uint8_t>(rgb >> 16), static_cast<std::uint8_t>(rgb >> 8),
                  static_cast<std::uint8_t>(rgb), 255};
  }
  for (const std::string_view name : {"align", "ALIGN"}) {
    const std::string_view align = Attribute(tag, name);
    if (align == "center" || align == "CENTER") edit.align = EditText::Align::kCenter;
    if (align == "right" || align == "RIGHT") edit.align = EditText::Align::kRight;
  }
}

// The words of a text with marks, and what the first of them say of its looks.
std::string WithoutMarks(std::string_view text, EditText& edit) {
  std::string plain;
  while (!text.empty()) {
    const char c = text[0];
    const std::size_t end = c == '<' ? text.find('>') : c == '&' ? text.find(';') : std::string_view::npos;
    if (end == std::string_view::npos || (c == '&' && end > 8)) {
      if (c != '\r' && c != '\n') plain += c;
      text.remove_prefix(1);
      continue;
    }
    const std::string_view inside = text.substr(1, end - 1);
    text.remove_prefix(end + 1);
    if (c == '<') {
      TakeTag(inside, edit, plain);
    } else if (const char known = Character(inside); known != '\0') {
      plain += known;
    }
  }
  while (!plain.empty() && plain.back() == '\n') plain.pop_back();
  return plain;
}

// As many words as there is room for, to the em, but one at least.
std::size_t Fitting(std::u16string_view text, double room, const std::function<double(std::u16string_view)>& length) {
  std::size_t fits = 0;
  double done = 0;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t word = std::min(text.find(u' ', at + 1), text.size());
    done += length(text.substr(at, word - at));
    if (fits != 0 && done > room) break;
    fits = at = word;
  }
  return fits;
}

}  // namespace

EditText ReadEditText(BitReader& in) {
  EditText edit;
  edit.box = ReadRect(in);
  const std::uint32_t flags = in.Byte();
  const std::uint32_t more = in.Byte();
  const bool hasText = (flags & 0x80U) != 0;
  const bool hasFont = (flags & 1U) != 0;
  edit.wraps = (flags & 0x40U) != 0;
  const bool isPassword = (flags & 0x10U) != 0;
  if (hasFont) edit.font = in.Word();
  if ((more & 0x80U) != 0) ReadText(in);  // the class of a font
  if (hasFont || (more & 0x80U) != 0) edit.height = in.Word();
  if ((flags & 4U) != 0) edit.color = ReadColor(in, true);
  if ((flags & 2U) != 0) in.Word();
  if ((more & 0x20U) != 0) {
    const std::uint32_t align = in.Byte();
    if (align == 1) edit.align = EditText::Align::kRight;
    if (align == 2) edit.align = EditText::Align::kCenter;
    edit.leftMargin = in.Word();
    edit.rightMargin = in.Word();
    edit.indent = in.Word();
    edit.leading = static_cast<std::int16_t>(in.Word());
  }
  ReadText(in);  // the name of a variable
  if (!hasText) return edit;
  std::string text = ReadText(in);
  if ((more & 2U) != 0) text = WithoutMarks(text, edit);
  std::replace(text.begin(), text.end(), '\r', '\n');
  edit.text = Wide(text);
  if (isPassword) std::fill(edit.text.begin(), edit.text.end(), u'*');
  return edit;
}

std::vector<EditLine> LinesOf(const EditText& edit, double ascent,
                              const std::function<double(std::u16string_view)>& length) {
  constexpr double kLineOfEm = 1.2;
  std::vector<EditLine> lines;
  const double left = edit.box.left + kGutter + edit.leftMargin;
  const double room = edit.box.right - kGutter - edit.rightMargin - left;
  double baseline = edit.box.top + kGutter + ascent * edit.height;
  const auto add = [&](std::u16string_view text, bool first) {
    const double start = first ? edit.indent : 0;
    const double spare = room - start - length(text) * edit.height;
    const double before = edit.align == EditText::Align::kLeft    ? 0
                          : edit.align == EditText::Align::kRight ? spare
                                                                  : spare / 2;
    lines.push_back({std::u16string(text), left + start + before, baseline});
    baseline += edit.height * kLineOfEm + edit.leading;
  };
  std::u16string_view rest = edit.text;
  while (!rest.empty() && baseline < edit.box.bottom + edit.height) {
    std::u16string_view paragraph = rest.substr(0, rest.find(u'\n'));
    rest.remove_prefix(std::min(paragraph.size() + 1, rest.size()));
    bool first = true;
    do {
      const std::size_t end = edit.wraps ? Fitting(paragraph, room / edit.height, length) : paragraph.size();
      add(paragraph.substr(0, end), first);
      first = false;
      paragraph.remove_prefix(std::min(end + 1, paragraph.size()));
    } while (!paragraph.empty() && baseline < edit.box.bottom + edit.height);
  }
  return lines;
}

}  // namespace qswf
