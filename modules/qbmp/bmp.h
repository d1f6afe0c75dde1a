#ifndef MODULES_QBMP_BMP_H_
#define MODULES_QBMP_BMP_H_

#include <cstdint>
#include <span>

#include "modules/common/dib.h"

namespace qbmp {

// The start of a BMP file, or a bitmap without a file header, as ".dib" files sometimes are.
struct BmpFile {
  std::span<const std::uint8_t> dib;
  std::size_t dataOffset = 0;  // within `dib`; 0: behind the palette
};

// As much of a file as its headers and masks take.
inline constexpr std::size_t kBmpHeaderBytes = 14 + 124;

BmpFile OpenBmp(std::span<const std::uint8_t> file);
std::uint32_t LoadBmp(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange);

}  // namespace qbmp

#endif  // MODULES_QBMP_BMP_H_
