#include "modules/helpers/wpg_reader/drawing_target.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <numbers>
#include <utility>

namespace wpg {
namespace {

using librevenge::RVNGPropertyList;

constexpr std::uint32_t kUnitsPerInch = 7200;
constexpr double kFarthest = 1 << 26;
constexpr std::uint32_t kMaxDrawings = 1000000;
constexpr int kGradientSteps = 128;

std::int32_t Whole(double value) {
  return std::isfinite(value) ? static_cast<std::int32_t>(std::lround(std::clamp(value, -kFarthest, kFarthest))) : 0;
}

// Recorded units of a length; 0 if it isn't there.
double Units(const RVNGPropertyList& list, const char* name) {
  if (list[name] == nullptr) return 0;
  const double perInch = list[name]->getUnit() == librevenge::RVNG_POINT  ? 72
                         : list[name]->getUnit() == librevenge::RVNG_TWIP ? 1440
                                                                          : 1;
  return list[name]->getDouble() / perInch * kUnitsPerInch;
}

platform::Point PointOf(const RVNGPropertyList& list, const char* x, const char* y) {
  return {Whole(Units(list, x)), Whole(Units(list, y))};
}

std::string TextOf(const RVNGPropertyList& list, const char* name) {
  return list[name] != nullptr ? list[name]->getStr().cstr() : std::string();
}

// "#rrggbb".
std::uint32_t ColorOf(const RVNGPropertyList& list, const char* name, std::uint32_t otherwise) {
  const std::string text = TextOf(list, name);
  if (text.size() != 7 || text[0] != '#') return otherwise;
  const auto rgb = static_cast<std::uint32_t>(std::strtoul(text.c_str() + 1, nullptr, 16));
  return platform::ColorRef(rgb >> 16 & 255, rgb >> 8 & 255, rgb & 255);
}

// Over white.
std::uint32_t Faded(std::uint32_t color, const RVNGPropertyList& list, const char* name) {
  if (list[name] == nullptr) return color;
  const double share = std::clamp(list[name]->getDouble(), 0.0, 1.0);
  const auto part = [&](std::uint32_t value) {
    return static_cast<std::uint32_t>(std::lround(255 - (255.0 - (value & 255U)) * share));
  };
  return platform::ColorRef(part(color), part(color >> 8), part(color >> 16));
}

std::u16string Wide(const char* utf8) {
  std::u16string wide;
  librevenge::RVNGString text(utf8);
  librevenge::RVNGString::Iter i(text);
  for (i.rewind(); i.next();) {
    const auto* c = reinterpret_cast<const unsigned char*>(i());
    std::uint32_t code = c[0];
    if (code >= 0xF0) {
      code = '?';
    } else if (code >= 0xE0) {
      code = (code & 15U) << 12 | (c[1] & 63U) << 6 | (c[2] & 63U);
    } else if (code >= 0xC0) {
      code = (code & 31U) << 6 | (c[1] & 63U);
    }
    wide += static_cast<char16_t>(code);
  }
  return wide;
}

platform::Box Around(const std::vector<platform::Point>& points) {
  platform::Box box{INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN};
  for (const platform::Point p : points) {
    box = {std::min(box.left, p.x), std::min(box.top, p.y), std::max(box.right, p.x), std::max(box.bottom, p.y)};
  }
  return box;
}

}  // namespace

DrawingTarget::DrawingTarget() : recorder_(kUnitsPerInch) {
  recorder_.SetBkMode(platform::kTransparentMode);
  recorder_.SelectObject(platform::kNullPen);
}

void DrawingTarget::startPage(const RVNGPropertyList& list) {
  if (sized_) return;
  const std::int32_t width = Whole(Units(list, "svg:width"));
  const std::int32_t height = Whole(Units(list, "svg:height"));
  sized_ = width > 0 && height > 0;
  page_ = {0, 0, width, height};
}

platform::MetafileRecorder& DrawingTarget::Recorder() {
  const platform::Box drawn = recorder_.Bounds();
  const bool beside =
      drawn.left >= page_.right || drawn.right <= page_.left || drawn.top >= page_.bottom || drawn.bottom <= page_.top;
  const bool area = drawn.right > drawn.left && drawn.bottom > drawn.top;
  recorder_.SetFrame(beside && area ? drawn : page_);
  return recorder_;
}

void DrawingTarget::setStyle(const RVNGPropertyList& list) {
  style_ = {};
  const std::string fill = TextOf(list, "draw:fill");
  if (fill == "none") style_.fill = Style::Fill::kNone;
  if (fill == "gradient") style_.fill = Style::Fill::kGradient;
  style_.fillColor = Faded(ColorOf(list, "draw:fill-color", 0xFFFFFF), list, "draw:opacity");
  if (style_.fill == Style::Fill::kGradient) ReadGradient(list);
  style_.winding = TextOf(list, "svg:fill-rule") == "nonzero";
  const std::string stroke = TextOf(list, "draw:stroke");
  style_.strokes = stroke != "none";
  style_.strokeColor = Faded(ColorOf(list, "svg:stroke-color", 0), list, "svg:stroke-opacity");
  style_.strokeWidth = std::clamp(Units(list, "svg:stroke-width"), 0.0, 65535.0);
  if (stroke == "dash") ReadDashes(list);
}

void DrawingTarget::ReadGradient(const RVNGPropertyList& list) {
  constexpr unsigned long kMaxStops = 64;
  style_.angle = list["draw:angle"] != nullptr ? list["draw:angle"]->getDouble() : 0;
  const librevenge::RVNGPropertyListVector* stops = list.child("svg:linearGradient");
  for (unsigned long i = 0; stops != nullptr && i < std::min(stops->count(), kMaxStops); ++i) {
    const RVNGPropertyList& stop = (*stops)[i];
    const double offset = stop["svg:offset"] != nullptr ? stop["svg:offset"]->getDouble() : 0;
    style_.stops.push_back(
        {std::clamp(offset, 0.0, 1.0), Faded(ColorOf(stop, "svg:stop-color", 0), stop, "svg:stop-opacity")});
  }
  if (style_.stops.empty()) style_.fill = Style::Fill::kSolid;
}

std::uint32_t DrawingTarget::ColorAt(double place) const {
  const auto& stops = style_.stops;
  std::size_t next = 0;
  while (next < stops.size() && stops[next].offset < place) ++next;
  if (next == 0) return stops.front().color;
  if (next == stops.size()) return stops.back().color;
  const Stop& a = stops[next - 1];
  const Stop& b = stops[next];
  const auto mixed = [&](int shift) {
    const double from = a.color >> shift & 255U;
    const double to = b.color >> shift & 255U;
    return static_cast<std::uint32_t>(std::lround(from + (to - from) * (place - a.offset) / (b.offset - a.offset)));
  };
  return platform::ColorRef(mixed(0), mixed(8), mixed(16));
}

// Strokes of one length and then of another, all as far from each other.
void DrawingTarget::ReadDashes(const RVNGPropertyList& list) {
  constexpr int kMaxDots = 8;
  const double gap = std::max(Units(list, "draw:distance"), 1.0);
  const std::pair<const char*, const char*> kKinds[] = {{"draw:dots1", "draw:dots1-length"},
                                                        {"draw:dots2", "draw:dots2-length"}};
  for (const auto& [countName, lengthName] : kKinds) {
    const int count = list[countName] != nullptr ? std::clamp(list[countName]->getInt(), 0, kMaxDots) : 0;
    for (int i = 0; i < count; ++i) {
      style_.dashes.push_back(static_cast<std::uint32_t>(std::max(Whole(Units(list, lengthName)), 1)));
      style_.dashes.push_back(static_cast<std::uint32_t>(Whole(gap)));
    }
  }
}

bool DrawingTarget::Begin() { return ++drawings_ < kMaxDrawings; }

void DrawingTarget::FillGradient(const platform::Box& box) {
  // Stripes across the box, seen through the shape.
  const double angle = style_.angle * std::numbers::pi / 180;
  const double alongX = std::sin(angle);
  const double alongY = std::cos(angle);
  const double middleX = (box.left + box.right) / 2.0;
  const double middleY = (box.top + box.bottom) / 2.0;
  const double width = static_cast<double>(box.right) - box.left;
  const double height = static_cast<double>(box.bottom) - box.top;
  const double reach = (std::abs(alongX) * width + std::abs(alongY) * height) / 2;
  const double across = std::hypot(width, height);
  for (int i = 0; i < kGradientSteps; ++i) {
    const std::uint32_t brush = recorder_.CreateBrush(platform::kBrushSolid, ColorAt((i + 0.5) / kGradientSteps));
    recorder_.SelectObject(brush);
    const auto corner = [&](double part, double side) {
      const double on = -reach + 2 * reach * part;
      return platform::Point{Whole(middleX + alongX * on - alongY * side),
                             Whole(middleY + alongY * on + alongX * side)};
    };
    const double from = static_cast<double>(i) / kGradientSteps;
    const double to = static_cast<double>(i + 1) / kGradientSteps;
    const platform::Point stripe[] = {corner(from, -across), corner(from, across), corner(to, across),
                                      corner(to, -across)};
    recorder_.Polygon(stripe);
    recorder_.SelectObject(platform::kNullBrush);
    recorder_.DeleteObject(brush);
  }
}

template <typename Add>
void DrawingTarget::Draw(bool fills, const platform::Box& box, Add add) {
  if (!Begin()) return;
  const auto path = [&] {
    recorder_.BeginPath();
    add();
    recorder_.EndPath();
  };
  recorder_.SetPolyFillMode(style_.winding ? platform::kFillWinding : platform::kFillAlternate);
  if (fills && style_.fill == Style::Fill::kGradient) {
    recorder_.SaveDc();
    path();
    recorder_.SelectClipPath(platform::kRegionAnd);
    FillGradient(box);
    recorder_.RestoreDc();
  } else if (fills && style_.fill == Style::Fill::kSolid) {
    const std::uint32_t brush = recorder_.CreateBrush(platform::kBrushSolid, style_.fillColor);
    recorder_.SelectObject(brush);
    path();
    recorder_.FillPath();
    recorder_.SelectObject(platform::kNullBrush);
    recorder_.DeleteObject(brush);
  }
  if (!style_.strokes) return;
  const auto width = static_cast<std::uint32_t>(std::max(Whole(style_.strokeWidth), 1));
  const std::uint32_t line =
      recorder_.ExtCreatePen(platform::kPenGeometric | platform::kPenJoinMiter |
                                 (style_.dashes.empty() ? platform::kPenSolid : platform::kPenUserStyle),
                             width, style_.strokeColor, style_.dashes);
  recorder_.SelectObject(line);
  path();
  recorder_.StrokePath();
  recorder_.SelectObject(platform::kNullPen);
  recorder_.DeleteObject(line);
}

void DrawingTarget::drawRectangle(const RVNGPropertyList& list) {
  const platform::Point from = PointOf(list, "svg:x", "svg:y");
  const platform::Point size = PointOf(list, "svg:width", "svg:height");
  const platform::Point corner = PointOf(list, "svg:rx", "svg:ry");
  const platform::Box box{from.x, from.y, from.x + size.x, from.y + size.y};
  Draw(true, box, [&] {
    if (corner.x > 0 && corner.y > 0) {
      recorder_.RoundRect(box, 2 * corner.x, 2 * corner.y);
      return;
    }
    const platform::Point points[] = {{box.right, box.top}, {box.right, box.bottom}, {box.left, box.bottom}};
    recorder_.MoveTo(box.left, box.top);
    recorder_.PolylineTo(points);
    recorder_.CloseFigure();
  });
}

void DrawingTarget::drawEllipse(const RVNGPropertyList& list) {
  const platform::Point middle = PointOf(list, "svg:cx", "svg:cy");
  const platform::Point radius = PointOf(list, "svg:rx", "svg:ry");
  const double turn = list["librevenge:rotate"] != nullptr ? list["librevenge:rotate"]->getDouble() : 0;
  const double c = std::cos(turn * std::numbers::pi / 180);
  const double s = std::sin(turn * std::numbers::pi / 180);
  const std::int32_t reach = std::max(std::abs(radius.x), std::abs(radius.y));
  // The part of a radius at which the controls of a quarter lie.
  constexpr double kQuarter = 0.5522847498;
  const auto at = [&](double x, double y) {
    return platform::Point{Whole(middle.x + x * radius.x * c + y * radius.y * s),
                           Whole(middle.y - x * radius.x * s + y * radius.y * c)};
  };
  Draw(true, {middle.x - reach, middle.y - reach, middle.x + reach, middle.y + reach}, [&] {
    const platform::Point start = at(1, 0);
    recorder_.MoveTo(start.x, start.y);
    const platform::Point curve[] = {at(1, kQuarter),  at(kQuarter, 1),  at(0, 1),          at(-kQuarter, 1),
                                     at(-1, kQuarter), at(-1, 0),        at(-1, -kQuarter), at(-kQuarter, -1),
                                     at(0, -1),        at(kQuarter, -1), at(1, -kQuarter),  start};
    recorder_.PolyBezierTo(curve);
    recorder_.CloseFigure();
  });
}

void DrawingTarget::DrawPoints(const RVNGPropertyList& list, bool closed) {
  const librevenge::RVNGPropertyListVector* vertices = list.child("svg:points");
  if (vertices == nullptr || vertices->count() < 2) return;
  std::vector<platform::Point> points;
  for (unsigned long i = 0; i < vertices->count(); ++i) points.push_back(PointOf((*vertices)[i], "svg:x", "svg:y"));
  Draw(closed, Around(points), [&] {
    recorder_.MoveTo(points[0].x, points[0].y);
    recorder_.PolylineTo(std::span(points).subspan(1));
    if (closed) recorder_.CloseFigure();
  });
}

void DrawingTarget::drawPolygon(const RVNGPropertyList& list) { DrawPoints(list, true); }
void DrawingTarget::drawPolyline(const RVNGPropertyList& list) { DrawPoints(list, false); }

void DrawingTarget::drawPath(const RVNGPropertyList& list) {
  const librevenge::RVNGPropertyListVector* steps = list.child("svg:d");
  if (steps == nullptr) return;
  bool closed = false;
  std::vector<platform::Point> points;
  for (unsigned long i = 0; i < steps->count(); ++i) {
    const RVNGPropertyList& step = (*steps)[i];
    closed = closed || TextOf(step, "librevenge:path-action") == "Z";
    if (step["svg:x"] != nullptr) points.push_back(PointOf(step, "svg:x", "svg:y"));
  }
  if (points.empty()) return;
  Draw(closed, Around(points), [&] {
    platform::Point at = points[0];
    recorder_.MoveTo(at.x, at.y);
    for (unsigned long i = 0; i < steps->count(); ++i) {
      const RVNGPropertyList& step = (*steps)[i];
      const std::string action = TextOf(step, "librevenge:path-action");
      if (action == "Z") {
        recorder_.CloseFigure();
        continue;
      }
      const platform::Point to = PointOf(step, "svg:x", "svg:y");
      if (action == "M") {
        recorder_.MoveTo(to.x, to.y);
      } else if (action == "C") {
        const platform::Point curve[] = {PointOf(step, "svg:x1", "svg:y1"), PointOf(step, "svg:x2", "svg:y2"), to};
        recorder_.PolyBezierTo(curve);
      } else if (action == "Q") {
        const platform::Point control = PointOf(step, "svg:x1", "svg:y1");
        const auto third = [&](platform::Point end) {
          return platform::Point{Whole((end.x + 2.0 * control.x) / 3), Whole((end.y + 2.0 * control.y) / 3)};
        };
        const platform::Point curve[] = {third(at), third(to), to};
        recorder_.PolyBezierTo(curve);
      } else {
        recorder_.LineTo(to.x, to.y);
      }
      at = to;
    }
  });
}

void DrawingTarget::drawGraphicObject(const RVNGPropertyList& list) {
  constexpr std::size_t kFileHeader = 14;
  if (TextOf(list, "librevenge:mime-type") != "image/bmp" || list["office:binary-data"] == nullptr || !Begin()) return;
  const librevenge::RVNGBinaryData data(list["office:binary-data"]->getStr());
  if (data.size() < kFileHeader + 40) return;
  const std::span<const std::uint8_t> file(data.getDataBuffer(), data.size());
  const auto dib = file.subspan(kFileHeader);
  bitmap_.assign(dib.begin(), dib.end());
  std::int32_t sides[2];
  std::memcpy(sides, &dib[4], sizeof(sides));
  const platform::Point from = PointOf(list, "svg:x", "svg:y");
  const platform::Point size = PointOf(list, "svg:width", "svg:height");
  const std::int32_t height =
      static_cast<std::int32_t>(std::min<std::int64_t>(std::abs(std::int64_t{sides[1]}), INT32_MAX));
  recorder_.DrawDib({from.x, from.y, from.x + size.x, from.y + size.y}, dib, {0, 0, sides[0], height});
}

void DrawingTarget::startTextObject(const RVNGPropertyList& list) {
  textX_ = Units(list, "svg:x");
  textY_ = Units(list, "svg:y");
  line_.clear();
}

void DrawingTarget::openSpan(const RVNGPropertyList& list) {
  if (list["fo:font-size"] != nullptr) {
    const double size = list["fo:font-size"]->getDouble();
    const bool inches = list["fo:font-size"]->getUnit() == librevenge::RVNG_INCH;
    fontSize_ = std::clamp(inches ? size * 72 : size, 0.1, 1000.0);
  }
  textColor_ = ColorOf(list, "fo:color", 0);
  bold_ = TextOf(list, "fo:font-weight") == "bold";
  italic_ = TextOf(list, "fo:font-style") == "italic";
  const std::string face = TextOf(list, "style:font-name");
  if (!face.empty()) face_ = Wide(face.c_str());
}

void DrawingTarget::insertText(const librevenge::RVNGString& text) { InsertText(Wide(text.cstr())); }

void DrawingTarget::InsertText(const std::u16string& text) {
  constexpr std::size_t kMaxLine = 65536;
  if (line_.size() < kMaxLine) line_ += text;
}

void DrawingTarget::EndLine() {
  const double size = fontSize_ / 72 * kUnitsPerInch;
  if (!line_.empty() && Begin()) {
    platform::FontSpec font;
    font.height = -std::max(Whole(size), 1);
    font.weight = bold_ ? 700 : 400;
    font.italic = italic_;
    font.face = face_;
    const std::uint32_t handle = recorder_.CreateFont(font);
    recorder_.SelectObject(handle);
    recorder_.SetTextColor(textColor_);
    recorder_.SetTextAlign(0);
    recorder_.TextOut(Whole(textX_), Whole(textY_), line_);
    recorder_.SelectObject(platform::kFirstStockFont);
    recorder_.DeleteObject(handle);
  }
  line_.clear();
  textY_ += size * 1.2;
}

}  // namespace wpg
