#ifndef GLIB_COLOR_GREY_VALUE_H_
#define GLIB_COLOR_GREY_VALUE_H_

#include <cstdint>

namespace glib {

inline constexpr std::uint32_t kOpaqueBlack = 0xFF000000;
inline constexpr std::uint32_t kOpaqueWhite = 0xFFFFFFFF;

// Grey of the first three bytes of a pixel. The weights go by byte position; they sum to 256.
constexpr std::uint32_t GreyValue(std::uint32_t byte0, std::uint32_t byte1, std::uint32_t byte2) {
  return (77 * byte0 + 150 * byte1 + 29 * byte2) >> 8;
}

constexpr std::uint32_t GreyOfWord(std::uint32_t word) {
  return GreyValue(word & 255, word >> 8 & 255, word >> 16 & 255);
}

// The word with all three channels at its grey and alpha as it was.
constexpr std::uint32_t ToGrey(std::uint32_t word) { return (word & 0xFF000000) | GreyOfWord(word) * 0x010101; }

}  // namespace glib

#endif  // GLIB_COLOR_GREY_VALUE_H_
