#ifndef MODULES_QWMF_WMF_H_
#define MODULES_QWMF_WMF_H_

#include <cstdint>
#include <optional>
#include <span>

#include "modules/common/byte_reader.h"
#include "modules/common/page_builder.h"
#include "platform/metafile/geometry.h"

namespace qwmf {

enum WmfFunction : std::uint16_t {
  kSaveDc = 0x001E,
  kSetPaletteEntries = 0x0037,
  kSetBkMode = 0x0102,
  kSetMapMode = 0x0103,
  kSetRop2 = 0x0104,
  kSetPolyFillMode = 0x0106,
  kSetStretchBltMode = 0x0107,
  kRestoreDc = 0x0127,
  kResizePalette = 0x0139,
  kInvertRegion = 0x012A,
  kPaintRegion = 0x012B,
  kSelectClipRegion = 0x012C,
  kSelectObject = 0x012D,
  kSetTextAlign = 0x012E,
  kDibCreatePatternBrush = 0x0142,
  kDeleteObject = 0x01F0,
  kCreatePatternBrush = 0x01F9,
  kSetBkColor = 0x0201,
  kSetTextColor = 0x0209,
  kSetTextJustification = 0x020A,
  kSetWindowOrg = 0x020B,
  kSetWindowExt = 0x020C,
  kOffsetWindowOrg = 0x020F,
  kLineTo = 0x0213,
  kMoveTo = 0x0214,
  kOffsetClipRgn = 0x0220,
  kFillRegion = 0x0228,
  kSelectPalette = 0x0234,
  kCreatePen = 0x02FA,
  kCreateFont = 0x02FB,
  kCreateBrush = 0x02FC,
  kPolygon = 0x0324,
  kPolyline = 0x0325,
  kScaleWindowExt = 0x0410,
  kExcludeClipRect = 0x0415,
  kIntersectClipRect = 0x0416,
  kEllipse = 0x0418,
  kRectangle = 0x041B,
  kSetPixel = 0x041F,
  kTextOut = 0x0521,
  kFrameRegion = 0x0429,
  kPolyPolygon = 0x0538,
  kRoundRect = 0x061C,
  kPatBlt = 0x061D,
  kEscape = 0x0626,
  kArc = 0x0817,
  kPie = 0x081A,
  kChord = 0x0830,
  kBitBlt = 0x0922,
  kDibBitBlt = 0x0940,
  kExtTextOut = 0x0A32,
  kStretchBlt = 0x0B23,
  kDibStretchBlt = 0x0B41,
  kSetDibToDevice = 0x0D33,
  kStretchDib = 0x0F43,
  kCreatePalette = 0x00F7,
  kCreateRegion = 0x06FF,
};

struct WmfRecord {
  std::uint16_t function = 0;
  std::span<const std::uint8_t> parameters;
};

// Goes through the records behind the file's header; what can't be a record ends it.
class WmfReader {
 public:
  explicit WmfReader(std::span<const std::uint8_t> records) : in_(records) {}

  bool Next(WmfRecord& record);

 private:
  modules::ByteReader in_;
};

// The parts of a file.
struct WmfFile {
  bool placeable = false;
  platform::Box box;  // of a placeable one, in its units
  std::uint32_t unitsPerInch = 96;
  std::span<const std::uint8_t> records;
};

// Nothing if there is no header.
std::optional<WmfFile> OpenWmf(std::span<const std::uint8_t> file);

// Adds the drawing as a metafile page; an enhanced metafile within comments goes before the records around it.
std::uint32_t LoadWmf(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange);

}  // namespace qwmf

#endif  // MODULES_QWMF_WMF_H_
