#include "modules/helpers/dxf_reader/collector.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "modules/helpers/dxf_reader/hatch_lines.h"
#include "modules/helpers/dxf_reader/text_codes.h"
#include "modules/vector/letters.h"

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

Line LoopOf(const std::vector<std::vector<double>>& vertices) {
  Line line;
  double bulge = 0;
  for (const auto& v : vertices) {
    if (v.size() < 2) continue;
    AddBulge({v[0], v[1]}, bulge, line);
    bulge = v.size() > 2 ? v[2] : 0;
  }
  if (!line.empty()) AddBulge(Place(line[0]), bulge, line);
  return line;
}

// Corners as solids number them: the third and the fourth change places.
Line Corners(const DL_TraceData& data) {
  return {{data.x[0], data.y[0]}, {data.x[1], data.y[1]}, {data.x[3], data.y[3]}, {data.x[2], data.y[2]}};
}

// One colour for what runs from one to another.
int MeanColor(const Groups& groups) {
  unsigned sums[3] = {};
  unsigned count = 0;
  for (const auto& [code, value] : groups.pairs) {
    if (code != 421 || count == 64) continue;
    const auto color = static_cast<std::uint32_t>(ToNumber(value));
    for (int i = 0; i < 3; ++i) sums[i] += color >> (16 - 8 * i) & 255;
    ++count;
  }
  if (count == 0) return -1;
  return static_cast<int>(sums[0] / count << 16 | sums[1] / count << 8 | sums[2] / count);
}

// Of a file of letters as a style names it.
Face FaceOfFile(const std::string& file) {
  std::string name = NameKey(file);
  name.erase(0, name.find_last_of("/\\") + 1);
  const std::string stem = name.substr(0, name.find_last_of('.'));
  Face face;
  const auto begins = [&](const char* start) { return stem.rfind(start, 0) == 0; };
  const auto holds = [&](const char* part) { return stem.find(part) != std::string::npos; };
  constexpr std::pair<const char*, const char16_t*> kFamilies[] = {
      {"TIMES", u"Times New Roman"}, {"ROMANC", u"Times New Roman"}, {"ROMANT", u"Times New Roman"},
      {"COUR", u"Courier New"},      {"MONO", u"Courier New"},       {"CONSOLA", u"Courier New"},
      {"CALIBRI", u"Calibri"},       {"CAMBRIA", u"Cambria"},        {"GEORGIA", u"Times New Roman"},
      {"SYMBOL", u"Symbol"}};
  for (const auto& [start, family] : kFamilies) {
    if (begins(start)) face.name = family;
  }
  const bool outlines = name.size() > 4 && name.compare(name.size() - 4, 4, ".TTF") == 0;
  face.bold = outlines && (holds("BD") || holds("BOLD"));
  face.italic = outlines && (holds("BI") || holds("ITALIC") || (stem.size() > 4 && stem.back() == 'I'));
  return face;
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
  item.plane = groups_.Now().Plane();
  shown_ = groups_.Now().Flags(60) == 0;
  onSheet_ = attributes.isInPaperSpace();
  return item;
}

void Collector::EndItem() {
  if (!item_) return;
  if (spline_) AddSpline(*spline_, item_->lines.emplace_back());
  if (polyline_) {
    for (Item& item : polyline_->Items(*item_)) Store(std::move(item));
  } else {
    Store(std::move(*item_));
  }
  polyline_.reset();
  spline_.reset();
  chunks_.clear();
  item_.reset();
}

void Collector::Store(Item item) {
  if (!shown_) return;
  for (const Line& line : item.lines) points_ += line.size();
  if (Full()) return;
  ++count_;
  auto& items = inBlock_ ? drawing_.blocks[block_].items : onSheet_ ? drawing_.sheet : drawing_.items;
  items.push_back(std::move(item));
}

void Collector::AddLines(std::vector<Line> lines, Item::Kind kind) { Begin(kind).lines = std::move(lines); }

void Collector::addLayer(const DL_LayerData& data) {
  Layer layer;
  layer.look = LookNow();
  layer.hidden = data.off || (data.flags & kFrozen) != 0 || layer.look.color < 0;
  drawing_.layers[NameKey(data.name)] = layer;
}

// Its dashes have come before.
void Collector::addLinetype(const DL_LinetypeData& data) {
  drawing_.lineTypes[NameKey(data.name)] = std::exchange(dashes_, {});
}

