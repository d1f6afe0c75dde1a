#ifndef PLATFORM_METAFILE_MAPPING_H_
#define PLATFORM_METAFILE_MAPPING_H_

#include "platform/metafile/geometry.h"
#include "platform/metafile/records.h"

namespace platform {

// How logical points come to lie on the device on which a metafile was recorded.
struct Mapping {
  MapMode mode = MapMode::kText;
  Point windowOrg, viewportOrg;
  Point windowExt{1, 1}, viewportExt{1, 1};
  Transform world;

  // `perMmX`, `perMmY`: units of the device to a millimetre.
  Transform Page(double perMmX, double perMmY) const;
  Transform ToDevice(double perMmX, double perMmY) const { return Then(world, Page(perMmX, perMmY)); }

  void ModifyWorld(const Transform& transform, std::uint32_t how);
};

// `extent` times a fraction; a fraction that is none leaves it.
std::int32_t ScaledExtent(std::int32_t extent, std::int32_t times, std::int32_t over);

}  // namespace platform

#endif  // PLATFORM_METAFILE_MAPPING_H_
