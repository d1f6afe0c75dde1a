#ifndef MODULES_QIMG_PLANES_H_
#define MODULES_QIMG_PLANES_H_

#include <cstddef>
#include <cstdint>
#include <span>

namespace qimg {

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

}  // namespace qimg

#endif  // MODULES_QIMG_PLANES_H_
