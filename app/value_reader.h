#ifndef APP_VALUE_READER_H_
#define APP_VALUE_READER_H_

#include <cstdint>

namespace app {

// Reads the value of an option from left to right, with the rules of scanf: blanks before a number are passed over,
// what follows a number is left, and after the first failure nothing more is read. A failed read doesn't touch its
// target.
class ValueReader {
 public:
  explicit ValueReader(const char* text) : at_(text) {}

  bool Literal(char c);
  // Numbers beyond 32 bits keep their low 32 bits.
  bool Decimal(std::int32_t& value);
  bool Hexadecimal(std::uint32_t& value);  // with or without "0x"
  // Decimal notation with an optional exponent; infinite when too large.
  bool Float(float& value);

 private:
  bool Fail();
  bool Sign();  // passes over blanks and a sign; true for a minus

  const char* at_;
  bool failed_ = false;
};

}  // namespace app

#endif  // APP_VALUE_READER_H_
