#ifndef MODULES_QMNG_CHUNKS_H_
#define MODULES_QMNG_CHUNKS_H_

#include <cstdint>
#include <span>
#include <vector>

// The chunks of which PNG, JNG and MNG files are made.

namespace qmng {

using Bytes = std::span<const std::uint8_t>;

constexpr std::uint32_t Name(const char (&text)[5]) {
  std::uint32_t name = 0;
  for (int i = 0; i < 4; ++i) name = name << 8 | static_cast<std::uint8_t>(text[i]);
  return name;
}

inline constexpr std::uint8_t kPngSignature[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
inline constexpr std::uint8_t kJngSignature[] = {0x8B, 'J', 'N', 'G', '\r', '\n', 0x1A, '\n'};
inline constexpr std::size_t kSignatureBytes = 8;

struct Chunk {
  std::uint32_t name = 0;
  Bytes data;
  Bytes whole;  // with length, name and checksum
};

// All chunks behind the signature, whatever that is, up to the end of an animation or one without a name: what stands
// behind can be of any length. The last one may be cut.
std::vector<Chunk> ReadChunks(Bytes file);

}  // namespace qmng

#endif  // MODULES_QMNG_CHUNKS_H_
