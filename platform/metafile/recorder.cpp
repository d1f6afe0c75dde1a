#include "platform/metafile/recorder.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace platform {
namespace {

// The reference device measures ten inches each way.
constexpr std::uint32_t kDeviceInches = 10;
constexpr std::uint32_t kMillimetresPerTenInches = 254;
constexpr double kFrameUnitsPerInch = 2540.0;

constexpr std::uint32_t kVersion = 0x10000;
constexpr std::size_t kBoundsAt = 8;
constexpr std::size_t kFrameAt = 24;
constexpr std::size_t kBytesAt = 48;
constexpr std::size_t kRecordsAt = 52;
constexpr std::size_t kHandlesAt = 56;

constexpr std::size_t kFaceUnits = 32;
constexpr std::uint32_t kGraphicsModeAdvanced = 2;
constexpr std::int32_t kStretchBytes = 108;
constexpr std::uint32_t kStretchDibBytes = 80;
constexpr std::size_t kTextBytes = 76;

std::int32_t Limited(double value) { return static_cast<std::int32_t>(std::clamp(value, -2147483648.0, 2147483647.0)); }

std::uint32_t Size32(std::size_t size) { return static_cast<std::uint32_t>(size); }

// Bytes of a bitmap in front of its rows: header, masks and palette.
std::size_t DibHeadBytes(std::span<const std::uint8_t> dib, ColorUse use = kRgbColors) {
  const Record head(dib);  // any bytes that read as zeros past their end will do
  const std::size_t header = head.Long(0);
  if (header < 40) {
    const std::size_t bits = head.Word(10);
    return std::min(dib.size(), header + (bits <= 8 ? std::size_t{3} << bits : 0));
  }
  const std::size_t bits = head.Word(14);
  const std::uint32_t compression = head.Long(16);
  const std::size_t masks = header == 40 && compression == 3 ? 12 : header == 40 && compression == 6 ? 16 : 0;
  std::size_t entries = head.Long(32);
  if (entries == 0 && bits <= 8) entries = std::size_t{1} << bits;
  const std::size_t entryBytes = use == kRgbColors ? 4 : use == kPaletteColors ? 2 : 0;
  return std::min<std::size_t>(dib.size(), header + masks + entryBytes * std::min<std::size_t>(entries, 256));
}

constexpr std::uint32_t kRegionHeadBytes = 32;

std::array<Point, 4> Corners(const Box& box) {
  return {Point{box.left, box.top}, {box.right, box.top}, {box.left, box.bottom}, {box.right, box.bottom}};
}

}  // namespace

MetafileRecorder::MetafileRecorder(std::uint32_t unitsPerInch) : unitsPerInch_(std::clamp(unitsPerInch, 1U, 1U << 24)) {
  Begin(kEmrHeader);
  Put(Box{});  // bounds, frame: set at the end
  Put(Box{});
  Put(kMetafileSignature);
  Put(kVersion);
  for (int i = 0; i < 6; ++i) Put(0U);  // length, records, handles, description, palette
  for (int i = 0; i < 2; ++i) Put(kDeviceInches * unitsPerInch_);
  for (int i = 0; i < 2; ++i) Put(kMillimetresPerTenInches);
  for (int i = 0; i < 3; ++i) Put(0U);  // no pixel format
  for (int i = 0; i < 2; ++i) Put(kMillimetresPerTenInches * 1000);
  End();
}

void MetafileRecorder::SetFrame(const Box& frame) {
  frame_ = frame;
  framed_ = true;
}

