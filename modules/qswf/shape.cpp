#include "modules/qswf/shape.h"

#include <algorithm>

namespace qswf {
namespace {

// Of one shape, so that a stream of new styles without edges ends.
constexpr std::size_t kMaxGroups = 4096;
constexpr std::int32_t kFarthest = 1 << 24;

// How styles are stored.
struct Form {
  bool alpha = false;
  bool longCounts = false;
  bool wideLines = false;  // lines with caps and joins
  bool morph = false;      // each value twice: at the start and at the end
};

Form FormOf(ShapeKind kind) {
  Form form;
  form.longCounts = kind >= ShapeKind::kSecond;
  form.alpha = kind >= ShapeKind::kThird;
  form.wideLines = kind == ShapeKind::kFourth;
  return form;
}

Color ReadStart(BitReader& in, const Form& form) {
  const Color color = ReadColor(in, form.alpha);
  if (form.morph) ReadColor(in, form.alpha);
  return color;
}

Transform ReadStartMatrix(BitReader& in, const Form& form) {
  const Transform matrix = ReadMatrix(in);
  if (form.morph) ReadMatrix(in);
  return matrix;
}

void ReadGradient(BitReader& in, const Form& form, bool focal, FillStyle& fill) {
  fill.matrix = ReadStartMatrix(in, form);
  const std::uint32_t head = in.Byte();
  fill.spread = head >> 6;
  fill.linearLight = (head >> 4 & 3U) == 1;
  for (std::uint32_t i = 0; i < (head & 15U); ++i) {
    GradientStop stop;
    stop.ratio = in.Byte();
    stop.color = ReadColor(in, form.alpha);
    if (form.morph) {
      in.Byte();
      ReadColor(in, form.alpha);
    }
    fill.stops.push_back(stop);
  }
  if (!focal) return;
  fill.focus = std::clamp(static_cast<std::int16_t>(in.Word()) / 256.0, -0.98, 0.98);
  if (form.morph) in.Word();
}

bool ReadFill(BitReader& in, const Form& form, FillStyle& fill) {
  const std::uint32_t type = in.Byte();
  switch (type) {
    case 0x00:
      fill.color = ReadStart(in, form);
      return true;
    case 0x10:
    case 0x12:
    case 0x13:
      fill.kind = type == 0x10 ? FillStyle::Kind::kLinear : FillStyle::Kind::kRadial;
      ReadGradient(in, form, type == 0x13, fill);
      return true;
    case 0x40:
    case 0x41:
    case 0x42:
    case 0x43:
      fill.kind = FillStyle::Kind::kBitmap;
      fill.bitmap = in.Word();
      fill.matrix = ReadStartMatrix(in, form);
      fill.repeats = (type & 1U) == 0;
      fill.smooth = type < 0x42;
      return true;
    default:
      return false;
  }
}

bool ReadLine(BitReader& in, const Form& form, LineStyle& line) {
  line.width = in.Word();
  if (form.morph) in.Word();
  if (!form.wideLines) {
    line.color = ReadStart(in, form);
    return true;
  }
  const std::uint32_t cap = in.Bits(2);
  const std::uint32_t join = in.Bits(2);
  const bool filled = in.Flag();
  line.scales = in.Bits(2) != 3;  // not in either direction
  in.Bits(9);
  if (cap == 1) line.cap = LineCap::kNone;
  if (cap == 2) line.cap = LineCap::kSquare;
  if (join == 1) line.join = LineJoin::kBevel;
  if (join == 2) line.join = LineJoin::kMiter;
  if (line.join == LineJoin::kMiter) in.Word();
  if (!filled) {
    line.color = ReadStart(in, form);
    return true;
  }
  FillStyle fill;
  if (!ReadFill(in, form, fill)) return false;
  line.color = fill.stops.empty() ? fill.color : fill.stops[0].color;
  return true;
}

std::uint32_t ReadCount(BitReader& in, const Form& form) {
  const std::uint32_t count = in.Byte();
  return count == 255 && form.longCounts ? in.Word() : count;
}

bool ReadStyles(BitReader& in, const Form& form, ShapeGroup& group) {
  for (std::uint32_t left = ReadCount(in, form); left != 0 && !in.Failed(); --left) {
    if (!ReadFill(in, form, group.fills.emplace_back())) return false;
  }
  for (std::uint32_t left = ReadCount(in, form); left != 0 && !in.Failed(); --left) {
    if (!ReadLine(in, form, group.lines.emplace_back())) return false;
  }
  return !in.Failed();
}

// The records behind the styles.
class EdgeReader {
 public:
  EdgeReader(BitReader& in, const Form& form, Shape& shape) : in_(in), form_(form), shape_(shape) {
    in_.Aligned();
    fillBits_ = in_.Bits(4);
    lineBits_ = in_.Bits(4);
  }

