#include "platform/metafile/mapping.h"

#include <algorithm>
#include <cmath>

namespace platform {
namespace {

// Millimetres of a logical unit in the modes that have a fixed one; 0 in the others.
double UnitOf(MapMode mode) {
  switch (mode) {
    case MapMode::kLowMetric:
      return 0.1;
    case MapMode::kHighMetric:
      return 0.01;
    case MapMode::kLowEnglish:
      return 0.254;
    case MapMode::kHighEnglish:
      return 0.0254;
    case MapMode::kTwips:
      return 25.4 / 1440;
    default:
      return 0;
  }
}

}  // namespace

Transform Mapping::Page(double perMmX, double perMmY) const {
  double xScale = 1;
  double yScale = 1;
  if (const double unit = UnitOf(mode); unit != 0) {
    xScale = unit * perMmX;
    yScale = -unit * perMmY;
  } else if (mode == MapMode::kIsotropic || mode == MapMode::kAnisotropic) {
    xScale = static_cast<double>(viewportExt.x) / (windowExt.x == 0 ? 1 : windowExt.x);
    yScale = static_cast<double>(viewportExt.y) / (windowExt.y == 0 ? 1 : windowExt.y);
    if (mode == MapMode::kIsotropic) {
      const double least = std::min(std::abs(xScale) / perMmX, std::abs(yScale) / perMmY);
      xScale = std::copysign(least * perMmX, xScale);
      yScale = std::copysign(least * perMmY, yScale);
    }
  }
  return {xScale, 0, 0, yScale, viewportOrg.x - xScale * windowOrg.x, viewportOrg.y - yScale * windowOrg.y};
}

void Mapping::ModifyWorld(const Transform& transform, std::uint32_t how) {
  switch (how) {
    case kSetIdentity:
      world = Transform();
      break;
    case kMultiplyBefore:
      world = Then(transform, world);
      break;
    case kMultiplyAfter:
      world = Then(world, transform);
      break;
    case kReplace:
      world = transform;
      break;
    default:
      break;
  }
}

std::int32_t ScaledExtent(std::int32_t extent, std::int32_t times, std::int32_t over) {
  if (times == 0 || over == 0) return extent;
  const std::int64_t scaled = std::int64_t{extent} * times / over;
  return scaled == 0 ? extent : static_cast<std::int32_t>(std::clamp<std::int64_t>(scaled, INT32_MIN, INT32_MAX));
}

}  // namespace platform
