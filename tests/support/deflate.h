#ifndef TESTS_SUPPORT_DEFLATE_H_
#define TESTS_SUPPORT_DEFLATE_H_

#include <cstdint>
#include <span>
#include <vector>

namespace tests {

// The bytes as a zlib stream.
std::vector<std::uint8_t> Deflate(std::span<const std::uint8_t> bytes);

}  // namespace tests

#endif  // TESTS_SUPPORT_DEFLATE_H_