Metafile* MetafileRecorder::Close() {
  Numbers(kEmrEof, {0, 0, 20});
  const Box& frame = framed_ ? frame_ : bounds_;
  const double scale = kFrameUnitsPerInch / unitsPerInch_;
  const auto units = [&](std::int32_t from, std::int32_t to) {
    return Limited(std::ceil((static_cast<double>(to) - from) * scale - 1e-6));
  };
  const std::int32_t left = Limited(std::floor(frame.left * scale));
  const std::int32_t top = Limited(std::floor(frame.top * scale));
  const std::uint32_t header[] = {
      Bits(bounds_.left),
      Bits(bounds_.top),
      Bits(bounds_.right),
      Bits(bounds_.bottom),
      Bits(left),
      Bits(top),
      // A whole number of units holds the frame, so that its size in pixels survives the cut to integers.
      Bits(Limited(static_cast<double>(left) + units(frame.left, frame.right))),
      Bits(Limited(static_cast<double>(top) + units(frame.top, frame.bottom))),
  };
  static_assert(kFrameAt == kBoundsAt + 16);
  for (std::size_t i = 0; i < std::size(header); ++i) Patch(kBoundsAt + 4 * i, header[i]);
  Patch(kBytesAt, Size32(bytes_.size()));
  Patch(kRecordsAt, recordCount_);
  Patch(kHandlesAt, std::min(handleCount_, 65535U));
  auto* metafile = new Metafile(std::move(bytes_));
  bytes_.clear();
  return metafile;
}

void MetafileRecorder::SetMapMode(MapMode mode) {
  mapping_.mode = mode;
  Number(kEmrSetMapMode, static_cast<std::uint32_t>(mode));
}

void MetafileRecorder::SetWindowOrg(std::int32_t x, std::int32_t y) {
  mapping_.windowOrg = {x, y};
  Numbers(kEmrSetWindowOrg, {Bits(x), Bits(y)});
}

void MetafileRecorder::SetWindowExt(std::int32_t width, std::int32_t height) {
  mapping_.windowExt = {width, height};
  Numbers(kEmrSetWindowExt, {Bits(width), Bits(height)});
}

void MetafileRecorder::SetViewportOrg(std::int32_t x, std::int32_t y) {
  mapping_.viewportOrg = {x, y};
  Numbers(kEmrSetViewportOrg, {Bits(x), Bits(y)});
}

void MetafileRecorder::SetViewportExt(std::int32_t width, std::int32_t height) {
  mapping_.viewportExt = {width, height};
  Numbers(kEmrSetViewportExt, {Bits(width), Bits(height)});
}

void MetafileRecorder::ScaleWindowExt(std::int32_t xTimes, std::int32_t xOver, std::int32_t yTimes,
                                      std::int32_t yOver) {
  mapping_.windowExt.x = ScaledExtent(mapping_.windowExt.x, xTimes, xOver);
  mapping_.windowExt.y = ScaledExtent(mapping_.windowExt.y, yTimes, yOver);
  Numbers(kEmrScaleWindowExt, {Bits(xTimes), Bits(xOver), Bits(yTimes), Bits(yOver)});
}

void MetafileRecorder::ScaleViewportExt(std::int32_t xTimes, std::int32_t xOver, std::int32_t yTimes,
                                        std::int32_t yOver) {
  mapping_.viewportExt.x = ScaledExtent(mapping_.viewportExt.x, xTimes, xOver);
  mapping_.viewportExt.y = ScaledExtent(mapping_.viewportExt.y, yTimes, yOver);
  Numbers(kEmrScaleViewportExt, {Bits(xTimes), Bits(xOver), Bits(yTimes), Bits(yOver)});
}

void MetafileRecorder::SetWorldTransform(const Transform& transform) {
  mapping_.world = transform;
  Begin(kEmrSetWorldTransform);
  for (const double part : {transform.m11, transform.m12, transform.m21, transform.m22, transform.dx, transform.dy}) {
    PutFloat(part);
  }
  End();
}

void MetafileRecorder::SaveDc() {
  saved_.push_back(mapping_);
  Numbers(kEmrSaveDc, {});
}

void MetafileRecorder::RestoreDc(std::int32_t relative) {
  const auto depth = static_cast<std::int64_t>(saved_.size());
  if (relative < 0 && -std::int64_t{relative} <= depth) {
    mapping_ = saved_[static_cast<std::size_t>(depth + relative)];
    saved_.resize(static_cast<std::size_t>(depth + relative));
  }
  Number(kEmrRestoreDc, Bits(relative));
}

