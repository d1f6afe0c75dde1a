#include "modules/qswf/fill_raster.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace qswf {
namespace {

constexpr double kTwips = 20.0;
constexpr double kGradientReach = 16384.0;  // of a gradient's square, each way
constexpr std::size_t kRamp = 256;

using Ramp = std::array<std::uint32_t, kRamp>;

std::uint8_t Between(std::uint8_t from, std::uint8_t to, double part) {
  return static_cast<std::uint8_t>(std::lround(from + (to - from) * part));
}

double Light(std::uint8_t value) {
  const double part = value / 255.0;
  return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
}

std::uint8_t BetweenLights(std::uint8_t from, std::uint8_t to, double part) {
  const double light = Light(from) + (Light(to) - Light(from)) * part;
  const double value = light <= 0.0031308 ? light * 12.92 : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
  return static_cast<std::uint8_t>(std::lround(std::clamp(value, 0.0, 1.0) * 255));
}

Color ColorAt(const FillStyle& fill, std::uint32_t ratio) {
  const auto& stops = fill.stops;
  std::size_t next = 0;
  while (next < stops.size() && stops[next].ratio < ratio) ++next;
  if (next == 0) return stops.front().color;
  if (next == stops.size()) return stops.back().color;
  const GradientStop& a = stops[next - 1];
  const GradientStop& b = stops[next];
  const double part = static_cast<double>(ratio - a.ratio) / (b.ratio - a.ratio);
  const auto mix = fill.linearLight ? BetweenLights : Between;
  return {mix(a.color.red, b.color.red, part), mix(a.color.green, b.color.green, part),
          mix(a.color.blue, b.color.blue, part), Between(a.color.alpha, b.color.alpha, part)};
}

Ramp MakeRamp(const FillStyle& fill, const ColorTransform& colors) {
  Ramp ramp;
  for (std::uint32_t i = 0; i < kRamp; ++i) ramp[i] = MultipliedWord(colors.Apply(ColorAt(fill, i)));
  return ramp;
}

std::size_t RampIndex(double at, std::uint32_t spread) {
  if (spread == 1) {
    at = std::abs(std::remainder(at, 2.0));
  } else if (spread == 2) {
    at -= std::floor(at);
  }
  return static_cast<std::size_t>(std::clamp(at, 0.0, 1.0) * (kRamp - 1) + 0.5);
}

// Where between the focus and the circle a point lies.
double RadialPlace(double x, double y, double focus) {
  if (focus == 0) return std::hypot(x, y);
  // The ray from the focus through the point meets the circle at `reach` times its length.
  const double dx = x - focus;
  const double a = dx * dx + y * y;
  if (a < 1e-12) return 0;
  const double b = focus * dx;
  const double c = focus * focus - 1;
  return a / (-b + std::sqrt(std::max(b * b - a * c, 0.0)));
}

// Colours of a bitmap at places between its pixels.
class Sampler {
 public:
  Sampler(const modules::Picture& picture, const FillStyle& fill, const ColorTransform& colors)
      : picture_(picture),
        repeats_(fill.repeats),
        smooth_(fill.smooth),
        colors_(colors),
        plain_(colors.ChangesNothing()) {}

  // Adds the multiplied colour at a place to blue, green, red, alpha.
  void Add(double x, double y, double weight, double (&sum)[4]) const {
    if (!smooth_) return AddPixel(std::floor(x), std::floor(y), weight, sum);
    const double left = std::floor(x - 0.5);
    const double top = std::floor(y - 0.5);
    const double right = x - 0.5 - left;
    const double down = y - 0.5 - top;
    AddPixel(left, top, weight * (1 - right) * (1 - down), sum);
    AddPixel(left + 1, top, weight * right * (1 - down), sum);
    AddPixel(left, top + 1, weight * (1 - right) * down, sum);
    AddPixel(left + 1, top + 1, weight * right * down, sum);
  }

 private:
  std::uint32_t Place(double at, std::uint32_t size) const {
    const double length = size;
    if (repeats_) at -= std::floor(at / length) * length;
    return static_cast<std::uint32_t>(std::clamp(at, 0.0, length - 1));
  }

