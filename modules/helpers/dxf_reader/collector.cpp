#include "modules/helpers/dxf_reader/collector.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "modules/helpers/dxf_reader/text_codes.h"

namespace dxf {
namespace {

constexpr double kRadian = std::numbers::pi / 180;
constexpr double kTurn = 2 * std::numbers::pi;
constexpr double kLineStep = 5.0 / 3.0;  // from line to line of a text, in heights
constexpr int kClosed = 1;
constexpr int kFrozen = 1;

// The way from one angle to another, counter-clockwise; a whole turn if they are the same.
double Sweep(double from, double to) {
  if (!std::isfinite(from) || !std::isfinite(to)) return kTurn;
  const double sweep = std::fmod(std::fmod(to - from, kTurn) + kTurn, kTurn);
  return sweep < 1e-9 ? kTurn : sweep;
}

Line LineOf(const std::vector<DL_VertexData>& vertices, bool closed) {
  Line line;
  for (std::size_t i = 0; i < vertices.size(); ++i) {
    AddBulge({vertices[i].x, vertices[i].y}, i == 0 ? 0 : vertices[i - 1].bulge, line);
  }
  if (closed && !vertices.empty()) AddBulge({vertices[0].x, vertices[0].y}, vertices.back().bulge, line);
  return line;
}

// Corners as solids number them: the third and the fourth change places.
Line Corners(const double (&x)[4], const double (&y)[4], bool crossed) {
  if (crossed) return {{x[0], y[0]}, {x[1], y[1]}, {x[3], y[3]}, {x[2], y[2]}};
  return {{x[0], y[0]}, {x[1], y[1]}, {x[2], y[2]}, {x[3], y[3]}, {x[0], y[0]}};
}

}  // namespace

Look Collector::LookNow() {
  Look look;
  look.layer = attributes.getLayer();
  look.color = attributes.getColor();
  look.trueColor = attributes.getColor24();
  look.weight = attributes.getWidth();
  look.lineType = attributes.getLinetype();
  look.lineTypeScale = attributes.getLinetypeScale();
  return look;
}

Item& Collector::Begin(Item::Kind kind) {
  EndItem();
  Item& item = item_.emplace();
  item.kind = kind;
  item.look = LookNow();
  const DL_Extrusion* normal = getExtrusion();
  item.mirrored = normal != nullptr && normal->getDirection()[2] < 0;
  return item;
}

void Collector::EndItem() {
  if (!item_) return;
  if (polyline_) item_->lines.push_back(LineOf(vertices_, closed_));
  if (spline_) AddSpline(*spline_, item_->lines.emplace_back());
  polyline_ = false;
  vertices_.clear();
  spline_.reset();
  chunks_.clear();
  for (const Line& line : item_->lines) points_ += line.size();
  // The sheet around a drawing is not the drawing.
  if (!Full() && !attributes.isInPaperSpace()) {
    ++count_;
    auto& items = inBlock_ ? drawing_.blocks[block_].items : drawing_.items;
    items.push_back(std::move(*item_));
  }
  item_.reset();
}

void Collector::AddLines(std::vector<Line> lines, Item::Kind kind) { Begin(kind).lines = std::move(lines); }

void Collector::addLayer(const DL_LayerData& data) {
  Layer layer;
  layer.look = LookNow();
  layer.hidden = data.off || (data.flags & kFrozen) != 0 || layer.look.color < 0;
  drawing_.layers[data.name] = layer;
}

// Its dashes have come before.
void Collector::addLinetype(const DL_LinetypeData& data) { drawing_.lineTypes[data.name] = std::exchange(dashes_, {}); }

void Collector::addLinetypeDash(double length) {
  constexpr std::size_t kMaxDashes = 64;
  if (dashes_.size() < kMaxDashes) dashes_.push_back(length);
}

void Collector::addBlock(const DL_BlockData& data) {
  EndItem();
  inBlock_ = true;
  block_ = data.name;
  drawing_.blocks[block_].base = {data.bpx, data.bpy};
}

void Collector::endBlock() {
  EndItem();
  inBlock_ = false;
}

void Collector::addLine(const DL_LineData& data) {
  AddLines({{{data.x1, data.y1}, {data.x2, data.y2}}});
  item_->mirrored = false;
}

void Collector::addPoint(const DL_PointData& data) {
  AddLines({{{data.x, data.y}, {data.x, data.y}}});
  item_->mirrored = false;
}

void Collector::addArc(const DL_ArcData& data) {
  Line line;
  AddArc({data.cx, data.cy}, data.radius, data.angle1 * kRadian, Sweep(data.angle1 * kRadian, data.angle2 * kRadian),
         line);
  AddLines({line});
}

void Collector::addCircle(const DL_CircleData& data) {
  Line line;
  AddArc({data.cx, data.cy}, data.radius, 0, kTurn, line);
  AddLines({line});
}

void Collector::addEllipse(const DL_EllipseData& data) {
  Line line;
  AddEllipse({data.cx, data.cy}, {data.mx, data.my}, data.ratio, data.angle1, Sweep(data.angle1, data.angle2), line);
  AddLines({line});
  item_->mirrored = false;
}

void Collector::addPolyline(const DL_PolylineData& data) {
  Begin(Item::Kind::kLines);
  polyline_ = true;
  closed_ = (data.flags & kClosed) != 0;
}

void Collector::addVertex(const DL_VertexData& data) {
  if (polyline_ && vertices_.size() < kMaxPoints / 64) vertices_.push_back(data);
}

void Collector::addSpline(const DL_SplineData& data) {
  Begin(Item::Kind::kLines).mirrored = false;
  spline_.emplace();
  spline_->degree = data.degree;
  spline_->closed = (data.flags & kClosed) != 0;
}

void Collector::addControlPoint(const DL_ControlPointData& data) {
  if (!spline_ || spline_->control.size() >= kMaxPoints / 64) return;
  spline_->control.push_back({data.x, data.y});
  spline_->weights.push_back(data.w);
}

void Collector::addFitPoint(const DL_FitPointData& data) {
  if (spline_ && spline_->fit.size() < kMaxPoints / 64) spline_->fit.push_back({data.x, data.y});
}

void Collector::addKnot(const DL_KnotData& data) {
  if (spline_ && spline_->knots.size() < kMaxPoints / 64) spline_->knots.push_back(data.k);
}

void Collector::addInsert(const DL_InsertData& data) {
  Begin(Item::Kind::kInsertion).insertion = {data.name,
                                             {data.ipx, data.ipy},
                                             data.sx,
                                             data.sy,
                                             data.angle,
                                             std::clamp(data.cols, 1, 32767),
                                             std::clamp(data.rows, 1, 32767),
                                             data.colSp,
                                             data.rowSp};
}

void Collector::addTrace(const DL_TraceData& data) { AddLines({Corners(data.x, data.y, true)}, Item::Kind::kArea); }
void Collector::addSolid(const DL_SolidData& data) { AddLines({Corners(data.x, data.y, true)}, Item::Kind::kArea); }
void Collector::add3dFace(const DL_3dFaceData& data) {
  AddLines({Corners(data.x, data.y, false)});
  item_->mirrored = false;
}

void Collector::addText(const DL_TextData& data) {
  Item& item = Begin(Item::Kind::kText);
  TextLook& text = item.text;
  text.text = PlainText(data.text);
  const bool aligned = data.hJustification != 0 || data.vJustification != 0;
  text.at = aligned && data.hJustification != 3 && data.hJustification != 5 ? Place{data.apx, data.apy}
                                                                            : Place{data.ipx, data.ipy};
  text.height = data.height;
  text.stretch = data.xScaleFactor;
  text.angle = data.angle;
  const bool middle = data.hJustification == 4;
  text.column = data.hJustification == 1 || middle ? 1 : data.hJustification == 2 ? 2 : 0;
  text.row = middle ? 2 : std::clamp(data.vJustification, 0, 3);
}

void Collector::addAttribute(const DL_AttributeData& data) { addText(data); }

void Collector::addMTextChunk(const std::string& text) {
  constexpr std::size_t kMaxText = 65536;
  // The first piece begins the item, the rest of it comes last.
  if (chunks_.size() < kMaxText) chunks_ += text;
}

void Collector::addMText(const DL_MTextData& data) {
  const std::string whole = std::exchange(chunks_, {}) + data.text;
  const std::vector<std::string> lines = LinesOfMText(whole);
  const int attachment = std::clamp(data.attachmentPoint, 1, 9) - 1;
  const int column = attachment % 3;
  const double step = data.height * kLineStep * (data.lineSpacingFactor > 0 ? data.lineSpacingFactor : 1);
  const double height = data.height + step * (static_cast<double>(lines.size()) - 1);
  double down = data.height - height * (attachment / 3) / 2;
  for (const std::string& line : lines) {
    Item& item = Begin(Item::Kind::kText);
    item.text.text = line;
    item.text.height = data.height;
    item.text.angle = data.angle;
    item.text.column = column;
    item.text.at = {data.ipx + down * std::sin(data.angle), data.ipy - down * std::cos(data.angle)};
    down += step;
  }
}

void Collector::addLeader(const DL_LeaderData&) {
  Begin(Item::Kind::kLines).mirrored = false;
  polyline_ = true;
  closed_ = false;
}

void Collector::addLeaderVertex(const DL_LeaderVertexData& data) { addVertex(DL_VertexData(data.x, data.y, 0, 0)); }

void Collector::addHatch(const DL_HatchData& data) {
  Begin(data.solid ? Item::Kind::kArea : Item::Kind::kHatch).lines.clear();
}

void Collector::addHatchLoop(const DL_HatchLoopData&) {
  if (item_) item_->lines.emplace_back();
}

void Collector::addHatchEdge(const DL_HatchEdgeData& data) {
  if (!item_ || item_->lines.empty() || Full()) return;
  Line& line = item_->lines.back();
  const double ways = data.ccw ? 1 : -1;
  switch (data.type) {
    case 0: {
      std::vector<DL_VertexData> vertices;
      for (const auto& v : data.vertices) {
        if (v.size() >= 2) vertices.emplace_back(v[0], v[1], 0, v.size() > 2 ? v[2] : 0);
      }
      const Line part = LineOf(vertices, true);
      line.insert(line.end(), part.begin(), part.end());
      break;
    }
    case 1:
      line.push_back({data.x1, data.y1});
      line.push_back({data.x2, data.y2});
      break;
    case 2:
      AddArc({data.cx, data.cy}, data.radius, ways * data.angle1, ways * Sweep(data.angle1, data.angle2), line);
      break;
    case 3:
      AddEllipse({data.cx, data.cy}, {data.mx, data.my}, data.ratio, ways * data.angle1,
                 ways * Sweep(data.angle1, data.angle2), line);
      break;
    default: {
      Spline spline;
      spline.degree = data.degree;
      const auto places = [](const std::vector<std::vector<double>>& from, std::vector<Place>& to) {
        for (const auto& v : from) {
          if (v.size() >= 2) to.push_back({v[0], v[1]});
        }
      };
      places(data.controlPoints, spline.control);
      places(data.fitPoints, spline.fit);
      spline.knots = data.knots;
      spline.weights = data.weights;
      AddSpline(spline, line);
    }
  }
}

void Collector::setVariableDouble(const std::string& key, double value, int) {
  if (key == "$LTSCALE" && value > 0) drawing_.lineTypeScale = value;
}

}  // namespace dxf
