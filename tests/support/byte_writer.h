#ifndef TESTS_SUPPORT_BYTE_WRITER_H_
#define TESTS_SUPPORT_BYTE_WRITER_H_

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace tests {

// Bytes of a made file; numbers are little-endian unless the name says otherwise.
class ByteWriter {
 public:
  ByteWriter& Byte(std::uint32_t value);
  ByteWriter& Word(std::uint32_t value) { return Byte(value).Byte(value >> 8); }
  ByteWriter& Long(std::uint32_t value) { return Word(value).Word(value >> 16); }
  ByteWriter& BigWord(std::uint32_t value) { return Byte(value >> 8).Byte(value); }
  ByteWriter& BigLong(std::uint32_t value) { return BigWord(value >> 16).BigWord(value); }
  ByteWriter& Text(std::string_view text);
  ByteWriter& Bytes(std::span<const std::uint8_t> more);
  ByteWriter& Zeros(std::size_t count);

  std::vector<std::uint8_t> bytes;
};

}  // namespace tests

#endif  // TESTS_SUPPORT_BYTE_WRITER_H_
