#include "modules/helpers/dxf_reader/painter.h"

#include <dl_codes.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <memory>
#include <numbers>

#include "modules/common/limits.h"
#include "modules/helpers/dxf_reader/groups.h"
#include "modules/helpers/dxf_reader/hatch_lines.h"
#include "modules/helpers/dxf_reader/text_codes.h"
#include "modules/vector/letters.h"

namespace dxf {
namespace {

constexpr double kLongerSide = 1024;   // pixels
constexpr std::int32_t kScale = 16;    // recorded units in a pixel
constexpr double kMargin = 1;          // pixels, for the width of lines at the edge
constexpr double kLargest = 1e12;      // places further away make no picture
constexpr double kWeightOfPixel = 25;  // hundredths of a millimetre
constexpr double kMaxPen = 65535;
constexpr std::size_t kMaxStrokes = 20000;    // of one family of hatch lines
constexpr std::uint32_t kMaxItems = 1000000;  // with all insertions counted
constexpr std::uint64_t kMaxPoints = std::uint64_t{1} << 24;

struct Bounds {
  double left = HUGE_VAL, bottom = HUGE_VAL, right = -HUGE_VAL, top = -HUGE_VAL;

  void Add(Place place) {
    if (!(std::abs(place.x) < kLargest) || !(std::abs(place.y) < kLargest)) return;
    left = std::min(left, place.x);
    right = std::max(right, place.x);
    bottom = std::min(bottom, place.y);
    top = std::max(top, place.y);
  }
  bool Any() const { return right >= left; }
};

// What an item takes from what holds it.
struct Outer {
  platform::Transform transform;
  std::string layer = "0";
  std::uint32_t color = 0;  // red in the lowest byte
  double weight = kWeightOfPixel;
};

std::uint32_t NumberedColor(int number) {
  if (number < 1 || number >= static_cast<int>(std::size(dxfColors))) return 0;
  const double(&color)[3] = dxfColors[number];
  const auto part = [&](int i) { return static_cast<std::uint32_t>(std::lround(color[i] * 255)); };
  // White is drawn on dark screens; on paper it is black.
  if (part(0) == 255 && part(1) == 255 && part(2) == 255) return 0;
  return platform::ColorRef(part(0), part(1), part(2));
}

std::uint32_t ColorOf(const Look& look, std::uint32_t otherwise) {
  if (look.trueColor >= 0) {
    const auto rgb = static_cast<std::uint32_t>(look.trueColor);
    return platform::ColorRef(rgb >> 16 & 255, rgb >> 8 & 255, rgb & 255);
  }
  if (look.color == kColorOfBlock || look.color == kColorOfLayer) return otherwise;
  return NumberedColor(std::abs(look.color));
}

// How long what has length 1 becomes.
double ScaleOf(const platform::Transform& t) { return std::sqrt(std::abs(t.m11 * t.m22 - t.m12 * t.m21)); }

// Goes through a drawing twice: to find its bounds, then to record it.
class Painter {
 public:
  explicit Painter(const Drawing& drawing) : drawing_(drawing), recorder_(72 * kScale) {}

  std::unique_ptr<platform::Metafile> Run();

 private:
  void Walk(const std::vector<Item>& items, const Outer& outer, std::uint32_t depth);
  void WalkInsertion(const Insertion& insertion, const Outer& outer, std::uint32_t depth);
  void Show(const Item& item, const Outer& outer);
  void ShowText(const Item& item, const Outer& outer);
  void Measure(const Item& item, const platform::Transform& transform);
  void MeasureText(const TextLook& text, const platform::Transform& transform);
  void Stroke(const Item& item, const Outer& outer);
  void Area(const Item& item, const Outer& outer);
  void Hatch(const Item& item, const Outer& outer);
  void Surface(const Item& item, const Outer& outer, std::uint32_t brush);
  void Outline(const Item& item, const Outer& outer);
  void DrawLine(const Line& line, const platform::Transform& transform);
  Line Lengthened(const Item& item, const platform::Transform& transform) const;
  std::vector<std::uint32_t> DashesOf(const Item& item, const Outer& outer) const;
  const Layer* LayerOf(const std::string& name) const {
    const auto found = drawing_.layers.find(NameKey(name));
    return found == drawing_.layers.end() ? nullptr : &found->second;
  }

