#include "modules/qwmf/wmf_translator.h"

#include <algorithm>
#include <set>
#include <variant>
#include <vector>

#include "modules/common/byte_reader.h"
#include "modules/common/code_page.h"
#include "modules/qwmf/bitmap16.h"
#include "modules/qwmf/wmf.h"

namespace qwmf {
namespace {

using modules::ByteReader;
using modules::DecodeText;
using platform::Box;
using platform::Point;

// Enough for any honest file; slots are searched from the lowest.
constexpr std::size_t kMaxSlots = 65535;
constexpr std::size_t kMaxRegionBoxes = 65536;

struct Drawable {  // pen, brush or font
  std::uint32_t handle;
  std::uint8_t charset;
};
using Region = std::vector<Box>;
struct Palette {
  std::uint32_t handle;
};
struct Unused {};  // what can't be read takes a slot all the same
using Slot = std::variant<std::monostate, Drawable, Region, Palette, Unused>;

Point YThenX(ByteReader& in) {
  Point point;
  point.y = in.SignedWord();
  point.x = in.SignedWord();
  return point;
}

// Bottom, right, top, left.
Box BoxBackwards(ByteReader& in) {
  const Point far = YThenX(in);
  const Point near = YThenX(in);
  return {near.x, near.y, far.x, far.y};
}

std::vector<Point> Points(ByteReader& in, std::size_t count) {
  std::vector<Point> points(std::min(count, in.Left() / 4));
  for (Point& point : points) {
    point.x = in.SignedWord();
    point.y = in.SignedWord();
  }
  return points;
}

platform::ColorUse ColorUseOf(std::uint32_t word) {
  return word == platform::kPaletteColors ? platform::kPaletteColors : platform::kRgbColors;
}

// Red, green, blue and a byte of flags each.
std::vector<std::uint32_t> PaletteColors(ByteReader& in, std::size_t count) {
  std::vector<std::uint32_t> colors(std::min(count, in.Left() / 4));
  for (std::uint32_t& color : colors) color = in.Long() & 0x00FFFFFF;
  return colors;
}

class Translator {
 public:
  Translator(Point windowOrg, platform::MetafileRecorder& recorder) : out_(recorder), windowOrg_(windowOrg) {}

  void Translate(const WmfRecord& record) {
    ByteReader in(record.parameters);
    if (!State(record.function, in) && !Object(record.function, in) && !Shape(record.function, in) &&
        !Clip(record.function, in)) {
      Bitmap(record, in);
    }
  }

 private:
  bool State(std::uint16_t function, ByteReader& in);
  bool Object(std::uint16_t function, ByteReader& in);
  bool Shape(std::uint16_t function, ByteReader& in);
  bool Clip(std::uint16_t function, ByteReader& in);
  void Bitmap(const WmfRecord& record, ByteReader& in);

  void Arc(std::uint16_t function, ByteReader& in);
  void PolyPolygon(ByteReader& in);
  void Text(ByteReader& in);
  void ExtText(ByteReader& in);
  // Rows of `source` are counted from the bottom of the picture if `fromBottom`.
  void DrawDib(const Box& target, ByteReader& in, Box source, std::uint32_t rop, platform::ColorUse use,
               bool fromBottom);
  void FillRegion(ByteReader& in, bool inverted);
  Region ReadRegion(ByteReader& in);
  void Store(Slot slot);
  const Slot& SlotAt(std::uint16_t index) const {
    static const Slot none;
    return index < slots_.size() ? slots_[index] : none;
  }

