#include "modules/qpsp/psp_blocks.h"

#include <algorithm>

namespace qpsp {
namespace {

constexpr std::uint32_t kMark = 0x004B427E;      // "~BK" and a zero
constexpr std::uint32_t kWithoutOwnLengths = 3;  // the last version whose block headers tell the length of the chunk
constexpr std::size_t kLengthBytes = 4;

}  // namespace

bool BlockList::Next(Block& block) {
  while (in_.Left() > kLengthBytes) {
    const std::uint32_t mark = in_.Long();
    if (mark == kMark) break;
    // A chunk, whose length counts itself.
    if (mark < kLengthBytes || !in_.Skip(mark - kLengthBytes)) return false;
  }
  block.id = static_cast<BlockId>(in_.Word());
  std::size_t chunkLength = version_ <= kWithoutOwnLengths ? in_.Long() : 0;
  const std::size_t length = in_.Long();
  if (in_.Failed()) return false;
  block.content = in_.Take(length);
  std::size_t fields = 0;
  if (version_ > kWithoutOwnLengths) {
    chunkLength = modules::ByteReader(block.content).Long();
    fields = kLengthBytes;
  }
  const std::size_t size = block.content.size();
  chunkLength = std::clamp(chunkLength, std::min(fields, size), size);
  block.chunk = block.content.subspan(std::min(fields, size), chunkLength - std::min(fields, size));
  block.rest = block.content.subspan(chunkLength);
  return true;
}

}  // namespace qpsp