void Collector::addLinetypeDash(double length) {
  constexpr std::size_t kMaxDashes = 64;
  if (dashes_.size() < kMaxDashes) dashes_.push_back(length);
}

void Collector::addBlock(const DL_BlockData& data) {
  EndItem();
  inBlock_ = true;
  block_ = NameKey(data.name);
  drawing_.blocks[block_].base = {data.bpx, data.bpy};
}

void Collector::endBlock() {
  EndItem();
  inBlock_ = false;
}

void Collector::addTextStyle(const DL_StyleData& data) {
  Face face = FaceOfFile(data.primaryFontFile);
  face.bold = face.bold || data.bold;
  face.italic = face.italic || data.italic;
  drawing_.faces[NameKey(data.name)] = face;
}

Face Collector::FaceOf(const std::string& style) const {
  const auto found = drawing_.faces.find(NameKey(style.empty() ? "STANDARD" : style));
  return found == drawing_.faces.end() ? Face() : found->second;
}

void Collector::addLine(const DL_LineData& data) {
  AddLines({{{data.x1, data.y1}, {data.x2, data.y2}}});
  item_->plane = {};
}

void Collector::addXLine(const DL_XLineData& data) {
  AddLines({{{data.bx, data.by}, {data.bx + data.dx, data.by + data.dy}}}, Item::Kind::kEndless);
  item_->plane = {};
}

void Collector::addRay(const DL_RayData& data) {
  AddLines({{{data.bx, data.by}, {data.bx + data.dx, data.by + data.dy}}}, Item::Kind::kRay);
  item_->plane = {};
}

void Collector::addPoint(const DL_PointData& data) {
  AddLines({{{data.x, data.y}, {data.x, data.y}}});
  item_->plane = {};
}

void Collector::addArc(const DL_ArcData& data) {
  Line line;
  AddArc({data.cx, data.cy}, RadiusOf(data.radius), data.angle1 * kRadian,
         Sweep(data.angle1 * kRadian, data.angle2 * kRadian), line);
  AddLines({line});
}

void Collector::addCircle(const DL_CircleData& data) {
  Line line;
  AddArc({data.cx, data.cy}, RadiusOf(data.radius), 0, kTurn, line);
  AddLines({line});
}

void Collector::addEllipse(const DL_EllipseData& data) {
  // Its places are the drawing's, but seen from behind it turns the other way.
  const bool behind = groups_.Now().NumberOr(230, 1) < 0;
  Line line;
  AddEllipse({data.cx, data.cy}, {data.mx, data.my}, behind ? -data.ratio : data.ratio, data.angle1,
             Sweep(data.angle1, data.angle2), line);
  AddLines({line});
  item_->plane = {};
}

void Collector::addPolyline(const DL_PolylineData&) {
  Item& item = Begin(Item::Kind::kLines);
  polyline_.emplace(groups_.Now());
  if (polyline_->InSpace()) item.plane = {};
}

void Collector::addVertex(const DL_VertexData& data) {
  if (polyline_) polyline_->AddVertex({data.x, data.y}, data.bulge, groups_.Now());
}

void Collector::addSpline(const DL_SplineData& data) {
  Begin(Item::Kind::kLines).plane = {};
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
  Begin(Item::Kind::kInsertion).insertion = {NameKey(data.name),
                                             {data.ipx, data.ipy},
                                             data.sx,
                                             data.sy,
                                             data.angle,
                                             std::clamp(data.cols, 1, 32767),
                                             std::clamp(data.rows, 1, 32767),
                                             data.colSp,
                                             data.rowSp};
}

void Collector::AddDimension() {
  Item& item = Begin(Item::Kind::kInsertion);
  item.insertion.block = NameKey(groups_.Now().Text(2));
  item.plane = {};
}

void Collector::addTrace(const DL_TraceData& data) { AddLines({Corners(data)}, Item::Kind::kArea); }
void Collector::addSolid(const DL_SolidData& data) { AddLines({Corners(data)}, Item::Kind::kArea); }

void Collector::add3dFace(const DL_3dFaceData& data) {
  const int unseen = groups_.Now().Flags(70);
  std::vector<Line> edges;
  for (int i = 0; i < 4; ++i) {
    const int next = (i + 1) % 4;
    if ((unseen >> i & 1) == 0) edges.push_back({{data.x[i], data.y[i]}, {data.x[next], data.y[next]}});
  }
  AddLines(std::move(edges));
  item_->plane = {};
}

