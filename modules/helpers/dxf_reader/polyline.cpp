#include "modules/helpers/dxf_reader/polyline.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "modules/helpers/dxf_reader/curves.h"

namespace dxf {
namespace {

constexpr int kFrameOnly = 16;  // a vertex that only guides a curve
constexpr int kIsFace = 128;
constexpr int kIsPlace = 64;

double WidthOf(double width) { return width > 0 && std::isfinite(width) ? width : 0; }

// The area that a line covers whose width changes evenly along it.
Line Widened(const Line& line, double startWidth, double endWidth) {
  double length = 0;
  for (std::size_t i = 1; i < line.size(); ++i) {
    length += std::hypot(line[i].x - line[i - 1].x, line[i].y - line[i - 1].y);
  }
  Line left, right;
  double done = 0;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const Place from = line[i == 0 ? 0 : i - 1];
    const Place to = line[std::min(i + 1, line.size() - 1)];
    const double way = std::hypot(to.x - from.x, to.y - from.y);
    if (i != 0) done += std::hypot(line[i].x - line[i - 1].x, line[i].y - line[i - 1].y);
    const double part = length > 0 ? done / length : 0;
    const double half = way > 0 ? (startWidth + (endWidth - startWidth) * part) / 2 / way : 0;
    const double x = -(to.y - from.y) * half;
    const double y = (to.x - from.x) * half;
    left.push_back({line[i].x + x, line[i].y + y});
    right.push_back({line[i].x - x, line[i].y - y});
  }
  left.insert(left.end(), right.rbegin(), right.rend());
  return left;
}

}  // namespace

Polyline::Polyline(const Groups& head)
    : flags_(head.Flags(70)),
      rows_(static_cast<std::size_t>(std::clamp(head.Flags(71), 0, 32767))),
      columns_(static_cast<std::size_t>(std::clamp(head.Flags(72), 0, 32767))),
      startWidth_(WidthOf(head.NumberOr(40, 0))),
      endWidth_(WidthOf(head.NumberOr(41, 0))) {
  if (head.kind != "LWPOLYLINE") return;
  flags_ &= kClosed;
  startWidth_ = endWidth_ = WidthOf(head.NumberOr(43, 0));
  for (const auto& [code, value] : head.pairs) {
    if (code == 10) widths_.emplace_back(startWidth_, endWidth_);
    if (widths_.empty()) continue;
    if (code == 40) widths_.back().first = WidthOf(ToNumber(value));
    if (code == 41) widths_.back().second = WidthOf(ToNumber(value));
  }
}

void Polyline::AddVertex(Place place, double bulge, const Groups& groups) {
  if (vertices_.size() >= kMaxVertices) return;
  if (groups.kind != "VERTEX") {
    const std::size_t index = vertices_.size();
    const auto [start, end] = index < widths_.size() ? widths_[index] : std::pair(startWidth_, endWidth_);
    vertices_.push_back({place, bulge, start, end});
    return;
  }
  const int flags = groups.Flags(70);
  if ((flags & kFrameOnly) != 0 && (flags_ & kSplineFit) != 0) return;
  vertices_.push_back(
      {place, bulge, WidthOf(groups.NumberOr(40, startWidth_)), WidthOf(groups.NumberOr(41, endWidth_))});
}

void Polyline::AddFace(const Groups& groups) {
  if (groups.kind != "VERTEX" || (flags_ & kFaces) == 0 || faces_.size() >= kMaxVertices) return;
  if ((groups.Flags(70) & (kIsFace | kIsPlace)) != kIsFace) return;
  auto& face = faces_.emplace_back();
  for (int code = 71; code <= 74; ++code) {
    if (const int number = groups.Flags(code); number != 0) face.push_back(number);
  }
}

std::vector<Line> Polyline::MeshLines() const {
  std::vector<Line> lines;
  if (rows_ == 0 || columns_ == 0 || rows_ * columns_ > vertices_.size()) return lines;
  const auto at = [&](std::size_t row, std::size_t column) { return vertices_[row * columns_ + column].place; };
  for (std::size_t row = 0; row < rows_; ++row) {
    Line& line = lines.emplace_back();
    for (std::size_t column = 0; column < columns_; ++column) line.push_back(at(row, column));
    if ((flags_ & kMeshClosed) != 0) line.push_back(at(row, 0));
  }
  for (std::size_t column = 0; column < columns_; ++column) {
    Line& line = lines.emplace_back();
    for (std::size_t row = 0; row < rows_; ++row) line.push_back(at(row, column));
    if (Closed()) line.push_back(at(0, column));
  }
  return lines;
}

std::vector<Line> Polyline::FaceLines() const {
  std::vector<Line> lines;
  const auto place = [&](int number) { return vertices_[static_cast<std::size_t>(std::abs(number)) - 1].place; };
  const auto known = [&](int number) {
    return number != INT32_MIN && static_cast<std::size_t>(std::abs(number)) <= vertices_.size();
  };
  for (const auto& face : faces_) {
    if (!std::all_of(face.begin(), face.end(), known)) continue;
    for (std::size_t i = 0; i < face.size(); ++i) {
      if (face[i] > 0) lines.push_back({place(face[i]), place(face[(i + 1) % face.size()])});
    }
  }
  return lines;
}

Line Polyline::Piece(std::size_t index) const {
  Line line{vertices_[index].place};
  AddBulge(vertices_[(index + 1) % vertices_.size()].place, vertices_[index].bulge, line);
  return line;
}

Line Polyline::Whole() const {
  Line line;
  for (std::size_t i = 0; i < vertices_.size(); ++i) {
    AddBulge(vertices_[i].place, i == 0 ? 0 : vertices_[i - 1].bulge, line);
  }
  if (Closed() && !vertices_.empty()) AddBulge(vertices_[0].place, vertices_.back().bulge, line);
  return line;
}

std::vector<Item> Polyline::Items(const Item& item) const {
  std::vector<Item> items(1, item);
  if ((flags_ & kMesh) != 0) {
    items[0].lines = MeshLines();
    return items;
  }
  if ((flags_ & kFaces) != 0) {
    items[0].lines = FaceLines();
    return items;
  }
  if (vertices_.empty()) return {};
  const double width = vertices_[0].startWidth;
  const auto same = [&](const Vertex& v) { return v.startWidth == width && v.endWidth == width; };
  if (InSpace() || std::all_of(vertices_.begin(), vertices_.end(), same)) {
    items[0].lines.push_back(Whole());
    items[0].width = width;
    return items;
  }
  items.clear();
  const std::size_t pieces = vertices_.size() - (Closed() ? 0 : 1);
  for (std::size_t i = 0; i < pieces; ++i) {
    Item& part = items.emplace_back(item);
    const Vertex& vertex = vertices_[i];
    if (vertex.startWidth == 0 && vertex.endWidth == 0) {
      part.lines.push_back(Piece(i));
    } else {
      part.kind = Item::Kind::kArea;
      part.lines.push_back(Widened(Piece(i), vertex.startWidth, vertex.endWidth));
    }
  }
  return items;
}

}  // namespace dxf
