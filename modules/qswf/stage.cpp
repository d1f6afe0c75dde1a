#include "modules/qswf/stage.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

#include "modules/common/limits.h"
#include "modules/qswf/fill_raster.h"
#include "modules/vector/letters.h"

namespace qswf {
namespace {

constexpr std::int32_t kScale = 4;  // recorded units in a twip
constexpr std::int32_t kTwips = 20;
constexpr std::int32_t kPixel = kScale * kTwips;
constexpr std::uint32_t kUnitsPerInch = 72 * kPixel;
constexpr double kFarthest = 1 << 28;  // of recorded units, so that sums of them fit

std::int32_t Limited(double value) {
  return static_cast<std::int32_t>(std::lround(std::clamp(value, -kFarthest, kFarthest)));
}

std::uint64_t KeyOf(Vertex vertex) {
  return static_cast<std::uint64_t>(static_cast<std::uint32_t>(vertex.x)) << 32 | static_cast<std::uint32_t>(vertex.y);
}

Edge Reversed(const Edge& edge) { return {edge.to, edge.control, edge.from, edge.straight}; }

// Puts edges in an order in which each begins where the one before it ends, as far as that can be.
std::vector<Edge> Chained(const std::vector<Edge>& edges) {
  std::unordered_map<std::uint64_t, std::vector<std::size_t>> starts;
  for (std::size_t i = edges.size(); i-- > 0;) starts[KeyOf(edges[i].from)].push_back(i);
  std::vector<bool> used(edges.size());
  std::vector<Edge> chain;
  chain.reserve(edges.size());
  for (std::size_t first = 0; first < edges.size(); ++first) {
    std::size_t at = first;
    while (!used[at]) {
      used[at] = true;
      chain.push_back(edges[at]);
      auto& next = starts[KeyOf(edges[at].to)];
      while (!next.empty() && used[next.back()]) next.pop_back();
      if (next.empty()) break;
      at = next.back();
    }
  }
  return chain;
}

// The directed edges of one fill.
std::vector<Edge> EdgesOf(const ShapeGroup& group, std::uint32_t fill) {
  std::vector<Edge> edges;
  for (const StyledEdge& styled : group.edges) {
    if (styled.left == styled.right) continue;
    if (styled.right == fill) edges.push_back(styled.edge);
    if (styled.left == fill) edges.push_back(Reversed(styled.edge));
  }
  return edges;
}

double ScaleOf(const Transform& matrix) {
  return std::sqrt(std::abs(matrix.m11 * matrix.m22 - matrix.m12 * matrix.m21));
}

}  // namespace

// Figures in recorded units.
struct Stage::Path {
  struct Piece {
    platform::Point from;
    platform::Point points[3];  // two controls and the end; a straight piece has the end only
    bool straight;
    bool begins;  // does not go on from the piece before it
  };

  std::vector<Piece> pieces;
  platform::Box box{INT32_MAX, INT32_MAX, INT32_MIN, INT32_MIN};

  void Add(const Edge& edge, const Transform& matrix, bool begins) {
    const platform::Point from = ToDevice(matrix, edge.from);
    const platform::Point control = ToDevice(matrix, edge.control);
    const platform::Point to = ToDevice(matrix, edge.to);
    pieces.push_back({from, {Third(from, control), Third(to, control), to}, edge.straight, begins});
    for (const platform::Point point : {from, control, to}) {
      box = {std::min(box.left, point.x), std::min(box.top, point.y), std::max(box.right, point.x),
             std::max(box.bottom, point.y)};
    }
  }

  void Add(const std::vector<Edge>& edges, const Transform& matrix) {
    for (std::size_t i = 0; i < edges.size(); ++i) {
      Add(edges[i], matrix, i == 0 || KeyOf(edges[i - 1].to) != KeyOf(edges[i].from));
    }
  }

