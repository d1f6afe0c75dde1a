#ifndef GEN_BASIC_STRING_H_
#define GEN_BASIC_STRING_H_

#include <cstdint>

#include "gen/array.h"

namespace gen {

template <typename Char>
class basic_string;

// Text with a terminator that counts: `count` is the length plus 1. Both 0 and 1 are the count of an empty string.
// `data` is never null and always terminated.
template <>
class basic_string<char> : public array<char> {
 public:
  static constexpr std::uint32_t npos = 0xFFFFFFFFU;  // as a length or a number of characters: all there are

  basic_string();
  basic_string(const char* text);  // NOLINT(google-explicit-constructor): text is handed over as text everywhere
  basic_string(const basic_string& other);
  basic_string& operator=(const basic_string& other);
  basic_string& operator=(const char* text);

  // A null `text` makes the string empty.
  void Assign(const char* text);
  void Assign(const char* text, std::uint32_t length);
  void Assign(const basic_string& other);

  std::uint32_t Length() const { return count == 0 ? 0 : count - 1; }
  bool IsEmpty() const { return count <= 1; }
  char* c_str() { return data; }
  const char* c_str() const { return data; }

  // Makes the length `length`. Characters beyond the old length are not set.
  void Resize(std::uint32_t length);

  void Append(const basic_string& other);
  void Append(const char* text);
  void Append(const char* text, std::uint32_t length);

  // Shorter strings sort first; of equal lengths the bytes decide. Gives -1, 0 or 1.
  int Compare(const basic_string& other) const;

  // First position of `pattern` at or after `from`, or -1.
  using array<char>::Find;
  std::int32_t Find(const char* pattern, std::uint32_t from = 0) const;
  static std::int32_t FindRaw(const char* buffer, std::uint32_t length, const char* pattern, std::uint32_t from);

  // First or last position of a character, or -1. In an empty string both throw genlib_out_of_range. ReverseFind looks
  // at the positions from `from` down, npos meaning from the end.
  std::int32_t FindChar(char c) const;
  std::int32_t ReverseFind(char c, std::uint32_t from = npos) const;

  basic_string Left(std::uint32_t n) const;
  basic_string Right(std::uint32_t n) const;
  // A `start` at or past the end counts as the position of the last character.
  basic_string Mid(std::uint32_t start, std::uint32_t n) const;

  // Throws genlib_out_of_range unless `pos` and the last position to go stand within the text. `n` npos: to the end.
  void Erase(std::uint32_t pos, std::uint32_t n);
  void Replace(std::uint32_t pos, std::uint32_t n, const char* text, std::uint32_t textLength);
  // Each replacement starts the search anew, so `text` must not hold `pattern`.
  void ReplaceAll(const char* pattern, std::uint32_t patternLength, const char* text, std::uint32_t textLength);
  void ReplaceAll(const char* pattern, const char* text);

  // ASCII letters to lower case, in place.
  void ToLower();

 private:
  void GrowTo(std::uint32_t room);
};

basic_string<char> operator+(const basic_string<char>& left, const basic_string<char>& right);
basic_string<char> operator+(const basic_string<char>& left, const char* right);
bool operator==(const basic_string<char>& left, const basic_string<char>& right);
bool operator==(const basic_string<char>& left, const char* right);

// printf into `string`: at most 4095 characters, cut off behind that.
void Format(basic_string<char>& string, const char* format, ...) __attribute__((format(printf, 2, 3)));

}  // namespace gen

#endif  // GEN_BASIC_STRING_H_
