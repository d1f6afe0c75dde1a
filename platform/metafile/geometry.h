#ifndef PLATFORM_METAFILE_GEOMETRY_H_
#define PLATFORM_METAFILE_GEOMETRY_H_

#include <cstdint>

namespace platform {

struct Point {
  std::int32_t x = 0;
  std::int32_t y = 0;
};

// Right and bottom lie outside, unless a user says otherwise.
struct Box {
  std::int32_t left = 0;
  std::int32_t top = 0;
  std::int32_t right = 0;
  std::int32_t bottom = 0;
};

// x' = m11 x + m21 y + dx, y' = m12 x + m22 y + dy: the order of the records.
struct Transform {
  double m11 = 1.0;
  double m12 = 0.0;
  double m21 = 0.0;
  double m22 = 1.0;
  double dx = 0.0;
  double dy = 0.0;

  double X(double x, double y) const { return m11 * x + m21 * y + dx; }
  double Y(double x, double y) const { return m12 * x + m22 * y + dy; }
};

// First `first`, then `second`.
inline Transform Then(const Transform& first, const Transform& second) {
  return {second.m11 * first.m11 + second.m21 * first.m12,
          second.m12 * first.m11 + second.m22 * first.m12,
          second.m11 * first.m21 + second.m21 * first.m22,
          second.m12 * first.m21 + second.m22 * first.m22,
          second.X(first.dx, first.dy),
          second.Y(first.dx, first.dy)};
}

}  // namespace platform

#endif  // PLATFORM_METAFILE_GEOMETRY_H_