 private:
  static platform::Point ToDevice(const Transform& matrix, Vertex vertex) {
    return {Limited(matrix.X(vertex.x, vertex.y) * kScale), Limited(matrix.Y(vertex.x, vertex.y) * kScale)};
  }
  // From a quadratic curve's control to one of a cubic curve.
  static platform::Point Third(platform::Point end, platform::Point control) {
    return {(end.x + 2 * control.x) / 3, (end.y + 2 * control.y) / 3};
  }
};

Stage::Stage(const Rect& stage, Color paper, Characters& characters, DrawingBudget& budget)
    : stage_(stage), paper_(paper), characters_(characters), budget_(budget), recorder_(kUnitsPerInch) {
  recorder_.SetFrame({stage.left * kScale, stage.top * kScale, stage.right * kScale, stage.bottom * kScale});
  recorder_.SetPolyFillMode(platform::kFillAlternate);
  recorder_.SelectObject(platform::kNullPen);
}

bool Stage::Spend(std::uint64_t& left, std::uint64_t cost) const {
  if (cost > left) {
    left = 0;
    return false;
  }
  left -= cost;
  return true;
}

void Stage::Draw(const DisplayList& list) { DrawList(list, {}, {}, 0); }

void Stage::DrawList(const DisplayList& list, const Transform& matrix, const ColorTransform& colors,
                     std::uint32_t depth) {
  std::vector<std::uint16_t> clips;  // depths up to which they last
  for (const auto& [layer, placed] : list) {
    while (!clips.empty() && layer > clips.back()) {
      recorder_.RestoreDc();
      clips.pop_back();
    }
    if (!placed.visible || !Spend(budget_.objects, 1)) continue;
    const Transform inner = platform::Then(placed.matrix, matrix);
    if (placed.clipDepth == 0) {
      DrawCharacter(placed, inner, qswf::Then(placed.colors, colors), depth);
    } else if (clips.size() < modules::kMaxNesting && BeginClip(placed, inner, depth)) {
      // A clip that would outlast the one around it ends with that.
      clips.push_back(clips.empty() ? placed.clipDepth : std::min(placed.clipDepth, clips.back()));
    }
  }
  for (std::size_t i = 0; i < clips.size(); ++i) recorder_.RestoreDc();
}

bool Stage::BeginClip(const Placed& placed, const Transform& matrix, std::uint32_t depth) {
  std::vector<Path> paths;
  Outline(placed.character, matrix, depth, paths);
  if (paths.empty()) return false;
  recorder_.SaveDc();
  recorder_.BeginPath();
  for (const Path& path : paths) Record(path);
  recorder_.EndPath();
  recorder_.SelectClipPath(platform::kRegionAnd);
  return true;
}

void Stage::DrawCharacter(const Placed& placed, const Transform& matrix, const ColorTransform& colors,
                          std::uint32_t depth) {
  const Character* character = characters_.Find(placed.character);
  if (character == nullptr || depth > modules::kMaxNesting) return;
  if (const auto* shape = std::get_if<Shape>(character)) return DrawShape(*shape, matrix, colors);
  if (const auto* text = std::get_if<Text>(character)) return DrawText(*text, matrix, colors);
  if (const auto* edit = std::get_if<EditText>(character)) return DrawEditText(*edit, matrix, colors);
  if (const auto* list = std::get_if<DisplayList>(character)) return DrawList(*list, matrix, colors, depth + 1);
  if (const auto* video = std::get_if<std::shared_ptr<Video>>(character)) {
    const modules::Picture* picture = (*video)->Show(placed.ratio);
    if (picture != nullptr) DrawPicture(*picture, (*video)->Width(), (*video)->Height(), matrix, colors);
  } else if (std::get_if<Bitmap>(character) != nullptr) {
    const modules::Picture* picture = characters_.FindBitmap(placed.character);
    if (picture != nullptr) DrawPicture(*picture, picture->width, picture->height, matrix, colors);
  }
}

void Stage::DrawPicture(const modules::Picture& picture, std::uint32_t width, std::uint32_t height,
                        const Transform& matrix, const ColorTransform& colors) {
  Shape box;
  ShapeGroup& group = box.groups.emplace_back();
  FillStyle& fill = group.fills.emplace_back();
  fill.kind = FillStyle::Kind::kBitmap;
  fill.picture = &picture;
  fill.matrix.m11 = static_cast<double>(width) * kTwips / picture.width;
  fill.matrix.m22 = static_cast<double>(height) * kTwips / picture.height;
  const auto right = static_cast<std::int32_t>(width) * kTwips;
  const auto bottom = static_cast<std::int32_t>(height) * kTwips;
  const Vertex corners[] = {{0, 0}, {right, 0}, {right, bottom}, {0, bottom}};
  for (int i = 0; i < 4; ++i) {
    group.edges.push_back({{corners[i], corners[i], corners[(i + 1) % 4], true}, 0, 1, 0});
  }
  DrawShape(box, matrix, colors);
}

void Stage::DrawText(const Text& text, const Transform& matrix, const ColorTransform& colors) {
  const Transform toStage = platform::Then(text.matrix, matrix);
  for (const TextGlyph& glyph : text.glyphs) {
    const Character* character = characters_.Find(glyph.font);
    const auto* font = character == nullptr ? nullptr : std::get_if<Font>(character);
    if (font != nullptr) DrawGlyph(*font, glyph, toStage, colors);
  }
}

void Stage::DrawGlyph(const Font& font, const TextGlyph& glyph, const Transform& matrix, const ColorTransform& colors) {
  if (glyph.index >= font.glyphs.size() || !Spend(budget_.objects, 1)) return;
  Transform place;
  place.m11 = place.m22 = glyph.height / font.unitsPerEm;
  place.dx = glyph.x;
  place.dy = glyph.y;
  Shape shape = font.glyphs[glyph.index];
  if (!shape.groups.empty() && !shape.groups[0].fills.empty()) shape.groups[0].fills[0].color = glyph.color;
  DrawShape(shape, platform::Then(place, matrix), colors);
}

void Stage::DrawEditText(const EditText& edit, const Transform& matrix, const ColorTransform& colors) {
  constexpr double kAscent = 0.905;
  static const Font kNone;
  const Character* character = edit.font ? characters_.Find(*edit.font) : nullptr;
  const Font* found = character == nullptr ? nullptr : std::get_if<Font>(character);
  const Font& font = found != nullptr ? *found : kNone;
  const bool drawn = !font.advances.empty();
  const auto advance = [&](char16_t c) {
    const auto index = font.indices.find(c);
    return index == font.indices.end() ? 0.0 : font.advances[index->second] / font.unitsPerEm;
  };
  const auto length = [&](std::u16string_view text) {
    if (!drawn) return modules::TextLength(text);
    double sum = 0;
    for (const char16_t c : text) sum += advance(c);
    return sum;
  };
  const double ascent = font.ascent > 0 ? font.ascent / font.unitsPerEm : kAscent;
  for (const EditLine& line : LinesOf(edit, ascent, length)) {
    if (!drawn) {
      DrawLetters(line, edit, font, matrix, colors);
      continue;
    }
    TextGlyph glyph{0, 0, edit.color, line.x, line.baseline, edit.height};
    for (const char16_t c : line.text) {
      const auto index = font.indices.find(c);
      if (index == font.indices.end()) continue;
      glyph.index = static_cast<std::uint32_t>(index->second);
      DrawGlyph(font, glyph, matrix, colors);
      glyph.x += advance(c) * edit.height;
    }
  }
}

void Stage::DrawLetters(const EditLine& line, const EditText& edit, const Font& font, const Transform& matrix,
                        const ColorTransform& colors) {
  const Color color = colors.Apply(edit.color);
  if (line.text.empty() || color.alpha == 0 || !Spend(budget_.objects, line.text.size())) return;
  platform::FontSpec spec;
  spec.height = -std::max(Limited(edit.height * kScale), 1);
  spec.weight = font.bold ? 700 : 400;
  spec.italic = font.italic;
  spec.face = u"Arial";
  if (!font.name.empty() && font.name[0] != '_') spec.face.assign(font.name.begin(), font.name.end());
  if (font.name == "_serif") spec.face = u"Times New Roman";
  if (font.name == "_typewriter") spec.face = u"Courier New";
  recorder_.SaveDc();
  Transform toStage = matrix;
  toStage.dx *= kScale;
  toStage.dy *= kScale;
  recorder_.SetWorldTransform(toStage);
  const std::uint32_t handle = recorder_.CreateFont(spec);
  recorder_.SelectObject(handle);
  recorder_.SetBkMode(platform::kTransparentMode);
  recorder_.SetTextColor(platform::ColorRef(color.red, color.green, color.blue));
  recorder_.SetTextAlign(platform::kAlignBaseline);
  recorder_.TextOut(Limited(line.x * kScale), Limited(line.baseline * kScale), line.text);
  recorder_.RestoreDc();
  recorder_.DeleteObject(handle);
}

void Stage::DrawShape(const Shape& shape, const Transform& matrix, const ColorTransform& colors) {
  for (const ShapeGroup& group : shape.groups) {
    // Fills and lines that are used, so that a long table of styles for few edges costs nothing.
    std::vector<bool> fills(group.fills.size() + 1);
    std::vector<bool> lines(group.lines.size() + 1);
    for (const StyledEdge& edge : group.edges) {
      if (edge.left < fills.size()) fills[edge.left] = true;
      if (edge.right < fills.size()) fills[edge.right] = true;
      if (edge.line < lines.size()) lines[edge.line] = true;
    }
    for (std::uint32_t i = 1; i < fills.size(); ++i) {
      if (!fills[i] || !Spend(budget_.edges, group.edges.size())) continue;
      Path path;
      path.Add(Chained(EdgesOf(group, i)), matrix);
      if (!path.pieces.empty()) Fill(group.fills[i - 1], path, matrix, colors);
    }
    for (std::uint32_t i = 1; i < lines.size(); ++i) {
      if (!lines[i] || !Spend(budget_.edges, group.edges.size())) continue;
      std::vector<Edge> edges;
      for (const StyledEdge& edge : group.edges) {
        if (edge.line == i) edges.push_back(edge.edge);
      }
      // Pens of metafiles mark pixels to the right of their place and below it; these lie on both sides of it.
      Transform shifted = matrix;
      shifted.dx -= kTwips / 2.0;
      shifted.dy -= kTwips / 2.0;
      Path path;
      path.Add(edges, shifted);
      Stroke(group.lines[i - 1], path, matrix, colors);
    }
  }
}

void Stage::Record(const Path& path, bool closed) {
  std::vector<platform::Point> points;
  for (std::size_t i = 0; i < path.pieces.size();) {
    const Path::Piece& piece = path.pieces[i];
    if (piece.begins) {
      if (closed && i != 0) recorder_.CloseFigure();
      recorder_.MoveTo(piece.from.x, piece.from.y);
    }
    // Pieces of one kind that go on from each other are one record.
    points.clear();
    std::size_t next = i;
    do {
      const Path::Piece& part = path.pieces[next];
      points.insert(points.end(), part.straight ? part.points + 2 : part.points, part.points + 3);
      ++next;
    } while (next < path.pieces.size() && !path.pieces[next].begins && path.pieces[next].straight == piece.straight);
    if (piece.straight) {
      recorder_.PolylineTo(points);
    } else {
      recorder_.PolyBezierTo(points);
    }
    i = next;
  }
  if (closed) recorder_.CloseFigure();
}

void Stage::Outline(std::uint16_t number, const Transform& matrix, std::uint32_t depth, std::vector<Path>& paths) {
  const Character* character = characters_.Find(number);
  if (character == nullptr || depth > modules::kMaxNesting) return;
  if (const auto* shape = std::get_if<Shape>(character)) {
    for (const ShapeGroup& group : shape->groups) {
      for (std::uint32_t i = 1; i <= group.fills.size(); ++i) {
        if (!Spend(budget_.edges, group.edges.size())) return;
        Path path;
        path.Add(Chained(EdgesOf(group, i)), matrix);
        if (!path.pieces.empty()) paths.push_back(std::move(path));
      }
    }
  } else if (const auto* list = std::get_if<DisplayList>(character)) {
    for (const auto& [layer, placed] : *list) {
      if (placed.clipDepth != 0 || !Spend(budget_.objects, 1)) continue;
      Outline(placed.character, platform::Then(placed.matrix, matrix), depth + 1, paths);
    }
  }
}

void Stage::Fill(const FillStyle& style, const Path& path, const Transform& matrix, const ColorTransform& colors) {
  const Color color = colors.Apply(style.color);
  if (style.kind == FillStyle::Kind::kSolid) {
    if (color.alpha == 0) return;
    if (color.alpha == 255) {
      const std::uint32_t brush =
          recorder_.CreateBrush(platform::kBrushSolid, platform::ColorRef(color.red, color.green, color.blue));
      recorder_.SelectObject(brush);
      recorder_.BeginPath();
      Record(path);
      recorder_.EndPath();
      recorder_.FillPath();
      recorder_.SelectObject(platform::kWhiteBrush);
      recorder_.DeleteObject(brush);
      return;
    }
  }
  // All else is laid over the stage through the shape as a window.
  const platform::Box frame{stage_.left * kScale, stage_.top * kScale, stage_.right * kScale, stage_.bottom * kScale};
  const auto pixelFrom = [](std::int32_t units) { return static_cast<std::int32_t>(std::floor(units * 1.0 / kPixel)); };
  const std::int32_t left = pixelFrom(std::max(path.box.left, frame.left));
  const std::int32_t top = pixelFrom(std::max(path.box.top, frame.top));
  const std::int32_t right = pixelFrom(std::min(path.box.right, frame.right)) + 1;
  const std::int32_t bottom = pixelFrom(std::min(path.box.bottom, frame.bottom)) + 1;
  if (right <= left || bottom <= top) return;
  modules::Picture picture;
  if (style.kind == FillStyle::Kind::kSolid) {
    if (!picture.Allocate(1, 1, 32)) return;
    const std::uint32_t word = MultipliedWord(color);
    for (std::uint32_t i = 0; i < 4; ++i) picture.Row(0)[i] = static_cast<std::uint8_t>(word >> (8 * i));
  } else {
    const auto width = static_cast<std::uint32_t>(right - left);
    const auto height = static_cast<std::uint32_t>(bottom - top);
    const std::uint64_t area = std::uint64_t{width} * height;
    if (!Spend(recordedPixels_, area) || !Spend(budget_.fillPixels, area)) return;
    if (!picture.Allocate(width, height, 32)) return;
    const modules::Picture* bitmap = style.picture;
    if (style.kind == FillStyle::Kind::kBitmap && bitmap == nullptr) bitmap = characters_.FindBitmap(style.bitmap);
    if (!PaintFill(style, matrix, colors, bitmap, left, top, picture)) return;
  }
  recorder_.SaveDc();
  recorder_.BeginPath();
  Record(path);
  recorder_.EndPath();
  recorder_.SelectClipPath(platform::kRegionAnd);
  recorder_.AlphaBlend({left * kPixel, top * kPixel, right * kPixel, bottom * kPixel}, picture.Dib(), picture.Whole());
  recorder_.RestoreDc();
}

void Stage::Stroke(const LineStyle& style, const Path& path, const Transform& matrix, const ColorTransform& colors) {
  const Color color = colors.Apply(style.color);
  if (color.alpha == 0) return;
  const auto over = [&](std::uint8_t value, std::uint8_t below) {
    return (std::uint32_t{value} * color.alpha + std::uint32_t{below} * (255U - color.alpha) + 127) / 255;
  };
  const std::uint32_t word =
      platform::ColorRef(over(color.red, paper_.red), over(color.green, paper_.green), over(color.blue, paper_.blue));
  // Hair lines are a pixel wide.
  const double scale = style.scales ? ScaleOf(matrix) : 1;
  const double width = std::clamp(style.width * scale, static_cast<double>(kTwips), 65535.0 * kTwips);
  std::uint32_t pen = platform::kPenGeometric;
  if (style.cap != LineCap::kRound) {
    pen |= style.cap == LineCap::kNone ? platform::kPenCapFlat : platform::kPenCapSquare;
  }
  if (style.join != LineJoin::kRound) {
    pen |= style.join == LineJoin::kBevel ? platform::kPenJoinBevel : platform::kPenJoinMiter;
  }
  const std::uint32_t line = recorder_.ExtCreatePen(pen, static_cast<std::uint32_t>(std::lround(width * kScale)), word);
  recorder_.SelectObject(line);
  recorder_.BeginPath();
  Record(path, false);
  recorder_.EndPath();
  recorder_.StrokePath();
  recorder_.SelectObject(platform::kNullPen);
  recorder_.DeleteObject(line);
}

}  // namespace qswf
