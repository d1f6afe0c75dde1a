#include "modules/qgif/lzw_decoder.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace qgif {
namespace {

constexpr std::size_t kChunk = 16;

constexpr std::array<std::uint8_t, 256 + kChunk> MakeRoots() {
  std::array<std::uint8_t, 256 + kChunk> roots{};
  for (std::size_t i = 0; i < 256; ++i) roots[i] = static_cast<std::uint8_t>(i);
  return roots;
}
constexpr auto kRoots = MakeRoots();

inline std::uint64_t Load64(const std::uint8_t* bytes) {
  std::uint64_t word;
  std::memcpy(&word, bytes, sizeof(word));
  return word;
}

inline void CopyChunk(const std::uint8_t* from, std::uint8_t* to) {
  std::uint8_t chunk[kChunk];
  std::memcpy(chunk, from, kChunk);
  std::memcpy(to, chunk, kChunk);
}

}  // namespace

// A string of the table is the string of an earlier code and the pixel that followed it, so it stands in the output
// already: no table of prefixes, no reversed walk. `starts[n]` is where the string of the code that made entry n began;
// entry n reaches to the first pixel of the string that begins at `starts[n + 1]`.
std::size_t DecodeLzw(std::span<const std::uint8_t> codes, std::uint32_t codeSize, std::uint8_t* pixels,
                      std::size_t pixelCount) {
  if (codeSize < 1 || codeSize > 8) return 0;
  const std::uint32_t clear = 1U << codeSize;
  const std::uint32_t firstFree = clear + 2;
  // One place more than entries, for the end of the last one, and one that takes what comes when the table is full.
  // Roots keep zeros, which makes them strings of one pixel.
  std::uint32_t starts[kMaxCodes + 2] = {};

  const std::size_t bitCount = codes.size() * 8;
  std::size_t bit = 0;
  std::uint32_t next = firstFree;
  std::uint32_t width = codeSize + 1;
  std::uint32_t mask = (1U << width) - 1;
  std::size_t position = 0;
  while (position < pixelCount && bit + width <= bitCount) {
    const auto code = static_cast<std::uint32_t>(Load64(codes.data() + bit / 8) >> (bit % 8)) & mask;
    bit += width;
    if (code - clear < 2) {
      if (code != clear) break;
      next = firstFree;
      width = codeSize + 1;
      mask = (1U << width) - 1;
      continue;
    }
    if (code >= next) break;
    starts[next] = static_cast<std::uint32_t>(position);
    const std::uint32_t start = starts[code];
    const std::size_t length = std::size_t{starts[code + 1]} - start + 1;
    const std::uint8_t* from = code < clear ? kRoots.data() + code : pixels + start;
    std::uint8_t* to = pixels + position;
    if (position + length + kChunk <= pixelCount) {
      CopyChunk(from, to);
      for (std::size_t done = kChunk; done < length; done += kChunk) CopyChunk(from + done, to + done);
      // The string of the newest entry ends in its own first pixel, which wasn't there when it was copied.
      to[length - 1] = code + 1 == next ? to[0] : to[length - 1];
    } else {
      const std::size_t count = std::min(length, pixelCount - position);
      for (std::size_t i = 0; i < count; ++i) to[i] = from[i];
    }
    position += length;
    if (next > mask && width < kMaxCodeBits) {
      ++width;
      mask = mask * 2 + 1;
    }
    next += next <= kMaxCodes ? 1 : 0;
  }
  return std::min(position, pixelCount);
}

}  // namespace qgif
