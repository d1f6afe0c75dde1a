#include "modules/helpers/metafile_player/playback.h"

#include <algorithm>
#include <cmath>

#include "modules/helpers/metafile_player/limits.h"

namespace metafile_player {

using platform::Record;

namespace {}  // namespace

platform::Transform Playback::ReadTransform(const Record& record, std::size_t at) {
  platform::Transform transform;
  double* const parts[] = {&transform.m11, &transform.m12, &transform.m21,
                           &transform.m22, &transform.dx,  &transform.dy};
  for (std::size_t i = 0; i < std::size(parts); ++i) {
    *parts[i] = record.Float(at + 4 * i);
    if (!std::isfinite(*parts[i])) return {};
  }
  return transform;
}

namespace {

// Of the bitmap of a pattern, as BitmapPlace says.
constexpr std::size_t kPenUsage = 44, kPenPlaces = 12;
constexpr std::size_t kBrushUsage = 12, kBrushPlaces = 16;

template <typename Handle>
Handle Stock(std::uint32_t handle) {
  return std::get<Handle>(StockObjectOf(handle));
}

}  // namespace

Playback::Playback(Canvas& canvas, Shared& shared, const Placement& placement)
    : canvas_(canvas), shared_(shared), placement_(placement) {
  dc_.pen = Stock<PenHandle>(platform::kBlackPen);
  dc_.brush = Stock<BrushHandle>(platform::kWhiteBrush);
  dc_.font = Stock<FontHandle>(platform::kFirstStockFont + 3);
  dc_.palette = Stock<PaletteHandle>(platform::kDefaultPalette);
  objects_.resize(std::clamp<std::size_t>(placement.handleCount, 1, kMaxHandles));
  MappingChanged();
}

void Playback::Play(const Record& record) {
  // Most frequent kinds first.
  PlayObject(record) || PlayPoints(record) || PlayText(record) || PlayState(record) || PlayMapping(record) ||
      PlayShape(record) || PlayClip(record) || PlayPath(record) || PlayBitmap(record) || PlayRegion(record);
}

bool Playback::PlayState(const Record& record) {
  const std::uint32_t value = record.Long(8);
  switch (record.Type()) {
    case platform::kEmrSetBkMode:
      dc_.bkMode = value;
      return true;
    case platform::kEmrSetBkColor:
      dc_.bkColor = ColorOf(value);
      return true;
    case platform::kEmrSetTextColor:
      dc_.textColor = ColorOf(value);
      return true;
    case platform::kEmrSetTextAlign:
      dc_.textAlign = value;
      return true;
    case platform::kEmrSetTextJustification:
      dc_.breakExtra = record.SignedLong(8);
      dc_.breakCount = record.SignedLong(12);
      return true;
    case platform::kEmrSetPolyFillMode:
      dc_.polyFillMode = value;
      return true;
    case platform::kEmrSetRop2:
      if (value >= 1 && value <= 16) dc_.rop2 = value;
      return true;
    case platform::kEmrSetArcDirection:
      dc_.arcDirection = value;
      return true;
    case platform::kEmrSetMiterLimit: {
      const double limit = record.Float(8);
      // Some writers store a whole number in place of the fraction; its bits then read as next to nothing.
      if (limit >= 1 && limit < 1e6) dc_.miterLimit = limit;
      return true;
    }
    case platform::kEmrSetBrushOrg:
      dc_.brushOrg = {record.SignedLong(8), record.SignedLong(12)};
      return true;
    case platform::kEmrSaveDc:
      SaveState();
      return true;
    case platform::kEmrRestoreDc:
      RestoreState(record.SignedLong(8));
      return true;
    default:
      return false;
  }
}

void Playback::SaveState() {
  if (saved_.size() < kMaxSavedStates) saved_.push_back(dc_);
}

// Below 0: so many states back; above 0: the state of that number.
void Playback::RestoreState(std::int32_t which) {
  const auto depth = static_cast<std::int64_t>(saved_.size());
  const std::int64_t index = which < 0 ? depth + which : std::int64_t{which} - 1;
  if (which == 0 || index < 0 || index >= depth) return;
  dc_ = std::move(saved_[static_cast<std::size_t>(index)]);
  saved_.resize(static_cast<std::size_t>(index));
  MappingChanged();
  ClipChanged();
}

bool Playback::PlayMapping(const Record& record) {
  platform::Mapping& mapping = dc_.mapping;
  const platform::Point point{record.SignedLong(8), record.SignedLong(12)};
  switch (record.Type()) {
    case platform::kEmrSetMapMode:
      if (record.Long(8) >= 1 && record.Long(8) <= 8) mapping.mode = static_cast<platform::MapMode>(record.Long(8));
      break;
    case platform::kEmrSetWindowOrg:
      mapping.windowOrg = point;
      break;
    case platform::kEmrSetWindowExt:
      mapping.windowExt = point;
      break;
    case platform::kEmrSetViewportOrg:
      mapping.viewportOrg = point;
      break;
    case platform::kEmrSetViewportExt:
      mapping.viewportExt = point;
      break;
    case platform::kEmrScaleWindowExt:
    case platform::kEmrScaleViewportExt: {
      platform::Point& extent = record.Type() == platform::kEmrScaleWindowExt ? mapping.windowExt : mapping.viewportExt;
      extent.x = platform::ScaledExtent(extent.x, record.SignedLong(8), record.SignedLong(12));
      extent.y = platform::ScaledExtent(extent.y, record.SignedLong(16), record.SignedLong(20));
      break;
    }
    case platform::kEmrSetWorldTransform:
      mapping.world = ReadTransform(record, 8);
      break;
    case platform::kEmrModifyWorldTransform:
      mapping.ModifyWorld(ReadTransform(record, 8), record.Long(32));
      break;
    default:
      return false;
  }
  MappingChanged();
  return true;
}

void Playback::MappingChanged() {
  toSamples_ = platform::Then(dc_.mapping.ToDevice(placement_.perMmX, placement_.perMmY), placement_.deviceToSamples);
}

Area Playback::BoxAt(const Record& record, std::size_t at) {
  const double left = record.SignedLong(at), top = record.SignedLong(at + 4);
  const double right = record.SignedLong(at + 8), bottom = record.SignedLong(at + 12);
  return {std::min(left, right), std::min(top, bottom), std::max(left, right), std::max(top, bottom)};
}

Spot Playback::SpotAt(const Record& record, std::size_t at) {
  return {static_cast<double>(record.SignedLong(at)), static_cast<double>(record.SignedLong(at + 4))};
}

double Playback::Scale() const {
  return std::sqrt(std::abs(toSamples_.m11 * toSamples_.m22 - toSamples_.m12 * toSamples_.m21));
}

bool Playback::PlayObject(const Record& record) {
  const std::uint32_t handle = record.Long(8);
  switch (record.Type()) {
    case platform::kEmrSelectObject:
    case platform::kEmrSelectPalette:
      if ((handle & platform::kStockObject) != 0) {
        Select(StockObjectOf(handle));
      } else if (handle < objects_.size()) {
        Select(objects_[handle]);
      }
      return true;
    case platform::kEmrDeleteObject:
      if (handle < objects_.size()) objects_[handle] = {};
      return true;
    case platform::kEmrCreatePen:
      StoreObject(handle, ReadPen(record, *dc_.palette));
      return true;
    case platform::kEmrExtCreatePen:
      StoreObject(handle, ReadExtPen(record, *dc_.palette, ReadPatternBrush(record, kPenUsage, kPenPlaces)));
      return true;
    case platform::kEmrCreateBrush:
      StoreObject(handle, ReadBrush(record, *dc_.palette));
      return true;
    case platform::kEmrCreateMonoBrush:
    case platform::kEmrCreateDibPatternBrush:
      StoreObject(handle, ReadPatternBrush(record, kBrushUsage, kBrushPlaces));
      return true;
    case platform::kEmrCreateFont:
      StoreObject(handle, ReadFont(record));
      return true;
    case platform::kEmrCreatePalette:
      StoreObject(handle, ReadPalette(record));
      return true;
    case platform::kEmrSetPaletteEntries:
    case platform::kEmrResizePalette:
      ChangePalette(record);
      return true;
    default:
      return false;
  }
}

// Also where it is selected.
void Playback::ChangePalette(const Record& record) {
  const std::uint32_t handle = record.Long(8);
  auto* stored = handle < objects_.size() ? std::get_if<PaletteHandle>(&objects_[handle]) : nullptr;
  if (stored == nullptr) return;
  const PaletteHandle changed = record.Type() == platform::kEmrResizePalette ? ResizedPalette(record, **stored)
                                                                             : ReadPaletteEntries(record, **stored);
  if (dc_.palette == *stored) dc_.palette = changed;
  *stored = changed;
}

void Playback::StoreObject(std::uint32_t handle, Object object) {
  if (handle == 0 || handle >= kMaxHandles) return;
  // Some writers count fewer handles in the header than they use.
  if (handle >= objects_.size()) objects_.resize(handle + 1);
  objects_[handle] = std::move(object);
}

void Playback::Select(const Object& object) {
  if (const auto* pen = std::get_if<PenHandle>(&object)) dc_.pen = *pen;
  if (const auto* brush = std::get_if<BrushHandle>(&object)) dc_.brush = *brush;
  if (const auto* font = std::get_if<FontHandle>(&object)) dc_.font = *font;
  if (const auto* palette = std::get_if<PaletteHandle>(&object)) dc_.palette = *palette;
}

}  // namespace metafile_player
