#include "modules/qpct/quickdraw.h"

#include <algorithm>
#include <cmath>

#include "glib/module_api/result_values.h"
#include "modules/qpct/canvas.h"
#include "modules/qpct/mac_text.h"
#include "modules/qpct/operations.h"
#include "modules/qpct/pixel_map.h"
#include "modules/qpct/region.h"

namespace qpct {
namespace {

// The eight colours of pictures of version 1.
std::uint32_t OldColor(std::uint32_t number) {
  switch (number) {
    case 30:
      return 0xFFFFFF;
    case 69:
      return platform::ColorRef(255, 255, 0);
    case 137:
      return platform::ColorRef(255, 0, 255);
    case 205:
      return platform::ColorRef(255, 0, 0);
    case 273:
      return platform::ColorRef(0, 255, 255);
    case 341:
      return platform::ColorRef(0, 255, 0);
    case 409:
      return platform::ColorRef(0, 0, 255);
    default:
      return 0;
  }
}

// Goes through the operations of a picture.
class Walker {
 public:
  Walker(modules::ByteReader in, const PictureHeader& header) : in_(in), header_(header), canvas_(header) {}

  void Run();

  Canvas& Drawing() { return canvas_; }
  bool EndsEarly() const { return !ended_; }
  bool HasUnknownImage() const { return unknownImage_; }

 private:
  enum class Figure : std::uint32_t { kRectangle = 0, kRoundRectangle, kOval, kArc, kPolygon, kRegion };

  void Step(std::uint32_t operation);
  bool State(std::uint32_t operation);
  bool Lines(std::uint32_t operation);
  void Shape(std::uint32_t operation);
  void Image(std::uint32_t operation);
  void QuickTime();
  void PlainQuickTime();
  void TextBytes() { canvas_.Text(in_.Take(in_.Byte())); }
  void FontName();
  Pattern ReadPattern();
  Pattern ReadPixPattern();
  std::uint32_t ReadRgb();
  platform::Point ReadPoint();
  std::vector<platform::Point> ReadPolygon();

