#ifndef MODULES_QGIF_LZW_DECODER_H_
#define MODULES_QGIF_LZW_DECODER_H_

#include <cstddef>
#include <cstdint>
#include <span>

namespace qgif {

inline constexpr std::uint32_t kMaxCodeBits = 12;
inline constexpr std::uint32_t kMaxCodes = 1U << kMaxCodeBits;

// Decodes the codes of a frame into `pixelCount` bytes at `pixels`, one index a byte. `codes` must be followed by
// kCodePadding readable bytes that don't count. Gives the pixels decoded: fewer than asked for when the codes end or
// make no sense; what is behind the last pixel isn't looked at. Bytes past the pixels decoded may have been written.
std::size_t DecodeLzw(std::span<const std::uint8_t> codes, std::uint32_t codeSize, std::uint8_t* pixels,
                      std::size_t pixelCount);

}  // namespace qgif

#endif  // MODULES_QGIF_LZW_DECODER_H_
