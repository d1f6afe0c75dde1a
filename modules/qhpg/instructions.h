#ifndef MODULES_QHPG_INSTRUCTIONS_H_
#define MODULES_QHPG_INSTRUCTIONS_H_

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "modules/common/byte_reader.h"

namespace qhpg {

// Two letters as one number.
constexpr std::uint32_t Code(char first, char second) {
  return static_cast<std::uint32_t>(static_cast<unsigned char>(first)) << 8 | static_cast<unsigned char>(second);
}

// Cuts a plot into its instructions. What belongs to none, such as the escape sequences of plotters and printers, is
// passed over.
class InstructionReader {
 public:
  explicit InstructionReader(std::span<const std::uint8_t> plot) : plot_(plot) {}

  // The code of the next instruction, in upper case; false at the end.
  bool Next(std::uint32_t& code);

  // What follows a code. Each may be called once for an instruction.
  const std::vector<double>& Numbers();
  std::string_view TextUpTo(char end);  // without the end, which is passed over
  std::string_view UpToSemicolon() { return TextUpTo(';'); }
  // A single character, or 0 if the instruction ends at once.
  char Character();

 private:
  void SkipEscape();
  bool ReadNumber(double& number);
  char Peek(std::size_t ahead = 0) const {
    return plot_.size() - at_ > ahead ? static_cast<char>(plot_[at_ + ahead]) : '\0';
  }

  std::span<const std::uint8_t> plot_;
  std::size_t at_ = 0;
  std::vector<double> numbers_;
};

}  // namespace qhpg

#endif  // MODULES_QHPG_INSTRUCTIONS_H_
