#include "modules/qswf/values.h"

#include <algorithm>
#include <cmath>

namespace qswf {
namespace {

std::uint8_t Changed(std::uint8_t value, std::int32_t times, std::int32_t plus) {
  return static_cast<std::uint8_t>(std::clamp(value * times / 256 + plus, 0, 255));
}

double Fixed(BitReader& in, std::uint32_t bits) { return in.Signed(bits) / 65536.0; }

}  // namespace

Color ColorTransform::Apply(Color color) const {
  return {Changed(color.red, times[0], plus[0]), Changed(color.green, times[1], plus[1]),
          Changed(color.blue, times[2], plus[2]), Changed(color.alpha, times[3], plus[3])};
}

bool ColorTransform::ChangesNothing() const {
  return std::all_of(std::begin(times), std::end(times), [](std::int32_t value) { return value == 256; }) &&
         std::all_of(std::begin(plus), std::end(plus), [](std::int32_t value) { return value == 0; });
}

ColorTransform Then(const ColorTransform& inner, const ColorTransform& outer) {
  ColorTransform both;
  const auto limited = [](std::int32_t value) { return std::clamp(value, -32768, 32767); };
  for (int i = 0; i < 4; ++i) {
    both.times[i] = limited(inner.times[i] * outer.times[i] / 256);
    both.plus[i] = limited(inner.plus[i] * outer.times[i] / 256 + outer.plus[i]);
  }
  return both;
}

Rect ReadRect(BitReader& in) {
  in.Aligned();
  const std::uint32_t bits = in.Bits(5);
  Rect rect;
  rect.left = in.Signed(bits);
  rect.right = in.Signed(bits);
  rect.top = in.Signed(bits);
  rect.bottom = in.Signed(bits);
  return rect;
}

Transform ReadMatrix(BitReader& in) {
  in.Aligned();
  Transform matrix;
  if (in.Flag()) {
    const std::uint32_t bits = in.Bits(5);
    matrix.m11 = Fixed(in, bits);
    matrix.m22 = Fixed(in, bits);
  }
  if (in.Flag()) {
    const std::uint32_t bits = in.Bits(5);
    matrix.m12 = Fixed(in, bits);
    matrix.m21 = Fixed(in, bits);
  }
  const std::uint32_t bits = in.Bits(5);
  matrix.dx = in.Signed(bits);
  matrix.dy = in.Signed(bits);
  return matrix;
}

ColorTransform ReadColorTransform(BitReader& in, bool withAlpha) {
  in.Aligned();
  const bool adds = in.Flag();
  const bool multiplies = in.Flag();
  const std::uint32_t bits = in.Bits(4);
  const int count = withAlpha ? 4 : 3;
  ColorTransform transform;
  for (int i = 0; multiplies && i < count; ++i) transform.times[i] = in.Signed(bits);
  for (int i = 0; adds && i < count; ++i) transform.plus[i] = in.Signed(bits);
  return transform;
}

Color ReadColor(BitReader& in, bool withAlpha) {
  Color color;
  color.red = in.Byte();
  color.green = in.Byte();
  color.blue = in.Byte();
  if (withAlpha) color.alpha = in.Byte();
  return color;
}

bool Invert(const Transform& t, Transform& inverse) {
  const double determinant = t.m11 * t.m22 - t.m12 * t.m21;
  if (!(std::abs(determinant) > 1e-12)) return false;
  inverse.m11 = t.m22 / determinant;
  inverse.m12 = -t.m12 / determinant;
  inverse.m21 = -t.m21 / determinant;
  inverse.m22 = t.m11 / determinant;
  inverse.dx = -(t.dx * inverse.m11 + t.dy * inverse.m21);
  inverse.dy = -(t.dx * inverse.m12 + t.dy * inverse.m22);
  return true;
}

}  // namespace qswf
