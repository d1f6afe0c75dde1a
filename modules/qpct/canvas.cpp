#include "modules/qpct/canvas.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>

#include "modules/qpct/mac_text.h"

namespace qpct {
namespace {

constexpr std::int32_t kScale = 20;  // recorded units in one of the picture
constexpr std::uint32_t kRop2Not = 6;

// Transfer modes of pens and of pictures.
constexpr std::uint32_t kOrMode = 1;
constexpr std::uint32_t kXorMode = 2;
constexpr std::uint32_t kPatternXor = 10;
constexpr std::uint32_t kTransparent = 36;
constexpr std::uint32_t kAddMin = 39;

platform::Box Inset(const platform::Box& box, std::int32_t x, std::int32_t y) {
  return {box.left + x, box.top + y, box.right - x, box.bottom - y};
}

bool HasArea(const platform::Box& box) { return box.right > box.left && box.bottom > box.top; }

bool Same(const platform::Box& a, const platform::Box& b) {
  return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}

platform::Point OnEllipse(const platform::Box& box, std::int32_t degrees) {
  const double angle = degrees * std::numbers::pi / 180.0;
  const double x = (box.left + box.right) / 2.0 + std::sin(angle) * (box.right - box.left) / 2.0;
  const double y = (box.top + box.bottom) / 2.0 - std::cos(angle) * (box.bottom - box.top) / 2.0;
  return {static_cast<std::int32_t>(std::lround(x)), static_cast<std::int32_t>(std::lround(y))};
}

}  // namespace

Canvas::Canvas(const PictureHeader& header)
    : header_(header), recorder_(static_cast<std::uint32_t>(std::lround(header.dpi * kScale))) {
  recorder_.SetFrame(Scaled(header.frame));
  recorder_.SetBkMode(platform::kTransparentMode);
  recorder_.SelectObject(platform::kNullPen);
}

platform::Point Canvas::Scaled(platform::Point point) const {
  return {(point.x - origin.x) * kScale, (point.y - origin.y) * kScale};
}

platform::Box Canvas::Scaled(const platform::Box& box) const {
  const platform::Point from = Scaled(platform::Point{box.left, box.top});
  const platform::Point to = Scaled(platform::Point{box.right, box.bottom});
  return {from.x, from.y, to.x, to.y};
}

void Canvas::Flush() {
  if (!waiting_) return;
  const WaitingPicture image = std::move(*waiting_);
  waiting_.reset();
  Draw(image);
}

void Canvas::Begin() {
  Flush();
  ++drawings_;
}

platform::MetafileRecorder& Canvas::Recorder() {
  Flush();
  return recorder_;
}

void Canvas::Clip(const std::vector<platform::Box>& boxes) {
  if (imagesOnly) return;
  // Nearly every picture begins with a clip around all of it, often around all that numbers reach.
  const platform::Box& frame = header_.frame;
  const bool aroundAll = boxes.size() == 1 && boxes[0].left <= frame.left && boxes[0].top <= frame.top &&
                         boxes[0].right >= frame.right && boxes[0].bottom >= frame.bottom;
  if (aroundAll && !clipped_) return;
  Flush();
  clipped_ = !aroundAll;
  std::vector<platform::Box> scaled;
  for (const platform::Box& box : boxes) scaled.push_back(Scaled(box));
  if (aroundAll) scaled.clear();
  recorder_.SelectClipRegion(scaled, platform::kRegionCopy);
}

std::uint32_t Canvas::BrushFor(const Pattern& pattern) {
  if (pattern.color) return recorder_.CreateBrush(platform::kBrushSolid, *pattern.color);
  if (pattern.tile != nullptr) return recorder_.CreatePatternBrush(pattern.tile->Dib());
  if (pattern.bits == kSolid) return recorder_.CreateBrush(platform::kBrushSolid, foreground);
  if (pattern.bits == kEmpty) return recorder_.CreateBrush(platform::kBrushSolid, background);
  modules::Picture tile;
  if (!tile.Allocate(8, 8, 1)) return platform::kBlackBrush;
  const auto word = [](std::uint32_t color) { return (color & 0xFF) << 16 | (color & 0xFF00) | (color >> 16 & 0xFF); };
  tile.palette[0] = word(background);
  tile.palette[1] = word(foreground);
  for (std::uint32_t y = 0; y < 8; ++y) *tile.Row(y) = pattern.bits[y];
  return recorder_.CreatePatternBrush(tile.Dib());
}

void Canvas::BeginFill(Verb verb) {
  Begin();
  rop_ = verb == Verb::kInvert || ((verb == Verb::kFrame || verb == Verb::kPaint) && pen.mode == kPatternXor);
  if (rop_) recorder_.SetRop2(verb == Verb::kInvert ? kRop2Not : platform::kRop2XorPen);
  const Pattern& pattern = verb == Verb::kErase ? backPattern : verb == Verb::kFill ? fillPattern : penPattern;
  brush_ = BrushFor(pattern);
  recorder_.SelectObject(brush_);
}

void Canvas::EndFill() {
  recorder_.SelectObject(platform::kBlackBrush);
  if (brush_ != platform::kBlackBrush) recorder_.DeleteObject(brush_);
  if (rop_) recorder_.SetRop2(platform::kRop2CopyPen);
}

template <typename Figure>
void Canvas::Fill(Verb verb, Figure figure) {
  if (imagesOnly) return;
  BeginFill(verb);
  figure();
  EndFill();
}

// A frame is what lies between a figure and the same figure within it, a pen's width smaller.
template <typename Figure>
void Canvas::Ring(const platform::Box& box, Figure figure) {
  recorder_.BeginPath();
  figure(Scaled(box));
  const platform::Box inner = Inset(box, pen.width, pen.height);
  if (HasArea(inner)) figure(Scaled(inner));
  recorder_.EndPath();
  recorder_.FillPath();
}

void Canvas::Line(platform::Point from, platform::Point to) {
  pen.at = to;
  if (pen.width <= 0 || pen.height <= 0) return;
  // The hull of the pen's box at both ends.
  if (to.x < from.x) std::swap(from, to);
  const platform::Point a = Scaled(from);
  const platform::Point b = Scaled(to);
  const std::int32_t w = pen.width * kScale;
  const std::int32_t h = pen.height * kScale;
  const bool falls = b.y >= a.y;
  const platform::Point falling[] = {
      a, {a.x + w, a.y}, {b.x + w, b.y}, {b.x + w, b.y + h}, {b.x, b.y + h}, {a.x, a.y + h}};
  const platform::Point rising[] = {a, b, {b.x + w, b.y}, {b.x + w, b.y + h}, {a.x + w, a.y + h}, {a.x, a.y + h}};
  Fill(Verb::kFrame, [&] { recorder_.Polygon(falls ? falling : rising); });
}

void Canvas::Rectangle(Verb verb, const platform::Box& box) {
  if (!HasArea(box)) return;
  const auto figure = [&](const platform::Box& scaled) { recorder_.Rectangle(scaled); };
  Fill(verb, [&] {
    if (verb == Verb::kFrame) {
      Ring(box, figure);
    } else {
      figure(Scaled(box));
    }
  });
}

void Canvas::RoundRectangle(Verb verb, const platform::Box& box, platform::Point corner) {
  if (!HasArea(box)) return;
  const auto figure = [&](const platform::Box& scaled) {
    recorder_.RoundRect(scaled, corner.x * kScale, corner.y * kScale);
  };
  Fill(verb, [&] {
    if (verb == Verb::kFrame) {
      Ring(box, figure);
    } else {
      figure(Scaled(box));
    }
  });
}

void Canvas::Oval(Verb verb, const platform::Box& box) {
  if (!HasArea(box)) return;
  const auto figure = [&](const platform::Box& scaled) { recorder_.Ellipse(scaled); };
  Fill(verb, [&] {
    if (verb == Verb::kFrame) {
      Ring(box, figure);
    } else {
      figure(Scaled(box));
    }
  });
}

void Canvas::Arc(Verb verb, const platform::Box& box, std::int32_t start, std::int32_t sweep) {
  if (!HasArea(box) || sweep == 0) return;
  if (std::abs(sweep) >= 360) return Oval(verb, box);
  const std::int32_t first = sweep > 0 ? start : start + sweep;
  const std::int32_t last = first + std::abs(sweep);
  recorder_.SetArcDirection(platform::kClockwise);
  if (verb != Verb::kFrame) {
    const platform::Box scaled = Scaled(box);
    Fill(verb, [&] { recorder_.Pie(scaled, OnEllipse(scaled, first), OnEllipse(scaled, last)); });
    return;
  }
  if (imagesOnly) return;
  Begin();
  platform::Box middle = Scaled(box);
  middle = Inset(middle, pen.width * kScale / 2, pen.height * kScale / 2);
  const auto width = static_cast<std::uint32_t>(std::max(1, (pen.width + pen.height) * kScale / 2));
  const std::uint32_t line = recorder_.ExtCreatePen(platform::kPenGeometric | platform::kPenCapFlat, width, foreground);
  recorder_.SelectObject(line);
  recorder_.Arc(middle, OnEllipse(middle, first), OnEllipse(middle, last));
  recorder_.SelectObject(platform::kNullPen);
  recorder_.DeleteObject(line);
}

void Canvas::Polygon(Verb verb, std::span<const platform::Point> points) {
  if (points.size() < 2) return;
  if (verb == Verb::kFrame) {
    const platform::Point before = pen.at;
    for (std::size_t i = 0; i + 1 < points.size(); ++i) Line(points[i], points[i + 1]);
    pen.at = before;
    return;
  }
  std::vector<platform::Point> scaled;
  for (const platform::Point point : points) scaled.push_back(Scaled(point));
  Fill(verb, [&] { recorder_.Polygon(scaled); });
}

void Canvas::Region(Verb verb, const std::vector<platform::Box>& boxes) {
  Fill(verb, [&] {
    for (const platform::Box& box : boxes) {
      if (HasArea(box)) recorder_.Rectangle(Scaled(box));
    }
  });
}

void Canvas::Text(std::span<const std::uint8_t> bytes) {
  if (bytes.empty() || imagesOnly) return;
  Begin();
  platform::FontSpec font;
  font.height = -std::max(text.size, 1) * kScale;
  font.weight = (text.style & 1U) != 0 ? 700 : 400;
  font.italic = (text.style & 2U) != 0;
  font.underline = (text.style & 4U) != 0;
  font.face = text.face;
  const std::uint32_t handle = recorder_.CreateFont(font);
  recorder_.SelectObject(handle);
  recorder_.SetTextColor(foreground);
  recorder_.SetTextAlign(platform::kAlignBaseline);
  const platform::Point at = Scaled(text.at);
  recorder_.TextOut(at.x, at.y, FromMacRoman(bytes));
  recorder_.SelectObject(platform::kFirstStockFont);
  recorder_.DeleteObject(handle);
}

void Canvas::Image(modules::Picture&& picture, const platform::Box& source, const platform::Box& target,
                   std::uint32_t mode, const std::vector<platform::Box>& mask) {
  WaitingPicture image{std::move(picture), source, target, mode, {}};
  const auto holdsTarget = [&](const platform::Box& box) {
    return box.left <= target.left && box.top <= target.top && box.right >= target.right && box.bottom >= target.bottom;
  };
  if (std::none_of(mask.begin(), mask.end(), holdsTarget)) image.mask = mask;
  if (drawings_ == 0 && !waiting_ && !clipped_) {
    waiting_ = std::move(image);
    return;
  }
  Flush();
  Draw(image);
}

void Canvas::Draw(const WaitingPicture& image) {
  ++drawings_;
  imageBytes_ += image.picture.rows.size();
  if (imageBytes_ >= kMaxImageBytes) return;
  std::uint32_t rop = platform::kSourceCopy;
  switch (image.mode & ~std::uint32_t{64}) {
    case kOrMode:
    case kTransparent:
    case kAddMin:
      rop = platform::kSourceAnd;
      break;
    case kXorMode:
      rop = platform::kSourceInvert;
      break;
    default:
      break;
  }
  if (!image.mask.empty()) {
    std::vector<platform::Box> boxes;
    for (const platform::Box& box : image.mask) boxes.push_back(Scaled(box));
    recorder_.SaveDc();
    recorder_.SelectClipRegion(boxes, platform::kRegionAnd);
  }
  recorder_.DrawDib(Scaled(image.target), image.picture.Dib(), image.source, rop);
  if (!image.mask.empty()) recorder_.RestoreDc();
}

const modules::Picture* Canvas::OnlyPicture() const {
  if (!waiting_ || drawings_ != 0 || clipped_ || !waiting_->mask.empty()) return nullptr;
  if (!Same(waiting_->target, header_.frame) || !Same(waiting_->source, waiting_->picture.Whole())) return nullptr;
  return &waiting_->picture;
}

}  // namespace qpct