std::uint32_t MetafileRecorder::CreatePen(std::uint32_t style, std::int32_t width, std::uint32_t color) {
  const std::uint32_t handle = TakeHandle();
  Numbers(kEmrCreatePen, {handle, style, Bits(width), 0, color});
  return handle;
}

std::uint32_t MetafileRecorder::ExtCreatePen(std::uint32_t style, std::uint32_t width, std::uint32_t color,
                                             std::span<const std::uint32_t> dashes) {
  const std::uint32_t handle = TakeHandle();
  Begin(kEmrExtCreatePen);
  Put(handle);
  for (int i = 0; i < 4; ++i) Put(0U);  // no bitmap
  for (const std::uint32_t value : {style, width, std::uint32_t{kBrushSolid}, color, 0U}) Put(value);
  Put(Size32(dashes.size()));
  for (const std::uint32_t dash : dashes) Put(dash);
  End();
  return handle;
}

std::uint32_t MetafileRecorder::CreateBrush(std::uint32_t style, std::uint32_t color, std::uint32_t hatch) {
  const std::uint32_t handle = TakeHandle();
  Numbers(kEmrCreateBrush, {handle, style, color, hatch});
  return handle;
}

std::uint32_t MetafileRecorder::PatternBrush(std::uint32_t type, std::span<const std::uint8_t> dib, ColorUse use) {
  constexpr std::uint32_t kFixedBytes = 32;
  const std::uint32_t handle = TakeHandle();
  const std::size_t head = DibHeadBytes(dib, use);
  Begin(type);
  Put(handle);
  Put(std::uint32_t{use});
  Put(kFixedBytes);
  Put(Size32(head));
  Put(kFixedBytes + Size32(head));
  Put(Size32(dib.size() - head));
  PutBytes(dib);
  End();
  return handle;
}

std::uint32_t MetafileRecorder::CreatePatternBrush(std::span<const std::uint8_t> dib, ColorUse use) {
  return PatternBrush(kEmrCreateDibPatternBrush, dib, use);
}

std::uint32_t MetafileRecorder::CreateMonoBrush(std::span<const std::uint8_t> dib) {
  return PatternBrush(kEmrCreateMonoBrush, dib, kRgbColors);
}

std::uint32_t MetafileRecorder::CreatePalette(std::span<const std::uint32_t> colors) {
  constexpr std::uint32_t kPaletteVersion = 0x300;
  const std::uint32_t handle = TakeHandle();
  Begin(kEmrCreatePalette);
  Put(handle);
  Put(kPaletteVersion | Size32(std::min<std::size_t>(colors.size(), 65535)) << 16);
  for (const std::uint32_t color : colors) Put(color);
  End();
  return handle;
}

void MetafileRecorder::SetPaletteEntries(std::uint32_t handle, std::uint32_t first,
                                         std::span<const std::uint32_t> colors) {
  Begin(kEmrSetPaletteEntries);
  Put(handle);
  Put(first);
  Put(Size32(colors.size()));
  for (const std::uint32_t color : colors) Put(color);
  End();
}

std::uint32_t MetafileRecorder::CreateFont(const FontSpec& font) {
  const std::uint32_t handle = TakeHandle();
  Begin(kEmrCreateFont);
  Put(handle);
  Put(font.height);
  Put(font.width);
  Put(font.escapement);
  Put(font.escapement);
  Put(font.weight);
  Put((font.italic ? 1U : 0U) | (font.underline ? 0x100U : 0U) | (font.strikeOut ? 0x10000U : 0U) |
      std::uint32_t{font.charset} << 24);
  Put(std::uint32_t{font.pitchAndFamily} << 24);
  for (std::size_t i = 0; i < kFaceUnits; i += 2) {
    const auto unit = [&](std::size_t at) -> std::uint32_t {
      return at < font.face.size() && at < kFaceUnits - 1 ? font.face[at] : 0U;
    };
    Put(unit(i) | unit(i + 1) << 16);
  }
  End();
  return handle;
}

void MetafileRecorder::SelectObject(std::uint32_t handle) { Number(kEmrSelectObject, handle); }

