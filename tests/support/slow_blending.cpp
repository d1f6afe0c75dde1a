#include "tests/support/slow_blending.h"

#include <algorithm>
#include <cmath>

namespace test_support {
namespace {

int R(int t) { return (t + (t >> 8)) >> 8; }

struct Hsv {
  int hue = 0;
  int saturation = 0;
  int value = 0;
};

int Largest(const Pixel& p) { return std::max(p[0], std::max(p[1], p[2])); }
int Smallest(const Pixel& p) { return std::min(p[0], std::min(p[1], p[2])); }

double HueOf(const Pixel& p) {
  const double delta = Largest(p) - Smallest(p);
  double hue = (p[0] - p[1]) / delta + 4;
  if (p[1] == Largest(p)) hue = (p[2] - p[0]) / delta + 2;
  if (p[0] == Largest(p)) hue = (p[1] - p[2]) / delta;
  hue *= 42.5;
  if (hue < 0) hue += 255;
  if (hue > 255) hue -= 255;
  return hue;
}

Hsv ToHsv(const Pixel& p) {
  Hsv hsv;
  hsv.value = Largest(p);
  if (hsv.value == 0) return hsv;
  const double saturation = (Largest(p) - Smallest(p)) * 255.0 / Largest(p);
  hsv.saturation = static_cast<int>(saturation);
  if (saturation != 0) hsv.hue = static_cast<int>(HueOf(p));
  return hsv;
}

void FromHsv(int hue, int saturation, int value, Pixel& p) {
  if (saturation == 0) {
    p[0] = p[1] = p[2] = value;
    return;
  }
  const double h6 = hue * 0.023529411764705882;
  const int i = static_cast<int>(h6);
  const double f = h6 - i;
  const double s = saturation / 255.0;
  const double v = value / 255.0;
  const double top = (1 - s) * v;
  const double falling = (1 - f * s) * v;
  const double rising = (1 - (1 - f) * s) * v;
  const double table[6][3] = {{v, rising, top},  {falling, v, top}, {top, v, rising},
                              {top, falling, v}, {rising, top, v},  {v, top, falling}};
  if (i > 5) {
    p[0] = hue;
    p[1] = saturation;
    p[2] = value;
    return;
  }
  for (std::size_t c = 0; c < 3; ++c) p[c] = static_cast<int>(table[i][c] * 255);
}

int Component(double h, double m1, double m2) {
  if (h > 255) h -= 255;
  if (h < 0) h += 255;
  const double k = 6.0 / 255;
  double result = m1;
  if (h < 42.5) {
    result = m1 + (m2 - m1) * h * k;
  } else if (h < 127.5) {
    result = m2;
  } else if (h < 170) {
    result = m1 + (m2 - m1) * (170 - h) * k;
  }
  return static_cast<int>(result * 255);
}

void FromTargetHueAndLayerLightness(const Pixel& s, Pixel& d) {
  const int lightness = static_cast<int>((Largest(s) + Smallest(s)) * 0.5);
  const int sum = Largest(d) + Smallest(d);
  const int delta = Largest(d) - Smallest(d);
  int hue = 0;
  int saturation = 0;
  if (delta != 0) {
    saturation = static_cast<int>(sum * 0.5 < 128 ? delta * 255.0 / sum : delta * 255.0 / (511 - sum));
    hue = static_cast<int>(HueOf(d));
  }
  if (saturation == 0) {
    d[0] = d[1] = d[2] = lightness;
    return;
  }
  const double l = lightness;
  const double t = saturation;
  const double m2 = l < 128 ? (t + 255) * l / 65025 : (l + t - t * l / 255) / 255;
  const double m1 = l / 127.5 - m2;
  d[0] = Component(hue + 85, m1, m2);
  d[1] = Component(hue, m1, m2);
  d[2] = Component(hue - 85, m1, m2);
}

int OneColor(int mode, int s, int d) {
  switch (mode) {
    case 2:
      return R(s * d + 128);
    case 3:
      return 255 - R((255 - s) * (255 - d) + 128);
    case 4: {
      const int u = R((255 - s) * d * 2 + 128);
      return R((u + s) * s + 128);
    }
    case 5:
      return s > d ? s : d;
    case 6:
      return s < d ? s : d;
    case 7:
      return s > d ? s - d : d - s;
    case 12:
      return s + d > 255 ? 255 : s + d;
    case 13:
      return s < d ? 0 : s - d;
    default: {
      const int quotient = s * 256 / (d + 1);
      return quotient > 255 ? 255 : quotient;
    }
  }
}

}  // namespace

Pixel ToPixel(std::uint32_t word) {
  return {static_cast<int>(word & 255), static_cast<int>(word >> 8 & 255), static_cast<int>(word >> 16 & 255),
          static_cast<int>(word >> 24)};
}

std::uint32_t ToWord(const Pixel& pixel) {
  std::uint32_t word = 0;
  for (std::size_t c = 4; c-- > 0;) word = word << 8 | static_cast<std::uint8_t>(pixel[c]);
  return word;
}

Pixel SlowMix(const Pixel& s, const Pixel& d) {
  Pixel result = s;
  for (std::size_t c = 0; c < 3; ++c) result[c] = d[c] + static_cast<int>(std::floor((s[c] - d[c]) * s[3] / 256.0));
  return result;
}

Pixel SlowOver(const Pixel& s, const Pixel& d) {
  const int p = static_cast<int>(s[3] * d[3] / 255.0);
  Pixel result{};
  for (std::size_t c = 0; c < 3; ++c) {
    result[c] = static_cast<int>((s[c] * (255.0 + p - d[3]) + d[c] * (d[3] - p)) / 255.0);
  }
  result[3] = std::min(s[3] + d[3], 255);
  return result;
}

Pixel SlowBlend(int mode, const Pixel& s, const Pixel& d) {
  Pixel result = d;
  if (mode == 15) {
    if (s[3] == 0) return d;
    return {255 - d[0], 255 - d[1], 255 - d[2], 255};
  }
  const Hsv layer = ToHsv(s);
  const Hsv target = ToHsv(d);
  if (mode == 8) {
    FromHsv(target.hue, layer.saturation, layer.value, result);
  } else if (mode == 9) {
    FromHsv(layer.hue, target.saturation, layer.value, result);
  } else if (mode == 10) {
    FromTargetHueAndLayerLightness(s, result);
  } else if (mode == 11) {
    FromHsv(layer.hue, layer.saturation, target.value, result);
  } else {
    for (std::size_t c = 0; c < 3; ++c) result[c] = OneColor(mode, s[c], d[c]);
  }
  result[3] = std::min(s[3] + d[3], 255);
  return result;
}

Pixel SlowLayOnBackground(const Pixel& p, const Pixel& background) {
  Pixel result = p;
  for (std::size_t c = 0; c < 3; ++c) {
    const int color = static_cast<int>(p[c] * p[3] / 255.0) - p[3] + background[c];
    result[c] = color < 0 ? 0 : color > 255 ? 255 : color;
  }
  return result;
}

}  // namespace test_support
