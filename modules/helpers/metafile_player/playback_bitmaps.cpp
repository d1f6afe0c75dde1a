#include <algorithm>
#include <cmath>

#include "modules/helpers/metafile_player/limits.h"
#include "modules/helpers/metafile_player/playback.h"

// Bitmaps.

namespace metafile_player {

using platform::Record;

namespace {

constexpr double kLeastArea = 1e-9;

// The brush takes part where its half of the table differs from the other.
bool ReadsSource(std::uint32_t rop) {
  const std::uint32_t table = rop >> 16 & 255;
  return (table >> 2 & 0x33) != (table & 0x33);
}

// Of the rows that a record holds, in place of the height that the whole bitmap has.
std::vector<std::uint8_t> WithHeight(std::span<const std::uint8_t> header, std::int32_t height) {
  constexpr std::size_t kHeightAt = 8;
  std::vector<std::uint8_t> changed(header.begin(), header.end());
  for (std::size_t i = 0; i < 4; ++i) {
    changed[kHeightAt + i] = static_cast<std::uint8_t>(static_cast<std::uint32_t>(height) >> 8 * i);
  }
  return changed;
}

// Cuts both down to what lies within a bitmap of this size. False if nothing does.
bool CutAxis(double& from, double& length, double size, double& first, double& last) {
  const double ends[] = {(0 - from) / length, (size - from) / length};
  first = std::max(0.0, std::min(ends[0], ends[1]));
  last = std::min(1.0, std::max(ends[0], ends[1]));
  if (!(first < last)) return false;
  from += first * length;
  length *= last - first;
  return true;
}

// A copy in which samples are left out where `keep` says no.
template <typename Keep>
Surface CutOut(const Bitmap& bitmap, Keep keep) {
  if (bitmap.PixelCount() > kMaxCopiedPixels) return nullptr;
  Surface copy(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, bitmap.width, bitmap.height));
  cairo_surface_flush(copy.get());
  std::uint8_t* to = cairo_image_surface_get_data(copy.get());
  if (to == nullptr) return nullptr;
  const std::uint8_t* from = cairo_image_surface_get_data(bitmap.surface.get());
  for (std::int32_t y = 0; y < bitmap.height; ++y) {
    for (std::int32_t x = 0; x < bitmap.width; ++x) {
      const std::uint32_t pixel = reinterpret_cast<const std::uint32_t*>(from)[x] | 0xFF000000;
      reinterpret_cast<std::uint32_t*>(to)[x] = keep(pixel, x, y) ? pixel : 0;
    }
    from += cairo_image_surface_get_stride(bitmap.surface.get());
    to += cairo_image_surface_get_stride(copy.get());
  }
  cairo_surface_mark_dirty(copy.get());
  return copy;
}

}  // namespace

bool Playback::PlayBitmap(const Record& record) {
  switch (record.Type()) {
    case platform::kEmrBitBlt:
      Blit(record, false);
      return true;
    case platform::kEmrStretchBlt:
      Blit(record, true);
      return true;
    case platform::kEmrMaskBlt:
      MaskBlit(record);
      return true;
    case platform::kEmrPlgBlt:
      ParallelogramBlit(record);
      return true;
    case platform::kEmrSetDiBitsToDevice:
      PlaceDib(record, false);
      return true;
    case platform::kEmrStretchDiBits:
      PlaceDib(record, true);
      return true;
    case platform::kEmrAlphaBlend:
      AlphaBlend(record);
      return true;
    case platform::kEmrTransparentBlt:
      TransparentBlit(record);
      return true;
    default:
      return false;
  }
}

Playback::Parallelogram Playback::LogicalBox(double x, double y, double width, double height) const {
  return {ToSamples(x, y), ToSamples(x + width, y), ToSamples(x, y + height)};
}

Path Playback::PathOf(const Parallelogram& target) {
  Path path;
  path.MoveTo(target.origin);
  path.LineTo(target.right);
  path.LineTo({target.right.x + target.down.x - target.origin.x, target.right.y + target.down.y - target.origin.y});
  path.LineTo(target.down);
  path.Close();
  return path;
}

