#include "glib/model/hue_parts.h"

#include <algorithm>

namespace glib {
namespace {

// A sixth of the circle, of which all hues together are 255.
constexpr double kSixth = 42.5;
constexpr double kSixthsPerStep = 0.023529411764705882;

struct Channels {
  explicit Channels(const std::uint8_t* pixel)
      : c0(pixel[0]), c1(pixel[1]), c2(pixel[2]), max(std::max({c0, c1, c2})), min(std::min({c0, c1, c2})) {}

  int delta() const { return max - min; }

  // Needs a colour that isn't grey.
  double Hue() const {
    double sixths = 0.0;
    if (c0 == max) {
      sixths = static_cast<double>(c1 - c2) / delta();
    } else if (c1 == max) {
      sixths = static_cast<double>(c2 - c0) / delta() + 2.0;
    } else {
      sixths = static_cast<double>(c0 - c1) / delta() + 4.0;
    }
    const double hue = sixths * kSixth;
    return hue < 0.0 ? hue + 255.0 : hue;
  }

  int c0;
  int c1;
  int c2;
  int max;
  int min;
};

std::uint8_t ByteOf(double value) { return static_cast<std::uint8_t>(static_cast<int>(value)); }

void Store(std::uint8_t* pixel, double c0, double c1, double c2) {
  pixel[0] = ByteOf(c0 * 255.0);
  pixel[1] = ByteOf(c1 * 255.0);
  pixel[2] = ByteOf(c2 * 255.0);
}

double LightnessChannel(double hue, double m1, double m2) {
  if (hue > 255.0) hue -= 255.0;
  if (hue < 0.0) hue += 255.0;
  if (hue < kSixth) return m1 + (m2 - m1) * hue * kSixthsPerStep;
  if (hue < 3 * kSixth) return m2;
  if (hue < 4 * kSixth) return m1 + (m2 - m1) * (4 * kSixth - hue) * kSixthsPerStep;
  return m1;
}

}  // namespace

HueParts ToHueValue(const std::uint8_t* pixel) {
  const Channels c(pixel);
  if (c.delta() == 0) return {0, 0, c.max};
  return {static_cast<int>(c.Hue()), static_cast<int>(c.delta() * 255.0 / c.max), c.max};
}

void FromHueValue(const HueParts& parts, std::uint8_t* pixel) {
  if (parts.saturation == 0) {
    std::fill_n(pixel, 3, static_cast<std::uint8_t>(parts.light));
    return;
  }
  const double sixths = parts.hue * kSixthsPerStep;
  const int sector = static_cast<int>(sixths);
  const double f = sixths - sector;
  const double s = parts.saturation / 255.0;
  const double v = parts.light / 255.0;
  const double p = (1.0 - s) * v;
  const double q = (1.0 - f * s) * v;
  const double t = (1.0 - (1.0 - f) * s) * v;
  switch (sector) {
    case 0:
      return Store(pixel, v, t, p);
    case 1:
      return Store(pixel, q, v, p);
    case 2:
      return Store(pixel, p, v, t);
    case 3:
      return Store(pixel, p, q, v);
    case 4:
      return Store(pixel, t, p, v);
    case 5:
      return Store(pixel, v, p, q);
    default:
      // The hue 255 is past the last sector: the parts stand for the channels.
      pixel[0] = static_cast<std::uint8_t>(parts.hue);
      pixel[1] = static_cast<std::uint8_t>(parts.saturation);
      pixel[2] = static_cast<std::uint8_t>(parts.light);
  }
}

HueParts ToHueLightness(const std::uint8_t* pixel) {
  const Channels c(pixel);
  const int sum = c.max + c.min;
  const int lightness = sum / 2;
  if (c.delta() == 0) return {0, 0, lightness};
  const double saturation = c.delta() * 255.0 / (sum * 0.5 < 128.0 ? sum : 511 - sum);
  return {static_cast<int>(c.Hue()), static_cast<int>(saturation), lightness};
}

void FromHueLightness(const HueParts& parts, std::uint8_t* pixel) {
  if (parts.saturation == 0) {
    std::fill_n(pixel, 3, static_cast<std::uint8_t>(parts.light));
    return;
  }
  const double l = parts.light;
  const double s = parts.saturation;
  const double m2 = parts.light < 128 ? (s + 255.0) * l / 65025.0 : (l + s - s * l / 255.0) / 255.0;
  const double m1 = l / 127.5 - m2;
  Store(pixel, LightnessChannel(parts.hue + 85, m1, m2), LightnessChannel(parts.hue, m1, m2),
        LightnessChannel(parts.hue - 85, m1, m2));
}

}  // namespace glib