void MetafileRecorder::DeleteObject(std::uint32_t handle) {
  if (handle == 0 || handle >= handleCount_ || !freeHandles_.insert(handle).second) return;
  Number(kEmrDeleteObject, handle);
}

void MetafileRecorder::SetMiterLimit(float limit) {
  Begin(kEmrSetMiterLimit);
  PutFloat(limit);
  End();
}

void MetafileRecorder::MoveTo(std::int32_t x, std::int32_t y) {
  position_ = {x, y};
  Numbers(kEmrMoveTo, {Bits(x), Bits(y)});
}

void MetafileRecorder::LineTo(std::int32_t x, std::int32_t y) {
  Touch(std::array{position_, Point{x, y}});
  position_ = {x, y};
  Numbers(kEmrLineTo, {Bits(x), Bits(y)});
}

void MetafileRecorder::SetPixel(std::int32_t x, std::int32_t y, std::uint32_t color) {
  Touch(std::array{Point{x, y}});
  Numbers(kEmrSetPixel, {Bits(x), Bits(y), color});
}

void MetafileRecorder::FillRegion(std::span<const Box> boxes, std::uint32_t handle) {
  if (boxes.empty()) return;
  Begin(kEmrFillRgn);
  Put(TouchBoxes(boxes));
  Put(RegionBytes(boxes));
  Put(handle);
  PutRegion(boxes);
  End();
}

void MetafileRecorder::FrameRegion(std::span<const Box> boxes, std::uint32_t handle, std::int32_t width,
                                   std::int32_t height) {
  if (boxes.empty()) return;
  Begin(kEmrFrameRgn);
  Put(TouchBoxes(boxes));
  Put(RegionBytes(boxes));
  Put(handle);
  Put(Point{width, height});
  PutRegion(boxes);
  End();
}

void MetafileRecorder::SelectClipRegion(std::span<const Box> deviceBoxes, std::uint32_t mode) {
  Begin(kEmrExtSelectClipRgn);
  const bool none = deviceBoxes.empty() && mode == kRegionCopy;
  Put(none ? 0U : RegionBytes(deviceBoxes));
  Put(mode);
  if (!none) PutRegion(deviceBoxes);
  End();
}

void MetafileRecorder::TextOut(std::int32_t x, std::int32_t y, std::u16string_view text,
                               std::span<const std::int32_t> advances, std::uint32_t options, const Box& box) {
  const bool spaced = advances.size() >= text.size();
  // What the font takes isn't known here: without a frame the picture ends at the box and the last advance.
  std::int64_t width = 0;
  if (spaced) {
    for (std::size_t i = 0; i < text.size(); ++i) width += advances[i];
  }
  std::vector<Point> around{{x, y}, {Limited(static_cast<double>(x + width)), y}};
  if ((options & (kTextOpaque | kTextClipped)) != 0)
    around.insert(around.end(), {{box.left, box.top}, {box.right, box.bottom}});

  Begin(kEmrExtTextOutW);
  Put(Touch(around));
  Put(kGraphicsModeAdvanced);
  PutFloat(1);
  PutFloat(1);
  Put(Point{x, y});
  Put(Size32(text.size()));
  Put(Size32(kTextBytes));
  Put(options);
  Put(box);
  const std::size_t advancesAt = kTextBytes + (text.size() + 1) / 2 * 4;
  Put(spaced ? Size32(advancesAt) : 0U);
  for (std::size_t i = 0; i < text.size(); i += 2) {
    Put(std::uint32_t{text[i]} | (i + 1 < text.size() ? static_cast<std::uint32_t>(text[i + 1]) << 16 : 0U));
  }
  if (spaced) {
    for (std::size_t i = 0; i < text.size(); ++i) Put(advances[i]);
  }
  End();
}