void Collector::addText(const DL_TextData& data) {
  enum Alignment { kLeft, kMiddle, kRight, kBetween, kCentre, kFitted };
  Item& item = Begin(Item::Kind::kText);
  TextLook& text = item.text;
  text.text = PlainText(data.text);
  text.face = FaceOf(data.style);
  const bool between = data.hJustification == kBetween || data.hJustification == kFitted;
  const bool aligned = (data.hJustification != kLeft || data.vJustification != 0) && !between;
  text.at = aligned ? Place{data.apx, data.apy} : Place{data.ipx, data.ipy};
  text.height = data.height;
  text.stretch = data.xScaleFactor > 0 ? data.xScaleFactor : 1;
  text.angle = data.angle;
  const bool centre = data.hJustification == kCentre;
  text.column = data.hJustification == kMiddle || centre ? 1 : data.hJustification == kRight ? 2 : 0;
  text.row = centre ? 2 : std::clamp(data.vJustification, 0, 3);
  const double length = modules::TextLength(Wide(text.text)) * text.height / modules::kCapitalOfEm;
  const double wanted = std::hypot(data.apx - data.ipx, data.apy - data.ipy);
  if (!between || !(length > 0) || !(wanted > 0)) return;
  // From one place to another, as high as that makes it or as wide.
  text.angle = std::atan2(data.apy - data.ipy, data.apx - data.ipx);
  if (data.hJustification == kBetween) {
    text.height *= wanted / (length * text.stretch);
  } else {
    text.stretch = wanted / length;
  }
}

void Collector::addAttribute(const DL_AttributeData& data) {
  constexpr int kInvisible = 1;
  addText(data);
  if ((groups_.Now().Flags(70) & kInvisible) != 0) shown_ = false;
}

void Collector::addMTextChunk(const std::string& text) {
  constexpr std::size_t kMaxText = 65536;
  // The first piece begins the item, the rest of it comes last.
  if (chunks_.size() < kMaxText) chunks_ += text;
}

void Collector::addMText(const DL_MTextData& data) {
  const std::string whole = std::exchange(chunks_, {}) + data.text;
  const double most = data.width > 0 && data.height > 0 ? data.width / data.height * modules::kCapitalOfEm : HUGE_VAL;
  const std::vector<std::string> lines = Wrapped(LinesOfMText(whole), most);
  const int attachment = std::clamp(data.attachmentPoint, 1, 9) - 1;
  const int column = attachment % 3;
  const double step = data.height * kLineStep * (data.lineSpacingFactor > 0 ? data.lineSpacingFactor : 1);
  const double height = data.height + step * (static_cast<double>(lines.size()) - 1);
  double down = data.height - height * (attachment / 3) / 2;
  for (const std::string& line : lines) {
    Item& item = Begin(Item::Kind::kText);
    item.text.text = line;
    item.text.face = FaceOf(data.style);
    item.text.height = data.height;
    item.text.angle = data.angle;
    item.text.column = column;
    item.text.at = {data.ipx + down * std::sin(data.angle), data.ipy - down * std::cos(data.angle)};
    down += step;
  }
}

void Collector::addLeader(const DL_LeaderData&) {
  Begin(Item::Kind::kLines).plane = {};
  polyline_.emplace();
}

void Collector::addLeaderVertex(const DL_LeaderVertexData& data) { addVertex(DL_VertexData(data.x, data.y, 0, 0)); }

void Collector::addHatch(const DL_HatchData& data) {
  Item& item = Begin(data.solid ? Item::Kind::kArea : Item::Kind::kHatch);
  constexpr int kGradient = 450;
  if (data.solid && groups_.Now().Flags(kGradient) != 0) {
    const int color = MeanColor(groups_.Now());
    if (color >= 0) item.look.trueColor = color;
  }
  if (!data.solid) item.hatch = ReadHatchFamilies(groups_.Now());
}

void Collector::addHatchLoop(const DL_HatchLoopData&) {
  if (item_) item_->lines.emplace_back();
}

void Collector::addHatchEdge(const DL_HatchEdgeData& data) {
  if (!item_ || item_->lines.empty() || Full()) return;
  Line& line = item_->lines.back();
  // The library sets it for arcs only.
  const double ways = (data.type != 2 && data.type != 3) || data.ccw ? 1 : -1;
  switch (data.type) {
    case 0: {
      const Line part = LoopOf(data.vertices);
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
