#ifndef TESTS_SUPPORT_LZW_REFERENCE_H_
#define TESTS_SUPPORT_LZW_REFERENCE_H_

#include <cstddef>
#include <cstdint>
#include <vector>

namespace support {

// The LZW of GIF in its plainest form: strings are strings, the table is a map, bits go one by one.

// Codes of a frame without blocks around them. The table is cleared whenever it is full.
std::vector<std::uint8_t> EncodeLzwPlainly(const std::vector<std::uint8_t>& pixels, unsigned codeSize);

// At most `pixelCount` pixels; fewer when the codes end or make no sense.
std::vector<std::uint8_t> DecodeLzwPlainly(const std::vector<std::uint8_t>& codes, unsigned codeSize,
                                           std::size_t pixelCount);

// The content of the blocks that begin at `position`, up to the block of length 0.
std::vector<std::uint8_t> JoinBlocks(const std::vector<std::uint8_t>& file, std::size_t position);

}  // namespace support

#endif  // TESTS_SUPPORT_LZW_REFERENCE_H_