// Null where part or target have no area.
Pattern Playback::PatternOf(cairo_surface_t* surface, const Part& part, const Parallelogram& target, bool smooth) {
  if (part.width == 0 || part.height == 0) return nullptr;
  cairo_matrix_t matrix;
  cairo_matrix_init(&matrix, (target.right.x - target.origin.x) / part.width,
                    (target.right.y - target.origin.y) / part.width, (target.down.x - target.origin.x) / part.height,
                    (target.down.y - target.origin.y) / part.height, target.origin.x, target.origin.y);
  cairo_matrix_translate(&matrix, -part.left, -part.top);
  const double area = std::abs(matrix.xx * matrix.yy - matrix.xy * matrix.yx);
  if (!(area > kLeastArea) || cairo_matrix_invert(&matrix) != CAIRO_STATUS_SUCCESS) return nullptr;
  Pattern pattern(cairo_pattern_create_for_surface(surface));
  cairo_pattern_set_matrix(pattern.get(), &matrix);
  cairo_pattern_set_extend(pattern.get(), CAIRO_EXTEND_PAD);
  // Pixels keep their edges when they grow; several to a sample are averaged.
  const bool shrinks = smooth && area < 0.5;
  cairo_pattern_set_filter(pattern.get(), shrinks ? CAIRO_FILTER_GOOD : CAIRO_FILTER_NEAREST);
  return pattern;
}

// The numbers of a palette's entries, or of the pixels themselves, become colours.
std::vector<std::uint8_t> Playback::WithPaletteColors(std::span<const std::uint8_t> header, std::uint32_t usage) const {
  constexpr std::size_t kInfoHeader = 40;
  const Record info(header);
  const std::size_t size = info.Long(0);
  const std::uint32_t bits = info.Word(14);
  if (size < kInfoHeader || size > header.size() || bits == 0 || bits > 8) return {header.begin(), header.end()};
  std::vector<std::uint8_t> changed(header.begin(), header.begin() + static_cast<std::ptrdiff_t>(size));
  const std::uint32_t used = info.Long(32);
  const std::uint32_t count = used == 0 ? 1U << bits : std::min(used, 1U << bits);
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::size_t number = usage == platform::kPaletteColors ? info.Word(size + 2 * i) : i;
    const std::uint32_t color = number < dc_.palette->size() ? (*dc_.palette)[number] : 0;
    for (int shift = 0; shift < 24; shift += 8) changed.push_back(static_cast<std::uint8_t>(color >> shift));
    changed.push_back(0);
  }
  return changed;
}

std::shared_ptr<const Bitmap> Playback::BitmapOf(const Record& record, const BitmapPlace& place, AlphaOf alpha) {
  const std::size_t places = place.places;
  const auto header = record.Part(record.Long(places), record.Long(places + 4));
  if (header.empty()) return nullptr;
  // Rows that are cut off are worth as many as there are.
  const std::size_t rowsAt = std::min<std::size_t>(record.Long(places + 8), record.Size());
  const auto rows = record.Part(rowsAt, std::min<std::size_t>(record.Long(places + 12), record.Size() - rowsAt));
  const std::uint32_t usage = record.Long(place.usage);
  auto bitmap = shared_.bitmaps.Get(header, rows, alpha, [&]() -> std::vector<std::uint8_t> {
    if (usage != platform::kRgbColors) return WithPaletteColors(header, usage);
    return {header.begin(), header.end()};
  });
  SpendOn(bitmap.get());
  return bitmap;
}

void Playback::SpendOn(const Bitmap* bitmap) const {
  if (bitmap == nullptr) return;
  constexpr std::uint64_t kPixelWork = 16;
  canvas_.Spend(kPixelWork * bitmap->PixelCount());
}