void MetafileRecorder::DrawDib(const Box& target, std::span<const std::uint8_t> dib, const Box& source,
                               std::uint32_t rop, ColorUse use) {
  const std::size_t head = DibHeadBytes(dib, use);
  Begin(kEmrStretchDiBits);
  Put(Touch(Corners(target)));
  Put(Point{target.left, target.top});
  // The record counts the rows of the part from the bottom of the picture.
  const Record header(dib);
  const std::int32_t height = header.Long(0) < 40 ? header.SignedWord(6) : header.SignedLong(8);
  const std::int64_t rows = std::abs(std::int64_t{height});
  Put(Point{source.left, height < 0 ? source.top : static_cast<std::int32_t>(rows - source.bottom)});
  Put(Point{source.right - source.left, source.bottom - source.top});
  Put(kStretchDibBytes);
  Put(Size32(head));
  Put(kStretchDibBytes + Size32(head));
  Put(Size32(dib.size() - head));
  Put(std::uint32_t{use});
  Put(rop);
  Put(Point{target.right - target.left, target.bottom - target.top});
  PutBytes(dib);
  End();
}

void MetafileRecorder::AlphaBlend(const Box& target, std::span<const std::uint8_t> dib, const Box& source,
                                  std::uint8_t constantAlpha) {
  constexpr std::uint32_t kWithAlphaOfPixels = 0x01000000;
  Blit(kEmrAlphaBlend, target, dib, source, kWithAlphaOfPixels | std::uint32_t{constantAlpha} << 16);
}

void MetafileRecorder::PatBlt(const Box& target, std::uint32_t rop) { Blit(kEmrBitBlt, target, {}, {}, rop); }

void MetafileRecorder::Blit(std::uint32_t type, const Box& target, std::span<const std::uint8_t> dib, const Box& source,
                            std::uint32_t operation) {
  const std::size_t head = dib.empty() ? 0 : DibHeadBytes(dib);
  const std::uint32_t fixedBytes = type == kEmrBitBlt ? kStretchBytes - 8 : kStretchBytes;
  Begin(type);
  Put(Touch(Corners(target)));
  Put(Point{target.left, target.top});
  Put(Point{target.right - target.left, target.bottom - target.top});
  Put(operation);
  Put(Point{source.left, source.top});
  for (const double part : {1.0, 0.0, 0.0, 1.0, 0.0, 0.0}) PutFloat(part);
  Put(ColorRef(255, 255, 255));
  Put(0U);
  Put(dib.empty() ? 0U : fixedBytes);
  Put(Size32(head));
  Put(dib.empty() ? 0U : fixedBytes + Size32(head));
  Put(Size32(dib.size() - head));
  if (type != kEmrBitBlt) Put(Point{source.right - source.left, source.bottom - source.top});
  PutBytes(dib);
  End();
}

void MetafileRecorder::Comment(std::span<const std::uint8_t> bytes) {
  Begin(kEmrComment);
  Put(Size32(bytes.size()));
  PutBytes(bytes);
  End();
}

void MetafileRecorder::Numbers(std::uint32_t type, std::initializer_list<std::uint32_t> values) {
  Begin(type);
  for (const std::uint32_t value : values) Put(value);
  End();
}

void MetafileRecorder::Points(std::uint32_t type, std::span<const Point> points) {
  if (points.empty()) return;
  Begin(type);
  const bool goesOn = type == kEmrPolylineTo || type == kEmrPolyBezierTo;
  Box bounds = Touch(points);
  if (goesOn) {
    bounds = Touch(std::array{position_, points[0]});
    position_ = points.back();
  }
  Put(bounds);
  Put(Size32(points.size()));
  for (const Point point : points) Put(point);
  End();
}

void MetafileRecorder::Figures(std::uint32_t type, std::span<const std::uint32_t> counts,
                               std::span<const Point> points) {
  if (points.empty()) return;
  Begin(type);
  Put(Touch(points));
  Put(Size32(counts.size()));
  Put(Size32(points.size()));
  for (const std::uint32_t count : counts) Put(count);
  for (const Point point : points) Put(point);
  End();
}

void MetafileRecorder::Boxed(std::uint32_t type, const Box& box, std::initializer_list<std::uint32_t> more) {
  Touch(Corners(box));
  Begin(type);
  Put(box);
  for (const std::uint32_t value : more) Put(value);
  End();
}

