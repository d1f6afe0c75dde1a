#include "gen/basic_string.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "gen/errors.h"

namespace gen {
namespace {

std::uint32_t TextLength(const char* text) { return static_cast<std::uint32_t>(std::strlen(text)); }

}  // namespace

basic_string<char>::basic_string() { data[0] = '\0'; }

basic_string<char>::basic_string(const char* text) : basic_string() { Assign(text); }

basic_string<char>::basic_string(const basic_string& other) : basic_string() { Assign(other); }

basic_string<char>& basic_string<char>::operator=(const basic_string& other) {
  if (this != &other) Assign(other);
  return *this;
}

basic_string<char>& basic_string<char>::operator=(const char* text) {
  Assign(text);
  return *this;
}

// Strings grow to exactly the room asked for; the growth step of the arrays plays no part.
void basic_string<char>::GrowTo(std::uint32_t room) {
  if (room > capacity) array<char>::Reserve(room);
}

void basic_string<char>::Assign(const char* text) {
  if (text == nullptr) {
    data[0] = '\0';
    count = 0;
    return;
  }
  Assign(text, TextLength(text));
}

void basic_string<char>::Assign(const char* text, std::uint32_t length) {
  if (text >= data && text < data + capacity) {  // a part of this very string
    std::memmove(data, text, length);
  } else {
    count = 0;
    GrowTo(length + 1);
    if (length != 0) std::memcpy(data, text, length);
  }
  data[length] = '\0';
  count = length + 1;
}

void basic_string<char>::Assign(const basic_string& other) {
  if (this != &other) Assign(other.data, other.Length());
}

void basic_string<char>::Resize(std::uint32_t length) {
  GrowTo(length + 1);
  data[length] = '\0';
  count = length + 1;
}

void basic_string<char>::Append(const basic_string& other) { Append(other.data, other.Length()); }

void basic_string<char>::Append(const char* text) { Append(text, TextLength(text)); }

void basic_string<char>::Append(const char* text, std::uint32_t length) {
  const std::uint32_t oldLength = Length();
  const bool own = text >= data && text < data + capacity;
  const std::ptrdiff_t offset = own ? text - data : 0;
  GrowTo(oldLength + length + 1);
  if (length != 0) std::memmove(data + oldLength, own ? data + offset : text, length);
  data[oldLength + length] = '\0';
  count = oldLength + length + 1;
}

int basic_string<char>::Compare(const basic_string& other) const {
  if (Length() != other.Length()) return Length() < other.Length() ? -1 : 1;
  const int order = std::memcmp(data, other.data, Length());
  return order == 0 ? 0 : (order < 0 ? -1 : 1);
}

std::int32_t basic_string<char>::Find(const char* pattern, std::uint32_t from) const {
  return FindRaw(data, Length(), pattern, from);
}

std::int32_t basic_string<char>::FindRaw(const char* buffer, std::uint32_t length, const char* pattern,
                                         std::uint32_t from) {
  if (from >= length) return -1;
  const std::uint32_t size = TextLength(pattern);
  if (size == 0) return static_cast<std::int32_t>(from);
  for (std::uint32_t at = from; at < length && length - at >= size; ++at) {
    const void* hit = std::memchr(buffer + at, pattern[0], length - at);
    if (hit == nullptr) return -1;
    at = static_cast<std::uint32_t>(static_cast<const char*>(hit) - buffer);
    if (length - at < size) return -1;
    // The last character is the cheapest proof of a miss.
    if (buffer[at + size - 1] == pattern[size - 1] && std::memcmp(buffer + at, pattern, size) == 0) {
      return static_cast<std::int32_t>(at);
    }
  }
  return -1;
}

std::int32_t basic_string<char>::FindChar(char c) const {
  if (IsEmpty()) throw genlib_out_of_range(0, 0);
  const void* hit = std::memchr(data, c, Length());
  return hit == nullptr ? -1 : static_cast<std::int32_t>(static_cast<const char*>(hit) - data);
}

std::int32_t basic_string<char>::ReverseFind(char c, std::uint32_t from) const {
  if (IsEmpty()) throw genlib_out_of_range(from, 0);
  std::uint32_t at = from < Length() ? from + 1 : Length();
  while (at-- != 0) {
    if (data[at] == c) return static_cast<std::int32_t>(at);
  }
  return -1;
}

basic_string<char> basic_string<char>::Left(std::uint32_t n) const {
  basic_string result;
  result.Assign(data, n > Length() ? Length() : n);
  return result;
}

basic_string<char> basic_string<char>::Right(std::uint32_t n) const {
  const std::uint32_t taken = n > Length() ? Length() : n;
  basic_string result;
  result.Assign(data + (Length() - taken), taken);
  return result;
}

basic_string<char> basic_string<char>::Mid(std::uint32_t start, std::uint32_t n) const {
  basic_string result;
  if (IsEmpty()) {
    result.Assign("", 0);
    return result;
  }
  if (start >= Length()) start = Length() - 1;
  const std::uint32_t rest = Length() - start;
  result.Assign(data + start, n > rest ? rest : n);
  return result;
}

void basic_string<char>::Erase(std::uint32_t pos, std::uint32_t n) {
  if (pos >= Length()) throw genlib_out_of_range(pos, Length());
  const std::uint32_t rest = Length() - pos;
  if (n == npos) n = rest;
  if (n > rest) throw genlib_out_of_range(n - 1 > npos - pos ? npos : pos + n - 1, Length());
  std::memmove(data + pos, data + pos + n, rest - n + 1);
  count -= n;
}

void basic_string<char>::Replace(std::uint32_t pos, std::uint32_t n, const char* text, std::uint32_t textLength) {
  if (n != 0) Erase(pos, n);
  if (pos > Length()) throw genlib_out_of_range(pos, Length());
  const std::uint32_t oldLength = Length();
  GrowTo(oldLength + textLength + 1);
  std::memmove(data + pos + textLength, data + pos, oldLength - pos);
  if (textLength != 0) std::memcpy(data + pos, text, textLength);
  data[oldLength + textLength] = '\0';
  count = oldLength + textLength + 1;
}

void basic_string<char>::ReplaceAll(const char* pattern, std::uint32_t patternLength, const char* text,
                                    std::uint32_t textLength) {
  if (IsEmpty() || patternLength == 0) return;
  // What a replacement joins can't begin earlier than a pattern's length less one before it: a search from there finds
  // what a search from the start would.
  std::uint32_t from = 0;
  for (std::int32_t at = Find(pattern, 0); at >= 0; at = Find(pattern, from)) {
    const auto place = static_cast<std::uint32_t>(at);
    if (patternLength == textLength) {
      std::memcpy(data + place, text, textLength);
    } else {
      Replace(place, patternLength, text, textLength);
    }
    from = place < patternLength ? 0 : place - (patternLength - 1);
  }
}

void basic_string<char>::ReplaceAll(const char* pattern, const char* text) {
  ReplaceAll(pattern, TextLength(pattern), text, TextLength(text));
}

void basic_string<char>::ToLower() {
  for (std::uint32_t i = 0; i < Length(); ++i) {
    if (data[i] >= 'A' && data[i] <= 'Z') data[i] = static_cast<char>(data[i] - 'A' + 'a');
  }
}

basic_string<char> operator+(const basic_string<char>& left, const basic_string<char>& right) {
  basic_string<char> result(left);
  result.Append(right);
  return result;
}

basic_string<char> operator+(const basic_string<char>& left, const char* right) {
  basic_string<char> result(left);
  result.Append(right);
  return result;
}

bool operator==(const basic_string<char>& left, const basic_string<char>& right) { return left.Compare(right) == 0; }

bool operator==(const basic_string<char>& left, const char* right) { return std::strcmp(left.c_str(), right) == 0; }

void Format(basic_string<char>& string, const char* format, ...) {
  constexpr std::uint32_t kRoom = 4096;
  if (string.capacity < kRoom) string.Reserve(kRoom);
  std::va_list arguments;
  va_start(arguments, format);
  const int written = std::vsnprintf(string.data, kRoom, format, arguments);
  va_end(arguments);
  const std::uint32_t length = written < 0 ? 0 : static_cast<std::uint32_t>(written);
  string.Resize(length < kRoom ? length : kRoom - 1);
}

}  // namespace gen
