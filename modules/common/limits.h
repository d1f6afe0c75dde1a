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
// The same with what becomes of the pixels until they are reduced: the page itself, of 32 bits a copy that was laid
// flat, and the reduced one. All of it, and the file, in 1 GiB.
inline constexpr std::uint64_t kMaxPageBytes = std::uint64_t{960} << 20;
constexpr std::uint64_t PageBytesPerPixel(std::uint32_t bits) {
  return bits == 32 ? 4 + 4 + 1 : bits == 24 ? 3 + 1 : 2;
}
// A drawing of some bytes with a frame of kilometres: it is drawn at 72 dots per inch, four bytes a pixel.
inline constexpr std::uint64_t kMaxDrawingPixels = 100'000'000;
// A file of many empty pages, or a chain of directories that never ends.
inline constexpr std::uint32_t kMaxPages = 4096;
// Many pages that are each within their own limit.
inline constexpr std::uint64_t kMaxSourcePixels = std::uint64_t{1} << 30;
// Pages that share their data, so that a small file has more of them than any memory holds. What goes beyond the first
// number must have a byte in the file for so many of its own.
inline constexpr std::uint64_t kHarmlessSourceBytes = std::uint64_t{512} << 20;
inline constexpr std::uint64_t kMaxPageBytesPerByte = 1024;
// Boxes in boxes, forms in forms.
inline constexpr std::uint32_t kMaxNesting = 16;
// A run-length code that makes large sides out of a few bytes: a byte of data makes at most this many pixels.
inline constexpr std::uint64_t kMaxRunPixelsPerByte = 128;
// So many pixels harm nobody, and an empty picture is a few bytes long in some codes.
inline constexpr std::uint64_t kHarmlessPixels = std::uint64_t{1} << 20;

}  // namespace modules

#endif  // MODULES_COMMON_LIMITS_H_
