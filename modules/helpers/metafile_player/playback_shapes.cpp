#include <algorithm>
#include <array>
#include <cmath>

#include "modules/helpers/metafile_player/limits.h"
#include "modules/helpers/metafile_player/playback.h"

// Lines, areas and paths.

namespace metafile_player {

using platform::Record;

namespace {

constexpr double kPi = 3.14159265358979323846;
// The middle of a pixel of the picture lies so many samples from its edge: lines run through it.
constexpr double kHalfPixel = kSamples / 2.0;
constexpr double kMaxWidth = 262144;  // samples: wider than any picture
constexpr double kShortestDash = 0.25;
constexpr double kSquare = 1.02;  // axes that differ by less count as equal
constexpr double kFlattest = 1e4;
constexpr double kThinPen = 1.5;  // pixels of a screen
constexpr std::size_t kCountAt = 24;
constexpr std::size_t kPointsAt = 28;

// The lengths of marks and gaps, in widths of a wide line or in pixels of a thin one.
std::vector<double> StyleDashes(std::uint32_t style, bool wide) {
  switch (style) {
    case platform::kPenDash:
      return wide ? std::vector<double>{3, 1} : std::vector<double>{18, 6};
    case platform::kPenDot:
      return wide ? std::vector<double>{1, 1} : std::vector<double>{3, 3};
    case platform::kPenDashDot:
      return wide ? std::vector<double>{3, 1, 1, 1} : std::vector<double>{9, 6, 3, 6};
    case platform::kPenDashDotDot:
      return wide ? std::vector<double>{3, 1, 1, 1, 1, 1} : std::vector<double>{9, 3, 3, 3, 3, 3};
    case platform::kPenAlternate:
      return {1, 1};
    default:
      return {};
  }
}

}  // namespace

std::vector<Spot> Playback::ReadPoints(const Record& record, std::size_t at, std::size_t count, bool narrow) const {
  count = std::min({count, record.Room(at, narrow ? 4 : 8), kMaxPoints});
  std::vector<Spot> points(count);
  for (Spot& point : points) {
    if (narrow) {
      point = {static_cast<double>(record.SignedWord(at)), static_cast<double>(record.SignedWord(at + 2))};
      at += 4;
    } else {
      point = SpotAt(record, at);
      at += 8;
    }
  }
  return points;
}

bool Playback::PlayPoints(const Record& record) {
  const std::uint32_t type = record.Type();
  const bool narrow = type >= platform::kEmrPolyBezier16;
  const auto points = [&] { return ReadPoints(record, kPointsAt, record.Long(kCountAt), narrow); };
  const auto shape = [&](bool closed, bool curves) {
    const std::vector<Spot> all = points();
    if (all.size() < 2) return;
    Path path;
    if (curves) {
      path.MoveTo(ToSamples(all[0]));
      for (std::size_t i = 1; i + 2 < all.size(); i += 3) {
        path.CurveTo(ToSamples(all[i]), ToSamples(all[i + 1]), ToSamples(all[i + 2]));
      }
    } else {
      Figure(all, 0, all.size(), closed, path);
    }
    Draw(path, closed, true);
  };
  switch (type) {
    case platform::kEmrPolygon16:
    case platform::kEmrPolygon:
      shape(true, false);
      return true;
    case platform::kEmrPolyline16:
    case platform::kEmrPolyline:
      shape(false, false);
      return true;
    case platform::kEmrPolyBezier16:
    case platform::kEmrPolyBezier:
      shape(false, true);
      return true;
    case platform::kEmrPolylineTo16:
    case platform::kEmrPolylineTo:
      GoOn(points(), false);
      return true;
    case platform::kEmrPolyBezierTo16:
    case platform::kEmrPolyBezierTo:
      GoOn(points(), true);
      return true;
    case platform::kEmrPolyPolygon16:
    case platform::kEmrPolyPolygon:
      Figures(record, narrow, true);
      return true;
    case platform::kEmrPolyPolyline16:
    case platform::kEmrPolyPolyline:
      Figures(record, narrow, false);
      return true;
    case platform::kEmrPolyDraw16:
    case platform::kEmrPolyDraw:
      PolyDraw(record, narrow);
      return true;
    case platform::kEmrMoveTo:
      dc_.position = SpotAt(record, 8);
      figureOpen_ = false;
      return true;
    case platform::kEmrLineTo:
      GoOn({SpotAt(record, 8)}, false);
      return true;
    default:
      return false;
  }
}

void Playback::Figure(const std::vector<Spot>& points, std::size_t begin, std::size_t end, bool closed,
                      Path& path) const {
  if (begin >= end) return;
  path.MoveTo(ToSamples(points[begin]));
  for (std::size_t i = begin + 1; i < end; ++i) path.LineTo(ToSamples(points[i]));
  if (closed) path.Close();
}

void Playback::Figures(const Record& record, bool narrow, bool closed) {
  constexpr std::size_t kCountsAt = 32;
  const std::size_t figures = std::min<std::size_t>(record.Long(kCountAt), record.Room(kCountsAt, 4));
  const std::vector<Spot> points = ReadPoints(record, kCountsAt + 4 * figures, record.Long(28), narrow);
  Path path;
  std::size_t begin = 0;
  for (std::size_t i = 0; i < figures; ++i) {
    const std::size_t count = std::min<std::size_t>(record.Long(kCountsAt + 4 * i), points.size() - begin);
    Figure(points, begin, begin + count, closed, path);
    begin += count;
  }
  Draw(path, closed, true);
}

void Playback::BeginFigureAtPosition() {
  if (!figureOpen_) path_.MoveTo(ToSamples(dc_.position));
  figureOpen_ = true;
}

// From the current position on, which moves along.
void Playback::GoOn(const std::vector<Spot>& points, bool curves) {
  const std::size_t step = curves ? 3 : 1;
  if (points.size() < step || (pathOpen_ && path_.PointCount() + points.size() > kMaxPoints)) return;
  Path alone;
  if (pathOpen_) {
    BeginFigureAtPosition();
  } else {
    alone.MoveTo(ToSamples(dc_.position));
  }
  Path& path = pathOpen_ ? path_ : alone;
  for (std::size_t i = 0; i + step <= points.size(); i += step) {
    if (curves) {
      path.CurveTo(ToSamples(points[i]), ToSamples(points[i + 1]), ToSamples(points[i + 2]));
    } else {
      path.LineTo(ToSamples(points[i]));
    }
  }
  dc_.position = points[points.size() / step * step - 1];
  if (!pathOpen_) StrokeWith(alone, *dc_.pen);
}

void Playback::PolyDraw(const Record& record, bool narrow) {
  enum : std::uint8_t { kClose = 1, kLine = 2, kCurve = 4, kMove = 6 };
  const std::vector<Spot> points = ReadPoints(record, kPointsAt, record.Long(kCountAt), narrow);
  const std::size_t kindsAt = kPointsAt + points.size() * (narrow ? 4 : 8);
  if (pathOpen_ && path_.PointCount() + points.size() > kMaxPoints) return;
  Path alone;
  if (!pathOpen_) alone.MoveTo(ToSamples(dc_.position));
  Path& path = pathOpen_ ? path_ : alone;
  for (std::size_t i = 0; i < points.size(); ++i) {
    const std::uint8_t kind = record.Byte(kindsAt + i);
    if ((kind & kMove) == kMove) {
      path.MoveTo(ToSamples(points[i]));
      figureOpen_ = pathOpen_;
      dc_.position = points[i];
      continue;
    }
    if (pathOpen_) BeginFigureAtPosition();
    if ((kind & kLine) != 0) {
      path.LineTo(ToSamples(points[i]));
    } else if ((kind & kCurve) != 0 && i + 2 < points.size()) {
      path.CurveTo(ToSamples(points[i]), ToSamples(points[i + 1]), ToSamples(points[i + 2]));
      i += 2;
    }
    dc_.position = points[i];
    if ((record.Byte(kindsAt + i) & kClose) != 0) {
      path.Close();
      figureOpen_ = false;
    }
  }
  if (!pathOpen_) StrokeWith(alone, *dc_.pen);
}

bool Playback::PlayShape(const Record& record) {
  switch (record.Type()) {
    case platform::kEmrRectangle:
    case platform::kEmrRoundRect:
    case platform::kEmrEllipse:
      BoxShape(record);
      return true;
    case platform::kEmrArc:
    case platform::kEmrArcTo:
    case platform::kEmrChord:
    case platform::kEmrPie:
      ArcShape(record);
      return true;
    case platform::kEmrAngleArc:
      AngleArc(record);
      return true;
    case platform::kEmrSetPixel: {
      // A pixel of the recorded device, and at least one of the picture.
      const Spot at = ToSamples(SpotAt(record, 8));
      const double width = std::max<double>(kSamples, std::abs(placement_.deviceToSamples.m11));
      const double height = std::max<double>(kSamples, std::abs(placement_.deviceToSamples.m22));
      Path path;
      path.AddBox({at.x, at.y, at.x + width, at.y + height});
      canvas_.Fill(path, false, {ColorOf(record.Long(16)), nullptr}, platform::kRop2CopyPen);
      return true;
    }
    case platform::kEmrGradientFill:
      GradientFill(record);
      return true;
    default:
      return false;
  }
}

// Right and bottom lie outside of a box: its outline is a pixel nearer than they say, while the area goes up to them.
void Playback::BoxShape(const Record& record) {
  const Area box = BoxAt(record, 8);
  const auto add = [&](Path& path, const Area& part) {
    if (record.Type() == platform::kEmrEllipse) {
      AddEllipse(path, toSamples_, part);
    } else if (record.Type() == platform::kEmrRoundRect) {
      AddRoundBox(path, toSamples_, part, record.SignedLong(24), record.SignedLong(28));
    } else {
      for (const Spot corner : {Spot{part.left, part.top}, {part.right, part.top}, {part.right, part.bottom}}) {
        if (corner.x == part.left && corner.y == part.top) {
          path.MoveTo(ToSamples(corner));
        } else {
          path.LineTo(ToSamples(corner));
        }
      }
      path.LineTo(ToSamples(part.left, part.bottom));
      path.Close();
    }
  };
  Path area;
  add(area, box);
  if (pathOpen_) return Draw(area, true, true);
  Draw(area, true, false);
  if (dc_.pen->IsNull()) return;
  Path outline;
  const double scale = Scale();
  double inset = scale > 0 ? kSamples / scale : 0;
  Area inner = box;
  if ((dc_.pen->style & platform::kPenStyleMask) == platform::kPenInsideFrame) {
    const double half = std::max(dc_.pen->width - inset, 0.0) / 2;
    inner = {box.left + half, box.top + half, box.right - half, box.bottom - half};
  }
  // The pixel lies to the right of and below the line's coordinates on the picture, wherever the axes point.
  const double insetX = std::min(inset, inner.right - inner.left);
  const double insetY = std::min(inset, inner.bottom - inner.top);
  (toSamples_.m11 < 0 ? inner.left : inner.right) += toSamples_.m11 < 0 ? insetX : -insetX;
  (toSamples_.m22 < 0 ? inner.top : inner.bottom) += toSamples_.m22 < 0 ? insetY : -insetY;
  add(outline, inner);
  Draw(outline, false, true);
}

void Playback::ArcShape(const Record& record) {
  const Area box = BoxAt(record, 8);
  const double middleX = (box.left + box.right) / 2, middleY = (box.top + box.bottom) / 2;
  const double radiusX = (box.right - box.left) / 2, radiusY = (box.bottom - box.top) / 2;
  if (radiusX <= 0 || radiusY <= 0) return;
  const auto angleTo = [&](std::size_t at) {
    const Spot ray = SpotAt(record, at);
    return std::atan2((middleY - ray.y) / radiusY, (ray.x - middleX) / radiusX);
  };
  const double start = angleTo(24);
  double sweep = angleTo(32) - start;
  // Directions are meant on the device; an axis that points the other way turns them around.
  const bool flipped = toSamples_.m11 * toSamples_.m22 - toSamples_.m12 * toSamples_.m21 < 0;
  const bool counterClockwise = (dc_.arcDirection != platform::kClockwise) != flipped;
  if (counterClockwise && sweep <= 0) sweep += 2 * kPi;
  if (!counterClockwise && sweep >= 0) sweep -= 2 * kPi;

  const std::uint32_t type = record.Type();
  if (type == platform::kEmrArcTo) {
    Path alone;
    if (pathOpen_) {
      BeginFigureAtPosition();
    } else {
      alone.MoveTo(ToSamples(dc_.position));
    }
    AddArc(pathOpen_ ? path_ : alone, toSamples_, box, start, sweep, true);
    dc_.position = {middleX + radiusX * std::cos(start + sweep), middleY - radiusY * std::sin(start + sweep)};
    if (!pathOpen_) StrokeWith(alone, *dc_.pen);
    return;
  }
  Path path;
  AddArc(path, toSamples_, box, start, sweep, false);
  if (type == platform::kEmrPie) path.LineTo(ToSamples(middleX, middleY));
  if (type != platform::kEmrArc) path.Close();
  Draw(path, type != platform::kEmrArc, true);
}

void Playback::AngleArc(const Record& record) {
  const Spot middle = SpotAt(record, 8);
  const double radius = record.Long(16);
  const double start = record.Float(20) * kPi / 180;
  const double sweep = record.Float(24) * kPi / 180;
  if (!std::isfinite(start) || !std::isfinite(sweep) || std::abs(start) > 1000) return;
  const Area box{middle.x - radius, middle.y - radius, middle.x + radius, middle.y + radius};
  Path alone;
  if (pathOpen_) {
    BeginFigureAtPosition();
  } else {
    alone.MoveTo(ToSamples(dc_.position));
  }
  const double bounded = std::clamp(sweep, -4 * kPi, 4 * kPi);
  AddArc(pathOpen_ ? path_ : alone, toSamples_, box, start, bounded, true);
  dc_.position = {middle.x + radius * std::cos(start + bounded), middle.y - radius * std::sin(start + bounded)};
  if (!pathOpen_) StrokeWith(alone, *dc_.pen);
}

bool Playback::PlayPath(const Record& record) {
  const auto finish = [&](bool fill, bool stroke) {
    // Also without its end: what stands in it by now is drawn.
    pathOpen_ = false;
    if (pathWidened_) {
      FillOutline(path_);
    } else {
      Draw(path_, fill, stroke);
    }
    path_.Clear();
  };
  switch (record.Type()) {
    case platform::kEmrBeginPath:
      path_.Clear();
      pathOpen_ = true;
      pathWidened_ = false;
      figureOpen_ = false;
      return true;
    case platform::kEmrWidenPath:
      pathWidened_ = true;
      return true;
    case platform::kEmrEndPath:
      pathOpen_ = false;
      return true;
    case platform::kEmrAbortPath:
      pathOpen_ = false;
      path_.Clear();
      return true;
    case platform::kEmrCloseFigure:
      if (pathOpen_) path_.Close();
      figureOpen_ = false;
      return true;
    case platform::kEmrFillPath:
      finish(true, false);
      return true;
    case platform::kEmrStrokePath:
      finish(false, true);
      return true;
    case platform::kEmrStrokeAndFillPath:
      finish(true, true);
      return true;
    case platform::kEmrSelectClipPath: {
      Path figures;
      std::swap(figures, path_);
      pathOpen_ = false;
      Combine(RegionOfPath(figures, dc_.polyFillMode == platform::kFillWinding), record.Long(8));
      return true;
    }
    default:
      return false;
  }
}

void Playback::Draw(const Path& path, bool fill, bool stroke) {
  if (pathOpen_) {
    if (path_.PointCount() + path.PointCount() <= kMaxPoints) path_.Append(path);
    figureOpen_ = false;
    return;
  }
  if (fill) FillWith(path, dc_.brush, dc_.polyFillMode == platform::kFillWinding);
  if (stroke) StrokeWith(path, *dc_.pen);
}

void Playback::FillWith(const Path& path, const BrushHandle& brush, bool winding) {
  if (brush->IsNull()) return;
  Pattern owner;
  const Paint paint = PaintOf(*brush, owner);
  canvas_.Fill(path, winding, paint, dc_.rop2);
}

// What the pen would cover, painted by the brush.
void Playback::FillOutline(const Path& path) {
  if (dc_.brush->IsNull()) return;
  Pen pen = *dc_.pen;
  pen.color = dc_.brush->color;
  pen.brush = dc_.brush->style == platform::kBrushSolid ? nullptr : dc_.brush;
  StrokeWith(path, pen);
}

void Playback::StrokeWith(const Path& path, const Pen& pen) {
  if (pen.IsNull()) return;
  Path shifted = path;
  shifted.Move(kHalfPixel, kHalfPixel);
  Stroke stroke = StrokeOf(pen);
  // Dashes that could never be told apart would take forever.
  if (!stroke.dashes.empty() && shifted.Length() > kMaxDashes * stroke.DashPeriod()) stroke.dashes.clear();
  if (!stroke.dashes.empty() && !pen.IsGeometric() && dc_.bkMode == platform::kOpaqueMode) {
    Stroke gaps = stroke;
    gaps.dashes.clear();
    canvas_.Line(shifted, gaps, {dc_.bkColor, nullptr}, dc_.rop2);
  }
  Pattern owner;
  const Paint paint = pen.brush != nullptr ? PaintOf(*pen.brush, owner) : Paint{pen.color, nullptr};
  canvas_.Line(shifted, stroke, paint, dc_.rop2);
}

Stroke Playback::StrokeOf(const Pen& pen) const {
  Stroke stroke;
  const double scale = Scale();
  const double wanted = pen.width * scale;
  const bool wide = pen.IsGeometric() && wanted > kSamples;
  stroke.width = wide ? std::min(wanted, kMaxWidth) : kSamples;
  if (wide) {
    const std::uint32_t cap = pen.style & platform::kPenCapMask;
    stroke.cap = cap == platform::kPenCapFlat     ? CAIRO_LINE_CAP_BUTT
                 : cap == platform::kPenCapSquare ? CAIRO_LINE_CAP_SQUARE
                                                  : CAIRO_LINE_CAP_ROUND;
    const std::uint32_t join = pen.style & platform::kPenJoinMask;
    stroke.join = join == platform::kPenJoinMiter   ? CAIRO_LINE_JOIN_MITER
                  : join == platform::kPenJoinBevel ? CAIRO_LINE_JOIN_BEVEL
                                                    : CAIRO_LINE_JOIN_ROUND;
    stroke.miterLimit = dc_.miterLimit;
    // A pen is round in logical units, and an ellipse where these aren't square.
    const double across = std::hypot(toSamples_.m11, toSamples_.m12) / scale;
    const double down = std::hypot(toSamples_.m21, toSamples_.m22) / scale;
    const double most = std::max(across, down), least = std::min(across, down);
    if (most > kSquare * least && most < kFlattest * least && stroke.width * most < kMaxWidth) {
      cairo_matrix_init(&stroke.shape, toSamples_.m11 / scale, toSamples_.m12 / scale, toSamples_.m21 / scale,
                        toSamples_.m22 / scale, 0, 0);
    }
  }
  stroke.dashes = DashesOf(pen, wide, stroke);
  return stroke;
}

std::vector<double> Playback::DashesOf(const Pen& pen, bool wide, Stroke& stroke) const {
  const std::uint32_t style = pen.style & platform::kPenStyleMask;
  if (pen.dashedWhileThin && pen.IsGeometric()) {
    const double pixels = pen.width * Scale() / kSamples / placement_.pixelsPerScreenPixel;
    if (pixels > kThinPen) return {};
  }
  std::vector<double> dashes = StyleDashes(style, pen.IsGeometric() && !pen.dashedWhileThin);
  double unit = wide ? stroke.width : kSamples;
  if (style == platform::kPenUserStyle) {
    dashes.assign(pen.dashes.begin(), pen.dashes.end());
    if (pen.IsGeometric()) unit = Scale();
  }
  for (double& dash : dashes) dash *= unit;
  if (wide && stroke.cap != CAIRO_LINE_CAP_BUTT && !dashes.empty()) {
    // The ends of a line belong to its dashes; they must not fill the gaps.
    if (dashes.size() % 2 != 0) dashes.insert(dashes.end(), dashes.begin(), dashes.end());
    for (std::size_t i = 0; i < dashes.size(); i += 2) {
      const double ends = std::clamp(dashes[i] - kShortestDash, 0.0, stroke.width);
      dashes[i] -= ends;
      dashes[i + 1] += ends;
    }
  } else if (!dashes.empty()) {
    stroke.cap = CAIRO_LINE_CAP_BUTT;
  }
  for (double& dash : dashes) dash = std::clamp(dash, kShortestDash, kMaxWidth);
  return dashes;
}

namespace {

constexpr int kHatchSide = 8 * kSamples;  // a hatch comes again every eight pixels

bool OnHatch(std::uint32_t hatch, int x, int y) {
  const auto mod = [](int value) { return (value % kHatchSide + kHatchSide) % kHatchSide; };
  const int middle = kHatchSide / 2;
  const bool across = y >= middle && y < middle + kSamples;
  const bool down = x >= middle && x < middle + kSamples;
  // A slanted line is as wide as a straight one: its row is longer by the root of two.
  constexpr int kSlanted = 6;
  const bool falling = mod(x - y + kSlanted / 2) < kSlanted;
  const bool rising = mod(x + y + kSlanted / 2) < kSlanted;
  switch (hatch) {
    case platform::kHatchHorizontal:
      return across;
    case platform::kHatchVertical:
      return down;
    case platform::kHatchForward:
      return falling;
    case platform::kHatchBackward:
      return rising;
    case platform::kHatchCross:
      return across || down;
    case platform::kHatchDiagonalCross:
      return falling || rising;
    default:
      return true;
  }
}

Surface HatchCell(std::uint32_t hatch, std::uint32_t color, std::uint32_t between) {
  Surface cell(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, kHatchSide, kHatchSide));
  cairo_surface_flush(cell.get());
  std::uint8_t* row = cairo_image_surface_get_data(cell.get());
  if (row == nullptr) return cell;
  for (int y = 0; y < kHatchSide; ++y, row += cairo_image_surface_get_stride(cell.get())) {
    for (int x = 0; x < kHatchSide; ++x) {
      reinterpret_cast<std::uint32_t*>(row)[x] = OnHatch(hatch, x, y) ? color : between;
    }
  }
  cairo_surface_mark_dirty(cell.get());
  return cell;
}

}  // namespace

