#ifndef PLATFORM_METAFILE_RECORDER_H_
#define PLATFORM_METAFILE_RECORDER_H_

#include <cstdint>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "platform/metafile/geometry.h"
#include "platform/metafile/mapping.h"
#include "platform/metafile/metafile.h"
#include "platform/metafile/records.h"

namespace platform {

// Colours are words 0x00BBGGRR: red in the lowest byte.
constexpr std::uint32_t ColorRef(std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
  return red | green << 8 | blue << 16;
}

struct FontSpec {
  std::int32_t height = 0;      // below 0 the em, above 0 the cell, in logical units
  std::int32_t width = 0;       // of an average character; 0: as the font has it
  std::int32_t escapement = 0;  // tenths of a degree, counter-clockwise
  std::uint32_t weight = 400;
  bool italic = false;
  bool underline = false;
  bool strikeOut = false;
  std::uint8_t charset = 1;  // 1 default, 2 symbols
  std::uint8_t pitchAndFamily = 0;
  std::u16string face;
};

// Writes an enhanced metafile into memory, call by call. Nothing is drawn and nothing can fail but for memory.
//
// The device on which is recorded has `unitsPerInch` units to the inch in both directions, y going down. Until a map
// mode is set logical units are device units. The header's bounds are kept up to date; the frame, which is the
// picture's size, is the bounds if SetFrame didn't give one. Objects are numbered from 1 by the lowest free handle.
class MetafileRecorder {
 public:
  explicit MetafileRecorder(std::uint32_t unitsPerInch);

  // In device units, right and bottom outside.
  void SetFrame(const Box& frame);
  // Device units that drawing has touched so far; empty boxes (right not above left) have none.
  Box Bounds() const { return bounds_; }
  // Ends the stream. The caller owns the metafile; nothing may be recorded after it.
  Metafile* Close();

  // Where logical points lie.
  void SetMapMode(MapMode mode);
  void SetWindowOrg(std::int32_t x, std::int32_t y);
  void SetWindowExt(std::int32_t width, std::int32_t height);
  void SetViewportOrg(std::int32_t x, std::int32_t y);
  void SetViewportExt(std::int32_t width, std::int32_t height);
  void ScaleWindowExt(std::int32_t xTimes, std::int32_t xOver, std::int32_t yTimes, std::int32_t yOver);
  void ScaleViewportExt(std::int32_t xTimes, std::int32_t xOver, std::int32_t yTimes, std::int32_t yOver);
  void SetWorldTransform(const Transform& transform);

  void SaveDc();
  void RestoreDc(std::int32_t relative = -1);

  // Objects. A handle is only good in this stream.
  std::uint32_t CreatePen(std::uint32_t style, std::int32_t width, std::uint32_t color);
  // Style with its cap, join and kPenGeometric; `dashes` for kPenUserStyle.
  std::uint32_t ExtCreatePen(std::uint32_t style, std::uint32_t width, std::uint32_t color,
                             std::span<const std::uint32_t> dashes = {});
  std::uint32_t CreateBrush(std::uint32_t style, std::uint32_t color, std::uint32_t hatch = 0);
  // `dib` is a bitmap with its header, palette and rows, without a file header; `use` says what its palette holds.
  std::uint32_t CreatePatternBrush(std::span<const std::uint8_t> dib, ColorUse use = kRgbColors);
  // Of one bit: 0 takes the text colour and 1 the background's.
  std::uint32_t CreateMonoBrush(std::span<const std::uint8_t> dib);
  std::uint32_t CreatePalette(std::span<const std::uint32_t> colors);
  std::uint32_t CreateFont(const FontSpec& font);
  void SelectObject(std::uint32_t handle);  // also the stock objects
  void SelectPalette(std::uint32_t handle) { Number(kEmrSelectPalette, handle); }
  void SetPaletteEntries(std::uint32_t handle, std::uint32_t first, std::span<const std::uint32_t> colors);
  void ResizePalette(std::uint32_t handle, std::uint32_t count) { Numbers(kEmrResizePalette, {handle, count}); }
  void DeleteObject(std::uint32_t handle);

