#ifndef MODULES_QIMG_PLANES_H_
#define MODULES_QIMG_PLANES_H_

#include <cstddef>
#include <cstdint>
#include <span>

namespace qimg {

// Bits of the page that pictures of so many planes, at most 8, become.
inline std::uint32_t BitsOfPlanes(std::uint32_t planes) {
  if (planes <= 1) return 1;
  return planes <= 4 ? 4 : 8;
}

// Bytes of one plane of a row.
inline std::size_t PlaneBytes(std::uint32_t width) { return (std::size_t{width} + 7) / 8; }

// The bit of pixel `x` in a plane, highest bit of a byte first.
inline std::uint32_t PlaneBit(const std::uint8_t* plane, std::uint32_t x) {
  return static_cast<std::uint32_t>(plane[x / 8]) >> (7 - x % 8) & 1U;
}

// The value of pixel `x` over `planes` planes that lie `stride` bytes apart, the lowest bit first.
inline std::uint32_t PlaneValue(const std::uint8_t* row, std::size_t stride, std::uint32_t planes, std::uint32_t x) {
  std::uint32_t value = 0;
  for (std::uint32_t i = 0; i < planes; ++i) value |= PlaneBit(row + i * stride, x) << i;
  return value;
}

// Puts an index into a row of 1, 4 or 8 bits that is still zero there.
inline void PutIndex(std::uint8_t* row, std::uint32_t bits, std::uint32_t x, std::uint32_t index) {
  const std::uint32_t perByte = 8 / bits;
  row[x / perByte] = static_cast<std::uint8_t>(row[x / perByte] | index << (8 - bits - x % perByte * bits));
}

}  // namespace qimg

#endif  // MODULES_QIMG_PLANES_H_