Paint Playback::PaintOf(const Brush& brush, Pattern& owner) const {
  double perPixel = 1;
  if (brush.style == platform::kBrushHatched) {
    switch (brush.hatch) {
      case platform::kHatchTextColor:
      case platform::kHatchTextColorDithered:
        return {dc_.textColor, nullptr};
      case platform::kHatchBkColor:
      case platform::kHatchBkColorDithered:
        return {dc_.bkColor, nullptr};
      default:
        break;
    }
    const std::uint32_t between = dc_.bkMode == platform::kTransparentMode ? 0 : dc_.bkColor;
    owner.reset(cairo_pattern_create_for_surface(HatchCell(brush.hatch, brush.color, between).get()));
  } else if (brush.bitmap != nullptr) {
    perPixel = kSamples;
    cairo_surface_t* surface = brush.bitmap->surface.get();
    if (brush.mono) SpendOn(brush.bitmap.get());
    owner.reset(
        cairo_pattern_create_for_surface(brush.mono ? TwoColored(surface, dc_.textColor, dc_.bkColor).get() : surface));
  } else {
    return {brush.color, nullptr};
  }
  cairo_pattern_set_extend(owner.get(), CAIRO_EXTEND_REPEAT);
  cairo_pattern_set_filter(owner.get(), CAIRO_FILTER_NEAREST);
  const double x = placement_.deviceToSamples.X(dc_.brushOrg.x, dc_.brushOrg.y);
  const double y = placement_.deviceToSamples.Y(dc_.brushOrg.x, dc_.brushOrg.y);
  cairo_matrix_t matrix;
  cairo_matrix_init_scale(&matrix, 1 / perPixel, 1 / perPixel);
  cairo_matrix_translate(&matrix, -std::round(std::clamp(x, -1e6, 1e6)), -std::round(std::clamp(y, -1e6, 1e6)));
  cairo_pattern_set_matrix(owner.get(), &matrix);
  return {0, owner.get()};
}

