#include "modules/qmng/loops.h"

#include <algorithm>

#include "modules/common/byte_reader.h"

namespace qmng {
namespace {

constexpr std::uint32_t kLoop = 0x4C4F4F50;       // "LOOP"
constexpr std::uint32_t kEndOfLoop = 0x454E444C;  // "ENDL"
constexpr std::size_t kSignatureBytes = 8;
constexpr std::size_t kChecksumBytes = 4;
// Chunks that the library may play in all, repeated ones counted each time: a fraction of a second.
constexpr std::uint64_t kMaxPlayed = std::uint64_t{1} << 18;

struct Loops {
  std::vector<std::size_t> counts;  // where the numbers of rounds stand
  std::uint64_t played = 0;         // chunks, at most a little above the limit
};

Loops FindLoops(std::span<const std::uint8_t> file) {
  Loops loops;
  std::vector<std::uint64_t> rounds{1};  // of each open loop times those of all around it
  modules::ByteReader in(file);
  in.Skip(kSignatureBytes);
  while (in.Left() >= 2 * sizeof(std::uint32_t)) {
    const std::uint32_t length = in.BigLong();
    const std::uint32_t kind = in.BigLong();
    const std::size_t data = in.Position();
    if (kind == kLoop && length >= 5) {
      in.Skip(1);
      loops.counts.push_back(in.Position());
      rounds.push_back(std::min(rounds.back() * in.BigLong(), kMaxPlayed + 1));
    } else if (kind == kEndOfLoop && rounds.size() > 1) {
      rounds.pop_back();
    }
    loops.played = std::min(loops.played + rounds.back(), kMaxPlayed + 1);
    in.Seek(std::min(data + length + kChecksumBytes, file.size()));
  }
  return loops;
}

}  // namespace

std::vector<std::uint8_t> UnrollEndlessLoops(std::span<const std::uint8_t> file) {
  const Loops loops = FindLoops(file);
  if (loops.counts.empty() || loops.played <= kMaxPlayed) return {};
  std::vector<std::uint8_t> copy(file.begin(), file.end());
  for (const std::size_t at : loops.counts) {
    // The library looks at no checksum of this chunk.
    for (std::size_t i = 0; i < 4 && at + i < copy.size(); ++i) copy[at + i] = i == 3 ? 1 : 0;
  }
  return copy;
}

}  // namespace qmng
