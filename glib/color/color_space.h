#ifndef GLIB_COLOR_COLOR_SPACE_H_
#define GLIB_COLOR_COLOR_SPACE_H_

#include <array>
#include <cstddef>
#include <cstdint>

namespace glib {

// How far apart colours are.
enum class ColorMeasure {
  kBalanced,    // weights between the least squared error and what the eye sees
  kPerceptual,  // greens apart, blues together, and finer steps in the dark
};

// Red, green, blue in sixteenths of a level: 0 to 4080.
using FineColor = std::array<std::uint16_t, 3>;
inline constexpr std::uint16_t kFineMax = 255 * 16;

// A place in the space in which distances are measured: 0 to 1300 an axis, about four steps a level.
using Place = std::array<std::int16_t, 3>;

inline FineColor FineOf(std::uint32_t color) {
  return {static_cast<std::uint16_t>((color >> 16 & 255U) * 16), static_cast<std::uint16_t>((color >> 8 & 255U) * 16),
          static_cast<std::uint16_t>((color & 255U) * 16)};
}

class ColorSpace {
 public:
  explicit ColorSpace(ColorMeasure measure);

  // Rises with the value of the channel (0 red, 1 green, 2 blue).
  std::int16_t Axis(std::size_t channel, std::size_t fineValue) const { return axes_[channel][fineValue]; }

  Place PlaceOf(const FineColor& color) const { return {Axis(0, color[0]), Axis(1, color[1]), Axis(2, color[2])}; }

 private:
  std::array<std::array<std::int16_t, kFineMax + 1>, 3> axes_;
};

inline std::int32_t SquaredDistance(const Place& a, const Place& b) {
  std::int32_t sum = 0;
  for (std::size_t k = 0; k < 3; ++k) sum += (a[k] - b[k]) * (a[k] - b[k]);
  return sum;
}

}  // namespace glib

#endif  // GLIB_COLOR_COLOR_SPACE_H_
