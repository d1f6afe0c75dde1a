#include "modules/qgif/block_output.h"

#include <algorithm>

namespace qgif {

void BlockOutput::DataBlocks(std::span<const std::uint8_t> bytes) {
  constexpr std::size_t kBlock = 255;
  while (!bytes.empty()) {
    const std::size_t size = std::min(bytes.size(), kBlock);
    Byte(static_cast<std::uint32_t>(size));
    Bytes(bytes.first(size));
    bytes = bytes.subspan(size);
  }
}

bool BlockOutput::Flush() {
  if (ok_ && !bytes_.empty()) ok_ = sink_.Take(bytes_);
  bytes_.clear();
  return ok_;
}

}  // namespace qgif