namespace {

struct Channels {
  double red, green, blue;
};

Channels ChannelsOf(std::uint32_t color) {
  return {(color >> 16 & 255) / 255.0, (color >> 8 & 255) / 255.0, (color & 255) / 255.0};
}

}  // namespace

void Playback::GradientBox(Spot from, std::uint32_t fromColor, Spot to, std::uint32_t toColor, bool across) {
  Path path;
  const Spot corners[] = {ToSamples(from), ToSamples(to.x, from.y), ToSamples(to), ToSamples(from.x, to.y)};
  path.MoveTo(corners[0]);
  for (int i = 1; i < 4; ++i) path.LineTo(corners[i]);
  path.Close();
  const Spot end = across ? corners[1] : corners[3];
  Pattern pattern(cairo_pattern_create_linear(corners[0].x, corners[0].y, end.x, end.y));
  const Channels first = ChannelsOf(fromColor), last = ChannelsOf(toColor);
  cairo_pattern_add_color_stop_rgb(pattern.get(), 0, first.red, first.green, first.blue);
  cairo_pattern_add_color_stop_rgb(pattern.get(), 1, last.red, last.green, last.blue);
  cairo_pattern_set_extend(pattern.get(), CAIRO_EXTEND_PAD);
  canvas_.Fill(path, false, {0, pattern.get()}, platform::kRop2CopyPen);
}

