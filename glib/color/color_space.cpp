#include "glib/color/color_space.h"

#include <cmath>

namespace glib {

ColorSpace::ColorSpace(ColorMeasure measure) {
  const bool perceptual = measure == ColorMeasure::kPerceptual;
  // Equal weights have the best squared error, 1 / 1.2 / 0.8 the best look.
  const std::array<double, 3> weights =
      perceptual ? std::array<double, 3>{1, 1.2, 0.8} : std::array<double, 3>{1, 1.07, 0.93};
  constexpr double kPower = 1.15;
  for (std::size_t fine = 0; fine <= kFineMax; ++fine) {
    const double linear = static_cast<double>(fine) / kFineMax;
    const double value = 255 * 4 * (perceptual ? std::pow(linear, kPower) : linear);
    for (std::size_t k = 0; k < 3; ++k) axes_[k][fine] = static_cast<std::int16_t>(value * weights[k] + 0.5);
  }
}

}  // namespace glib
