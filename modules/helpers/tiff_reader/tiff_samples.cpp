#include "modules/helpers/tiff_reader/tiff_samples.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace modules {
namespace {

constexpr std::uint32_t kFloatFull = 65535;

template <typename Number>
Number Load(const std::uint8_t* bytes, std::size_t index) {
  Number number;
  std::memcpy(&number, bytes + index * sizeof(Number), sizeof(Number));
  return number;
}

// (sample * 255 + 32767) / 65535 without the division, equal for all 65536 samples.
std::uint8_t HighByte(std::uint32_t sample) { return static_cast<std::uint8_t>((sample * 255 + 32895) >> 16); }

double HalfToDouble(std::uint16_t half) {
  const int exponent = half >> 10 & 31;
  const int fraction = half & 1023;
  double value;
  if (exponent == 31) {
    value = fraction == 0 ? INFINITY : NAN;
  } else if (exponent == 0) {
    value = std::ldexp(fraction, -24);
  } else {
    value = std::ldexp(fraction + 1024, exponent - 25);
  }
  return (half & 0x8000) != 0 ? -value : value;
}

std::uint32_t FromFloat(double value, const TiffLayout& layout) {
  const double share = (value - layout.lowest) / (layout.highest - layout.lowest);
  if (!(share > 0.0)) return 0;  // also what is no number
  return share >= 1.0 ? kFloatFull : static_cast<std::uint32_t>(share * kFloatFull + 0.5);
}

void UnpackFloats(const std::uint8_t* row, std::size_t count, const TiffLayout& layout, std::uint32_t* target,
                  std::size_t step) {
  for (std::size_t i = 0; i < count; ++i, target += step) {
    const double value = layout.bits == 16   ? HalfToDouble(Load<std::uint16_t>(row, i))
                         : layout.bits == 32 ? static_cast<double>(Load<float>(row, i))
                                             : Load<double>(row, i);
    *target = FromFloat(value, layout);
  }
}

void UnpackBits(const std::uint8_t* row, std::size_t count, std::uint32_t bits, std::uint32_t* target,
                std::size_t step) {
  std::uint64_t held = 0;
  std::uint32_t heldBits = 0;
  for (std::size_t i = 0; i < count; ++i, target += step) {
    for (; heldBits < bits; heldBits += 8) held = held << 8 | *row++;
    heldBits -= bits;
    *target = static_cast<std::uint32_t>(held >> heldBits & ((std::uint64_t{1} << bits) - 1));
  }
}

// Smallest linear light, as a share of white, that becomes each byte of sRGB.
std::array<double, 256> ByteThresholds() {
  std::array<double, 256> thresholds{};
  for (std::size_t i = 1; i < thresholds.size(); ++i) {
    const double encoded = (static_cast<double>(i) - 0.5) / 255.0;
    thresholds[i] = encoded <= 0.04045 ? encoded / 12.92 : std::pow((encoded + 0.055) / 1.055, 2.4);
  }
  return thresholds;
}

std::uint8_t EncodeLight(double light) {
  static const std::array<double, 256> kThresholds = ByteThresholds();
  const auto* above = std::upper_bound(kThresholds.begin() + 1, kThresholds.end(), light);
  return static_cast<std::uint8_t>(above - kThresholds.begin() - 1);
}

double LabToShare(double t) {
  constexpr double kKnee = 6.0 / 29.0;
  return t > kKnee ? t * t * t : 3.0 * kKnee * kKnee * (t - 4.0 / 29.0);
}

}  // namespace

std::uint32_t FullSample(const TiffLayout& layout) {
  if (layout.format == SAMPLEFORMAT_IEEEFP) return kFloatFull;
  return static_cast<std::uint32_t>((std::uint64_t{1} << layout.bits) - 1);
}

