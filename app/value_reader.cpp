#include "app/value_reader.h"

#include <cstdlib>
#include <string>

namespace app {
namespace {

bool IsBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// -1 for what is no digit.
int HexDigit(char c) {
  if (IsDigit(c)) return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

const char* SkipDigits(const char* at) {
  while (IsDigit(*at)) ++at;
  return at;
}

}  // namespace

bool ValueReader::Fail() {
  failed_ = true;
  return false;
}

bool ValueReader::Sign() {
  while (IsBlank(*at_)) ++at_;
  const bool minus = *at_ == '-';
  if (minus || *at_ == '+') ++at_;
  return minus;
}

bool ValueReader::Literal(char c) {
  if (failed_ || *at_ != c) return Fail();
  ++at_;
  return true;
}

bool ValueReader::Decimal(std::int32_t& value) {
  if (failed_) return false;
  const bool minus = Sign();
  if (!IsDigit(*at_)) return Fail();
  std::uint32_t number = 0;
  for (; IsDigit(*at_); ++at_) number = number * 10 + static_cast<std::uint32_t>(*at_ - '0');
  value = static_cast<std::int32_t>(minus ? 0 - number : number);
  return true;
}

bool ValueReader::Hexadecimal(std::uint32_t& value) {
  if (failed_) return false;
  const bool minus = Sign();
  if (at_[0] == '0' && (at_[1] == 'x' || at_[1] == 'X') && HexDigit(at_[2]) >= 0) at_ += 2;
  if (HexDigit(*at_) < 0) return Fail();
  std::uint32_t number = 0;
  for (; HexDigit(*at_) >= 0; ++at_) number = number * 16 + static_cast<std::uint32_t>(HexDigit(*at_));
  value = minus ? 0 - number : number;
  return true;
}

// The number is found here and not by the library, whose words for infinity and hexadecimal floats are no numbers of a
// command line.
bool ValueReader::Float(float& value) {
  if (failed_) return false;
  const bool minus = Sign();
  const char* const start = at_;
  const char* end = SkipDigits(start);
  std::ptrdiff_t digits = end - start;
  if (*end == '.') {
    const char* const fraction = end + 1;
    end = SkipDigits(fraction);
    digits += end - fraction;
  }
  if (digits == 0) return Fail();
  if (*end == 'e' || *end == 'E') {
    const char* const exponent = end[1] == '+' || end[1] == '-' ? end + 2 : end + 1;
    if (IsDigit(*exponent)) end = SkipDigits(exponent);
  }
  const float number = std::strtof(std::string(start, end).c_str(), nullptr);
  value = minus ? -number : number;
  at_ = end;
  return true;
}

}  // namespace app
