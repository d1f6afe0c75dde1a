#include "modules/helpers/metafile_player/canvas.h"

#include <algorithm>
#include <cmath>

#include "modules/helpers/metafile_player/limits.h"
#include "platform/metafile/records.h"

namespace metafile_player {
namespace {

constexpr std::uint32_t kOpaque = 0xFF000000;
// Work of a corner of a path and of a character, in samples filled at the same cost.
constexpr std::uint64_t kPointWork = 200;
constexpr std::uint64_t kDrawWork = 400;
constexpr std::uint64_t kGlyphWork = 4000;
constexpr std::uint64_t kRowWork = 20;
constexpr std::uint64_t kDashWork = 4000;
constexpr std::uint64_t kMixTimes = 4;

std::uint32_t Combined(std::uint32_t table, std::uint32_t pen, std::uint32_t target) {
  std::uint32_t result = 0;
  if (table & 1) result |= ~pen & ~target;
  if (table & 2) result |= ~pen & target;
  if (table & 4) result |= pen & ~target;
  if (table & 8) result |= pen & target;
  return result;
}

std::uint32_t Combined(std::uint32_t table, std::uint32_t brush, std::uint32_t source, std::uint32_t target) {
  return (brush & Combined(table >> 4, source, target)) | (~brush & Combined(table & 15, source, target));
}

std::uint32_t Blended(std::uint32_t upper, std::uint32_t lower) {
  const std::uint32_t rest = 255 - (upper >> 24);
  std::uint32_t result = kOpaque;
  for (int shift = 0; shift < 24; shift += 8) {
    const std::uint32_t sum = (upper >> shift & 255) + ((lower >> shift & 255) * rest + 127) / 255;
    result |= std::min(sum, 255U) << shift;
  }
  return result;
}

}  // namespace

Surface Canvas::NewSurface() const {
  Surface surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width_, height_));
  if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) return nullptr;
  return surface;
}

bool Canvas::Begin(std::int32_t width, std::int32_t height) {
  SetClip(nullptr);
  if (surface_ != nullptr && width_ == width * kSamples && height_ == height * kSamples) {
    // What was drawn aside was taken up at once: the other surfaces are empty.
    cairo_surface_flush(surface_.get());
    std::fill_n(Row(surface_.get(), 0), static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_), 0U);
    cairo_surface_mark_dirty(surface_.get());
    return true;
  }
  width_ = width * kSamples;
  height_ = height * kSamples;
  for (int i = 0; i < 2; ++i) {
    scratch_[i].reset();
    scratchSurface_[i].reset();
  }
  cairo_.reset();
  surface_.reset();
  surface_ = NewSurface();
  return surface_ != nullptr;
}

bool Canvas::Exhausted() {
  if (exhausted_ || work_ < nextLook_) return exhausted_;
  nextLook_ = work_ + kWorkBetweenLooks;
  exhausted_ = static_cast<double>(std::clock() - start_) / CLOCKS_PER_SEC > kMaxSeconds;
  return exhausted_;
}

void Canvas::SetClip(Region clip) {
  clip_ = std::move(clip);
  clipPending_ = scratchClipPending_[0] = scratchClipPending_[1] = true;
}

// The library draws nothing more with a context that has met an error.
cairo_t* Canvas::Ready(Cairo& cairo, const Surface& surface, bool& clipPending) {
  if (cairo == nullptr || cairo_status(cairo.get()) != CAIRO_STATUS_SUCCESS) {
    cairo.reset(cairo_create(surface.get()));
    cairo_set_antialias(cairo.get(), CAIRO_ANTIALIAS_NONE);
    clipPending = true;
  }
  if (clipPending) {
    cairo_reset_clip(cairo.get());
    if (clip_ != nullptr) {
      PathOf(clip_).Trace(cairo.get());
      cairo_clip(cairo.get());
    }
    clipPending = false;
  }
  return cairo.get();
}

cairo_t* Canvas::Target() { return Ready(cairo_, surface_, clipPending_); }

cairo_t* Canvas::Scratch(int which) {
  if (scratchSurface_[which] == nullptr) scratchSurface_[which] = NewSurface();
  if (scratchSurface_[which] == nullptr) return nullptr;
  return Ready(scratch_[which], scratchSurface_[which], scratchClipPending_[which]);
}