  static Place Moved(const platform::Transform& transform, Place place) {
    return {transform.X(place.x, place.y), transform.Y(place.x, place.y)};
  }
  platform::Point ToDevice(const platform::Transform& transform, Place place) const {
    const Place moved = Moved(transform, place);
    const auto whole = [](double value) {
      constexpr double kFarthest = 1 << 26;
      return std::isfinite(value) ? static_cast<std::int32_t>(std::lround(std::clamp(value, -kFarthest, kFarthest)))
                                  : 0;
    };
    return {whole((moved.x - bounds_.left) * perUnit_ + kMargin * kScale),
            whole((bounds_.top - moved.y) * perUnit_ + kMargin * kScale)};
  }

  const Drawing& drawing_;
  platform::MetafileRecorder recorder_;
  bool measuring_ = true;
  Bounds bounds_;
  double perUnit_ = 1;  // recorded units
  std::uint32_t items_ = 0;
  std::uint64_t points_ = 0;
};

void Painter::Walk(const std::vector<Item>& items, const Outer& outer, std::uint32_t depth) {
  for (const Item& item : items) {
    if (++items_ > kMaxItems || points_ > kMaxPoints) return;
    // The layer named 0 within a block is that of the insertion.
    Outer own = outer;
    if (depth == 0 || item.look.layer != "0") own.layer = item.look.layer;
    const Layer* layer = LayerOf(own.layer);
    if (layer != nullptr && layer->hidden) continue;
    const bool ofBlock = item.look.color == kColorOfBlock && item.look.trueColor < 0;
    if (!ofBlock) own.color = ColorOf(item.look, layer != nullptr ? ColorOf(layer->look, 0) : 0);
    int weight = item.look.weight;
    if (weight == kWeightOfLayer && layer != nullptr) weight = layer->look.weight;
    if (item.look.weight != kWeightOfBlock) own.weight = weight < 0 ? kWeightOfPixel : weight;
    if (item.kind == Item::Kind::kInsertion) {
      if (depth < modules::kMaxNesting) {
        own.transform = platform::Then(item.plane, own.transform);
        WalkInsertion(item.insertion, own, depth);
      }
    } else {
      own.transform = platform::Then(item.plane, own.transform);
      Show(item, own);
    }
  }
}

void Painter::WalkInsertion(const Insertion& insertion, const Outer& outer, std::uint32_t depth) {
  const auto block = drawing_.blocks.find(insertion.block);
  if (block == drawing_.blocks.end() || block->second.items.empty()) return;
  const double angle = insertion.angle * std::numbers::pi / 180;
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  const platform::Transform turn{c, s, -s, c, insertion.at.x, insertion.at.y};
  const Place base = block->second.base;
  for (int row = 0; row < insertion.rows; ++row) {
    for (int column = 0; column < insertion.columns; ++column) {
      if (items_ > kMaxItems || points_ > kMaxPoints) return;
      const platform::Transform scale{insertion.scaleX,
                                      0,
                                      0,
                                      insertion.scaleY,
                                      column * insertion.columnStep - base.x * insertion.scaleX,
                                      row * insertion.rowStep - base.y * insertion.scaleY};
      Outer inner = outer;
      inner.transform = platform::Then(platform::Then(scale, turn), outer.transform);
      Walk(block->second.items, inner, depth + 1);
    }
  }
}

void Painter::Show(const Item& item, const Outer& outer) {
  if (item.kind == Item::Kind::kText) {
    if (measuring_) {
      MeasureText(item.text, outer.transform);
    } else {
      ShowText(item, outer);
    }
    return;
  }
  for (const Line& line : item.lines) points_ += line.size();
  if (measuring_) {
    Measure(item, outer.transform);
  } else if (item.kind == Item::Kind::kHatch && !item.hatch.empty()) {
    Hatch(item, outer);
  } else if (item.kind <= Item::Kind::kEndless) {
    Stroke(item, outer);
  } else {
    Area(item, outer);
  }
}

void Painter::Measure(const Item& item, const platform::Transform& transform) {
  const double half = item.width / 2 * ScaleOf(transform);
  for (const Line& line : item.lines) {
    for (const Place place : line) {
      const Place moved = Moved(transform, place);
      bounds_.Add({moved.x - half, moved.y - half});
      bounds_.Add({moved.x + half, moved.y + half});
      // What has no end begins at least within the picture.
      if (item.kind != Item::Kind::kLines && item.kind <= Item::Kind::kEndless) break;
    }
  }
}

void Painter::MeasureText(const TextLook& text, const platform::Transform& transform) {
  if (text.text.empty()) return;
  const double length = modules::TextLength(Wide(text.text)) * text.height / modules::kCapitalOfEm * text.stretch;
  const double left = -length * text.column / 2;
  const double foot = text.row == 2 ? -text.height / 2 : text.row == 3 ? -text.height : 0;
  const double c = std::cos(text.angle);
  const double s = std::sin(text.angle);
  for (const double on : {left, left + length}) {
    for (const double up : {foot, foot + text.height}) {
      bounds_.Add(Moved(transform, {text.at.x + on * c - up * s, text.at.y + on * s + up * c}));
    }
  }
  points_ += 8;
}

std::vector<std::uint32_t> Painter::DashesOf(const Item& item, const Outer& outer) const {
  std::string name = NameKey(item.look.lineType);
  const bool isOuter = name.empty() || name == "BYLAYER" || name == "BYBLOCK";
  if (const Layer* layer = LayerOf(outer.layer); isOuter && layer != nullptr) name = NameKey(layer->look.lineType);
  const auto found = drawing_.lineTypes.find(name);
  std::vector<std::uint32_t> dashes;
  if (found == drawing_.lineTypes.end()) return dashes;
  const double scale = drawing_.lineTypeScale * item.look.lineTypeScale * perUnit_;
  double whole = 0;
  for (const double dash : found->second) {
    const double length = std::clamp(std::abs(dash) * scale, 1.0, 65535.0);
    whole += length;
    dashes.push_back(static_cast<std::uint32_t>(length));
  }
  // Dashes that a pixel can't show are a line.
  const bool regular = dashes.size() % 2 == 0 && !dashes.empty() && found->second[0] >= 0;
  if (!regular || whole < 3 * kScale) dashes.clear();
  return dashes;
}

void Painter::DrawLine(const Line& line, const platform::Transform& transform) {
  std::vector<platform::Point> points;
  for (const Place place : line) points.push_back(ToDevice(transform, place));
  recorder_.Polyline(points);
}

// Past the picture in the directions in which it has no end.
Line Painter::Lengthened(const Item& item, const platform::Transform& transform) const {
  const Place from = Moved(transform, item.lines[0][0]);
  const Place to = Moved(transform, item.lines[0][1]);
  const double length = std::hypot(to.x - from.x, to.y - from.y);
  const double reach = std::hypot(bounds_.right - bounds_.left, bounds_.top - bounds_.bottom) +
                       std::hypot(from.x - bounds_.left, from.y - bounds_.bottom);
  if (!(length > 0)) return {};
  const double x = (to.x - from.x) / length * reach;
  const double y = (to.y - from.y) / length * reach;
  const Place back = item.kind == Item::Kind::kEndless ? Place{from.x - x, from.y - y} : from;
  return {back, {from.x + x, from.y + y}};
}

void Painter::Stroke(const Item& item, const Outer& outer) {
  const double own = item.width * ScaleOf(outer.transform) * perUnit_;
  const double seen = std::clamp(outer.weight / kWeightOfPixel, 1.0, 16.0) * kScale;
  const auto width = static_cast<std::uint32_t>(std::clamp(own > seen ? own : seen, 1.0, kMaxPen));
  const std::vector<std::uint32_t> dashes = DashesOf(item, outer);
  std::uint32_t style = platform::kPenGeometric | (dashes.empty() ? platform::kPenSolid : platform::kPenUserStyle);
  if (item.width > 0) style |= platform::kPenCapFlat | platform::kPenJoinMiter;
  const std::uint32_t pen = recorder_.ExtCreatePen(style, width, outer.color, dashes);
  recorder_.SelectObject(pen);
  for (const Line& line : item.lines) {
    if (line.size() < 2) continue;
    const bool closed = line.size() > 3 && line.front().x == line.back().x && line.front().y == line.back().y;
    if (item.kind != Item::Kind::kLines) {
      DrawLine(Lengthened(item, outer.transform), {});
    } else if (item.width > 0 && closed) {
      recorder_.BeginPath();
      Outline(item, outer);
      recorder_.EndPath();
      recorder_.StrokePath();
      break;
    } else {
      DrawLine(line, outer.transform);
    }
  }
  recorder_.SelectObject(platform::kNullPen);
  recorder_.DeleteObject(pen);
}

void Painter::Outline(const Item& item, const Outer& outer) {
  for (const Line& line : item.lines) {
    if (line.size() < 3) continue;
    std::vector<platform::Point> points;
    for (const Place place : line) points.push_back(ToDevice(outer.transform, place));
    recorder_.MoveTo(points[0].x, points[0].y);
    recorder_.PolylineTo(std::span(points).subspan(1));
    recorder_.CloseFigure();
  }
}

void Painter::Surface(const Item& item, const Outer& outer, std::uint32_t brush) {
  recorder_.SelectObject(brush);
  recorder_.BeginPath();
  Outline(item, outer);
  recorder_.EndPath();
  recorder_.FillPath();
  recorder_.SelectObject(platform::kNullBrush);
  recorder_.DeleteObject(brush);
}

void Painter::Area(const Item& item, const Outer& outer) {
  const bool hatched = item.kind == Item::Kind::kHatch;
  Surface(item, outer,
          recorder_.CreateBrush(hatched ? platform::kBrushHatched : platform::kBrushSolid, outer.color,
                                platform::kHatchBackward));
}

void Painter::Hatch(const Item& item, const Outer& outer) {
  Bounds box;
  for (const Line& line : item.lines) {
    for (const Place place : line) box.Add(place);
  }
  if (!box.Any()) return;
  const double unit = ScaleOf(outer.transform) * perUnit_;
  std::vector<Line> strokes;
  for (const HatchFamily& family : item.hatch) {
    const double across = std::abs(family.step.y * std::cos(family.angle) - family.step.x * std::sin(family.angle));
    const auto lines = HatchStrokes(family, {box.left, box.bottom}, {box.right, box.top}, kMaxStrokes);
    if (lines.empty() || across * unit < 2 * kScale) {
      // Too dense for lines: as much colour as the lines would leave on the paper.
      const double share = std::clamp(kScale / std::max(across * unit, 1.0), 0.25, 0.75);
      const auto part = [&](int shift) {
        return static_cast<std::uint32_t>(std::lround(255 - (255.0 - (outer.color >> shift & 255U)) * share));
      };
      Surface(item, outer,
              recorder_.CreateBrush(platform::kBrushSolid, platform::ColorRef(part(0), part(8), part(16))));
    } else {
      strokes.insert(strokes.end(), lines.begin(), lines.end());
    }
  }
  points_ += strokes.size() * 2;
  if (strokes.empty() || points_ > kMaxPoints) return;
  const std::uint32_t pen =
      recorder_.ExtCreatePen(platform::kPenGeometric, static_cast<std::uint32_t>(kScale), outer.color);
  recorder_.SelectObject(pen);
  recorder_.SaveDc();
  recorder_.BeginPath();
  Outline(item, outer);
  recorder_.EndPath();
  recorder_.SelectClipPath(platform::kRegionAnd);
  for (const Line& line : strokes) DrawLine(line, outer.transform);
  recorder_.RestoreDc();
  recorder_.SelectObject(platform::kNullPen);
  recorder_.DeleteObject(pen);
}

void Painter::ShowText(const Item& item, const Outer& outer) {
  const TextLook& text = item.text;
  const platform::Transform& t = outer.transform;
  const double c = std::cos(text.angle);
  const double s = std::sin(text.angle);
  const double height = std::hypot(t.m11 * -s + t.m21 * c, t.m12 * -s + t.m22 * c) * text.height * perUnit_;
  if (text.text.empty() || !(height >= 1) || height > 65535) return;
  platform::FontSpec font;
  font.height = -static_cast<std::int32_t>(std::lround(height / modules::kCapitalOfEm));
  font.escapement = static_cast<std::int32_t>(
      std::lround(std::atan2(t.m12 * c + t.m22 * s, t.m11 * c + t.m21 * s) * 1800 / std::numbers::pi));
  const double along = std::hypot(t.m11 * c + t.m21 * s, t.m12 * c + t.m22 * s) * perUnit_ * text.height;
  const double stretch = along / height * text.stretch;
  if (std::abs(stretch - 1) > 0.01 && std::isfinite(stretch)) {
    font.width =
        std::clamp(static_cast<std::int32_t>(std::lround(-font.height * modules::kMeanLetterOfEm * stretch)), 1, 65535);
  }
  font.face = text.face.name;
  font.weight = text.face.bold ? 700 : 400;
  font.italic = text.face.italic;
  const std::uint32_t handle = recorder_.CreateFont(font);
  recorder_.SelectObject(handle);
  recorder_.SetTextColor(outer.color);
  const std::uint32_t columns[] = {0, platform::kAlignCenter, platform::kAlignRight};
  recorder_.SetTextAlign(platform::kAlignBaseline | columns[std::clamp(text.column, 0, 2)]);
  const double foot = text.row == 2 ? -text.height / 2 : text.row == 3 ? -text.height : 0;
  const platform::Point at = ToDevice(t, {text.at.x - foot * s, text.at.y + foot * c});
  recorder_.TextOut(at.x, at.y, Wide(text.text));
  recorder_.SelectObject(platform::kFirstStockFont);
  recorder_.DeleteObject(handle);
}

std::unique_ptr<platform::Metafile> Painter::Run() {
  const std::vector<Item>& items = drawing_.items.empty() ? drawing_.sheet : drawing_.items;
  Walk(items, {}, 0);
  if (!bounds_.Any()) return nullptr;
  const double width = bounds_.right - bounds_.left;
  const double height = bounds_.top - bounds_.bottom;
  const double longer = std::max(width, height);
  perUnit_ = longer > 0 ? kLongerSide * kScale / longer : 1;
  const auto side = [&](double length) {
    return static_cast<std::int32_t>((std::max(std::ceil(length * perUnit_ / kScale), 1.0) + 2 * kMargin) * kScale);
  };
  recorder_.SetFrame({0, 0, side(width), side(height)});
  recorder_.SetBkMode(platform::kTransparentMode);
  recorder_.SetPolyFillMode(platform::kFillAlternate);
  recorder_.SelectObject(platform::kNullPen);
  measuring_ = false;
  items_ = 0;
  points_ = 0;
  Walk(items, {}, 0);
  return std::unique_ptr<platform::Metafile>(recorder_.Close());
}

}  // namespace

std::unique_ptr<platform::Metafile> RecordDrawing(const Drawing& drawing) { return Painter(drawing).Run(); }

}  // namespace dxf
