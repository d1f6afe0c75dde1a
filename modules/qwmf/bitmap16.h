#ifndef MODULES_QWMF_BITMAP16_H_
#define MODULES_QWMF_BITMAP16_H_

#include <cstdint>
#include <span>
#include <vector>

#include "modules/common/byte_reader.h"

namespace qwmf {

enum class Bitmap16Kind { kPicture, kPattern };

// A bitmap of old devices as a device-independent one, from the cursor on. Only those of one bit say what their pixels
// mean; the others give nothing.
std::vector<std::uint8_t> DibOfBitmap16(modules::ByteReader& in, Bitmap16Kind kind);

// Of a device-independent bitmap, as its header says; negative where the top row comes first.
std::int64_t DibHeight(std::span<const std::uint8_t> dib);

// Bits of a pixel; 0 if the header doesn't say.
std::uint32_t DibBits(std::span<const std::uint8_t> dib);

}  // namespace qwmf

#endif  // MODULES_QWMF_BITMAP16_H_
