#ifndef MODULES_HELPERS_METAFILE_PLAYER_CLIP_H_
#define MODULES_HELPERS_METAFILE_PLAYER_CLIP_H_

#include <cairo.h>

#include <cstdint>
#include <memory>
#include <span>

#include "modules/helpers/metafile_player/path.h"

namespace metafile_player {

// Whole samples, as the library's sets of boxes. As a clip, null is everything.
//
// Figures become boxes too, row by row: the library would cut each figure that is drawn at each edge of a clip, which
// takes the product of both.
using Region = std::shared_ptr<const cairo_region_t>;

Region RegionOf(std::span<const Area> boxes);  // all of them together
// What a path covers of a tile of this size.
Region RegionOf(const Path& path, bool winding, std::int32_t width, std::int32_t height);

// `mode` is one of platform::RegionMode; others change nothing, and neither does what would make too many boxes.
Region Combined(const Region& before, const Region& with, std::uint32_t mode);
Region Moved(const Region& region, double dx, double dy);
// What of a region lies nearer to its edge than so many samples. Null if there are too many boxes.
Region RimOf(const Region& region, std::int32_t width, std::int32_t height);

int BoxCount(const Region& region);
Path PathOf(const Region& region);

}  // namespace metafile_player

#endif  // MODULES_HELPERS_METAFILE_PLAYER_CLIP_H_
