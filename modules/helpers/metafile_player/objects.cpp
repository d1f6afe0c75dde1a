#include "modules/helpers/metafile_player/objects.h"

#include <algorithm>
#include <cstdlib>

#include "modules/helpers/metafile_player/characters.h"

namespace metafile_player {
namespace {

using platform::Record;

constexpr std::uint32_t kBoldFrom = 600;
constexpr std::size_t kMaxDashes = 16;
constexpr std::size_t kFaceUnits = 32;
constexpr std::size_t kMaxPaletteEntries = 65536;
constexpr std::uint32_t kBlack = 0xFF000000;

// Of screens with few colours: what a palette's numbers mean while none was selected.
constexpr std::uint32_t kSystemColors[] = {0xFF000000, 0xFF800000, 0xFF008000, 0xFF808000, 0xFF000080,
                                           0xFF800080, 0xFF008080, 0xFFC0C0C0, 0xFFC0DCC0, 0xFFA6CAF0,
                                           0xFFFFFBF0, 0xFFA0A0A4, 0xFF808080, 0xFFFF0000, 0xFF00FF00,
                                           0xFFFFFF00, 0xFF0000FF, 0xFFFF00FF, 0xFF00FFFF, 0xFFFFFFFF};

// Red, green, blue and a byte of flags each.
void ReadEntries(const Record& record, std::size_t at, std::size_t count, std::size_t to, Palette& palette) {
  for (std::size_t i = 0; i < count && to + i < palette.size(); ++i) {
    palette[to + i] = ColorWord(record.Long(at + 4 * i) & 0x00FFFFFF, {});
  }
}

BrushHandle SolidBrush(std::uint32_t color) {
  auto brush = std::make_shared<Brush>();
  brush->color = color;
  return brush;
}

PenHandle StockPen(std::uint32_t color, std::uint32_t style = platform::kPenSolid) {
  auto pen = std::make_shared<Pen>();
  pen->color = color;
  pen->style = style;
  return pen;
}

}  // namespace

std::uint32_t ColorWord(std::uint32_t colorRef, const Palette& palette) {
  constexpr std::uint32_t kByNumber = 1;
  if (colorRef >> 24 == kByNumber) {
    const std::uint32_t number = colorRef & 0xFFFF;
    return number < palette.size() ? palette[number] : kBlack;
  }
  return kBlack | (colorRef & 255) << 16 | (colorRef & 0xFF00) | (colorRef >> 16 & 255);
}

Object StockObjectOf(std::uint32_t handle) {
  switch (handle) {
    case platform::kWhiteBrush:
    case platform::kDcBrush:
      return SolidBrush(0xFFFFFFFF);
    case platform::kLightGrayBrush:
      return SolidBrush(0xFFC0C0C0);
    case platform::kGrayBrush:
      return SolidBrush(0xFF808080);
    case platform::kDarkGrayBrush:
      return SolidBrush(0xFF404040);
    case platform::kBlackBrush:
      return SolidBrush(0xFF000000);
    case platform::kNullBrush: {
      auto none = std::make_shared<Brush>();
      none->style = platform::kBrushNull;
      return BrushHandle(none);
    }
    case platform::kWhitePen:
      return StockPen(0xFFFFFFFF);
    case platform::kBlackPen:
    case platform::kDcPen:
      return StockPen(0xFF000000);
    case platform::kNullPen:
      return StockPen(0xFF000000, platform::kPenNull);
    case platform::kDefaultPalette:
      return PaletteHandle(std::make_shared<Palette>(std::begin(kSystemColors), std::end(kSystemColors)));
    default:
      break;
  }
  if (handle < platform::kFirstStockFont || handle > platform::kStockObject + 17) return {};
  auto font = std::make_shared<Font>();
  font->height = -12;
  font->family = "Sans";
  font->fixedPitch = handle == platform::kFirstStockFont || handle == platform::kFirstStockFont + 1 ||
                     handle == platform::kFirstStockFont + 6;
  return FontHandle(font);
}

PenHandle ReadPen(const Record& record, const Palette& palette) {
  auto pen = std::make_shared<Pen>();
  pen->style = record.Long(12) & 0xFFFF;
  pen->width = std::abs(static_cast<double>(record.SignedLong(16)));
  pen->color = ColorWord(record.Long(24), palette);
  pen->dashedWhileThin = true;
  // Old pens above one pixel are geometric in all but name.
  if (pen->width > 0) pen->style |= platform::kPenGeometric;
  return pen;
}

PenHandle ReadExtPen(const Record& record, const Palette& palette, BrushHandle patternBrush) {
  auto pen = std::make_shared<Pen>();
  pen->style = record.Long(28);
  pen->width = pen->IsGeometric() ? record.Long(32) : 0;
  pen->color = ColorWord(record.Long(40), palette);
  const std::uint32_t brushStyle = record.Long(36);
  if (brushStyle == platform::kBrushNull) pen->style = platform::kPenNull;
  if (brushStyle == platform::kBrushHatched && pen->IsGeometric()) {
    auto brush = std::make_shared<Brush>();
    brush->style = brushStyle;
    brush->color = pen->color;
    brush->hatch = record.Long(44);
    pen->brush = std::move(brush);
  } else if (brushStyle > platform::kBrushHatched && pen->IsGeometric() && !patternBrush->IsNull()) {
    pen->brush = std::move(patternBrush);
  }
  const std::size_t dashes = std::min<std::size_t>({record.Long(48), record.Room(52, 4), kMaxDashes});
  for (std::size_t i = 0; i < dashes; ++i) pen->dashes.push_back(record.Long(52 + 4 * i));
  return pen;
}

BrushHandle ReadBrush(const Record& record, const Palette& palette) {
  auto brush = std::make_shared<Brush>();
  brush->style = record.Long(12);
  brush->color = ColorWord(record.Long(16), palette);
  brush->hatch = record.Long(20);
  if (brush->style > platform::kBrushHatched) brush->style = platform::kBrushSolid;
  return brush;
}

PaletteHandle ReadPalette(const Record& record) {
  constexpr std::size_t kEntriesAt = 16;
  auto palette = std::make_shared<Palette>(std::min<std::size_t>(record.Word(14), record.Room(kEntriesAt, 4)));
  ReadEntries(record, kEntriesAt, palette->size(), 0, *palette);
  return palette;
}

PaletteHandle ReadPaletteEntries(const Record& record, const Palette& before) {
  constexpr std::size_t kEntriesAt = 20;
  auto palette = std::make_shared<Palette>(before);
  const std::size_t count = std::min<std::size_t>(record.Long(16), record.Room(kEntriesAt, 4));
  ReadEntries(record, kEntriesAt, count, record.Long(12), *palette);
  return palette;
}

PaletteHandle ResizedPalette(const Record& record, const Palette& before) {
  auto palette = std::make_shared<Palette>(before);
  palette->resize(std::min<std::size_t>(record.Long(12), kMaxPaletteEntries), kBlack);
  return palette;
}

FontHandle ReadFont(const Record& record) {
  auto font = std::make_shared<Font>();
  font->height = record.SignedLong(12);
  font->width = record.SignedLong(16);
  font->escapement = record.SignedLong(20) % 3600 / 10.0;
  font->bold = record.Long(28) >= kBoldFrom;
  font->italic = record.Byte(32) != 0;
  font->underline = record.Byte(33) != 0;
  font->strikeOut = record.Byte(34) != 0;
  font->charset = record.Byte(35);
  font->fixedPitch = (record.Byte(39) & 3) == 1;
  font->serifs = (record.Byte(39) >> 4) == 1;
  std::u16string face;
  for (std::size_t i = 0; i < kFaceUnits && record.Word(40 + 2 * i) != 0; ++i) {
    face.push_back(static_cast<char16_t>(record.Word(40 + 2 * i)));
  }
  font->family = Utf8(face);
  return font;
}

}  // namespace metafile_player
