#include <algorithm>
#include <cmath>

#include "modules/helpers/metafile_player/limits.h"
#include "modules/helpers/metafile_player/playback.h"

// Bitmaps.

namespace metafile_player {

using platform::Record;

namespace {

constexpr std::size_t kBlitPlaces = 84;     // of header and rows in BITBLT and its kin
constexpr std::size_t kDibPlaces = 48;      // in STRETCHDIBITS and SETDIBITSTODEVICE
constexpr std::size_t kPatternPlaces = 16;  // in brushes
constexpr double kLeastArea = 1e-9;

// The brush takes part where its half of the table differs from the other.
bool ReadsSource(std::uint32_t rop) {
  const std::uint32_t table = rop >> 16 & 255;
  return (table >> 2 & 0x33) != (table & 0x33);
}

// A copy in which samples are left out where `keep` says no.
template <typename Keep>
Surface CutOut(const Bitmap& bitmap, Keep keep) {
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

// `places`: where the record says where the header is and how long, and the same of the rows.
std::shared_ptr<const Bitmap> Playback::BitmapOf(const Record& record, std::size_t places, AlphaOf alpha) {
  const auto header = record.Part(record.Long(places), record.Long(places + 4));
  if (header.empty()) return nullptr;
  // Rows that are cut off are worth as many as there are.
  const std::size_t rowsAt = std::min<std::size_t>(record.Long(places + 8), record.Size());
  const auto rows = record.Part(rowsAt, std::min<std::size_t>(record.Long(places + 12), record.Size() - rowsAt));
  auto bitmap = shared_.bitmaps.Get(header, rows, alpha);
  if (bitmap != nullptr) {
    canvas_.Spend(static_cast<std::uint64_t>(bitmap->width) * static_cast<std::uint64_t>(bitmap->height));
  }
  return bitmap;
}

void Playback::CombineBitmap(const Bitmap* bitmap, const Part& part, const Parallelogram& target, std::uint32_t rop) {
  const Path path = PathOf(target);
  Pattern source;
  if (ReadsSource(rop)) {
    if (bitmap == nullptr) return;
    source = PatternOf(bitmap->surface.get(), part, target, rop == platform::kSourceCopy);
    if (source == nullptr) return;
  }
  Pattern owner;
  Paint brush = PaintOf(*dc_.brush, owner);
  canvas_.Combine(path, brush, source.get(), static_cast<Rop3>(rop >> 16));
}

void Playback::Blit(const Record& record, bool stretched) {
  const double width = record.SignedLong(32), height = record.SignedLong(36);
  const std::uint32_t rop = record.Long(40);
  const Part part{static_cast<double>(record.SignedLong(44)), static_cast<double>(record.SignedLong(48)),
                  stretched ? record.SignedLong(100) : width, stretched ? record.SignedLong(104) : height};
  const auto bitmap = ReadsSource(rop) ? BitmapOf(record, kBlitPlaces, AlphaOf::kNothing) : nullptr;
  CombineBitmap(bitmap.get(), part, LogicalBox(record.SignedLong(24), record.SignedLong(28), width, height), rop);
}

void Playback::MaskBlit(const Record& record) {
  constexpr std::size_t kMaskPlaces = 112;
  const double width = record.SignedLong(32), height = record.SignedLong(36);
  const Part part{static_cast<double>(record.SignedLong(44)), static_cast<double>(record.SignedLong(48)), width,
                  height};
  const Parallelogram target = LogicalBox(record.SignedLong(24), record.SignedLong(28), width, height);
  const std::uint32_t inside = record.Long(40) & 0x00FFFFFF;
  const auto bitmap = BitmapOf(record, kBlitPlaces, AlphaOf::kNothing);
  const auto mask = BitmapOf(record, kMaskPlaces, AlphaOf::kNothing);
  if (bitmap == nullptr || mask == nullptr) return CombineBitmap(bitmap.get(), part, target, inside);
  // Outside of the mask the target stays, which is what all but exotic records say.
  const std::uint8_t* bits = cairo_image_surface_get_data(mask->surface.get());
  const auto stride = static_cast<std::size_t>(cairo_image_surface_get_stride(mask->surface.get()));
  const std::int64_t dx = std::int64_t{record.SignedLong(100)} - record.SignedLong(44);
  const std::int64_t dy = std::int64_t{record.SignedLong(104)} - record.SignedLong(48);
  Bitmap masked;
  masked.surface = CutOut(*bitmap, [&](std::uint32_t, std::int64_t x, std::int64_t y) {
    x += dx;
    y += dy;
    if (x < 0 || y < 0 || x >= mask->width || y >= mask->height) return false;
    const std::uint8_t* row = bits + static_cast<std::size_t>(y) * stride;
    return (reinterpret_cast<const std::uint32_t*>(row)[x] & 0x8000) != 0;
  });
  if (masked.surface != nullptr) CombineBitmap(&masked, part, target, inside);
}

void Playback::ParallelogramBlit(const Record& record) {
  constexpr std::size_t kPlaces = 96;
  const auto corner = [&](std::size_t at) { return ToSamples(record.SignedLong(at), record.SignedLong(at + 4)); };
  const Part part{static_cast<double>(record.SignedLong(48)), static_cast<double>(record.SignedLong(52)),
                  static_cast<double>(record.SignedLong(56)), static_cast<double>(record.SignedLong(60))};
  const auto bitmap = BitmapOf(record, kPlaces, AlphaOf::kNothing);
  CombineBitmap(bitmap.get(), part, {corner(24), corner(32), corner(40)}, platform::kSourceCopy);
}

void Playback::PlaceDib(const Record& record, bool stretched) {
  const auto bitmap = BitmapOf(record, kDibPlaces, AlphaOf::kNothing);
  if (bitmap == nullptr && (!stretched || ReadsSource(record.Long(68)))) return;
  Part part{static_cast<double>(record.SignedLong(32)), static_cast<double>(record.SignedLong(36)),
            static_cast<double>(record.SignedLong(40)), static_cast<double>(record.SignedLong(44))};
  // Rows are counted from the bottom of a picture that begins there.
  if (bitmap != nullptr && bitmap->bottomUp) part.top = bitmap->height - part.top - part.height;
  const double x = record.SignedLong(24), y = record.SignedLong(28);
  if (stretched) {
    const Parallelogram target = LogicalBox(x, y, record.SignedLong(72), record.SignedLong(76));
    return CombineBitmap(bitmap.get(), part, target, record.Long(68));
  }
  // A pixel of the bitmap is one of the recorded device, whatever the mapping.
  const platform::Transform& map = placement_.deviceToSamples;
  const Spot origin = ToSamples(x, y);
  const Parallelogram target{origin,
                             {origin.x + part.width * map.m11, origin.y + part.width * map.m12},
                             {origin.x + part.height * map.m21, origin.y + part.height * map.m22}};
  CombineBitmap(bitmap.get(), part, target, platform::kSourceCopy);
}

void Playback::AlphaBlend(const Record& record) {
  const bool pixelsHaveAlpha = record.Byte(43) != 0;
  const auto bitmap = BitmapOf(record, kBlitPlaces, pixelsHaveAlpha ? AlphaOf::kMultiplied : AlphaOf::kNothing);
  if (bitmap == nullptr) return;
  const Part part{static_cast<double>(record.SignedLong(44)), static_cast<double>(record.SignedLong(48)),
                  static_cast<double>(record.SignedLong(100)), static_cast<double>(record.SignedLong(104))};
  const Parallelogram target =
      LogicalBox(record.SignedLong(24), record.SignedLong(28), record.SignedLong(32), record.SignedLong(36));
  const Pattern source = PatternOf(bitmap->surface.get(), part, target, true);
  if (source != nullptr) canvas_.Blend(PathOf(target), source.get(), record.Byte(42) / 255.0);
}

void Playback::TransparentBlit(const Record& record) {
  const auto bitmap = BitmapOf(record, kBlitPlaces, AlphaOf::kNothing);
  if (bitmap == nullptr) return;
  const std::uint32_t leftOut = ColorWord(record.Long(40));
  Bitmap rest;
  rest.surface =
      CutOut(*bitmap, [leftOut](std::uint32_t pixel, std::int32_t, std::int32_t) { return pixel != leftOut; });
  if (rest.surface == nullptr) return;
  const Part part{static_cast<double>(record.SignedLong(44)), static_cast<double>(record.SignedLong(48)),
                  static_cast<double>(record.SignedLong(100)), static_cast<double>(record.SignedLong(104))};
  const Parallelogram target =
      LogicalBox(record.SignedLong(24), record.SignedLong(28), record.SignedLong(32), record.SignedLong(36));
  const Pattern source = PatternOf(rest.surface.get(), part, target, false);
  if (source != nullptr) canvas_.Combine(PathOf(target), {}, source.get(), platform::kSourceCopy >> 16);
}

BrushHandle Playback::ReadPatternBrush(const Record& record) {
  auto brush = std::make_shared<Brush>();
  brush->style = platform::kBrushDibPattern;
  brush->mono = record.Type() == platform::kEmrCreateMonoBrush;
  brush->bitmap = BitmapOf(record, kPatternPlaces, AlphaOf::kNothing);
  if (brush->bitmap == nullptr) brush->style = platform::kBrushNull;
  return brush;
}

}  // namespace metafile_player
