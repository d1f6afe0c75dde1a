#ifndef MODULES_COMMON_PACK_BITS_H_
#define MODULES_COMMON_PACK_BITS_H_

#include <cstddef>
#include <cstdint>
#include <span>

#include "modules/common/byte_reader.h"

namespace modules {

// Decodes runs of bytes until `target` is full or `in` ends: a count of 0 to 127 stands before one more literal bytes,
// one of 129 to 255 before a byte that is meant 257 less the count times; 128 means nothing. Gives the bytes decoded; a
// run that goes on past the end of `target` is cut there.
std::size_t UnpackBits(ByteReader& in, std::span<std::uint8_t> target);

}  // namespace modules

#endif  // MODULES_COMMON_PACK_BITS_H_