std::shared_ptr<const Bitmap> Playback::InTargetColors(std::shared_ptr<const Bitmap> bitmap) const {
  if (bitmap == nullptr || !bitmap->twoColors || (dc_.textColor == 0xFF000000 && dc_.bkColor == 0xFFFFFFFF) ||
      bitmap->PixelCount() > kMaxCopiedPixels) {
    return bitmap;
  }
  SpendOn(bitmap.get());
  auto colored = std::make_shared<Bitmap>();
  colored->surface = TwoColored(bitmap->surface.get(), dc_.textColor, dc_.bkColor);
  colored->width = bitmap->width;
  colored->height = bitmap->height;
  return colored;
}

void Playback::CombineBitmap(const Bitmap* bitmap, Part part, Parallelogram target, std::uint32_t rop, bool masked) {
  Pattern source;
  if (masked || ReadsSource(rop)) {
    if (bitmap == nullptr || part.width == 0 || part.height == 0) return;
    // There is no picture outside of the bitmap.
    double left, right, top, bottom;
    if (!CutAxis(part.left, part.width, bitmap->width, left, right) ||
        !CutAxis(part.top, part.height, bitmap->height, top, bottom)) {
      return;
    }
    const Spot across{target.right.x - target.origin.x, target.right.y - target.origin.y};
    const Spot down{target.down.x - target.origin.x, target.down.y - target.origin.y};
    const auto corner = [&](double x, double y) -> Spot {
      return {target.origin.x + x * across.x + y * down.x, target.origin.y + x * across.y + y * down.y};
    };
    target = {corner(left, top), corner(right, top), corner(left, bottom)};
    source = PatternOf(bitmap->surface.get(), part, target, rop == platform::kSourceCopy && !masked);
    if (source == nullptr) return;
  }
  Pattern owner;
  const Paint brush = PaintOf(*dc_.brush, owner);
  canvas_.Combine(PathOf(target), brush, source.get(), static_cast<Rop3>(rop >> 16));
}

// The part of a source that a record of a blit names in units of its own.
Playback::Part Playback::SourcePart(const Record& record, std::size_t at, std::size_t mapAt, double width,
                                    double height) {
  const platform::Transform map = ReadTransform(record, mapAt);
  const Spot from = SpotAt(record, at);
  if (map.m11 == 0 || map.m22 == 0 || map.m12 != 0 || map.m21 != 0) return {from.x, from.y, width, height};
  return {map.X(from.x, from.y), map.Y(from.x, from.y), map.m11 * width, map.m22 * height};
}

namespace {

constexpr std::size_t kBlitSource = 44, kBlitSourceMap = 52;

}  // namespace

void Playback::Blit(const Record& record, bool stretched) {
  const double width = record.SignedLong(32), height = record.SignedLong(36);
  const std::uint32_t rop = record.Long(40);
  const Part part = SourcePart(record, kBlitSource, kBlitSourceMap, stretched ? record.SignedLong(100) : width,
                               stretched ? record.SignedLong(104) : height);
  const auto bitmap = ReadsSource(rop) ? InTargetColors(BitmapOf(record, kBlitPlace, AlphaOf::kNothing)) : nullptr;
  CombineBitmap(bitmap.get(), part, LogicalBox(record.SignedLong(24), record.SignedLong(28), width, height), rop);
}

