#include "modules/helpers/color_management/matrix_conversion.h"

#include <lcms2_plugin.h>

#include <algorithm>
#include <cmath>

namespace color_management {
namespace {

struct ChannelTags {
  cmsTagSignature curve;
  cmsTagSignature primary;
};
// In the order of bytes.
constexpr ChannelTags kChannels[3] = {{cmsSigBlueTRCTag, cmsSigBlueColorantTag},
                                      {cmsSigGreenTRCTag, cmsSigGreenColorantTag},
                                      {cmsSigRedTRCTag, cmsSigRedColorantTag}};

double DecodeSrgb(double sample) {
  return sample <= 0.04045 ? sample / 12.92 : std::pow((sample + 0.055) / 1.055, 2.4);
}

// Null if the profile lacks it.
const cmsCIEXYZ* Primary(cmsHPROFILE profile, std::size_t channel) {
  return static_cast<const cmsCIEXYZ*>(cmsReadTag(profile, kChannels[channel].primary));
}

// From XYZ to amounts of the profile's primaries, in the order of kChannels. False: they aren't independent.
bool FromXyz(cmsHPROFILE profile, cmsMAT3& matrix) {
  cmsMAT3 toXyz;
  for (std::size_t i = 0; i < 3; ++i) {
    const cmsCIEXYZ* primary = Primary(profile, i);
    if (primary == nullptr) return false;
    toXyz.v[0].n[i] = primary->X;
    toXyz.v[1].n[i] = primary->Y;
    toXyz.v[2].n[i] = primary->Z;
  }
  return _cmsMAT3inverse(&toXyz, &matrix) != FALSE;
}

bool HasTables(cmsHPROFILE profile) {
  for (const cmsTagSignature tag : {cmsSigAToB0Tag, cmsSigAToB1Tag, cmsSigDToB0Tag, cmsSigDToB1Tag}) {
    if (cmsIsTag(profile, tag) != FALSE) return true;
  }
  return false;
}

// A black that isn't 0, or a white that isn't 1, asks for more than a matrix.
bool IsWhole(const cmsToneCurve* curve) {
  return std::abs(cmsEvalToneCurveFloat(curve, 0)) < 1e-4F && std::abs(cmsEvalToneCurveFloat(curve, 1) - 1) < 1e-3F;
}

}  // namespace

std::unique_ptr<MatrixConversion> MatrixConversion::Make(cmsHPROFILE profile, cmsHPROFILE srgb, bool alpha) {
  if (cmsGetColorSpace(profile) != cmsSigRgbData || cmsGetPCS(profile) != cmsSigXYZData || HasTables(profile)) {
    return nullptr;
  }
  cmsMAT3 fromXyz;
  if (!FromXyz(srgb, fromXyz)) return nullptr;
  auto conversion = std::make_unique<MatrixConversion>();
  conversion->alpha_ = alpha;
  for (std::size_t channel = 0; channel < 3; ++channel) {
    const auto* curve = static_cast<const cmsToneCurve*>(cmsReadTag(profile, kChannels[channel].curve));
    const cmsCIEXYZ* primary = Primary(profile, channel);
    if (curve == nullptr || primary == nullptr || !IsWhole(curve)) return nullptr;
    const cmsVEC3 xyz{{primary->X, primary->Y, primary->Z}};
    cmsVEC3 amounts;
    _cmsMAT3eval(&amounts, &fromXyz, &xyz);
    if (!conversion->SetShares(channel, curve, amounts.n)) return nullptr;
  }
  conversion->SetSamples();
  return conversion;
}

bool MatrixConversion::SetShares(std::size_t channel, const cmsToneCurve* curve, const double (&amounts)[3]) {
  constexpr double kFull = static_cast<double>(kSteps - 1) * (1 << kFractionBits);
  // The half that rounds is worth adding once.
  const std::int32_t half = channel == 0 ? 1 << (kFractionBits - 1) : 0;
  for (std::size_t value = 0; value < 256; ++value) {
    const double light = cmsEvalToneCurveFloat(curve, static_cast<float>(value) / 255.0F);
    for (std::size_t target = 0; target < 3; ++target) {
      const double share = amounts[target] * light;
      // Three of less than 4 stay within 32 bits; no display's primaries come near.
      if (!(std::abs(share) < 4)) return false;
      shares_[channel][value][target] = static_cast<std::int32_t>(std::lround(share * kFull)) + half;
    }
  }
  return true;
}

void MatrixConversion::SetSamples() {
  std::size_t step = 0;
  for (int sample = 0; sample < 256; ++sample) {
    // The next sample begins in the middle between both.
    const double end = sample == 255 ? kSteps : DecodeSrgb((sample + 0.5) / 255) * (kSteps - 1);
    for (; static_cast<double>(step) < end; ++step) samples_[step] = static_cast<std::uint8_t>(sample);
  }
}

template <std::size_t kPixelBytes>
void MatrixConversion::ConvertPixels(const std::uint8_t* from, std::uint8_t* to, std::size_t count) const {
  constexpr std::int32_t kHighest = kSteps * (1 << kFractionBits) - 1;
  for (; count != 0; --count, from += kPixelBytes, to += kPixelBytes) {
    const Shares& blue = shares_[0][from[0]];
    const Shares& green = shares_[1][from[1]];
    const Shares& red = shares_[2][from[2]];
    for (std::size_t i = 0; i < 3; ++i) {
      const std::int32_t light = std::clamp(blue[i] + green[i] + red[i], 0, kHighest);
      to[i] = samples_[static_cast<std::size_t>(light >> kFractionBits)];
    }
  }
}

void MatrixConversion::Convert(const std::uint8_t* from, std::uint8_t* to, std::size_t count) const {
  alpha_ ? ConvertPixels<4>(from, to, count) : ConvertPixels<3>(from, to, count);
}

}  // namespace color_management
