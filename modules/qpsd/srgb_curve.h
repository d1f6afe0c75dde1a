#ifndef MODULES_QPSD_SRGB_CURVE_H_
#define MODULES_QPSD_SRGB_CURVE_H_

#include <cstdint>
#include <vector>

namespace qpsd {

// Samples for amounts of light from 0 to 1 in equal steps, close enough that no sample is left out.
std::vector<std::uint8_t> SrgbCurve();

// What is outside of 0 to 1, or no number, counts as the nearer end.
inline std::uint8_t OnCurve(const std::vector<std::uint8_t>& curve, float light) {
  if (!(light > 0.0F)) return curve.front();
  if (light >= 1.0F) return curve.back();
  return curve[static_cast<std::uint32_t>(light * static_cast<float>(curve.size() - 1) + 0.5F)];
}

}  // namespace qpsd

#endif  // MODULES_QPSD_SRGB_CURVE_H_
