#ifndef MODULES_QIMG_C_TEXT_H_
#define MODULES_QIMG_C_TEXT_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace qimg {

// The words of program text: names and numbers as they stand, any other visible character by itself. Blanks and
// comments are passed over.
class CText {
 public:
  explicit CText(std::span<const std::uint8_t> text) : text_(reinterpret_cast<const char*>(text.data()), text.size()) {}

  std::size_t Position() const { return position_; }

  // Empty at the end.
  std::string_view Next();

 private:
  void SkipBlanks();

  std::string_view text_;
  std::size_t position_ = 0;
};

// The value of a word that is a number: decimal, or with "0x" or "0" before it hexadecimal or octal. Too large ones
// count as the largest.
std::optional<std::uint32_t> NumberOf(std::string_view word);

}  // namespace qimg

#endif  // MODULES_QIMG_C_TEXT_H_