  platform::MetafileRecorder& out_;
  std::vector<Slot> slots_;
  std::set<std::size_t> freeSlots_;
  Point windowOrg_;
  std::uint8_t charset_ = 0;   // of the selected font
  std::uint32_t palette_ = 0;  // the selected one; 0: none
};

bool Translator::State(std::uint16_t function, ByteReader& in) {
  switch (function) {
    case kSaveDc:
      out_.SaveDc();
      return true;
    case kRestoreDc:
      out_.RestoreDc(in.SignedWord());
      return true;
    case kSetBkMode:
      out_.SetBkMode(in.Word());
      return true;
    case kSetMapMode: {
      // The units of a screen that nobody knows, or the picture's own mapping: that is what stands already.
      const std::uint16_t mode = in.Word();
      if (mode >= 2 && mode <= 6) out_.SetMapMode(static_cast<platform::MapMode>(mode));
      return true;
    }
    case kSetRop2:
      out_.SetRop2(in.Word());
      return true;
    case kSetPolyFillMode:
      out_.SetPolyFillMode(in.Word());
      return true;
    case kSetStretchBltMode:
      out_.SetStretchBltMode(in.Word());
      return true;
    case kSetTextAlign:
      out_.SetTextAlign(in.Word());
      return true;
    case kSetBkColor:
      out_.SetBkColor(in.Long());
      return true;
    case kSetTextColor:
      out_.SetTextColor(in.Long());
      return true;
    case kSetTextJustification: {
      const std::int32_t count = in.SignedWord();
      out_.SetTextJustification(in.SignedWord(), count);
      return true;
    }
    case kSetWindowOrg:
      windowOrg_ = YThenX(in);
      out_.SetWindowOrg(windowOrg_.x, windowOrg_.y);
      return true;
    case kOffsetWindowOrg: {
      const Point by = YThenX(in);
      // A file may add as often as it likes.
      windowOrg_.x = std::clamp(windowOrg_.x + by.x, -(1 << 24), 1 << 24);
      windowOrg_.y = std::clamp(windowOrg_.y + by.y, -(1 << 24), 1 << 24);
      out_.SetWindowOrg(windowOrg_.x, windowOrg_.y);
      return true;
    }
    case kSetWindowExt: {
      const Point extent = YThenX(in);
      if (extent.x != 0 && extent.y != 0) out_.SetWindowExt(extent.x, extent.y);
      return true;
    }
    case kScaleWindowExt: {
      const Point over = YThenX(in);  // each after the other: y below, y above, x below, x above
      const Point times = YThenX(in);
      out_.ScaleWindowExt(times.x, times.y, over.x, over.y);
      return true;
    }
    default:
      return false;
  }
}

void Translator::Store(Slot slot) {
  if (!freeSlots_.empty()) {
    slots_[freeSlots_.extract(freeSlots_.begin()).value()] = std::move(slot);
  } else if (slots_.size() < kMaxSlots) {
    slots_.push_back(std::move(slot));
  }
}

bool Translator::Object(std::uint16_t function, ByteReader& in) {
  switch (function) {
    case kSelectObject:
      if (const auto* drawable = std::get_if<Drawable>(&SlotAt(in.Word()))) {
        out_.SelectObject(drawable->handle);
        if (drawable->charset != 0xFF) charset_ = drawable->charset;
      }
      return true;
    case kDeleteObject: {
      const std::uint16_t index = in.Word();
      if (const auto* drawable = std::get_if<Drawable>(&SlotAt(index))) out_.DeleteObject(drawable->handle);
      if (const auto* palette = std::get_if<Palette>(&SlotAt(index))) out_.DeleteObject(palette->handle);
      if (index < slots_.size()) {
        slots_[index] = {};
        freeSlots_.insert(index);
      }
      return true;
    }
    case kCreatePen: {
      const std::uint32_t style = in.Word();
      const std::int32_t width = in.SignedWord();
      in.Word();
      Store(Drawable{out_.CreatePen(style, width, in.Long()), 0xFF});
      return true;
    }
    case kCreateBrush: {
      const std::uint32_t style = in.Word();
      const std::uint32_t color = in.Long();
      Store(Drawable{out_.CreateBrush(style, color, in.Word()), 0xFF});
      return true;
    }
    case kCreateFont: {
      platform::FontSpec font;
      font.height = in.SignedWord();
      font.width = in.SignedWord();
      font.escapement = in.SignedWord();
      in.Word();
      font.weight = in.Word();
      font.italic = in.Byte() != 0;
      font.underline = in.Byte() != 0;
      font.strikeOut = in.Byte() != 0;
      font.charset = in.Byte();
      in.Skip(std::min<std::size_t>(3, in.Left()));
      font.pitchAndFamily = in.Byte();
      const auto name = in.Take(std::min<std::size_t>(32, in.Left()));
      font.face = DecodeText(
          name.first(static_cast<std::size_t>(std::find(name.begin(), name.end(), 0) - name.begin())), font.charset);
      Store(Drawable{out_.CreateFont(font), font.charset});
      return true;
    }
    case kDibCreatePatternBrush: {
      const std::uint16_t style = in.Word();
      const platform::ColorUse use = ColorUseOf(in.Word());
      const auto dib = in.Take(in.Left());
      if (dib.empty()) {
        Store(Unused{});
      } else {
        // What was a bitmap of the device has no colours of its own if it is of one bit.
        const bool mono = style == platform::kBrushPattern && DibBits(dib) == 1;
        Store(Drawable{mono ? out_.CreateMonoBrush(dib) : out_.CreatePatternBrush(dib, use), 0xFF});
      }
      return true;
    }
    case kCreatePatternBrush: {
      const auto dib = DibOfBitmap16(in, Bitmap16Kind::kPattern);
      Store(dib.empty() ? Slot(Unused{}) : Slot(Drawable{out_.CreateMonoBrush(dib), 0xFF}));
      return true;
    }
    case kCreateRegion:
      Store(ReadRegion(in));
      return true;
    case kCreatePalette: {
      in.Word();  // version
      const std::size_t count = in.Word();
      Store(Palette{out_.CreatePalette(PaletteColors(in, count))});
      return true;
    }
    case kSelectPalette:
      if (const auto* palette = std::get_if<Palette>(&SlotAt(in.Word()))) {
        out_.SelectPalette(palette->handle);
        palette_ = palette->handle;
      }
      return true;
    case kSetPaletteEntries: {
      const std::uint16_t first = in.Word();
      const std::size_t count = in.Word();
      if (palette_ != 0) out_.SetPaletteEntries(palette_, first, PaletteColors(in, count));
      return true;
    }
    case kResizePalette:
      if (palette_ != 0) out_.ResizePalette(palette_, in.Word());
      return true;
    default:
      return false;
  }
}

Region Translator::ReadRegion(ByteReader& in) {
  Region boxes;
  in.Skip(std::min<std::size_t>(10, in.Left()));
  const std::size_t scans = in.Word();
  in.Skip(std::min<std::size_t>(10, in.Left()));
  for (std::size_t i = 0; i < scans && !in.Failed(); ++i) {
    const std::size_t pairs = in.Word() / 2;
    const std::int32_t top = in.SignedWord();
    const std::int32_t bottom = in.SignedWord();
    for (std::size_t k = 0; k < pairs && !in.Failed() && boxes.size() < kMaxRegionBoxes; ++k) {
      const std::int32_t left = in.SignedWord();
      const std::int32_t right = in.SignedWord();
      if (!in.Failed()) boxes.push_back({left, top, right, bottom});
    }
    in.Word();
  }
  return boxes;
}

bool Translator::Shape(std::uint16_t function, ByteReader& in) {
  switch (function) {
    case kMoveTo: {
      const Point at = YThenX(in);
      out_.MoveTo(at.x, at.y);
      return true;
    }
    case kLineTo: {
      const Point at = YThenX(in);
      out_.LineTo(at.x, at.y);
      return true;
    }
    case kPolygon:
      out_.Polygon(Points(in, in.Word()));
      return true;
    case kPolyline:
      out_.Polyline(Points(in, in.Word()));
      return true;
    case kPolyPolygon:
      PolyPolygon(in);
      return true;
    case kRectangle:
      out_.Rectangle(BoxBackwards(in));
      return true;
    case kEllipse:
      out_.Ellipse(BoxBackwards(in));
      return true;
    case kRoundRect: {
      const Point corner = YThenX(in);
      out_.RoundRect(BoxBackwards(in), corner.x, corner.y);
      return true;
    }
    case kArc:
    case kPie:
    case kChord:
      Arc(function, in);
      return true;
    case kSetPixel: {
      const std::uint32_t color = in.Long();
      const Point at = YThenX(in);
      out_.SetPixel(at.x, at.y, color);
      return true;
    }
    case kTextOut:
      Text(in);
      return true;
    case kExtTextOut:
      ExtText(in);
      return true;
    case kFrameRegion: {
      const auto* region = std::get_if<Region>(&SlotAt(in.Word()));
      const auto* brush = std::get_if<Drawable>(&SlotAt(in.Word()));
      const Point size = YThenX(in);
      if (region != nullptr && brush != nullptr) out_.FrameRegion(*region, brush->handle, size.x, size.y);
      return true;
    }
    case kFillRegion:
    case kPaintRegion:
      FillRegion(in, false);
      return true;
    case kInvertRegion:
      FillRegion(in, true);
      return true;
    default:
      return false;
  }
}

void Translator::PolyPolygon(ByteReader& in) {
  std::vector<std::uint32_t> counts(std::min<std::size_t>(in.Word(), in.Left() / 2));
  std::size_t all = 0;
  for (std::uint32_t& count : counts) {
    count = in.Word();
    all += count;
  }
  const std::vector<Point> points = Points(in, all);
  if (points.size() == all) out_.PolyPolygon(counts, points);
}

void Translator::Arc(std::uint16_t function, ByteReader& in) {
  const Point end = YThenX(in);
  const Point start = YThenX(in);
  const Box box = BoxBackwards(in);
  if (function == kArc) {
    out_.Arc(box, start, end);
  } else if (function == kPie) {
    out_.Pie(box, start, end);
  } else {
    out_.Chord(box, start, end);
  }
}

void Translator::Text(ByteReader& in) {
  const std::size_t length = in.Word();
  const auto bytes = in.Take(length);
  if (length % 2 != 0) in.Byte();
  const Point at = YThenX(in);
  if (!in.Failed()) out_.TextOut(at.x, at.y, DecodeText(bytes, charset_));
}

void Translator::ExtText(ByteReader& in) {
  const Point at = YThenX(in);
  const std::size_t length = in.Word();
  const std::uint32_t options = in.Word() & (platform::kTextOpaque | platform::kTextClipped);
  Box box;
  if (options != 0) {
    box.left = in.SignedWord();
    box.top = in.SignedWord();
    box.right = in.SignedWord();
    box.bottom = in.SignedWord();
  }
  const auto bytes = in.Take(length);
  if (length % 2 != 0 && in.Left() != 0) in.Byte();
  std::vector<std::int32_t> advances;
  if (in.Left() >= 2 * bytes.size()) {
    for (std::size_t i = 0; i < bytes.size(); ++i) advances.push_back(in.SignedWord());
  }
  const std::u16string text = DecodeText(bytes, charset_, &advances);
  out_.TextOut(at.x, at.y, text, advances, options, box);
}

void Translator::FillRegion(ByteReader& in, bool inverted) {
  const auto* region = std::get_if<Region>(&SlotAt(in.Word()));
  if (region == nullptr) return;
  if (in.Left() >= 2) {  // with a brush of its own
    const auto* brush = std::get_if<Drawable>(&SlotAt(in.Word()));
    if (brush != nullptr) out_.FillRegion(*region, brush->handle);
    return;
  }
  for (const Box& box : *region) out_.PatBlt(box, inverted ? platform::kTargetInvert : platform::kPatternCopy);
}

bool Translator::Clip(std::uint16_t function, ByteReader& in) {
  switch (function) {
    case kIntersectClipRect:
      out_.IntersectClipRect(BoxBackwards(in));
      return true;
    case kExcludeClipRect:
      out_.ExcludeClipRect(BoxBackwards(in));
      return true;
    case kOffsetClipRgn: {
      const Point by = YThenX(in);
      out_.OffsetClip(by.x, by.y);
      return true;
    }
    case kSelectClipRegion: {
      const std::uint16_t index = in.Word();
      const auto* region = std::get_if<Region>(&SlotAt(index));
      if (region == nullptr) {
        out_.SelectClipRegion({}, platform::kRegionCopy);
        return true;
      }
      // The boxes are meant in logical units. Of none of them nothing is left to draw in.
      out_.BeginPath();
      for (const Box& box : *region) {
        const Point corners[] = {
            {box.left, box.top}, {box.right, box.top}, {box.right, box.bottom}, {box.left, box.bottom}};
        out_.Polygon(corners);
      }
      out_.EndPath();
      out_.SelectClipPath(platform::kRegionCopy);
      return true;
    }
    default:
      return false;
  }
}

void Translator::DrawDib(const Box& target, ByteReader& in, Box source, std::uint32_t rop, platform::ColorUse use,
                         bool fromBottom) {
  const auto dib = in.Take(in.Left());
  if (dib.size() < 12) return;
  if (fromBottom) {
    const std::int64_t height = DibHeight(dib);
    if (height > 0) {
      const std::int64_t top = height - source.bottom;
      source.bottom = static_cast<std::int32_t>(top + source.bottom - source.top);
      source.top = static_cast<std::int32_t>(top);
    }
  }
  out_.DrawDib(target, dib, source, rop, use);
}

void Translator::Bitmap(const WmfRecord& record, ByteReader& in) {
  const auto boxAt = [](Point at, Point size) { return Box{at.x, at.y, at.x + size.x, at.y + size.y}; };
  switch (record.function) {
    case kPatBlt: {
      const std::uint32_t rop = in.Long();
      const Point size = YThenX(in);
      out_.PatBlt(boxAt(YThenX(in), size), rop);
      return;
    }
    case kDibBitBlt:
    case kBitBlt:
    case kDibStretchBlt:
    case kStretchBlt: {
      const bool stretched = record.function == kDibStretchBlt || record.function == kStretchBlt;
      // Without a bitmap there is an unused number before the target, and the record says its length twice.
      const std::size_t fixedBytes = 2 * std::size_t{static_cast<std::uint16_t>(record.function >> 8)};
      const bool alone = record.parameters.size() <= fixedBytes;
      const std::uint32_t rop = in.Long();
      Point sourceSize = stretched ? YThenX(in) : Point{};
      const Point source = YThenX(in);
      if (alone) in.Word();
      const Point size = YThenX(in);
      const Point at = YThenX(in);
      if (in.Failed()) return;
      if (!stretched) sourceSize = size;
      if (alone) return out_.PatBlt(boxAt(at, size), rop);
      if (record.function == kDibBitBlt || record.function == kDibStretchBlt) {
        return DrawDib(boxAt(at, size), in, boxAt(source, sourceSize), rop, platform::kRgbColors, false);
      }
      const auto dib = DibOfBitmap16(in, Bitmap16Kind::kPicture);
      if (!dib.empty()) out_.StretchBlt(boxAt(at, size), dib, boxAt(source, sourceSize), rop);
      return;
    }
    case kStretchDib: {
      const std::uint32_t rop = in.Long();
      const platform::ColorUse use = ColorUseOf(in.Word());
      const Point sourceSize = YThenX(in);
      const Point source = YThenX(in);
      const Point size = YThenX(in);
      const Point at = YThenX(in);
      return DrawDib(boxAt(at, size), in, boxAt(source, sourceSize), rop, use, true);
    }
    case kSetDibToDevice: {
      const platform::ColorUse use = ColorUseOf(in.Word());
      in.Skip(std::min<std::size_t>(4, in.Left()));  // rows there, first of them
      const Point source = YThenX(in);
      const Point size = YThenX(in);
      const Point at = YThenX(in);
      return DrawDib(boxAt(at, size), in, boxAt(source, size), platform::kSourceCopy, use, true);
    }
    default:
      return;
  }
}

}  // namespace

void TranslateRecords(std::span<const std::uint8_t> records, Point windowOrg, platform::MetafileRecorder& recorder) {
  Translator translator(windowOrg, recorder);
  WmfReader reader(records);
  WmfRecord record;
  while (reader.Next(record)) translator.Translate(record);
}

}  // namespace qwmf