  // State of drawing.
  void SetBkMode(std::uint32_t mode) { Number(kEmrSetBkMode, mode); }
  void SetBkColor(std::uint32_t color) { Number(kEmrSetBkColor, color); }
  void SetTextColor(std::uint32_t color) { Number(kEmrSetTextColor, color); }
  void SetTextAlign(std::uint32_t align) { Number(kEmrSetTextAlign, align); }
  // `extra` logical units go to each `count` blanks of the texts that follow.
  void SetTextJustification(std::int32_t extra, std::int32_t count) {
    Numbers(kEmrSetTextJustification, {Bits(extra), Bits(count)});
  }
  void SetPolyFillMode(std::uint32_t mode) { Number(kEmrSetPolyFillMode, mode); }
  void SetRop2(std::uint32_t rop) { Number(kEmrSetRop2, rop); }
  void SetStretchBltMode(std::uint32_t mode) { Number(kEmrSetStretchBltMode, mode); }
  void SetArcDirection(std::uint32_t direction) { Number(kEmrSetArcDirection, direction); }
  void SetMiterLimit(float limit);
  void SetBrushOrg(std::int32_t x, std::int32_t y) { Numbers(kEmrSetBrushOrg, {Bits(x), Bits(y)}); }

  // Lines and areas.
  void MoveTo(std::int32_t x, std::int32_t y);
  void LineTo(std::int32_t x, std::int32_t y);
  void Polyline(std::span<const Point> points) { Points(kEmrPolyline, points); }
  void PolylineTo(std::span<const Point> points) { Points(kEmrPolylineTo, points); }
  void Polygon(std::span<const Point> points) { Points(kEmrPolygon, points); }
  void PolyBezier(std::span<const Point> points) { Points(kEmrPolyBezier, points); }
  void PolyBezierTo(std::span<const Point> points) { Points(kEmrPolyBezierTo, points); }
  // `counts` says how many of the points each figure has.
  void PolyPolygon(std::span<const std::uint32_t> counts, std::span<const Point> points) {
    Figures(kEmrPolyPolygon, counts, points);
  }
  void PolyPolyline(std::span<const std::uint32_t> counts, std::span<const Point> points) {
    Figures(kEmrPolyPolyline, counts, points);
  }
  void Rectangle(const Box& box) { Boxed(kEmrRectangle, box, {}); }
  void Ellipse(const Box& box) { Boxed(kEmrEllipse, box, {}); }
  void RoundRect(const Box& box, std::int32_t cornerWidth, std::int32_t cornerHeight) {
    Boxed(kEmrRoundRect, box, {Bits(cornerWidth), Bits(cornerHeight)});
  }
  // From the ray through `start` to that through `end`, in the arc direction.
  void Arc(const Box& box, Point start, Point end) { BoxedArc(kEmrArc, box, start, end); }
  void ArcTo(const Box& box, Point start, Point end) { BoxedArc(kEmrArcTo, box, start, end); }
  void Chord(const Box& box, Point start, Point end) { BoxedArc(kEmrChord, box, start, end); }
  void Pie(const Box& box, Point start, Point end) { BoxedArc(kEmrPie, box, start, end); }
  void SetPixel(std::int32_t x, std::int32_t y, std::uint32_t color);
  // Logical boxes, filled with the brush `handle`.
  void FillRegion(std::span<const Box> boxes, std::uint32_t handle);
  // Only what lies so near to the edge.
  void FrameRegion(std::span<const Box> boxes, std::uint32_t handle, std::int32_t width, std::int32_t height);

  void BeginPath() { Numbers(kEmrBeginPath, {}); }
  void EndPath() { Numbers(kEmrEndPath, {}); }
  void CloseFigure() { Numbers(kEmrCloseFigure, {}); }
  void AbortPath() { Numbers(kEmrAbortPath, {}); }
  void FillPath() { PathRecord(kEmrFillPath); }
  void StrokePath() { PathRecord(kEmrStrokePath); }
  void StrokeAndFillPath() { PathRecord(kEmrStrokeAndFillPath); }
  void SelectClipPath(std::uint32_t mode) { Number(kEmrSelectClipPath, mode); }

