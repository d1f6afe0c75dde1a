#include "tests/support/byte_writer.h"

namespace tests {

// Not in the header: where these are inlined, the compiler warns of overflows that can't be.

ByteWriter& ByteWriter::Byte(std::uint32_t value) {
  bytes.push_back(static_cast<std::uint8_t>(value));
  return *this;
}

ByteWriter& ByteWriter::Text(std::string_view text) {
  bytes.insert(bytes.end(), text.begin(), text.end());
  return *this;
}

ByteWriter& ByteWriter::Bytes(std::span<const std::uint8_t> more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
  return *this;
}

ByteWriter& ByteWriter::Zeros(std::size_t count) {
  bytes.insert(bytes.end(), count, 0);
  return *this;
}

}  // namespace tests
