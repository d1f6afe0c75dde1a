#include "tests/support/slow_geometry.h"

#include <cmath>
#include <cstring>

#include "tests/support/random_raster.h"

namespace test_support {
namespace {

std::uint32_t Word(const Channels& channels) {
  std::uint32_t word;
  std::memcpy(&word, channels.value, sizeof(word));
  return word;
}

Words RightAngle(const glib::RasterView& source, int angle) {
  Words result;
  const bool upright = angle % 180 == 0;
  result.width = upright ? source.width : source.height;
  result.height = upright ? source.height : source.width;
  result.pixels.resize(static_cast<std::size_t>(result.width * result.height));
  for (int y = 0; y < source.height; ++y) {
    for (int x = 0; x < source.width; ++x) {
      int tx = x;
      int ty = y;
      if (angle == 90) tx = source.height - 1 - y, ty = x;
      if (angle == 180) tx = source.width - 1 - x, ty = source.height - 1 - y;
      if (angle == 270) tx = y, ty = source.width - 1 - x;
      result.pixels[static_cast<std::size_t>(ty * result.width + tx)] = Word(PixelAt(source, x, y));
    }
  }
  return result;
}

std::uint32_t Mixed(const glib::RasterView& source, double fx, double fy, std::uint32_t background) {
  const int ix = static_cast<int>(fx);
  const int iy = static_cast<int>(fy);
  if (ix < 0 || iy < 0 || ix >= source.width || iy >= source.height) return background;
  if (ix == source.width - 1 || iy == source.height - 1) return Word(PixelAt(source, ix, iy));
  const double dx = fx - ix;
  const double dy = fy - iy;
  Channels result;
  for (int c = 0; c < 4; ++c) {
    const auto p = [&](int x, int y) { return static_cast<double>(PixelAt(source, ix + x, iy + y).value[c]); };
    const double value = (p(0, 1) * (1 - dx) + p(1, 1) * dx) * dy + (p(0, 0) * (1 - dx) + p(1, 0) * dx) * (1 - dy);
    const int whole = static_cast<int>(value);
    result.value[c] = static_cast<std::uint8_t>(whole < 0 ? 0 : whole > 255 ? 255 : whole);
  }
  return Word(result);
}

}  // namespace

Words SlowRotate(const glib::RasterView& source, double angle, bool interpolate, std::uint32_t background) {
  while (angle < 0) angle += 360;
  while (angle >= 360) angle -= 360;
  for (const int right : {0, 90, 180, 270}) {
    if (angle == right) return RightAngle(source, right);
  }
  const double pi = std::acos(-1.0);
  const double acute = angle < 90 ? angle : angle < 180 ? 180 - angle : angle < 270 ? angle - 180 : 360 - angle;
  const double c = std::cos(acute * pi / 180);
  const double s = std::sin(acute * pi / 180);
  Words result;
  result.width = static_cast<int>(source.height * s + source.width * c + 0.5);
  result.height = static_cast<int>(source.width * s + source.height * c + 0.5);
  const double radians = (-pi * angle) * 0.005555555555555556;
  const double cosA = std::cos(radians);
  const double sinA = std::sin(radians);
  const int cx = source.width / 2;
  const int cy = source.height / 2;
  for (int y = 0; y < result.height; ++y) {
    for (int x = 0; x < result.width; ++x) {
      const double xx = x - result.width / 2;
      const double yy = y - result.height / 2;
      if (interpolate) {
        result.pixels.push_back(Mixed(source, xx * cosA - yy * sinA + cx, xx * sinA + yy * cosA + cy, background));
        continue;
      }
      const int sx = static_cast<int>(xx * cosA - yy * sinA) + cx;
      const int sy = static_cast<int>(xx * sinA + yy * cosA) + cy;
      const bool inside = sx >= 0 && sy >= 0 && sx < source.width && sy < source.height;
      result.pixels.push_back(inside ? Word(PixelAt(source, sx, sy)) : background);
    }
  }
  return result;
}

std::uint32_t ValueAt(const glib::RasterView& raster, std::int32_t x, std::int32_t y) {
  return raster.bits <= 8 ? IndexAt(raster, x, y) : Word(PixelAt(raster, x, y));
}

std::vector<std::uint32_t> SlowMirror(const glib::RasterView& source, bool horizontal, bool vertical) {
  if (source.bits < 8 && horizontal) vertical = false;
  std::vector<std::uint32_t> values;
  for (int y = 0; y < source.height; ++y) {
    for (int x = 0; x < source.width; ++x) {
      values.push_back(ValueAt(source, vertical ? source.width - 1 - x : x, horizontal ? source.height - 1 - y : y));
    }
  }
  return values;
}

}  // namespace test_support