  void IntersectClipRect(const Box& box) { ClipBox(kEmrIntersectClipRect, box); }
  void ExcludeClipRect(const Box& box) { ClipBox(kEmrExcludeClipRect, box); }
  void OffsetClip(std::int32_t x, std::int32_t y) { Numbers(kEmrOffsetClipRgn, {Bits(x), Bits(y)}); }
  // Boxes in device units; none with kRegionCopy: no clip.
  void SelectClipRegion(std::span<const Box> deviceBoxes, std::uint32_t mode);

  // UTF-16 text. `advances` are logical units from each character to the next: one a character, or none at all, which
  // leaves the spacing to the font. `box` is used by the options kTextOpaque and kTextClipped.
  void TextOut(std::int32_t x, std::int32_t y, std::u16string_view text, std::span<const std::int32_t> advances = {},
               std::uint32_t options = 0, const Box& box = {});

  // The part `source` of a bitmap (pixels, from its top left corner) into `target`. Either may be mirrored.
  void DrawDib(const Box& target, std::span<const std::uint8_t> dib, const Box& source, std::uint32_t rop = kSourceCopy,
               ColorUse use = kRgbColors);
  // The same of what was a bitmap of the device: black and white stand for the text and the background colour.
  void StretchBlt(const Box& target, std::span<const std::uint8_t> dib, const Box& source, std::uint32_t rop) {
    Blit(kEmrStretchBlt, target, dib, source, rop);
  }
  // A 32-bit bitmap whose colours are multiplied by their alpha; `constantAlpha` 0 to 255 on top.
  void AlphaBlend(const Box& target, std::span<const std::uint8_t> dib, const Box& source,
                  std::uint8_t constantAlpha = 255);
  // The brush alone over an area.
  void PatBlt(const Box& target, std::uint32_t rop);

  void Comment(std::span<const std::uint8_t> bytes);

 private:
  static std::uint32_t Bits(std::int32_t value) { return static_cast<std::uint32_t>(value); }

  void Number(std::uint32_t type, std::uint32_t value) { Numbers(type, {value}); }
  void Numbers(std::uint32_t type, std::initializer_list<std::uint32_t> values);
  void Points(std::uint32_t type, std::span<const Point> points);
  void Figures(std::uint32_t type, std::span<const std::uint32_t> counts, std::span<const Point> points);
  std::uint32_t PatternBrush(std::uint32_t type, std::span<const std::uint8_t> dib, ColorUse use);
  void Boxed(std::uint32_t type, const Box& box, std::initializer_list<std::uint32_t> more);
  void BoxedArc(std::uint32_t type, const Box& box, Point start, Point end) {
    Boxed(type, box, {Bits(start.x), Bits(start.y), Bits(end.x), Bits(end.y)});
  }
  void ClipBox(std::uint32_t type, const Box& box);
  void PathRecord(std::uint32_t type);
  void Blit(std::uint32_t type, const Box& target, std::span<const std::uint8_t> dib, const Box& source,
            std::uint32_t operation);

  void Begin(std::uint32_t type);
  void Put(std::uint32_t value);
  void Put(std::int32_t value) { Put(Bits(value)); }
  void Put(Point point);
  void Put(const Box& box);
  void PutFloat(double value);
  void PutBytes(std::span<const std::uint8_t> bytes);
  void PutRegion(std::span<const Box> boxes);
  static std::uint32_t RegionBytes(std::span<const Box> boxes);
  void End();
  void Patch(std::size_t at, std::uint32_t value);

  std::uint32_t TakeHandle();
  // The device units around logical points. Touch also lets the bounds of the stream grow by them.
  Box BoundsOf(std::span<const Point> points) const;
  Box Touch(std::span<const Point> points) { return Touch(BoundsOf(points)); }
  Box Touch(const Box& device);
  Box TouchBoxes(std::span<const Box> boxes);

  std::uint32_t unitsPerInch_;
  std::vector<std::uint8_t> bytes_;
  std::size_t recordStart_ = 0;
  std::uint32_t recordCount_ = 0;
  std::uint32_t handleCount_ = 1;  // 0 is the metafile itself
  std::set<std::uint32_t> freeHandles_;
  Mapping mapping_;
  std::vector<Mapping> saved_;
  Point position_;
  Box bounds_;
  Box frame_;
  bool framed_ = false;
};

}  // namespace platform

#endif  // PLATFORM_METAFILE_RECORDER_H_