void Playback::GradientTriangle(const Spot* corners, const std::uint32_t* colors) {
  Path path;
  std::array<Spot, 3> at;
  for (std::size_t i = 0; i < 3; ++i) {
    at[i] = ToSamples(corners[i]);
    if (i == 0) {
      path.MoveTo(at[i]);
    } else {
      path.LineTo(at[i]);
    }
  }
  path.Close();
  const Area extent = path.Extent();
  const auto edge = [](double value, std::int32_t size) {
    return static_cast<std::int32_t>(std::clamp(value, 0.0, static_cast<double>(size)));
  };
  const std::int32_t left = edge(std::floor(extent.left), canvas_.Width());
  const std::int32_t top = edge(std::floor(extent.top), canvas_.Height());
  const std::int32_t right = edge(std::ceil(extent.right), canvas_.Width());
  const std::int32_t bottom = edge(std::ceil(extent.bottom), canvas_.Height());
  const double area = (at[1].x - at[0].x) * (at[2].y - at[0].y) - (at[2].x - at[0].x) * (at[1].y - at[0].y);
  if (left >= right || top >= bottom || area == 0 || !std::isfinite(area)) return;
  const Surface surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, right - left, bottom - top));
  cairo_surface_flush(surface.get());
  std::uint8_t* row = cairo_image_surface_get_data(surface.get());
  if (row == nullptr) return;
  constexpr std::uint64_t kGradientWork = 16;
  canvas_.Spend(kGradientWork * static_cast<std::uint64_t>(right - left) * static_cast<std::uint64_t>(bottom - top));
  // Each channel is a plane over the triangle.
  for (std::int32_t y = top; y < bottom; ++y, row += cairo_image_surface_get_stride(surface.get())) {
    for (std::int32_t x = left; x < right; ++x) {
      const double px = x + 0.5 - at[0].x, py = y + 0.5 - at[0].y;
      const double second = (px * (at[2].y - at[0].y) - py * (at[2].x - at[0].x)) / area;
      const double third = (py * (at[1].x - at[0].x) - px * (at[1].y - at[0].y)) / area;
      std::uint32_t pixel = 0;
      for (int shift = 0; shift < 24; shift += 8) {
        const auto channel = [&](std::size_t i) { return static_cast<double>(colors[i] >> shift & 255); };
        const double value = channel(0) + second * (channel(1) - channel(0)) + third * (channel(2) - channel(0));
        pixel |= static_cast<std::uint32_t>(std::clamp(value, 0.0, 255.0) + 0.5) << shift;
      }
      reinterpret_cast<std::uint32_t*>(row)[x - left] = pixel;
    }
  }
  cairo_surface_mark_dirty(surface.get());
  cairo_surface_set_device_offset(surface.get(), -left, -top);
  const Pattern pattern(cairo_pattern_create_for_surface(surface.get()));
  cairo_pattern_set_filter(pattern.get(), CAIRO_FILTER_NEAREST);
  canvas_.Fill(path, false, {0, pattern.get()}, platform::kRop2CopyPen);
}