  modules::ByteReader in_;
  PictureHeader header_;
  Canvas canvas_;
  bool ended_ = false;
  bool unknownImage_ = false;
  platform::Box box_;  // of the last figure
  platform::Point corner_;
  std::int32_t arcStart_ = 0, arcSweep_ = 0;
  std::vector<platform::Point> polygon_;
  std::vector<platform::Box> region_;
};

platform::Point Walker::ReadPoint() {
  platform::Point point;
  point.y = in_.SignedBigWord();
  point.x = in_.SignedBigWord();
  return point;
}

Pattern Walker::ReadPattern() {
  Pattern pattern;
  in_.Read(pattern.bits.data(), pattern.bits.size());
  return pattern;
}

std::uint32_t Walker::ReadRgb() {
  const std::uint32_t red = in_.BigWord() >> 8;
  const std::uint32_t green = in_.BigWord() >> 8;
  return platform::ColorRef(red, green, in_.BigWord() >> 8);
}

// A coloured pattern begins with a black and white one for others.
Pattern Walker::ReadPixPattern() {
  constexpr std::uint32_t kDithered = 2;
  constexpr std::uint32_t kLargestTile = 256;
  const std::uint32_t kind = in_.BigWord();
  Pattern pattern = ReadPattern();
  if (kind == kDithered) {
    pattern.color = ReadRgb();
    return pattern;
  }
  PixelMap map;
  const auto tile = std::make_shared<modules::Picture>();
  std::uint32_t rows = 0;
  if (!ReadPixelMap(in_, false, map) || !ReadPixels(in_, map, true, *tile, rows)) {
    in_.Seek(in_.Size());
    return pattern;
  }
  if (tile->width <= kLargestTile && tile->height <= kLargestTile) pattern.tile = tile;
  return pattern;
}

std::vector<platform::Point> Walker::ReadPolygon() {
  constexpr std::size_t kHead = 10;
  const std::size_t size = in_.BigWord();
  modules::ByteReader inside(in_.Take(size < 2 ? 0 : size - 2));
  inside.Skip(kHead - 2);
  std::vector<platform::Point> points;
  while (inside.Left() >= 4) {
    platform::Point point;
    point.y = inside.SignedBigWord();
    point.x = inside.SignedBigWord();
    points.push_back(point);
  }
  return points;
}

void Walker::FontName() {
  modules::ByteReader inside(in_.Take(in_.BigWord()));
  inside.Skip(2);
  const auto name = inside.Take(inside.Byte());
  if (!name.empty()) canvas_.text.face = FromMacRoman(name);
}

bool Walker::State(std::uint32_t operation) {
  switch (operation) {
    case kClip:
      canvas_.Clip(ReadRegion(in_));
      return true;
    case kBackPattern:
      canvas_.backPattern = ReadPattern();
      return true;
    case kPenPattern:
      canvas_.penPattern = ReadPattern();
      return true;
    case kFillPattern:
      canvas_.fillPattern = ReadPattern();
      return true;
    case kBackPixPattern:
      canvas_.backPattern = ReadPixPattern();
      return true;
    case kPenPixPattern:
      canvas_.penPattern = ReadPixPattern();
      return true;
    case kFillPixPattern:
      canvas_.fillPattern = ReadPixPattern();
      return true;
    case kTextFont:
      canvas_.text.face = FontOfNumber(in_.BigWord());
      return true;
    case kTextFace:
      canvas_.text.style = in_.Byte();
      return true;
    case kTextMode:
      in_.Skip(2);
      return true;
    case kTextSize:
      canvas_.text.size = in_.SignedBigWord();
      return true;
    case kPenSize: {
      const platform::Point size = ReadPoint();
      canvas_.pen.width = size.x;
      canvas_.pen.height = size.y;
      return true;
    }
    case kPenMode:
      canvas_.pen.mode = in_.BigWord();
      return true;
    case kOvalSize:
      corner_ = ReadPoint();
      return true;
    case kOrigin:
      canvas_.origin.x = std::clamp(canvas_.origin.x + in_.SignedBigWord(), -65536, 65536);
      canvas_.origin.y = std::clamp(canvas_.origin.y + in_.SignedBigWord(), -65536, 65536);
      return true;
    case kForeColor:
      canvas_.foreground = OldColor(in_.BigLong());
      return true;
    case kBackColor:
      canvas_.background = OldColor(in_.BigLong());
      return true;
    case kRgbForeColor:
      canvas_.foreground = ReadRgb();
      return true;
    case kRgbBackColor:
      canvas_.background = ReadRgb();
      return true;
    case kFontName:
      FontName();
      return true;
    default:
      return false;
  }
}

bool Walker::Lines(std::uint32_t operation) {
  const auto shortStep = [&](platform::Point from) {
    const auto x = static_cast<std::int8_t>(in_.Byte());
    const auto y = static_cast<std::int8_t>(in_.Byte());
    return platform::Point{from.x + x, from.y + y};
  };
  platform::Point from = canvas_.pen.at;
  platform::Point& textAt = canvas_.text.at;
  switch (operation) {
    case kLine:
      from = ReadPoint();
      canvas_.Line(from, ReadPoint());
      return true;
    case kLineFrom:
      canvas_.Line(from, ReadPoint());
      return true;
    case kShortLine:
      from = ReadPoint();
      canvas_.Line(from, shortStep(from));
      return true;
    case kShortLineFrom:
      canvas_.Line(from, shortStep(from));
      return true;
    case kLongText:
      textAt = ReadPoint();
      TextBytes();
      return true;
    case kTextRight:
      textAt.x = std::min(textAt.x + in_.Byte(), 65536);
      TextBytes();
      return true;
    case kTextDown:
      textAt.y = std::min(textAt.y + in_.Byte(), 65536);
      TextBytes();
      return true;
    case kTextRightDown:
      textAt.x = std::min(textAt.x + in_.Byte(), 65536);
      textAt.y = std::min(textAt.y + in_.Byte(), 65536);
      TextBytes();
      return true;
    default:
      return false;
  }
}

void Walker::Shape(std::uint32_t operation) {
  const auto figure = static_cast<Figure>((operation - kShapes) >> 4);
  const bool again = (operation & 8U) != 0;
  const std::uint32_t number = operation & 7U;
  const bool known = number <= static_cast<std::uint32_t>(Verb::kFill);
  const auto verb = static_cast<Verb>(number);
  if (figure == Figure::kPolygon) {
    if (!again) polygon_ = ReadPolygon();
    if (known) canvas_.Polygon(verb, polygon_);
    return;
  }
  if (figure == Figure::kRegion) {
    if (!again) region_ = ReadRegion(in_);
    if (known) canvas_.Region(verb, region_);
    return;
  }
  if (!again) box_ = ReadBox(in_);
  if (figure == Figure::kArc) {
    arcStart_ = in_.SignedBigWord();
    arcSweep_ = in_.SignedBigWord();
  }
  if (!known) return;
  switch (figure) {
    case Figure::kRectangle:
      return canvas_.Rectangle(verb, box_);
    case Figure::kRoundRectangle:
      return canvas_.RoundRectangle(verb, box_, corner_);
    case Figure::kOval:
      return canvas_.Oval(verb, box_);
    default:
      return canvas_.Arc(verb, box_, arcStart_ % 360, arcSweep_);
  }
}

void Walker::Image(std::uint32_t operation) {
  const bool direct = operation == kDirectBits || operation == kDirectBitsRegion;
  const bool hasRegion = operation == kBitsRegion || operation == kPackedBitsRegion || operation == kDirectBitsRegion;
  PixelMap map;
  if (!ReadPixelMap(in_, direct, map)) {
    in_.Seek(in_.Size());
    return;
  }
  if (map.oldBitmap) {
    const auto word = [](std::uint32_t color) {
      return 0xFF000000 | (color & 0xFF) << 16 | (color & 0xFF00) | (color >> 16 & 0xFF);
    };
    map.palette[0] = word(canvas_.background);
    map.palette[1] = word(canvas_.foreground);
  }
  platform::Box source = ReadBox(in_);
  const platform::Box target = ReadBox(in_);
  const std::uint32_t mode = in_.BigWord();
  std::vector<platform::Box> mask;
  if (hasRegion) mask = ReadRegion(in_);
  const bool packed = operation != kBits && operation != kBitsRegion;
  modules::Picture picture;
  std::uint32_t rows = 0;
  if (!ReadPixels(in_, map, packed, picture, rows)) {
    in_.Seek(in_.Size());
    return;
  }
  source = {source.left - map.bounds.left, source.top - map.bounds.top, source.right - map.bounds.left,
            source.bottom - map.bounds.top};
  canvas_.Image(std::move(picture), source, target, mode, mask);
}

// Only says what the operation behind it, which is an image of the usual kinds, was made from.
void Walker::PlainQuickTime() {
  in_.Skip(4 + 2 + 36);
  const std::size_t matteBytes = in_.BigLong();
  in_.Skip(8);
  in_.Skip(matteBytes);
}

void Walker::QuickTime() {
  constexpr std::uint32_t kJpeg = 0x6A706567;
  constexpr std::size_t kDescription = 86;
  modules::ByteReader inside(in_.Take(in_.BigLong()));
  inside.Skip(2);
  std::int32_t matrix[9];
  for (std::int32_t& value : matrix) value = static_cast<std::int32_t>(inside.BigLong());
  const std::uint32_t matteBytes = inside.BigLong();
  inside.Skip(8 + 2);
  const platform::Box source = ReadBox(inside);
  inside.Skip(4);
  const std::uint32_t maskBytes = inside.BigLong();
  if (matteBytes != 0) inside.Skip(matteBytes);
  inside.Skip(maskBytes);
  const std::size_t start = inside.Position();
  const std::uint32_t size = inside.BigLong();
  const std::uint32_t kind = inside.BigLong();
  if (inside.Failed() || !inside.Seek(start + std::max<std::size_t>(size, kDescription))) return;
  modules::Picture picture;
  if (kind != kJpeg || !modules::DecodeJpeg(inside.Take(inside.Left()), picture)) {
    unknownImage_ = true;
    return;
  }
  const std::int32_t left = matrix[6] / 65536;
  const std::int32_t top = matrix[7] / 65536;
  const auto scaled = [](std::int32_t length, std::int32_t factor) {
    const double value = length * (factor / 65536.0);
    return static_cast<std::int32_t>(std::clamp(std::round(value), -65536.0, 65536.0));
  };
  const platform::Box target = {left, top, left + scaled(source.right - source.left, matrix[0]),
                                top + scaled(source.bottom - source.top, matrix[4])};
  const platform::Box whole = picture.Whole();
  canvas_.Image(std::move(picture), whole, target, 0);
  // What follows is for readers that can't decode the image.
  canvas_.imagesOnly = true;
}

void Walker::Step(std::uint32_t operation) {
  if (operation == kCompressedQuickTime) return QuickTime();
  if (operation == kPlainQuickTime) return PlainQuickTime();
  if (State(operation) || Lines(operation)) return;
  if (operation >= kShapes && operation < kShapesEnd) return Shape(operation);
  switch (operation) {
    case kBits:
    case kBitsRegion:
    case kPackedBits:
    case kPackedBitsRegion:
    case kDirectBits:
    case kDirectBitsRegion:
      return Image(operation);
    default:
      SkipOperation(in_, operation);
  }
}

void Walker::Run() {
  in_.Seek(header_.body);
  while (!in_.AtEnd() && !canvas_.Full()) {
    if (header_.wordCodes && in_.Position() % 2 != header_.body % 2) in_.Byte();
    const std::uint32_t operation = header_.wordCodes ? in_.BigWord() : in_.Byte();
    if (in_.Failed()) return;
    if (operation == kEnd) {
      ended_ = true;
      return;
    }
    Step(operation);
  }
}

}  // namespace

std::uint32_t LoadPicture(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange) {
  const auto header = ReadPictureHeader(file);
  if (!header) return modules::Fail(exchange, glib::IERR, "The file holds no picture");
  Walker walker(modules::ByteReader(file), *header);
  walker.Run();
  Canvas& drawing = walker.Drawing();
  if (drawing.Empty()) {
    if (walker.HasUnknownImage()) return modules::Fail(exchange, glib::NSUP, "The image has an unknown code");
    return modules::Fail(exchange, glib::IERR, "The picture draws nothing");
  }
  if (const modules::Picture* only = drawing.OnlyPicture()) {
    modules::Page* page = modules::AddPicturePage(exchange, *only);
    if (page == nullptr) return glib::NSUP;
    page->dpiX = modules::CheckedDpi(header->dpi * only->width / (header->frame.right - header->frame.left));
    page->dpiY = modules::CheckedDpi(header->dpi * only->height / (header->frame.bottom - header->frame.top));
  } else if (modules::AddRecordedPage(exchange, drawing.Recorder()) == nullptr) {
    return glib::IERR;
  }
  if (walker.EndsEarly()) modules::Fail(exchange, glib::RCOK, "The file is cut off");
  return glib::RCOK;
}

}  // namespace qpct