// `maskAt`: where the record says the mask's first pixel; how its colours are meant and where it is stands behind that.
void Playback::CombineMasked(const Record& record, std::size_t maskAt, std::shared_ptr<const Bitmap> bitmap, Part part,
                             const Parallelogram& target, std::uint32_t rop) {
  const auto mask = BitmapOf(record, {maskAt + 8, maskAt + 12}, AlphaOf::kNothing);
  const std::uint32_t inside = rop & 0x00FFFFFF;
  if (mask == nullptr) return CombineBitmap(bitmap.get(), part, target, inside);
  std::int64_t dx = std::int64_t{record.SignedLong(maskAt)} - static_cast<std::int64_t>(part.left);
  std::int64_t dy = std::int64_t{record.SignedLong(maskAt + 4)} - static_cast<std::int64_t>(part.top);
  if (bitmap == nullptr) {
    // The operation has no use for a source: the mask stands in for it.
    bitmap = mask;
    part.left = record.SignedLong(maskAt);
    part.top = record.SignedLong(maskAt + 4);
    dx = dy = 0;
  }
  const std::uint8_t* bits = cairo_image_surface_get_data(mask->surface.get());
  const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(mask->surface.get()));
  const auto combine = [&](bool where, std::uint32_t operation) {
    Bitmap masked;
    masked.width = bitmap->width;
    masked.height = bitmap->height;
    masked.surface = CutOut(*bitmap, [&](std::uint32_t, std::int64_t x, std::int64_t y) {
      x += dx;
      y += dy;
      if (x < 0 || y < 0 || x >= mask->width || y >= mask->height) return false;
      const std::uint8_t* row = bits + static_cast<std::size_t>(y) * stride;
      return ((reinterpret_cast<const std::uint32_t*>(row)[x] & 0x8000) != 0) == where;
    });
    SpendOn(bitmap.get());
    if (masked.surface != nullptr) CombineBitmap(&masked, part, target, operation, true);
  };
  combine(true, inside);
  const std::uint32_t outside = rop >> 8 & 0x00FF0000;
  if (outside != (platform::kLeaveTarget & 0x00FF0000)) combine(false, outside);
}

void Playback::MaskBlit(const Record& record) {
  constexpr std::size_t kMaskAt = 100;
  const double width = record.SignedLong(32), height = record.SignedLong(36);
  CombineMasked(record, kMaskAt, InTargetColors(BitmapOf(record, kBlitPlace, AlphaOf::kNothing)),
                SourcePart(record, kBlitSource, kBlitSourceMap, width, height),
                LogicalBox(record.SignedLong(24), record.SignedLong(28), width, height), record.Long(40));
}

void Playback::ParallelogramBlit(const Record& record) {
  constexpr std::size_t kSourceAt = 48, kSourceMap = 64, kMaskAt = 112;
  constexpr BitmapPlace kPlace{92, 96};
  const auto corner = [&](std::size_t at) { return ToSamples(SpotAt(record, at)); };
  const Part part = SourcePart(record, kSourceAt, kSourceMap, record.SignedLong(56), record.SignedLong(60));
  const auto bitmap = InTargetColors(BitmapOf(record, kPlace, AlphaOf::kNothing));
  if (bitmap == nullptr) return;
  CombineMasked(record, kMaskAt, bitmap, part, {corner(24), corner(32), corner(40)},
                platform::kSourceCopy | (platform::kLeaveTarget & 0x00FF0000) << 8);
}

void Playback::PlaceDib(const Record& record, bool stretched) {
  constexpr BitmapPlace kPlace{64, 48};
  Part part{static_cast<double>(record.SignedLong(32)), static_cast<double>(record.SignedLong(36)),
            static_cast<double>(record.SignedLong(40)), static_cast<double>(record.SignedLong(44))};
  const double x = record.SignedLong(24), y = record.SignedLong(28);
  if (stretched) {
    const std::uint32_t rop = record.Long(68);
    const auto bitmap = ReadsSource(rop) ? BitmapOf(record, kPlace, AlphaOf::kNothing) : nullptr;
    // Rows are counted from the bottom of a picture that begins there.
    if (bitmap != nullptr && bitmap->bottomUp) part.top = bitmap->height - part.top - part.height;
    const Parallelogram target = LogicalBox(x, y, record.SignedLong(72), record.SignedLong(76));
    return CombineBitmap(bitmap.get(), part, target, rop);
  }
  const auto bitmap = SomeRows(record, kPlace, part);
  if (bitmap == nullptr) return;
  // A pixel of the bitmap is one of the recorded device, whatever the mapping.
  const platform::Transform& map = placement_.deviceToSamples;
  const Spot origin = ToSamples(x, y);
  const Parallelogram target{origin,
                             {origin.x + part.width * map.m11, origin.y + part.width * map.m12},
                             {origin.x + part.height * map.m21, origin.y + part.height * map.m22}};
  CombineBitmap(bitmap.get(), part, target, platform::kSourceCopy);
}

