#include "tests/support/deflate.h"

#include <zlib.h>

namespace tests {

std::vector<std::uint8_t> Deflate(std::span<const std::uint8_t> bytes) {
  uLongf size = compressBound(static_cast<uLong>(bytes.size()));
  std::vector<std::uint8_t> packed(size);
  compress(packed.data(), &size, bytes.data(), static_cast<uLong>(bytes.size()));
  packed.resize(size);
  return packed;
}

}  // namespace tests
