#ifndef MODULES_QPPM_PNM_TEXT_H_
#define MODULES_QPPM_PNM_TEXT_H_

#include <cstddef>
#include <cstdint>
#include <span>

#include "modules/common/page_builder.h"

namespace qppm {

struct PnmHeader;

inline bool IsBlank(std::uint8_t c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// Numbers between blanks and comments, which go from "#" to the end of a line.
class TextReader {
 public:
  explicit TextReader(std::span<const std::uint8_t> text) : text_(text) {}

  std::size_t Position() const { return position_; }
  bool AtEnd() const { return position_ == text_.size(); }

  // The next number; one of more than 32 bits counts as the largest. False, at the place, if something else stands
  // there.
  bool Number(std::uint32_t& number) {
    if (!SkipBlanks() || Digit() > 9) return false;
    std::uint64_t value = 0;
    do {
      value = value * 10 + Digit();
      if (value > 0xFFFFFFFFU) value = 0xFFFFFFFFU;
      ++position_;
    } while (!AtEnd() && Digit() <= 9);
    number = static_cast<std::uint32_t>(value);
    return true;
  }

  // The next 0 or 1, which needs no blanks around it.
  bool Bit(std::uint32_t& bit) {
    if (!SkipBlanks() || Digit() > 1) return false;
    bit = Digit();
    ++position_;
    return true;
  }

  // The one blank, or the comment, that stands between the numbers of a header and what follows.
  bool EndOfHeader() {
    if (AtEnd()) return false;
    if (text_[position_] == '#') return SkipComment();
    return IsBlank(text_[position_]) && ++position_ != 0;
  }

 private:
  unsigned Digit() const { return static_cast<unsigned>(text_[position_]) - '0'; }

  // False at the end of the text.
  bool SkipBlanks() {
    while (!AtEnd()) {
      const std::uint8_t c = text_[position_];
      if (c == '#') {
        SkipComment();
      } else if (IsBlank(c)) {
        ++position_;
      } else {
        return true;
      }
    }
    return false;
  }

  // False if no line end follows.
  bool SkipComment() {
    while (!AtEnd()) {
      const std::uint8_t c = text_[position_++];
      if (c == '\n' || c == '\r') return true;
    }
    return false;
  }

  std::span<const std::uint8_t> text_;
  std::size_t position_ = 0;
};

// Reads samples as text into a page of the header's size. Gives the whole rows.
std::uint32_t ReadTextRows(std::span<const std::uint8_t> data, const PnmHeader& header, modules::Page& page);

}  // namespace qppm

#endif  // MODULES_QPPM_PNM_TEXT_H_
