#include "modules/qpsd/srgb_curve.h"

#include <cmath>

namespace qpsd {

std::vector<std::uint8_t> SrgbCurve() {
  // The steepest part is 12.92 x 255 samples long for an amount of 1.
  constexpr std::uint32_t kSteps = 65536;
  std::vector<std::uint8_t> curve(kSteps);
  for (std::uint32_t i = 0; i < kSteps; ++i) {
    const double light = i / (kSteps - 1.0);
    const double sample = light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
    curve[i] = static_cast<std::uint8_t>(sample * 255 + 0.5);
  }
  return curve;
}

}  // namespace qpsd