Canvas::Rows Canvas::Touched(const Area& area) {
  const auto limited = [](double value, std::int32_t size) {
    return static_cast<std::int32_t>(std::clamp(value, 0.0, static_cast<double>(size)));
  };
  const Rows rows{limited(std::floor(area.left), width_), limited(std::floor(area.top), height_),
                  limited(std::ceil(area.right) + 1, width_), limited(std::ceil(area.bottom) + 1, height_)};
  work_ += kDrawWork + static_cast<std::uint64_t>(std::max(rows.right - rows.left, 0)) *
                           static_cast<std::uint64_t>(std::max(rows.bottom - rows.top, 0));
  return rows;
}

std::uint32_t* Canvas::Row(cairo_surface_t* surface, std::int32_t y) const {
  return reinterpret_cast<std::uint32_t*>(cairo_image_surface_get_data(surface) +
                                          static_cast<std::ptrdiff_t>(y) * cairo_image_surface_get_stride(surface));
}

template <typename Mix>
void Canvas::MixRows(const Rows& rows, Mix mix) {
  cairo_surface_t* upper = scratchSurface_[0].get();
  cairo_surface_flush(upper);
  cairo_surface_flush(surface_.get());
  for (std::int32_t y = rows.top; y < rows.bottom; ++y) {
    std::uint32_t* from = Row(upper, y);
    std::uint32_t* to = Row(surface_.get(), y);
    for (std::int32_t x = rows.left; x < rows.right; ++x) {
      if (from[x] == 0) continue;
      to[x] = mix(to[x] == 0 ? paper_ : to[x], from[x], x, y);
      from[x] = 0;
    }
  }
  cairo_surface_mark_dirty(upper);
  cairo_surface_mark_dirty(surface_.get());
  work_ += kMixTimes * static_cast<std::uint64_t>(std::max(rows.right - rows.left, 0)) *
           static_cast<std::uint64_t>(std::max(rows.bottom - rows.top, 0));
}

void Canvas::SetPaint(cairo_t* cairo, const Paint& paint) {
  if (paint.pattern != nullptr) {
    cairo_set_source(cairo, paint.pattern);
    return;
  }
  const auto part = [&](int shift) { return (paint.color >> shift & 255) / 255.0; };
  cairo_set_source_rgb(cairo, part(16), part(8), part(0));
}

template <typename Draw>
void Canvas::DrawByRop2(const Area& area, std::uint32_t rop2, Draw draw) {
  const Rows rows = Touched(area);
  if (rows.left >= rows.right || rows.top >= rows.bottom || rop2 == 11) return;
  if (rop2 == platform::kRop2CopyPen) return draw(Target());
  cairo_t* scratch = Scratch(0);
  if (scratch == nullptr) return;
  draw(scratch);
  const std::uint32_t table = rop2 - 1;
  MixRows(rows, [table](std::uint32_t target, std::uint32_t pen, std::int32_t, std::int32_t) {
    return Combined(table, pen, target) | kOpaque;
  });
}

bool Canvas::Affordable(const Path& path, double strokeWidth) {
  if (path.Empty()) return false;
  const double rows = path.CrossedRows(height_, strokeWidth);
  work_ += kPointWork * path.PointCount() + kRowWork * static_cast<std::uint64_t>(std::min(rows, kMaxCrossedRows));
  return rows <= kMaxCrossedRows;
}

void Canvas::Fill(const Path& path, bool winding, const Paint& paint, std::uint32_t rop2) {
  if (!Affordable(path, 0)) return;
  DrawByRop2(path.Extent(), rop2, [&](cairo_t* cairo) {
    path.Trace(cairo);
    cairo_set_fill_rule(cairo, winding ? CAIRO_FILL_RULE_WINDING : CAIRO_FILL_RULE_EVEN_ODD);
    SetPaint(cairo, paint);
    cairo_fill(cairo);
  });
}

