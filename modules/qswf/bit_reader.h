#ifndef MODULES_QSWF_BIT_READER_H_
#define MODULES_QSWF_BIT_READER_H_

#include <cstdint>

#include "modules/common/byte_reader.h"
#include "platform/metafile/geometry.h"

namespace qswf {

// A byte reader that also gives fields of bits, highest bit first. Whole bytes begin at the next byte.
class BitReader {
 public:
  explicit BitReader(std::span<const std::uint8_t> bytes) : in_(bytes) {}

  modules::ByteReader& Aligned() {
    left_ = 0;
    return in_;
  }
  std::uint8_t Byte() { return Aligned().Byte(); }
  std::uint16_t Word() { return Aligned().Word(); }
  std::uint32_t Long() { return Aligned().Long(); }
  bool Failed() const { return in_.Failed(); }

  // Up to 32 bits.
  std::uint32_t Bits(std::uint32_t count) {
    std::uint32_t value = 0;
    while (count != 0) {
      if (left_ == 0) {
        byte_ = in_.Byte();
        left_ = 8;
      }
      const std::uint32_t taken = count < left_ ? count : left_;
      value = value << taken | (byte_ >> (left_ - taken) & ((1U << taken) - 1));
      left_ -= taken;
      count -= taken;
    }
    return value;
  }
  bool Flag() { return Bits(1) != 0; }
  std::int32_t Signed(std::uint32_t count) {
    if (count == 0) return 0;
    const std::uint32_t value = Bits(count);
    const std::uint32_t sign = std::uint32_t{1} << (count - 1);
    return static_cast<std::int32_t>((value ^ sign) - sign);
  }

 private:
  modules::ByteReader in_;
  std::uint32_t byte_ = 0;
  std::uint32_t left_ = 0;
};

}  // namespace qswf

#endif  // MODULES_QSWF_BIT_READER_H_
