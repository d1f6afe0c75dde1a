#include "modules/qimg/c_text.h"

#include <charconv>

namespace qimg {
namespace {

bool IsOfWord(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == '.';
}

}  // namespace

void CText::SkipBlanks() {
  while (position_ < text_.size()) {
    if (static_cast<unsigned char>(text_[position_]) <= ' ') {
      ++position_;
    } else if (text_.substr(position_, 2) == "/*") {
      const std::size_t end = text_.find("*/", position_ + 2);
      position_ = end == std::string_view::npos ? text_.size() : end + 2;
    } else {
      return;
    }
  }
}

std::string_view CText::Next() {
  SkipBlanks();
  const std::size_t begin = position_;
  while (position_ < text_.size() && IsOfWord(text_[position_])) ++position_;
  if (position_ == begin && begin < text_.size()) ++position_;
  return text_.substr(begin, position_ - begin);
}

std::optional<std::uint32_t> NumberOf(std::string_view word) {
  int base = 10;
  if (word.size() > 1 && word[0] == '0') {
    base = word[1] == 'x' || word[1] == 'X' ? 16 : 8;
    word.remove_prefix(base == 16 ? 2 : 1);
  }
  std::uint32_t value = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value, base);
  if (error == std::errc::invalid_argument || end != word.data() + word.size()) return {};
  return error == std::errc::result_out_of_range ? 0xFFFFFFFFU : value;
}

}  // namespace qimg
