#include "modules/common/pack_bits.h"

#include <algorithm>
#include <cstring>

namespace modules {

std::size_t UnpackBits(ByteReader& in, std::span<std::uint8_t> target) {
  std::size_t done = 0;
  while (done < target.size() && !in.AtEnd()) {
    const std::size_t count = in.Byte();
    const std::size_t room = target.size() - done;
    if (count < 128) {
      const auto literal = in.Take(count + 1);
      const std::size_t taken = std::min(literal.size(), room);
      if (taken != 0) std::memcpy(target.data() + done, literal.data(), taken);
      done += taken;
    } else if (count > 128 && !in.AtEnd()) {
      const std::size_t length = std::min(257 - count, room);
      std::memset(target.data() + done, in.Byte(), length);
      done += length;
    }
  }
  return done;
}

}  // namespace modules
