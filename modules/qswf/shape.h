#ifndef MODULES_QSWF_SHAPE_H_
#define MODULES_QSWF_SHAPE_H_

#include <cstdint>
#include <vector>

#include "modules/qswf/values.h"
#include "modules/vector/picture.h"

namespace qswf {

struct GradientStop {
  std::uint8_t ratio = 0;
  Color color;
};

struct FillStyle {
  enum class Kind { kSolid, kLinear, kRadial, kBitmap };

  Kind kind = Kind::kSolid;
  Color color;
  Transform matrix;                 // from gradient or bitmap to shape
  std::vector<GradientStop> stops;  // by rising ratio
  std::uint32_t spread = 0;         // 0 pad, 1 reflect, 2 repeat
  bool linearLight = false;         // between stops
  double focus = 0;                 // of radial ones, -1 to 1
  std::uint16_t bitmap = 0;
  const modules::Picture* picture = nullptr;  // in place of the bitmap with a number
  bool repeats = false;
  bool smooth = true;
};

enum class LineCap { kRound, kNone, kSquare };
enum class LineJoin { kRound, kBevel, kMiter };

struct LineStyle {
  std::uint32_t width = 0;
  Color color;
  LineCap cap = LineCap::kRound;
  LineJoin join = LineJoin::kRound;
  bool scales = true;  // its width grows with the shape
};

struct Vertex {
  std::int32_t x = 0;
  std::int32_t y = 0;
};

// From the end of the edge before it; a straight one has its middle as control point.
struct Edge {
  Vertex from, control, to;
  bool straight = true;
};

// Edges by what they bound, styles counted from 1 and 0 for none.
struct StyledEdge {
  Edge edge;
  std::uint32_t left = 0;   // fill
  std::uint32_t right = 0;  // fill
  std::uint32_t line = 0;
};

// Styles and the edges that use them. Later groups lie above earlier ones.
struct ShapeGroup {
  std::vector<FillStyle> fills;
  std::vector<LineStyle> lines;
  std::vector<StyledEdge> edges;
};

struct Shape {
  std::vector<ShapeGroup> groups;
};

// Which tag a shape stands in decides how its styles are stored.
enum class ShapeKind { kFirst = 1, kSecond, kThird, kFourth, kGlyph };

// A shape with its styles. What can't be read ends it.
Shape ReadShape(BitReader& in, ShapeKind kind);
// A glyph: one fill, counted 1, and no style of its own.
Shape ReadGlyph(BitReader& in);
// The first of the two forms of a shape that changes.
Shape ReadMorphStart(BitReader& in, bool second);

}  // namespace qswf

#endif  // MODULES_QSWF_SHAPE_H_
