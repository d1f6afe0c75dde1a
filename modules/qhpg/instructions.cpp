#include "modules/qhpg/instructions.h"

#include <algorithm>
#include <charconv>

namespace qhpg {
namespace {

constexpr char kEscape = 0x1B;
constexpr std::size_t kMaxNumbers = std::size_t{1} << 20;  // of one instruction
constexpr double kLargest = 1e9;

bool IsLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }
bool IsUpper(char c) { return c >= 'A' && c <= 'Z'; }
char Upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }
bool BeginsNumber(char c) { return (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.'; }

}  // namespace

// A plotter's sequences begin with a point and end with a colon or a character; a printer's end with a capital.
void InstructionReader::SkipEscape() {
  ++at_;
  if (Peek() == '.') {
    ++at_;
    const char kind = Peek();
    if (at_ < plot_.size()) ++at_;
    constexpr std::string_view kWithParameters = "@HIMNPST";
    if (kWithParameters.find(kind) == std::string_view::npos) return;
    while (at_ < plot_.size() && (BeginsNumber(Peek()) || Peek() == ';')) ++at_;
    if (Peek() == ':') ++at_;
    return;
  }
  while (at_ < plot_.size() && !IsUpper(Peek()) && Peek() != kEscape) ++at_;
  if (IsUpper(Peek())) ++at_;
}

bool InstructionReader::Next(std::uint32_t& code) {
  while (at_ < plot_.size()) {
    if (Peek() == kEscape) {
      SkipEscape();
    } else if (IsLetter(Peek()) && IsLetter(Peek(1))) {
      code = Code(Upper(Peek()), Upper(Peek(1)));
      at_ += 2;
      return true;
    } else {
      ++at_;
    }
  }
  return false;
}

bool InstructionReader::ReadNumber(double& number) {
  if (Peek() == '+') ++at_;
  const char* from = reinterpret_cast<const char*>(plot_.data()) + at_;
  const char* end = reinterpret_cast<const char*>(plot_.data()) + plot_.size();
  const auto [next, error] = std::from_chars(from, end, number, std::chars_format::fixed);
  if (next == from) return false;
  at_ += static_cast<std::size_t>(next - from);
  if (error != std::errc()) number = 0;
  number = std::clamp(number, -kLargest, kLargest);
  return true;
}

const std::vector<double>& InstructionReader::Numbers() {
  numbers_.clear();
  while (at_ < plot_.size()) {
    const char c = Peek();
    if (BeginsNumber(c)) {
      double number = 0;
      if (!ReadNumber(number)) {
        ++at_;
      } else if (numbers_.size() < kMaxNumbers) {
        numbers_.push_back(number);
      }
    } else if (c == ',' || c == ' ' || c == '\t' || c == '\r' || c == '\n') {
      ++at_;
    } else {
      if (c == ';') ++at_;
      break;
    }
  }
  return numbers_;
}

std::string_view InstructionReader::TextUpTo(char end) {
  const std::string_view rest(reinterpret_cast<const char*>(plot_.data()) + at_, plot_.size() - at_);
  const std::size_t length = std::min(rest.find(end), rest.size());
  at_ += std::min(length + 1, rest.size());
  return rest.substr(0, length);
}

char InstructionReader::Character() {
  const char c = Peek();
  if (at_ < plot_.size()) ++at_;
  return c == ';' ? '\0' : c;
}

}  // namespace qhpg
