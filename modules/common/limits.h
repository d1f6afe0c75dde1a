#ifndef MODULES_COMMON_LIMITS_H_
#define MODULES_COMMON_LIMITS_H_

#include <cstddef>
#include <cstdint>

// What modules believe of a file, each with the attack that it stops.

namespace modules {

// A side that a GIF can't hold is of no use, and it keeps products of two sides within 32 bits.
inline constexpr std::uint32_t kMaxSide = 65535;
// A header of some bytes that asks for gigabytes of pixels.
inline constexpr std::uint64_t kMaxPagePixels = std::uint64_t{1} << 28;
// A drawing of some bytes with a frame of kilometres: it is drawn at 72 dots per inch, four bytes a pixel.
inline constexpr std::uint64_t kMaxDrawingPixels = std::uint64_t{1} << 27;
// A file of many empty pages, or a chain of directories that never ends.
inline constexpr std::uint32_t kMaxPages = 4096;
// Many pages that are each within their own limit.
inline constexpr std::uint64_t kMaxSourcePixels = std::uint64_t{1} << 30;
// Boxes in boxes, forms in forms.
inline constexpr std::uint32_t kMaxNesting = 16;
// A run-length code that makes large sides out of a few bytes: a byte of data makes at most this many pixels.
inline constexpr std::uint64_t kMaxRunPixelsPerByte = 128;
// So many pixels harm nobody, and an empty picture is a few bytes long in some codes.
inline constexpr std::uint64_t kHarmlessPixels = std::uint64_t{1} << 20;

}  // namespace modules

#endif  // MODULES_COMMON_LIMITS_H_