// The rows that a record holds of a bitmap whose header tells of all; `part`, counted from the bottom of it all where
// that comes first, becomes that of them.
std::shared_ptr<const Bitmap> Playback::SomeRows(const Record& record, const BitmapPlace& place, Part& part) {
  const auto header = record.Part(record.Long(place.places), record.Long(place.places + 4));
  const std::int64_t height = Record(header).SignedLong(8);
  const std::int64_t first = record.Long(68), count = record.Long(72);
  const std::int64_t all = std::abs(height);
  const bool some = Record(header).Long(0) >= 40 && height != 0 && count > 0 && count < all && first <= all - count;
  if (!some) {
    auto bitmap = BitmapOf(record, place, AlphaOf::kNothing);
    if (bitmap != nullptr && bitmap->bottomUp) part.top = bitmap->height - part.top - part.height;
    return bitmap;
  }
  part.top = static_cast<double>(height > 0 ? all - (first + count) : first);
  const double fromTop =
      height > 0 ? static_cast<double>(all) - record.SignedLong(36) - part.height : record.SignedLong(36);
  part.top = fromTop - part.top;
  const std::uint32_t usage = record.Long(place.usage);
  const auto rows = record.Part(record.Long(place.places + 8), record.Long(place.places + 12));
  auto bitmap = shared_.bitmaps.Get(header, rows, AlphaOf::kNothing, [&] {
    const auto changed = WithHeight(header, static_cast<std::int32_t>(height > 0 ? count : -count));
    return usage != platform::kRgbColors ? WithPaletteColors(changed, usage) : changed;
  });
  SpendOn(bitmap.get());
  return bitmap;
}

void Playback::AlphaBlend(const Record& record) {
  const bool pixelsHaveAlpha = record.Byte(43) != 0;
  const auto bitmap = BitmapOf(record, kBlitPlace, pixelsHaveAlpha ? AlphaOf::kMultiplied : AlphaOf::kNothing);
  if (bitmap == nullptr) return;
  const Part part = SourcePart(record, kBlitSource, kBlitSourceMap, record.SignedLong(100), record.SignedLong(104));
  const Parallelogram target =
      LogicalBox(record.SignedLong(24), record.SignedLong(28), record.SignedLong(32), record.SignedLong(36));
  const Pattern source = PatternOf(bitmap->surface.get(), part, target, true);
  if (source != nullptr) canvas_.Blend(PathOf(target), source.get(), record.Byte(42) / 255.0);
}

void Playback::TransparentBlit(const Record& record) {
  const auto bitmap = BitmapOf(record, kBlitPlace, AlphaOf::kNothing);
  if (bitmap == nullptr) return;
  const std::uint32_t leftOut = ColorOf(record.Long(40));
  Bitmap rest;
  rest.width = bitmap->width;
  rest.height = bitmap->height;
  rest.surface =
      CutOut(*bitmap, [leftOut](std::uint32_t pixel, std::int32_t, std::int32_t) { return pixel != leftOut; });
  SpendOn(bitmap.get());
  if (rest.surface == nullptr) return;
  const Part part = SourcePart(record, kBlitSource, kBlitSourceMap, record.SignedLong(100), record.SignedLong(104));
  const Parallelogram target =
      LogicalBox(record.SignedLong(24), record.SignedLong(28), record.SignedLong(32), record.SignedLong(36));
  CombineBitmap(&rest, part, target, platform::kSourceCopy, true);
}

BrushHandle Playback::ReadPatternBrush(const Record& record, std::size_t usageAt, std::size_t places) {
  auto brush = std::make_shared<Brush>();
  brush->style = platform::kBrushDibPattern;
  brush->mono = record.Type() == platform::kEmrCreateMonoBrush;
  brush->bitmap = BitmapOf(record, {usageAt, places}, AlphaOf::kNothing);
  if (brush->bitmap == nullptr) brush->style = platform::kBrushNull;
  return brush;
}

}  // namespace metafile_player