void Canvas::Line(const Path& path, const Stroke& stroke, const Paint& paint, std::uint32_t rop2) {
  if (!Affordable(path, stroke.width)) return;
  work_ += kDashWork * (stroke.dashes.empty() ? 0 : static_cast<std::uint64_t>(path.Length() / stroke.DashPeriod()));
  Area area = path.Extent();
  const cairo_matrix_t& shape = stroke.shape;
  const double longest = std::max(std::hypot(shape.xx, shape.yx), std::hypot(shape.xy, shape.yy));
  const double reach = stroke.width * std::max(stroke.miterLimit, 1.5) * longest + 1;
  area = {area.left - reach, area.top - reach, area.right + reach, area.bottom + reach};
  DrawByRop2(area, rop2, [&](cairo_t* cairo) {
    path.Trace(cairo);
    // The library takes a pen that keeps its area for one that keeps its form, and cuts it off.
    constexpr double kLarger = 2;
    cairo_set_line_width(cairo, stroke.width / kLarger);
    cairo_set_line_cap(cairo, stroke.cap);
    cairo_set_line_join(cairo, stroke.join);
    cairo_set_miter_limit(cairo, stroke.miterLimit);
    std::vector<double> dashes = stroke.dashes;
    for (double& dash : dashes) dash /= kLarger;
    cairo_set_dash(cairo, dashes.data(), static_cast<int>(dashes.size()), 0);
    SetPaint(cairo, paint);
    cairo_save(cairo);
    cairo_transform(cairo, &shape);
    cairo_scale(cairo, kLarger, kLarger);
    cairo_stroke(cairo);
    cairo_restore(cairo);
  });
}

void Canvas::Combine(const Path& path, const Paint& brush, cairo_pattern_t* source, Rop3 rop) {
  const Rows rows = Touched(path.Extent());
  if (path.Empty() || rows.left >= rows.right || rows.top >= rows.bottom) return;
  const auto draw = [&](cairo_t* cairo, const Paint& paint) {
    path.Trace(cairo);
    SetPaint(cairo, paint);
    cairo_fill(cairo);
  };
  // A source that the operation doesn't read is a mask.
  const bool masked = source != nullptr && (rop >> 2 & 0x33) == (rop & 0x33);
  if (rop == platform::kSourceCopy >> 16 && source != nullptr) return draw(Target(), {0, source});
  if (rop == platform::kPatternCopy >> 16 && !masked) return draw(Target(), brush);
  if (rop == platform::kLeaveTarget >> 16) return;
  if (rop == 0 && !masked) return draw(Target(), {kOpaque, nullptr});
  if (rop == 255 && !masked) return draw(Target(), {0xFFFFFFFF, nullptr});
  const bool readsBrush = (rop >> 4) != (rop & 15);
  cairo_t* below = Scratch(0);
  cairo_t* above = readsBrush ? Scratch(1) : nullptr;
  if (below == nullptr || (readsBrush && above == nullptr)) return;
  draw(below, {kOpaque, source});
  if (readsBrush) {
    draw(above, brush);
    cairo_surface_flush(scratchSurface_[1].get());
  }
  MixRows(rows, [&](std::uint32_t target, std::uint32_t from, std::int32_t x, std::int32_t y) {
    std::uint32_t pattern = 0;
    if (readsBrush) std::swap(pattern, Row(scratchSurface_[1].get(), y)[x]);
    return Combined(rop, pattern, from, target) | kOpaque;
  });
  if (readsBrush) cairo_surface_mark_dirty(scratchSurface_[1].get());
}

void Canvas::Blend(const Path& path, cairo_pattern_t* source, double alpha) {
  const Rows rows = Touched(path.Extent());
  if (path.Empty() || rows.left >= rows.right || rows.top >= rows.bottom) return;
  cairo_t* scratch = Scratch(0);
  if (scratch == nullptr) return;
  cairo_save(scratch);
  path.Trace(scratch);
  cairo_set_fill_rule(scratch, CAIRO_FILL_RULE_EVEN_ODD);
  cairo_clip(scratch);
  cairo_set_source(scratch, source);
  cairo_paint_with_alpha(scratch, alpha);
  cairo_restore(scratch);
  MixRows(rows, [](std::uint32_t target, std::uint32_t upper, std::int32_t, std::int32_t) {
    return (upper >> 24) == 0 ? target : Blended(upper, target);
  });
}