void MetafileRecorder::ClipBox(std::uint32_t type, const Box& box) {
  Begin(type);
  Put(box);
  End();
}

void MetafileRecorder::PathRecord(std::uint32_t type) {
  Begin(type);
  Put(bounds_);
  End();
}

void MetafileRecorder::Begin(std::uint32_t type) {
  recordStart_ = bytes_.size();
  ++recordCount_;
  Put(type);
  Put(0U);
}

void MetafileRecorder::Put(std::uint32_t value) {
  for (int shift = 0; shift < 32; shift += 8) bytes_.push_back(static_cast<std::uint8_t>(value >> shift));
}

void MetafileRecorder::Put(Point point) {
  Put(point.x);
  Put(point.y);
}

void MetafileRecorder::Put(const Box& box) {
  Put(Point{box.left, box.top});
  Put(Point{box.right, box.bottom});
}

void MetafileRecorder::PutFloat(double value) {
  const auto narrow = static_cast<float>(value);
  std::uint32_t bits;
  std::memcpy(&bits, &narrow, sizeof(bits));
  Put(bits);
}

void MetafileRecorder::PutBytes(std::span<const std::uint8_t> bytes) {
  bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
}

std::uint32_t MetafileRecorder::RegionBytes(std::span<const Box> boxes) {
  return Size32(kRegionHeadBytes + 16 * boxes.size());
}

Box MetafileRecorder::TouchBoxes(std::span<const Box> boxes) {
  std::vector<Point> corners;
  for (const Box& box : boxes) corners.insert(corners.end(), {{box.left, box.top}, {box.right, box.bottom}});
  return Touch(corners);
}

void MetafileRecorder::PutRegion(std::span<const Box> boxes) {
  Box all = boxes.empty() ? Box{} : boxes[0];
  for (const Box& box : boxes) {
    all = {std::min(all.left, box.left), std::min(all.top, box.top), std::max(all.right, box.right),
           std::max(all.bottom, box.bottom)};
  }
  Put(kRegionHeadBytes);
  Put(1U);  // rectangles
  Put(Size32(boxes.size()));
  Put(Size32(16 * boxes.size()));
  Put(all);
  for (const Box& box : boxes) Put(box);
}

void MetafileRecorder::End() {
  while (bytes_.size() % 4 != 0) bytes_.push_back(0);
  Patch(recordStart_ + 4, Size32(bytes_.size() - recordStart_));
}

void MetafileRecorder::Patch(std::size_t at, std::uint32_t value) {
  for (std::size_t i = 0; i < 4; ++i) bytes_[at + i] = static_cast<std::uint8_t>(value >> 8 * i);
}

std::uint32_t MetafileRecorder::TakeHandle() {
  if (freeHandles_.empty()) return handleCount_++;
  return freeHandles_.extract(freeHandles_.begin()).value();
}

Box MetafileRecorder::BoundsOf(std::span<const Point> points) const {
  const double perMm = unitsPerInch_ / 25.4;
  const Transform toDevice = mapping_.ToDevice(perMm, perMm);
  double left = HUGE_VAL;
  double top = HUGE_VAL;
  double right = -HUGE_VAL;
  double bottom = -HUGE_VAL;
  for (const Point point : points) {
    const double x = toDevice.X(point.x, point.y);
    const double y = toDevice.Y(point.x, point.y);
    left = std::min(left, x);
    top = std::min(top, y);
    right = std::max(right, x);
    bottom = std::max(bottom, y);
  }
  return {Limited(std::floor(left)), Limited(std::floor(top)), Limited(std::ceil(right)), Limited(std::ceil(bottom))};
}

Box MetafileRecorder::Touch(const Box& device) {
  const bool first = bounds_.left == bounds_.right && bounds_.top == bounds_.bottom;
  bounds_ = first ? device
                  : Box{std::min(bounds_.left, device.left), std::min(bounds_.top, device.top),
                        std::max(bounds_.right, device.right), std::max(bounds_.bottom, device.bottom)};
  return device;
}

}  // namespace platform
