#ifndef GLIB_TASKS_PIXEL_LENGTH_H_
#define GLIB_TASKS_PIXEL_LENGTH_H_

#include <cstdint>
#include <optional>

namespace glib {

// `percent` hundredths of `length` pixels. The factor is the nearest float to 0.01, which lies below it; the products
// are doubles and only the result is rounded to a float.
inline float PercentOf(std::uint32_t length, float percent) {
  return static_cast<float>(static_cast<double>(length) * static_cast<double>(percent) * static_cast<double>(0.01F));
}

// Cut towards zero. Nothing for what no 32-bit integer holds: NaN, infinities, huge values.
inline std::optional<std::int32_t> CutToInteger(double value) {
  constexpr double kBeyond = 2147483648.0;
  if (!(value > -kBeyond - 1.0 && value < kBeyond)) return std::nullopt;
  return static_cast<std::int32_t>(value);
}

}  // namespace glib

#endif  // GLIB_TASKS_PIXEL_LENGTH_H_
