#ifndef MODULES_COMMON_ICC_PROFILE_H_
#define MODULES_COMMON_ICC_PROFILE_H_

#include <cstdint>
#include <span>

// What can be told of an ICC profile without a library for colours.

namespace modules {

enum class IccSpace : std::uint32_t {
  kGrey = 0x47524159,  // "GRAY"
  kRgb = 0x52474220,   // "RGB "
  kCmyk = 0x434D594B,  // "CMYK"
};

// Whether the bytes begin like the profile of a picture with samples of that kind.
bool IsIccProfileOf(std::span<const std::uint8_t> profile, IccSpace space);

// Whether a profile, made of primaries and curves, means sRGB: each 8-bit sample stays within half a step. Most
// profiles in files do. False also for what can't be told.
bool IsSrgb(std::span<const std::uint8_t> profile);

}  // namespace modules

#endif  // MODULES_COMMON_ICC_PROFILE_H_
