#include "modules/helpers/metafile_player/characters.h"

namespace metafile_player {
namespace {

constexpr std::u32string_view kGreekCapitals = U"ΑΒΧΔΕΦΓΗΙϑΚΛΜΝΟΠΘΡΣΤΥςΩΞΨΖ";  // for A to Z
constexpr std::u32string_view kGreekSmall = U"αβχδεφγηιϕκλμνοπθρστυϖωξψζ";
// 161 to 254; 0 where the font has pieces of large brackets and the like.
constexpr std::u32string_view kSigns =
    U"ϒ′≤⁄∞ƒ♣♦♥♠↔←↑→↓°±″≥×∝∂•÷≠≡≈…⏐⎯↵ℵℑℜ℘⊗⊕∅∩∪⊃⊇⊄⊂⊆∈∉∠∇®©™∏√⋅¬∧∨⇔⇐⇑⇒⇓◊〈®©™∑⎛⎜⎝⎡⎢⎣⎧⎨⎩⎪€〉∫⌠⎮⌡⎞⎟⎠⎤⎥⎦⎫⎬⎭";

void AppendUtf8(std::string& text, char32_t character) {
  const auto put = [&](char32_t byte) { text.push_back(static_cast<char>(byte)); };
  if (character < 0x80) {
    put(character);
  } else if (character < 0x800) {
    put(0xC0 | character >> 6);
    put(0x80 | (character & 63));
  } else if (character < 0x10000) {
    put(0xE0 | character >> 12);
    put(0x80 | (character >> 6 & 63));
    put(0x80 | (character & 63));
  } else {
    put(0xF0 | character >> 18);
    put(0x80 | (character >> 12 & 63));
    put(0x80 | (character >> 6 & 63));
    put(0x80 | (character & 63));
  }
}

}  // namespace

char32_t NextCharacter(std::u16string_view text, std::size_t& at) {
  const char32_t first = text[at++];
  if (first < 0xD800 || first > 0xDFFF) return first;
  const char32_t second = at < text.size() ? text[at] : 0;
  if (first > 0xDBFF || second < 0xDC00 || second > 0xDFFF) return '?';
  ++at;
  return 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00);
}

std::string Utf8(std::u16string_view text) {
  std::string bytes;
  for (std::size_t at = 0; at < text.size();) AppendUtf8(bytes, NextCharacter(text, at));
  return bytes;
}

char32_t SymbolCharacter(std::uint8_t byte) {
  if (byte >= 'A' && byte <= 'Z') return kGreekCapitals[byte - 'A'];
  if (byte >= 'a' && byte <= 'z') return kGreekSmall[byte - 'a'];
  if (byte >= 161 && byte - 161U < kSigns.size()) return kSigns[byte - 161U];
  return byte == '-' ? U'−' : byte;
}

}  // namespace metafile_player
