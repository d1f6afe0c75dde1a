#ifndef MODULES_HELPERS_COLOR_MANAGEMENT_MATRIX_CONVERSION_H_
#define MODULES_HELPERS_COLOR_MANAGEMENT_MATRIX_CONVERSION_H_

#include <lcms2.h>

#include <array>
#include <cstdint>
#include <memory>

#include "modules/common/color_conversion.h"

namespace color_management {

// From a profile of curves and primaries, as nearly all pictures of red, green, blue have, to sRGB: what the library
// does for it, with tables that hold each sample's share of each light, several times as fast. Equal within one step.
class MatrixConversion final : public modules::ColorConversion {
 public:
  // Null if the profile is none of this kind.
  static std::unique_ptr<MatrixConversion> Make(cmsHPROFILE profile, cmsHPROFILE srgb, bool alpha);

  void Convert(const std::uint8_t* from, std::uint8_t* to, std::size_t count) const override;

 private:
  static constexpr int kSteps = 1 << 14;    // of light in the table of samples
  static constexpr int kFractionBits = 13;  // of the shares

  bool SetShares(std::size_t channel, const cmsToneCurve* curve, const double (&amounts)[3]);
  void SetSamples();
  template <std::size_t kPixelBytes>
  void ConvertPixels(const std::uint8_t* from, std::uint8_t* to, std::size_t count) const;

  // By the sample's channel and value: blue, green and red light, in memory order.
  using Shares = std::array<std::int32_t, 4>;
  std::array<std::array<Shares, 256>, 3> shares_{};
  std::array<std::uint8_t, kSteps> samples_{};
  bool alpha_ = false;
};

}  // namespace color_management

#endif  // MODULES_HELPERS_COLOR_MANAGEMENT_MATRIX_CONVERSION_H_
