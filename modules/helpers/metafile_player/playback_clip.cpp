#include <algorithm>
#include <array>
#include <cmath>

#include "modules/helpers/metafile_player/limits.h"
#include "modules/helpers/metafile_player/playback.h"

// Clips and regions.

namespace metafile_player {

using platform::Record;

namespace {

bool Upright(const platform::Transform& map) { return map.m12 == 0 && map.m21 == 0; }

}  // namespace

void Playback::ClipChanged() {
  canvas_.SetClip(dc_.metaClip == nullptr || dc_.clip == nullptr
                      ? (dc_.clip == nullptr ? dc_.metaClip : dc_.clip)
                      : Combined(dc_.metaClip, dc_.clip, platform::kRegionAnd));
}

void Playback::Combine(const Region& region, std::uint32_t mode) {
  constexpr std::uint64_t kBoxWork = 1000;
  dc_.clip = Combined(dc_.clip, region, mode);
  if (dc_.clip != nullptr) canvas_.Spend(kBoxWork * static_cast<std::uint64_t>(1 + BoxCount(dc_.clip)));
  ClipChanged();
}

Region Playback::RegionOfPath(const Path& path, bool winding) {
  canvas_.Spend(static_cast<std::uint64_t>(canvas_.Width()) * static_cast<std::uint64_t>(canvas_.Height()));
  return RegionOf(path, winding, canvas_.Width(), canvas_.Height());
}

Region Playback::RegionOfBoxes(std::span<const Area> boxes, const platform::Transform& map) {
  if (!Upright(map)) return RegionOfPath(PathOfBoxes(boxes, map), true);
  std::vector<Area> mapped;
  for (const Area& box : boxes) {
    const Spot one{map.X(box.left, box.top), map.Y(box.left, box.top)};
    const Spot other{map.X(box.right, box.bottom), map.Y(box.right, box.bottom)};
    mapped.push_back(
        {std::min(one.x, other.x), std::min(one.y, other.y), std::max(one.x, other.x), std::max(one.y, other.y)});
  }
  return RegionOf(mapped);
}

Path Playback::PathOfBoxes(std::span<const Area> boxes, const platform::Transform& map) {
  Path path;
  const auto spot = [&](double x, double y) -> Spot { return {map.X(x, y), map.Y(x, y)}; };
  for (const Area& box : boxes) {
    path.MoveTo(spot(box.left, box.top));
    path.LineTo(spot(box.right, box.top));
    path.LineTo(spot(box.right, box.bottom));
    path.LineTo(spot(box.left, box.bottom));
    path.Close();
  }
  return path;
}

bool Playback::PlayClip(const Record& record) {
  switch (record.Type()) {
    case platform::kEmrIntersectClipRect:
      Combine(RegionOfBoxes(std::array{BoxAt(record, 8)}, toSamples_), platform::kRegionAnd);
      return true;
    case platform::kEmrExcludeClipRect:
      Combine(RegionOfBoxes(std::array{BoxAt(record, 8)}, toSamples_), platform::kRegionDiff);
      return true;
    case platform::kEmrOffsetClipRgn: {
      const Spot origin = ToSamples(0, 0);
      const Spot moved = ToSamples(record.SignedLong(8), record.SignedLong(12));
      if (dc_.clip != nullptr) dc_.clip = Moved(dc_.clip, moved.x - origin.x, moved.y - origin.y);
      ClipChanged();
      return true;
    }
    case platform::kEmrSetMetaRgn:
      if (dc_.clip != nullptr) dc_.metaClip = Combined(dc_.metaClip, dc_.clip, platform::kRegionAnd);
      dc_.clip = nullptr;
      ClipChanged();
      return true;
    case platform::kEmrExtSelectClipRgn: {
      const std::uint32_t mode = record.Long(12);
      if (record.Long(8) == 0) {
        if (mode != platform::kRegionCopy) return true;
        dc_.clip = nullptr;
        ClipChanged();
        return true;
      }
      if (auto boxes = ReadRegion(record, 16, record.Long(8))) {
        Combine(RegionOfBoxes(*boxes, placement_.deviceToSamples), mode);
      }
      return true;
    }
    default:
      return false;
  }
}

std::optional<std::vector<Area>> Playback::ReadRegion(const Record& record, std::size_t at, std::size_t bytes) {
  constexpr std::size_t kHeadBytes = 32;
  constexpr std::size_t kBoxBytes = 16;
  const auto part = record.Part(at, bytes);
  if (part.size() < kHeadBytes) return {};
  const Record region(part);
  const std::size_t count = region.Long(8);
  if (count > kMaxRegionBoxes || count > region.Room(kHeadBytes, kBoxBytes)) return {};
  std::vector<Area> boxes;
  for (std::size_t i = 0; i < count; ++i) boxes.push_back(BoxAt(region, kHeadBytes + kBoxBytes * i));
  return boxes;
}

bool Playback::PlayRegion(const Record& record) {
  const std::uint32_t type = record.Type();
  const auto brushAt = [&](std::size_t at) -> BrushHandle {
    const std::uint32_t handle = record.Long(at);
    const Object object = (handle & platform::kStockObject) != 0 ? StockObjectOf(handle)
                          : handle < objects_.size()             ? objects_[handle]
                                                                 : Object();
    const auto* brush = std::get_if<BrushHandle>(&object);
    return brush == nullptr ? nullptr : *brush;
  };
  std::size_t regionAt = 0;
  BrushHandle brush = dc_.brush;
  switch (type) {
    case platform::kEmrFillRgn:
      brush = brushAt(28);
      regionAt = 32;
      break;
    case platform::kEmrFrameRgn:
      brush = brushAt(28);
      regionAt = 40;
      break;
    case platform::kEmrInvertRgn:
    case platform::kEmrPaintRgn:
      regionAt = 28;
      break;
    default:
      return false;
  }
  const auto boxes = ReadRegion(record, regionAt, record.Long(24));
  if (!boxes || brush == nullptr) return true;
  const Path area = PathOfBoxes(*boxes, toSamples_);
  if (type == platform::kEmrInvertRgn) {
    canvas_.Combine(area, {}, nullptr, platform::kTargetInvert >> 16);
    return true;
  }
  if (type != platform::kEmrFrameRgn) {
    FillWith(area, brush, true);
    return true;
  }
  const auto samples = [](double units) {
    return static_cast<std::int32_t>(std::clamp<double>(std::round(std::abs(units)), kSamples, kMaxCoordinate));
  };
  const Region rim = Upright(toSamples_)
                         ? RimOf(RegionOfBoxes(*boxes, toSamples_), samples(toSamples_.m11 * record.SignedLong(32)),
                                 samples(toSamples_.m22 * record.SignedLong(36)))
                         : nullptr;
  if (rim != nullptr) {
    FillWith(metafile_player::PathOf(rim), brush, true);
  } else if (!brush->IsNull()) {
    Pattern owner;
    Stroke stroke;
    stroke.width = std::max<double>(kSamples, std::abs(record.SignedLong(32)) * Scale());
    canvas_.Line(area, stroke, PaintOf(*brush, owner), dc_.rop2);
  }
  return true;
}

}  // namespace metafile_player
