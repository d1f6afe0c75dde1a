#include <algorithm>

#include "modules/helpers/metafile_player/limits.h"
#include "modules/helpers/metafile_player/playback.h"

// Clips and regions.

namespace metafile_player {

using platform::Record;

namespace {

constexpr Area kEverywhere{-kMaxCoordinate, -kMaxCoordinate, kMaxCoordinate, kMaxCoordinate};

std::shared_ptr<const ClipTerm> BoxOf(const Area& box) {
  auto term = std::make_shared<ClipTerm>();
  // Whole samples: the library clips to boxes on their edges at no cost.
  term->path.AddBox(box);
  term->box = box;
  term->isBox = true;
  return term;
}

// A path of figures that don't overlap, or whose overlaps count as outside, together with all around it.
std::shared_ptr<const ClipTerm> Outside(const ClipTerm& term) {
  auto outside = std::make_shared<ClipTerm>();
  outside->path.AddBox(kEverywhere);
  outside->path.Append(term.path);
  return outside;
}

std::shared_ptr<const ClipTerm> Joined(const ClipTerm& one, const ClipTerm& other, bool winding) {
  auto joined = std::make_shared<ClipTerm>();
  joined->path = one.path;
  joined->path.Append(other.path);
  joined->winding = winding;
  return joined;
}

void Intersect(Clip& clip, std::shared_ptr<const ClipTerm> term) {
  if (term->isBox && !clip.empty() && clip.back()->isBox) {
    Area common = CommonOf(clip.back()->box, term->box);
    if (common.Empty()) common = {};
    clip.back() = BoxOf(common);
    return;
  }
  if (clip.size() < kMaxClipTerms) clip.push_back(std::move(term));
}

}  // namespace

void Playback::ClipChanged() {
  Clip all = dc_.metaClip;
  all.insert(all.end(), dc_.clip.begin(), dc_.clip.end());
  canvas_.SetClip(std::move(all));
}

void Playback::Combine(std::shared_ptr<const ClipTerm> term, std::uint32_t mode) {
  Clip& clip = dc_.clip;
  switch (mode) {
    case platform::kRegionCopy:
      clip.assign(1, std::move(term));
      break;
    case platform::kRegionAnd:
      Intersect(clip, std::move(term));
      break;
    case platform::kRegionDiff:
      Intersect(clip, Outside(*term));
      break;
    case platform::kRegionOr:
      // Without a clip everything is inside already. Of several terms the last one is what grows.
      if (!clip.empty()) clip.back() = Joined(*clip.back(), *term, true);
      break;
    case platform::kRegionXor:
      if (clip.empty()) {
        clip.push_back(Outside(*term));
      } else {
        clip.back() = Joined(*clip.back(), *term, false);
      }
      break;
    default:
      return;
  }
  ClipChanged();
}

std::shared_ptr<const ClipTerm> Playback::BoxTerm(const Record& record, std::size_t at) const {
  const double left = record.SignedLong(at), top = record.SignedLong(at + 4);
  const double right = record.SignedLong(at + 8), bottom = record.SignedLong(at + 12);
  if (toSamples_.m12 == 0 && toSamples_.m21 == 0) {
    const Spot one = ToSamples(left, top);
    const Spot other = ToSamples(right, bottom);
    return BoxOf(
        {std::min(one.x, other.x), std::min(one.y, other.y), std::max(one.x, other.x), std::max(one.y, other.y)});
  }
  auto term = std::make_shared<ClipTerm>();
  term->path = PathOf(LogicalBox(left, top, right - left, bottom - top));
  return term;
}

bool Playback::PlayClip(const Record& record) {
  switch (record.Type()) {
    case platform::kEmrIntersectClipRect:
      Combine(BoxTerm(record, 8), platform::kRegionAnd);
      return true;
    case platform::kEmrExcludeClipRect:
      Combine(BoxTerm(record, 8), platform::kRegionDiff);
      return true;
    case platform::kEmrOffsetClipRgn: {
      const Spot origin = ToSamples(0, 0);
      const Spot moved = ToSamples(record.SignedLong(8), record.SignedLong(12));
      for (auto& term : dc_.clip) {
        auto copy = std::make_shared<ClipTerm>(*term);
        copy->path.Move(moved.x - origin.x, moved.y - origin.y);
        copy->box = copy->path.Extent();
        term = std::move(copy);
      }
      ClipChanged();
      return true;
    }
    case platform::kEmrSetMetaRgn:
      for (const auto& term : dc_.clip) Intersect(dc_.metaClip, term);
      dc_.clip.clear();
      ClipChanged();
      return true;
    case platform::kEmrExtSelectClipRgn: {
      const std::uint32_t mode = record.Long(12);
      if (record.Long(8) == 0) {
        if (mode != platform::kRegionCopy) return true;
        dc_.clip.clear();
        ClipChanged();
        return true;
      }
      std::optional<Path> region = ReadRegion(record, 16, record.Long(8), Units::kDevice);
      if (!region) return true;
      auto term = std::make_shared<ClipTerm>();
      term->path = std::move(*region);
      term->winding = true;
      Combine(std::move(term), mode);
      return true;
    }
    default:
      return false;
  }
}

std::optional<Path> Playback::ReadRegion(const Record& record, std::size_t at, std::size_t bytes, Units units) const {
  constexpr std::size_t kHeadBytes = 32;
  constexpr std::size_t kBoxBytes = 16;
  const auto part = record.Part(at, bytes);
  if (part.size() < kHeadBytes) return {};
  const Record region(part);
  const std::size_t boxes = region.Long(8);
  if (boxes > kMaxRegionBoxes || boxes > region.Room(kHeadBytes, kBoxBytes)) return {};
  const platform::Transform& map = units == Units::kDevice ? placement_.deviceToSamples : toSamples_;
  Path path;
  for (std::size_t i = 0; i < boxes; ++i) {
    const std::size_t box = kHeadBytes + kBoxBytes * i;
    const double left = region.SignedLong(box), top = region.SignedLong(box + 4);
    const double right = region.SignedLong(box + 8), bottom = region.SignedLong(box + 12);
    path.MoveTo({map.X(left, top), map.Y(left, top)});
    path.LineTo({map.X(right, top), map.Y(right, top)});
    path.LineTo({map.X(right, bottom), map.Y(right, bottom)});
    path.LineTo({map.X(left, bottom), map.Y(left, bottom)});
    path.Close();
  }
  // A region of no boxes is nowhere, which is not the same as none.
  if (boxes == 0) path.AddBox({});
  return path;
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
  const std::optional<Path> region = ReadRegion(record, regionAt, record.Long(24), Units::kLogical);
  if (!region || brush == nullptr) return true;
  if (type == platform::kEmrInvertRgn) {
    canvas_.Combine(*region, {}, nullptr, platform::kTargetInvert >> 16);
  } else if (type == platform::kEmrFrameRgn) {
    if (brush->IsNull()) return true;
    Pattern owner;
    Stroke stroke;
    stroke.width = std::max<double>(kSamples, record.SignedLong(32) * Scale());
    canvas_.Line(*region, stroke, PaintOf(*brush, owner), dc_.rop2);
  } else {
    FillWith(*region, brush, true);
  }
  return true;
}

}  // namespace metafile_player