void Canvas::TraceGlyphs(cairo_t* cairo, cairo_font_face_t* face, const cairo_matrix_t& size,
                         std::span<const cairo_glyph_t> glyphs) {
  // Large letters cross many rows.
  const double height = std::min(std::hypot(size.xy, size.yy), static_cast<double>(height_));
  work_ += (kGlyphWork + kRowWork * static_cast<std::uint64_t>(height)) * glyphs.size();
  cairo_set_font_face(cairo, face);
  cairo_set_font_matrix(cairo, &size);
  cairo_new_path(cairo);
  cairo_glyph_path(cairo, glyphs.data(), static_cast<int>(glyphs.size()));
}

void Canvas::Glyphs(cairo_font_face_t* face, const cairo_matrix_t& size, std::span<const cairo_glyph_t> glyphs,
                    std::uint32_t color) {
  if (glyphs.empty()) return;
  cairo_t* cairo = Target();
  TraceGlyphs(cairo, face, size, glyphs);
  cairo_set_fill_rule(cairo, CAIRO_FILL_RULE_WINDING);
  SetPaint(cairo, {color, nullptr});
  cairo_fill(cairo);
}

Path Canvas::Outlines(cairo_font_face_t* face, const cairo_matrix_t& size, std::span<const cairo_glyph_t> glyphs) {
  Path path;
  if (glyphs.empty()) return path;
  cairo_t* cairo = Target();
  TraceGlyphs(cairo, face, size, glyphs);
  cairo_path_t* outlines = cairo_copy_path(cairo);
  cairo_new_path(cairo);
  for (int i = 0; i < outlines->num_data; i += outlines->data[i].header.length) {
    const cairo_path_data_t* step = outlines->data + i;
    const auto spot = [step](int number) -> Spot { return {step[number].point.x, step[number].point.y}; };
    switch (step->header.type) {
      case CAIRO_PATH_MOVE_TO:
        path.MoveTo(spot(1));
        break;
      case CAIRO_PATH_LINE_TO:
        path.LineTo(spot(1));
        break;
      case CAIRO_PATH_CURVE_TO:
        path.CurveTo(spot(1), spot(2), spot(3));
        break;
      case CAIRO_PATH_CLOSE_PATH:
        path.Close();
        break;
    }
  }
  cairo_path_destroy(outlines);
  return path;
}

void Canvas::Finish(std::uint32_t* pixels, std::size_t pixelsPerRow) const {
  constexpr std::uint32_t kCount = kSamples * kSamples;
  cairo_surface_flush(surface_.get());
  for (std::int32_t y = 0; y < height_; y += kSamples) {
    const std::uint32_t* rows[kSamples];
    for (std::int32_t i = 0; i < kSamples; ++i) rows[i] = Row(surface_.get(), y + i);
    for (std::int32_t x = 0; x < width_; x += kSamples) {
      // Two sums of 16 bits each lie in one word: 16 samples of 255 stay below 65536.
      std::uint32_t redBlue = 0;
      std::uint32_t alphaGreen = 0;
      for (const std::uint32_t* row : rows) {
        for (std::int32_t i = 0; i < kSamples; ++i) {
          redBlue += row[x + i] & 0x00FF00FF;
          alphaGreen += row[x + i] >> 8 & 0x00FF00FF;
        }
      }
      const std::uint32_t painted = (alphaGreen >> 16) / 255;
      std::uint32_t& pixel = pixels[x / kSamples];
      if (painted == 0) {
        pixel = 0;
        continue;
      }
      const std::uint32_t left = kCount - painted;
      const std::uint32_t red = (redBlue >> 16) + left * (paper_ >> 16 & 255);
      const std::uint32_t green = (alphaGreen & 0xFFFF) + left * (paper_ >> 8 & 255);
      const std::uint32_t blue = (redBlue & 0xFFFF) + left * (paper_ & 255);
      pixel = kOpaque | (red + kCount / 2) / kCount << 16 | (green + kCount / 2) / kCount << 8 |
              (blue + kCount / 2) / kCount;
    }
    pixels += pixelsPerRow;
  }
}

}  // namespace metafile_player