  void Run() {
    while (!in_.Failed()) {
      if (in_.Flag()) {
        if (in_.Flag()) {
          Straight();
        } else {
          Curve();
        }
      } else if (!Change()) {
        return;
      }
    }
  }

  // A glyph without a style change to say otherwise is filled by style 1 on its right.
  void FillRight() { right_ = 1; }

 private:
  std::int32_t Moved(std::int32_t value, std::int32_t by) const {
    return std::clamp(value + by, -kFarthest, kFarthest);
  }
  Vertex Step(Vertex from, std::int32_t x, std::int32_t y) const { return {Moved(from.x, x), Moved(from.y, y)}; }

  void Add(const Edge& edge) {
    at_ = edge.to;
    shape_.groups.back().edges.push_back({edge, left_, right_, line_});
  }

  void Straight() {
    const std::uint32_t bits = in_.Bits(4) + 2;
    std::int32_t x = 0;
    std::int32_t y = 0;
    if (in_.Flag()) {
      x = in_.Signed(bits);
      y = in_.Signed(bits);
    } else if (in_.Flag()) {
      y = in_.Signed(bits);
    } else {
      x = in_.Signed(bits);
    }
    if (in_.Failed()) return;
    const Vertex to = Step(at_, x, y);
    Add({at_, {(at_.x + to.x) / 2, (at_.y + to.y) / 2}, to, true});
  }

  void Curve() {
    const std::uint32_t bits = in_.Bits(4) + 2;
    std::int32_t steps[4];
    for (std::int32_t& step : steps) step = in_.Signed(bits);
    if (in_.Failed()) return;
    const Vertex control = Step(at_, steps[0], steps[1]);
    Add({at_, control, Step(control, steps[2], steps[3]), false});
  }

  bool Change() {
    const std::uint32_t flags = in_.Bits(5);
    if (flags == 0) return false;
    if ((flags & 1U) != 0) {
      const std::uint32_t bits = in_.Bits(5);
      at_.x = std::clamp(in_.Signed(bits), -kFarthest, kFarthest);
      at_.y = std::clamp(in_.Signed(bits), -kFarthest, kFarthest);
    }
    if ((flags & 2U) != 0) left_ = in_.Bits(fillBits_);
    if ((flags & 4U) != 0) right_ = in_.Bits(fillBits_);
    if ((flags & 8U) != 0) line_ = in_.Bits(lineBits_);
    if ((flags & 16U) == 0) return true;
    if (shape_.groups.size() >= kMaxGroups || !ReadStyles(in_, form_, shape_.groups.emplace_back())) return false;
    in_.Aligned();
    fillBits_ = in_.Bits(4);
    lineBits_ = in_.Bits(4);
    return true;
  }

  BitReader& in_;
  Form form_;
  Shape& shape_;
  std::uint32_t fillBits_ = 0;
  std::uint32_t lineBits_ = 0;
  std::uint32_t left_ = 0;
  std::uint32_t right_ = 0;
  std::uint32_t line_ = 0;
  Vertex at_;
};

}  // namespace

Shape ReadShape(BitReader& in, ShapeKind kind) {
  const Form form = FormOf(kind);
  Shape shape;
  if (!ReadStyles(in, form, shape.groups.emplace_back())) return shape;
  EdgeReader(in, form, shape).Run();
  return shape;
}

Shape ReadGlyph(BitReader& in) {
  Shape shape;
  shape.groups.emplace_back().fills.emplace_back();
  EdgeReader reader(in, {}, shape);
  reader.FillRight();
  reader.Run();
  return shape;
}

Shape ReadMorphStart(BitReader& in, bool second) {
  Form form;
  form.alpha = true;
  form.longCounts = true;
  form.wideLines = second;
  form.morph = true;
  Shape shape;
  if (!ReadStyles(in, form, shape.groups.emplace_back())) return shape;
  EdgeReader(in, form, shape).Run();
  return shape;
}

}  // namespace qswf