  void AddPixel(double x, double y, double weight, double (&sum)[4]) const {
    if (weight == 0) return;
    const std::uint32_t column = Place(x, picture_.width);
    const std::uint8_t* row = picture_.Row(Place(y, picture_.height));
    Color color;
    if (picture_.bits == 8) {
      const std::uint32_t word = picture_.palette[row[column]];
      color = {static_cast<std::uint8_t>(word >> 16), static_cast<std::uint8_t>(word >> 8),
               static_cast<std::uint8_t>(word), static_cast<std::uint8_t>(word >> 24)};
    } else {
      const std::uint8_t* pixel = row + std::size_t{column} * (picture_.bits / 8);
      color = {pixel[2], pixel[1], pixel[0], picture_.bits == 32 ? pixel[3] : std::uint8_t{255}};
    }
    if (!plain_) color = colors_.Apply(color);
    const double multiplied = weight * color.alpha / 255.0;
    sum[0] += multiplied * color.blue;
    sum[1] += multiplied * color.green;
    sum[2] += multiplied * color.red;
    sum[3] += weight * color.alpha;
  }

  const modules::Picture& picture_;
  bool repeats_;
  bool smooth_;
  ColorTransform colors_;
  bool plain_;
};

void PaintBitmap(const Sampler& sampler, const Transform& toBitmap, std::int32_t left, std::int32_t top,
                 modules::Picture& target) {
  // Where many pixels of the bitmap fall on one of the stage, as many samples are averaged.
  const double shrink = std::max(std::hypot(toBitmap.m11, toBitmap.m12), std::hypot(toBitmap.m21, toBitmap.m22));
  const int samples = std::clamp(static_cast<int>(std::lround(shrink * kTwips)), 1, 8);
  for (std::uint32_t y = 0; y < target.height; ++y) {
    std::uint8_t* to = target.Row(y);
    for (std::uint32_t x = 0; x < target.width; ++x, to += 4) {
      double sum[4] = {};
      for (int i = 0; i < samples * samples; ++i) {
        const double stageX = (left + static_cast<double>(x) + (i % samples + 0.5) / samples) * kTwips;
        const double stageY = (top + static_cast<double>(y) + (i / samples + 0.5) / samples) * kTwips;
        sampler.Add(toBitmap.X(stageX, stageY), toBitmap.Y(stageX, stageY), 1.0 / (samples * samples), sum);
      }
      for (int i = 0; i < 4; ++i) to[i] = static_cast<std::uint8_t>(std::clamp(sum[i] + 0.5, 0.0, 255.0));
    }
  }
}

// Bitmaps whose alpha is 0 everywhere count as opaque where they are drawn.
bool ShowsAnything(const modules::Picture& picture) {
  for (std::size_t i = 3; i < picture.rows.size(); i += 4) {
    if (picture.rows[i] != 0) return true;
  }
  return false;
}

}  // namespace

std::uint32_t MultipliedWord(Color color) {
  const auto times = [&](std::uint8_t value) { return (std::uint32_t{value} * color.alpha + 127) / 255; };
  return static_cast<std::uint32_t>(color.alpha) << 24 | times(color.red) << 16 | times(color.green) << 8 |
         times(color.blue);
}

bool PaintFill(const FillStyle& fill, const Transform& toStage, const ColorTransform& colors,
               const modules::Picture* bitmap, std::int32_t left, std::int32_t top, modules::Picture& target) {
  Transform back;
  if (!Invert(platform::Then(fill.matrix, toStage), back)) return false;
  if (fill.kind == FillStyle::Kind::kBitmap) {
    if (bitmap == nullptr) return false;
    PaintBitmap(Sampler(*bitmap, fill, colors), back, left, top, target);
    return ShowsAnything(target);
  }
  if (fill.stops.empty()) return false;
  const Ramp ramp = MakeRamp(fill, colors);
  for (std::uint32_t y = 0; y < target.height; ++y) {
    std::uint8_t* row = target.Row(y);
    for (std::uint32_t x = 0; x < target.width; ++x) {
      const double stageX = (left + static_cast<double>(x) + 0.5) * kTwips;
      const double stageY = (top + static_cast<double>(y) + 0.5) * kTwips;
      const double u = back.X(stageX, stageY) / kGradientReach;
      const double v = back.Y(stageX, stageY) / kGradientReach;
      const double at = fill.kind == FillStyle::Kind::kLinear ? (u + 1) / 2 : RadialPlace(u, v, fill.focus);
      std::memcpy(row + std::size_t{4} * x, &ramp[RampIndex(at, fill.spread)], 4);
    }
  }
  return ShowsAnything(target);
}

}  // namespace qswf
