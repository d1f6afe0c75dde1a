#ifndef MODULES_COMMON_EXIF_H_
#define MODULES_COMMON_EXIF_H_

#include <cstdint>
#include <span>

namespace modules {

// What matters of a camera's notes about its picture.
struct Exif {
  std::uint32_t orientation = 1;  // 1 to 8, see upright_rows.h
  double dpiX = 0.0;              // dots per inch; 0: not told
  double dpiY = 0.0;
};

// Reads the body of an APP1 marker. Anything but readable notes leaves the fields as they start.
Exif ReadExif(std::span<const std::uint8_t> marker);

}  // namespace modules

#endif  // MODULES_COMMON_EXIF_H_