void UnpackSamples(const std::uint8_t* row, std::size_t count, const TiffLayout& layout, std::uint32_t* target,
                   std::size_t step) {
  if (layout.format == SAMPLEFORMAT_IEEEFP) return UnpackFloats(row, count, layout, target, step);
  if (layout.bits == 8) {
    for (std::size_t i = 0; i < count; ++i) target[i * step] = row[i];
  } else if (layout.bits == 16) {
    for (std::size_t i = 0; i < count; ++i) target[i * step] = Load<std::uint16_t>(row, i);
  } else if (layout.bits == 32) {
    for (std::size_t i = 0; i < count; ++i) target[i * step] = Load<std::uint32_t>(row, i);
  } else {
    UnpackBits(row, count, layout.bits, target, step);
  }
  const bool lab = layout.colours == TiffColours::kLab || layout.colours == TiffColours::kIccLab;
  if (layout.format != SAMPLEFORMAT_INT || lab || layout.colours == TiffColours::kPalette) return;
  // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult): no layout has 0 bits
  const std::uint32_t sign = std::uint32_t{1} << (layout.bits - 1);
  for (std::size_t i = 0; i < count; ++i) target[i * step] ^= sign;
}

void DivideByAlpha(std::uint32_t* samples, std::uint32_t width, const TiffLayout& layout) {
  const std::uint64_t full = FullSample(layout);
  for (std::uint32_t x = 0; x < width; ++x, samples += layout.samples) {
    const std::uint64_t alpha = samples[layout.alphaSample];
    for (std::uint32_t i = 0; i < layout.alphaSample; ++i) {
      samples[i] = alpha == 0 ? 0 : static_cast<std::uint32_t>(std::min(full, (samples[i] * full + alpha / 2) / alpha));
    }
  }
}

void ReduceSamples(const std::uint32_t* samples, std::size_t count, std::uint32_t full, std::uint8_t* bytes) {
  if (full == 255) {
    for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<std::uint8_t>(samples[i]);
  } else if (full == 65535) {
    for (std::size_t i = 0; i < count; ++i) bytes[i] = HighByte(samples[i]);
  } else {
    for (std::size_t i = 0; i < count; ++i) {
      bytes[i] = static_cast<std::uint8_t>((std::uint64_t{samples[i]} * 255 + full / 2) / full);
    }
  }
}

void InkPixel(const std::uint8_t* inks, std::uint8_t* pixel) {
  const std::uint32_t black = 255U - inks[3];
  for (int i = 0; i < 3; ++i) pixel[i] = static_cast<std::uint8_t>(((255U - inks[2 - i]) * black + 127) / 255);
}

void LabPixel(const std::uint32_t* samples, const TiffLayout& layout, std::uint8_t* pixel) {
  const bool icc = layout.colours == TiffColours::kIccLab;
  const double unit = layout.bits == 8 ? 1.0 : 256.0;
  double lightness = samples[0] * 100.0 / (layout.bits == 8 ? 255.0 : icc ? 65280.0 : 65535.0);
  double ab[2];
  for (int i = 0; i < 2; ++i) {
    const std::uint32_t raw = samples[1 + i];
    if (icc) {
      ab[i] = raw / unit - 128.0;
    } else {
      ab[i] = (layout.bits == 8 ? static_cast<double>(static_cast<std::int8_t>(raw))
                                : static_cast<double>(static_cast<std::int16_t>(raw))) /
              unit;
    }
  }
  const double middle = (lightness + 16.0) / 116.0;
  // Shares of the white point, so that its own values never matter.
  const double x = LabToShare(middle + ab[0] / 500.0);
  const double y = LabToShare(middle);
  const double z = LabToShare(middle - ab[1] / 200.0);
  // The matrix of sRGB for light adapted to D50, its columns scaled by the white of D50 (0.96422, 1, 0.82521).
  const double red = 3.1338561 * 0.96422 * x - 1.6168667 * y - 0.4906146 * 0.82521 * z;
  const double green = -0.9787684 * 0.96422 * x + 1.9161415 * y + 0.0334540 * 0.82521 * z;
  const double blue = 0.0719453 * 0.96422 * x - 0.2289914 * y + 1.4052427 * 0.82521 * z;
  pixel[0] = EncodeLight(blue);
  pixel[1] = EncodeLight(green);
  pixel[2] = EncodeLight(red);
}

}  // namespace modules