void Playback::GradientFill(const Record& record) {
  enum : std::uint32_t { kAcross = 0, kDown = 1, kTriangles = 2 };
  constexpr std::size_t kVerticesAt = 36;
  constexpr std::size_t kVertexBytes = 16;
  const std::size_t vertices = std::min<std::size_t>(record.Long(24), record.Room(kVerticesAt, kVertexBytes));
  const std::uint32_t mode = record.Long(32);
  const std::size_t cornersOf = mode == kTriangles ? 3 : 2;
  const std::size_t shapesAt = kVerticesAt + kVertexBytes * vertices;
  const std::size_t shapes = std::min<std::size_t>(record.Long(28), record.Room(shapesAt, 4 * cornersOf));
  for (std::size_t i = 0; i < shapes && !canvas_.Exhausted(); ++i) {
    std::array<Spot, 3> corners;
    std::array<std::uint32_t, 3> colors{};
    bool known = true;
    for (std::size_t k = 0; k < cornersOf; ++k) {
      const std::size_t index = record.Long(shapesAt + 4 * (cornersOf * i + k));
      known = known && index < vertices;
      if (!known) break;
      const std::size_t at = kVerticesAt + kVertexBytes * index;
      corners[k] = SpotAt(record, at);
      const auto high = [&](std::size_t channel) -> std::uint32_t { return record.Byte(at + 9 + 2 * channel); };
      colors[k] = 0xFF000000 | high(0) << 16 | high(1) << 8 | high(2);
    }
    if (!known) continue;
    if (mode == kTriangles) {
      GradientTriangle(corners.data(), colors.data());
    } else {
      GradientBox(corners[0], colors[0], corners[1], colors[1], mode == kAcross);
    }
  }
}

}  // namespace metafile_player
