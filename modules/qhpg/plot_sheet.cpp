#include "modules/qhpg/plot_sheet.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>

namespace qhpg {
namespace {

constexpr std::uint32_t kUnitsPerInch = 1016;
constexpr double kFarthest = 1 << 26;
constexpr std::size_t kMaxLine = 65536;      // points of one record
constexpr std::uint32_t kMaxHatches = 2000;  // lines of one area

// A plotter's height is that of a capital letter.
constexpr double kCapitalOfEm = 0.72;
// Of the font that stands in for a plotter's strokes: how wide its capitals are to their height, and its mean width.
constexpr double kCapitalShape = 0.75;
constexpr double kMeanOfEm = 0.44;

std::int32_t Whole(double value) {
  return static_cast<std::int32_t>(std::lround(std::clamp(value, -kFarthest, kFarthest)));
}

}  // namespace

PlotSheet::PlotSheet() : recorder_(kUnitsPerInch) {
  recorder_.SetBkMode(platform::kTransparentMode);
  recorder_.SetTextAlign(platform::kAlignBaseline);
}

platform::Point PlotSheet::ToDevice(Place place) {
  switch (turn_) {
    case 1:
      return {Whole(-place.y), Whole(-place.x)};
    case 2:
      return {Whole(-place.x), Whole(place.y)};
    case 3:
      return {Whole(place.y), Whole(place.x)};
    default:
      return {Whole(place.x), Whole(-place.y)};
  }
}

void PlotSheet::Grow(platform::Point point, double reach) {
  const std::int32_t more = Whole(reach);
  const platform::Box box{point.x - more, point.y - more, point.x + more, point.y + more};
  if (!any_) bounds_ = box;
  any_ = true;
  bounds_ = {std::min(bounds_.left, box.left), std::min(bounds_.top, box.top), std::max(bounds_.right, box.right),
             std::max(bounds_.bottom, box.bottom)};
}

void PlotSheet::SetTurn(int quarters) {
  EndLine();
  turn_ = quarters & 3;
}

void PlotSheet::SetColor(std::uint32_t color) {
  if (color == color_) return;
  EndLine();
  color_ = color;
  penStale_ = true;
}

void PlotSheet::SetWidth(double width) {
  if (width == width_) return;
  EndLine();
  width_ = std::clamp(width, 0.0, 65535.0);
  penStale_ = true;
}

void PlotSheet::SetDashes(std::vector<double> dashes) {
  EndLine();
  dashes_ = std::move(dashes);
  penStale_ = true;
}

void PlotSheet::SetWindow(Place from, Place to) {
  EndLine();
  const platform::Point a = ToDevice(from);
  const platform::Point b = ToDevice(to);
  const platform::Box box{std::min(a.x, b.x), std::min(a.y, b.y), std::max(a.x, b.x), std::max(a.y, b.y)};
  const bool whole = box.right <= box.left || box.bottom <= box.top;
  recorder_.SelectClipRegion(std::span(&box, whole ? 0 : 1), platform::kRegionCopy);
}

void PlotSheet::SelectPen() {
  if (!penStale_) return;
  const std::uint32_t before = pen_;
  std::vector<std::uint32_t> dashes;
  for (const double dash : dashes_) dashes.push_back(static_cast<std::uint32_t>(std::clamp(dash, 1.0, 65535.0)));
  const std::uint32_t style = platform::kPenGeometric | platform::kPenCapRound | platform::kPenJoinRound |
                              (dashes.empty() ? platform::kPenSolid : platform::kPenUserStyle);
  const auto width = static_cast<std::uint32_t>(std::max(std::lround(width_), 1L));
  pen_ = recorder_.ExtCreatePen(style, width, color_, dashes);
  recorder_.SelectObject(pen_);
  if (before != 0) recorder_.DeleteObject(before);
  penStale_ = false;
}

void PlotSheet::EndLine() {
  if (line_.size() > 1) {
    SelectPen();
    for (const platform::Point point : line_) Grow(point, width_ / 2);
    recorder_.Polyline(line_);
    points_ += line_.size() + 8;
  }
  line_.clear();
}

void PlotSheet::PenTo(Place place, bool down) {
  if (!down) {
    EndLine();
  } else if (!Full()) {
    if (line_.empty()) line_.push_back(ToDevice(at_));
    line_.push_back(ToDevice(place));
    if (line_.size() >= kMaxLine) EndLine();
  }
  at_ = place;
}

void PlotSheet::Dot(Place place) {
  EndLine();
  if (Full()) return;
  const platform::Point point = ToDevice(place);
  const platform::Point line[] = {point, point};
  SelectPen();
  Grow(point, width_ / 2);
  recorder_.Polyline(line);
  points_ += 8;
}

void PlotSheet::Figures(const std::vector<std::vector<Place>>& figures) {
  for (const auto& figure : figures) {
    if (figure.size() < 2) continue;
    std::vector<platform::Point> points;
    for (const Place place : figure) points.push_back(ToDevice(place));
    for (const platform::Point point : points) Grow(point, 0);
    recorder_.MoveTo(points[0].x, points[0].y);
    recorder_.PolylineTo(std::span(points).subspan(1));
    recorder_.CloseFigure();
    points_ += points.size() + 8;
  }
}

void PlotSheet::Outline(const std::vector<std::vector<Place>>& figures) {
  EndLine();
  for (const auto& figure : figures) {
    if (figure.empty() || Full()) continue;
    line_.clear();
    for (const Place place : figure) line_.push_back(ToDevice(place));
    line_.push_back(line_[0]);
    EndLine();
  }
}

void PlotSheet::Fill(const std::vector<std::vector<Place>>& figures) {
  EndLine();
  if (Full() || figures.empty()) return;
  if (fill_.kind != Filling::kSolid) {
    Hatch(figures, fill_.angle);
    if (fill_.kind == Filling::kCrossed) Hatch(figures, fill_.angle + 90);
    return;
  }
  const auto light = [&](std::uint32_t value) {
    return static_cast<std::uint32_t>(std::lround(255 - (255.0 - (value & 255U)) * fill_.share));
  };
  const std::uint32_t brush = recorder_.CreateBrush(
      platform::kBrushSolid, platform::ColorRef(light(color_), light(color_ >> 8), light(color_ >> 16)));
  recorder_.SelectObject(brush);
  recorder_.BeginPath();
  Figures(figures);
  recorder_.EndPath();
  recorder_.FillPath();
  recorder_.SelectObject(platform::kWhiteBrush);
  recorder_.DeleteObject(brush);
}

// Parallel lines seen through the area.
void PlotSheet::Hatch(const std::vector<std::vector<Place>>& figures, double angle) {
  const double radians = angle * std::numbers::pi / 180.0;
  const Place along{std::cos(radians), std::sin(radians)};
  double low = HUGE_VAL, high = -HUGE_VAL, from = HUGE_VAL, to = -HUGE_VAL;
  for (const auto& figure : figures) {
    for (const Place place : figure) {
      const double across = place.y * along.x - place.x * along.y;
      const double on = place.x * along.x + place.y * along.y;
      low = std::min(low, across);
      high = std::max(high, across);
      from = std::min(from, on);
      to = std::max(to, on);
    }
  }
  const double spacing = std::max({fill_.spacing, (high - low) / kMaxHatches, 1.0});
  if (!(high > low)) return;
  SelectPen();
  recorder_.SaveDc();
  recorder_.BeginPath();
  Figures(figures);
  recorder_.EndPath();
  recorder_.SelectClipPath(platform::kRegionAnd);
  for (double across = std::ceil(low / spacing) * spacing; across <= high; across += spacing) {
    const platform::Point ends[] = {ToDevice({from * along.x - across * along.y, from * along.y + across * along.x}),
                                    ToDevice({to * along.x - across * along.y, to * along.y + across * along.x})};
    recorder_.Polyline(ends);
    points_ += 8;
  }
  recorder_.RestoreDc();
}

void PlotSheet::LabelLine(Place at, const Lettering& lettering, std::string_view line) {
  if (line.empty() || Full()) return;
  const double cell = lettering.width * (kCellWidth + lettering.extraWidth * kCellWidth);
  platform::FontSpec font;
  const double em = std::abs(lettering.height) / kCapitalOfEm;
  font.height = -std::max(Whole(em), 1);
  if (lettering.height != 0) {
    const double stretch = std::abs(lettering.width / lettering.height) / kCapitalShape;
    font.width = std::max(Whole(em * kMeanOfEm * stretch), 1);
  }
  font.face = u"Arial";
  font.italic = lettering.slanted;
  const double degrees = std::atan2(lettering.runY, lettering.runX) * 180 / std::numbers::pi + 90.0 * turn_;
  font.escapement = Whole(degrees * 10);
  const std::uint32_t handle = recorder_.CreateFont(font);
  recorder_.SelectObject(handle);
  recorder_.SetTextColor(color_);
  std::u16string text;
  for (const char c : line) text += static_cast<char16_t>(static_cast<unsigned char>(c));
  const std::vector<std::int32_t> advances(text.size(), std::max(Whole(cell), 1));
  const platform::Point point = ToDevice(at);
  recorder_.TextOut(point.x, point.y, text, advances);
  recorder_.SelectObject(platform::kFirstStockFont);
  recorder_.DeleteObject(handle);
  points_ += 40 + text.size();
  // The corners of what the letters cover.
  const double length = cell * static_cast<double>(line.size()) - (cell - lettering.width);
  for (const double on : {0.0, length}) {
    for (const double up : {-0.3 * lettering.height, lettering.height}) {  // letters hang below the line
      Grow(ToDevice(
               {at.x + on * lettering.runX - up * lettering.runY, at.y + on * lettering.runY + up * lettering.runX}),
           0);
    }
  }
}

Place PlotSheet::Label(Place at, const Lettering& lettering, std::string_view text) {
  EndLine();
  const double cell = lettering.width * kCellWidth * (1 + lettering.extraWidth);
  const double step = lettering.height * kCellHeight * (1 + lettering.extraHeight);
  const auto moved = [&](Place from, double on, double up) {
    return Place{from.x + on * lettering.runX - up * lettering.runY,
                 from.y + on * lettering.runY + up * lettering.runX};
  };
  // Origins 1 to 3 lie at the left, 4 to 6 in the middle, 7 to 9 at the right; in each of them at the foot, in the
  // middle and at the top. From 11 on they are half a character further away.
  const std::uint32_t origin = lettering.origin % 10;
  const bool away = lettering.origin > 10;
  const double column = origin == 0 ? 0 : (origin - 1) / 3;
  const double row = origin == 0 ? 0 : (origin - 1) % 3;
  Place start = at;
  double last = 0;
  bool endsInLine = true;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
    const std::string_view line = text.substr(0, end);
    const double length = line.empty() ? 0 : cell * static_cast<double>(line.size()) - (cell - lettering.width);
    double on = -length * column / 2;
    double up = -lettering.height * row / 2;
    if (away && column != 1) on += column == 0 ? lettering.width / 2 : -lettering.width / 2;
    if (away && row != 1) up += row == 0 ? lettering.height / 2 : -lettering.height / 2;
    LabelLine(moved(start, on, up), lettering, line);
    last = cell * static_cast<double>(line.size()) * (1 - column / 2);
    endsInLine = end == text.size();
    if (!endsInLine && text[end] == '\n') start = moved(start, 0, -step);
    text.remove_prefix(std::min(end + 1, text.size()));
    if (!endsInLine) last = 0;
  }
  return moved(start, last, 0);
}

bool PlotSheet::Finish() {
  EndLine();
  if (!any_) return false;
  bounds_.right = std::max(bounds_.right, bounds_.left + 1);
  bounds_.bottom = std::max(bounds_.bottom, bounds_.top + 1);
  recorder_.SetFrame(bounds_);
  return true;
}

double PlotSheet::LongerSide() const {
  const double longer =
      std::max(static_cast<double>(bounds_.right) - bounds_.left, static_cast<double>(bounds_.bottom) - bounds_.top);
  return longer * 72 / kUnitsPerInch;
}

}  // namespace qhpg
