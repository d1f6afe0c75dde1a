#ifndef MODULES_HELPERS_METAFILE_PLAYER_OBJECTS_H_
#define MODULES_HELPERS_METAFILE_PLAYER_OBJECTS_H_

#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "modules/helpers/metafile_player/bitmap.h"
#include "platform/metafile/records.h"

namespace metafile_player {

// What handles stand for. Colours are pixel words, opaque.

struct Brush {
  std::uint32_t style = platform::kBrushSolid;
  std::uint32_t color = 0xFFFFFFFF;
  std::uint32_t hatch = 0;
  std::shared_ptr<const Bitmap> bitmap;  // of pattern brushes
  bool mono = false;                     // the bitmap takes the text and background colours

  bool IsNull() const { return style == platform::kBrushNull; }
};

struct Pen {
  std::uint32_t style = platform::kPenSolid;  // with cap, join and kPenGeometric
  double width = 0;                           // logical units; 0: one pixel
  std::uint32_t color = 0xFF000000;
  std::vector<std::uint32_t> dashes;
  bool dashedWhileThin = false;        // of the simple kind, whose dashes vanish when the line is wide
  std::shared_ptr<const Brush> brush;  // what a wide line is filled with in place of the colour

  bool IsNull() const { return (style & platform::kPenStyleMask) == platform::kPenNull; }
  bool IsGeometric() const { return (style & platform::kPenGeometric) != 0; }
};

struct Font {
  std::int32_t height = 0;
  std::int32_t width = 0;
  double escapement = 0;  // degrees, counter-clockwise
  bool bold = false;
  bool italic = false;
  bool underline = false;
  bool strikeOut = false;
  std::uint8_t charset = 0;
  bool fixedPitch = false;
  bool serifs = false;
  std::string family;  // UTF-8
};

using PenHandle = std::shared_ptr<const Pen>;
using BrushHandle = std::shared_ptr<const Brush>;
using FontHandle = std::shared_ptr<const Font>;
using Palette = std::vector<std::uint32_t>;
using PaletteHandle = std::shared_ptr<const Palette>;
// The first is a slot without object, or with one that draws nothing.
using Object = std::variant<std::monostate, PenHandle, BrushHandle, FontHandle, PaletteHandle>;

// A colour may be given by its number in the palette.
std::uint32_t ColorWord(std::uint32_t colorRef, const Palette& palette);

Object StockObjectOf(std::uint32_t handle);
PenHandle ReadPen(const platform::Record& record, const Palette& palette);
PenHandle ReadExtPen(const platform::Record& record, const Palette& palette, BrushHandle patternBrush);
BrushHandle ReadBrush(const platform::Record& record, const Palette& palette);
FontHandle ReadFont(const platform::Record& record);
PaletteHandle ReadPalette(const platform::Record& record);
// Records that change one.
PaletteHandle ReadPaletteEntries(const platform::Record& record, const Palette& before);
PaletteHandle ResizedPalette(const platform::Record& record, const Palette& before);

}  // namespace metafile_player

#endif  // MODULES_HELPERS_METAFILE_PLAYER_OBJECTS_H_
