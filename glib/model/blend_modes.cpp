#include "glib/model/blend_modes.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>

#include "glib/model/hue_parts.h"

namespace glib {
namespace {

constexpr int kColors = 3;
constexpr int kAlpha = 3;

std::uint8_t Byte(int value) { return static_cast<std::uint8_t>(value); }

// A division by 255, rounded to nearest by the 128 in `value`.
int Rounded255(int value) { return (value + (value >> 8)) >> 8; }

// Calls combine(target bytes, source bytes) for every pixel.
template <typename Combine>
void ForPixels(std::uint32_t* target, const std::uint32_t* source, std::size_t count, Combine combine) {
  auto* d = reinterpret_cast<std::uint8_t*>(target);
  auto* s = reinterpret_cast<const std::uint8_t*>(source);
  for (std::size_t i = 0; i < count; ++i, d += 4, s += 4) combine(d, s);
}

void AddAlpha(std::uint8_t* d, const std::uint8_t* s) { d[kAlpha] = Byte(std::min(d[kAlpha] + s[kAlpha], 255)); }

// One colour from the same colour of layer and target.
int Multiply(int s, int d) { return Rounded255(s * d + 128); }
int Screen(int s, int d) { return 255 - Rounded255((255 - s) * (255 - d) + 128); }
int SoftLight(int s, int d) { return Rounded255((Rounded255((255 - s) * d * 2 + 128) + s) * s + 128); }
int Lighter(int s, int d) { return std::max(s, d); }
int Darker(int s, int d) { return std::min(s, d); }
int Difference(int s, int d) { return std::abs(s - d); }
int Add(int s, int d) { return std::min(s + d, 255); }
int Subtract(int s, int d) { return std::max(s - d, 0); }
int Divide(int s, int d) { return std::min(s * 256 / (d + 1), 255); }

template <int (*Color)(int, int)>
void ColorsRow(std::uint32_t* target, const std::uint32_t* source, std::size_t count) {
  ForPixels(target, source, count, [](std::uint8_t* d, const std::uint8_t* s) {
    for (int c = 0; c < kColors; ++c) d[c] = Byte(Color(s[c], d[c]));
    AddAlpha(d, s);
  });
}

void DissolveRow(std::uint32_t* target, const std::uint32_t* source, std::size_t count) {
  std::srand(static_cast<unsigned>(std::time(nullptr)));
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint32_t pixel = source[i];
    const auto chance = static_cast<std::uint32_t>(std::rand()) & 255;
    target[i] = chance > pixel >> 24 ? pixel & 0xFFFFFFU : pixel;
  }
}

// One pixel's colours from those of layer and target through hue and its companions.
template <void (*Parts)(std::uint8_t*, const std::uint8_t*)>
void PartsRow(std::uint32_t* target, const std::uint32_t* source, std::size_t count) {
  ForPixels(target, source, count, [](std::uint8_t* d, const std::uint8_t* s) {
    Parts(d, s);
    AddAlpha(d, s);
  });
}

void ColorParts(std::uint8_t* d, const std::uint8_t* s) {
  const HueParts layer = ToHueValue(s);
  FromHueValue({ToHueValue(d).hue, layer.saturation, layer.light}, d);
}

void SaturationParts(std::uint8_t* d, const std::uint8_t* s) {
  const HueParts layer = ToHueValue(s);
  FromHueValue({layer.hue, ToHueValue(d).saturation, layer.light}, d);
}

void LightnessParts(std::uint8_t* d, const std::uint8_t* s) {
  const HueParts below = ToHueLightness(d);
  FromHueLightness({below.hue, below.saturation, ToHueLightness(s).light}, d);
}

void ValueParts(std::uint8_t* d, const std::uint8_t* s) {
  const HueParts layer = ToHueValue(s);
  FromHueValue({layer.hue, layer.saturation, ToHueValue(d).light}, d);
}

void InvertRow(std::uint32_t* target, const std::uint32_t* source, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    if (source[i] >> 24 != 0) target[i] = ~target[i] | 0xFF000000U;
  }
}

}  // namespace

BlendRow BlendRowOf(std::int32_t mode) {
  switch (static_cast<BlendMode>(mode)) {
    case BlendMode::kPlain:
      return nullptr;
    case BlendMode::kDissolve:
      return DissolveRow;
    case BlendMode::kMultiply:
      return ColorsRow<Multiply>;
    case BlendMode::kScreen:
      return ColorsRow<Screen>;
    case BlendMode::kSoftLight:
      return ColorsRow<SoftLight>;
    case BlendMode::kLighter:
      return ColorsRow<Lighter>;
    case BlendMode::kDarker:
      return ColorsRow<Darker>;
    case BlendMode::kDifference:
      return ColorsRow<Difference>;
    case BlendMode::kColor:
      return PartsRow<ColorParts>;
    case BlendMode::kSaturation:
      return PartsRow<SaturationParts>;
    case BlendMode::kLightness:
      return PartsRow<LightnessParts>;
    case BlendMode::kValue:
      return PartsRow<ValueParts>;
    case BlendMode::kAdd:
      return ColorsRow<Add>;
    case BlendMode::kSubtract:
      return ColorsRow<Subtract>;
    case BlendMode::kDivide:
      return ColorsRow<Divide>;
    case BlendMode::kInvert:
      return InvertRow;
  }
  return nullptr;
}

}  // namespace glib
