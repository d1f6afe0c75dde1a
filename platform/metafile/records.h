#ifndef PLATFORM_METAFILE_RECORDS_H_
#define PLATFORM_METAFILE_RECORDS_H_

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

// Records of enhanced metafiles: numbers, places and the one reader of them. All numbers are little-endian. A record
// begins with its type and its length in bytes, which is a multiple of 4.

namespace platform {

enum RecordType : std::uint32_t {
  kEmrHeader = 1,
  kEmrPolyBezier = 2,
  kEmrPolygon = 3,
  kEmrPolyline = 4,
  kEmrPolyBezierTo = 5,
  kEmrPolylineTo = 6,
  kEmrPolyPolyline = 7,
  kEmrPolyPolygon = 8,
  kEmrSetWindowExt = 9,
  kEmrSetWindowOrg = 10,
  kEmrSetViewportExt = 11,
  kEmrSetViewportOrg = 12,
  kEmrSetBrushOrg = 13,
  kEmrEof = 14,
  kEmrSetPixel = 15,
  kEmrSetMapMode = 17,
  kEmrSetBkMode = 18,
  kEmrSetPolyFillMode = 19,
  kEmrSetRop2 = 20,
  kEmrSetStretchBltMode = 21,
  kEmrSetTextAlign = 22,
  kEmrSetTextColor = 24,
  kEmrSetBkColor = 25,
  kEmrOffsetClipRgn = 26,
  kEmrMoveTo = 27,
  kEmrSetMetaRgn = 28,
  kEmrExcludeClipRect = 29,
  kEmrIntersectClipRect = 30,
  kEmrScaleViewportExt = 31,
  kEmrScaleWindowExt = 32,
  kEmrSaveDc = 33,
  kEmrRestoreDc = 34,
  kEmrSetWorldTransform = 35,
  kEmrModifyWorldTransform = 36,
  kEmrSelectObject = 37,
  kEmrCreatePen = 38,
  kEmrCreateBrush = 39,
  kEmrDeleteObject = 40,
  kEmrAngleArc = 41,
  kEmrEllipse = 42,
  kEmrRectangle = 43,
  kEmrRoundRect = 44,
  kEmrArc = 45,
  kEmrChord = 46,
  kEmrPie = 47,
  kEmrSelectPalette = 48,
  kEmrCreatePalette = 49,
  kEmrSetPaletteEntries = 50,
  kEmrResizePalette = 51,
  kEmrLineTo = 54,
  kEmrArcTo = 55,
  kEmrPolyDraw = 56,
  kEmrSetArcDirection = 57,
  kEmrSetMiterLimit = 58,
  kEmrBeginPath = 59,
  kEmrEndPath = 60,
  kEmrCloseFigure = 61,
  kEmrFillPath = 62,
  kEmrStrokeAndFillPath = 63,
  kEmrStrokePath = 64,
  kEmrFlattenPath = 65,
  kEmrWidenPath = 66,
  kEmrSelectClipPath = 67,
  kEmrAbortPath = 68,
  kEmrComment = 70,
  kEmrFillRgn = 71,
  kEmrFrameRgn = 72,
  kEmrInvertRgn = 73,
  kEmrPaintRgn = 74,
  kEmrExtSelectClipRgn = 75,
  kEmrBitBlt = 76,
  kEmrStretchBlt = 77,
  kEmrMaskBlt = 78,
  kEmrPlgBlt = 79,
  kEmrSetDiBitsToDevice = 80,
  kEmrStretchDiBits = 81,
  kEmrCreateFont = 82,
  kEmrExtTextOutA = 83,
  kEmrExtTextOutW = 84,
  kEmrPolyBezier16 = 85,
  kEmrPolygon16 = 86,
  kEmrPolyline16 = 87,
  kEmrPolyBezierTo16 = 88,
  kEmrPolylineTo16 = 89,
  kEmrPolyPolyline16 = 90,
  kEmrPolyPolygon16 = 91,
  kEmrPolyDraw16 = 92,
  kEmrCreateMonoBrush = 93,
  kEmrCreateDibPatternBrush = 94,
  kEmrExtCreatePen = 95,
  kEmrPolyTextOutA = 96,
  kEmrPolyTextOutW = 97,
  kEmrSmallTextOut = 108,
  kEmrAlphaBlend = 114,
  kEmrTransparentBlt = 116,
  kEmrGradientFill = 118,
  kEmrSetTextJustification = 120,
};

// Of the header record.
inline constexpr std::size_t kHeaderBytes = 88;  // without extensions
inline constexpr std::size_t kHeaderBytesWithMicrometres = 108;
inline constexpr std::uint32_t kMetafileSignature = 0x464D4520;  // " EMF"

inline constexpr std::uint32_t kStockObject = 0x80000000;
enum StockObject : std::uint32_t {
  kWhiteBrush = kStockObject | 0,
  kLightGrayBrush = kStockObject | 1,
  kGrayBrush = kStockObject | 2,
  kDarkGrayBrush = kStockObject | 3,
  kBlackBrush = kStockObject | 4,
  kNullBrush = kStockObject | 5,
  kWhitePen = kStockObject | 6,
  kBlackPen = kStockObject | 7,
  kNullPen = kStockObject | 8,
  kFirstStockFont = kStockObject | 10,
  kDefaultPalette = kStockObject | 15,
  kDcBrush = kStockObject | 18,
  kDcPen = kStockObject | 19,
};

enum class MapMode : std::uint32_t {
  kText = 1,
  kLowMetric,   // 0.1 mm, y goes up in this and the next four
  kHighMetric,  // 0.01 mm
  kLowEnglish,  // 0.01 inch
  kHighEnglish,
  kTwips,
  kIsotropic,
  kAnisotropic,
};

enum PenStyle : std::uint32_t {
  kPenSolid = 0,
  kPenDash,
  kPenDot,
  kPenDashDot,
  kPenDashDotDot,
  kPenNull,
  kPenInsideFrame,
  kPenUserStyle,
  kPenAlternate,
  kPenStyleMask = 0xF,
  kPenCapRound = 0x000,
  kPenCapSquare = 0x100,
  kPenCapFlat = 0x200,
  kPenCapMask = 0xF00,
  kPenJoinRound = 0x0000,
  kPenJoinBevel = 0x1000,
  kPenJoinMiter = 0x2000,
  kPenJoinMask = 0xF000,
  kPenGeometric = 0x10000,
};

enum BrushStyle : std::uint32_t {
  kBrushSolid = 0,
  kBrushNull = 1,
  kBrushHatched = 2,
  kBrushPattern = 3,
  kBrushDibPattern = 5,
  kBrushDibPatternPacked = 6,
};

enum HatchStyle : std::uint32_t {
  kHatchHorizontal = 0,
  kHatchVertical,
  kHatchForward,  // falls to the right
  kHatchBackward,
  kHatchCross,
  kHatchDiagonalCross,
  kHatchTextColor = 8,  // no lines, but all of it in the colour of texts, two ways
  kHatchTextColorDithered,
  kHatchBkColor,
  kHatchBkColorDithered,
};

// Where the colours of a bitmap's palette are.
enum ColorUse : std::uint32_t { kRgbColors = 0, kPaletteColors = 1, kPaletteIndices = 2 };

enum FillMode : std::uint32_t { kFillAlternate = 1, kFillWinding = 2 };
enum BackgroundMode : std::uint32_t { kTransparentMode = 1, kOpaqueMode = 2 };
enum ArcDirection : std::uint32_t { kCounterClockwise = 1, kClockwise = 2 };
enum TransformMode : std::uint32_t { kSetIdentity = 1, kMultiplyBefore = 2, kMultiplyAfter = 3, kReplace = 4 };
enum RegionMode : std::uint32_t { kRegionAnd = 1, kRegionOr = 2, kRegionXor = 3, kRegionDiff = 4, kRegionCopy = 5 };

enum TextAlign : std::uint32_t {
  kAlignUpdatePosition = 1,
  kAlignRight = 2,
  kAlignCenter = 6,
  kAlignHorizontalMask = 6,
  kAlignBottom = 8,
  kAlignBaseline = 24,
  kAlignVerticalMask = 24,
};

enum TextOption : std::uint32_t {
  kTextOpaque = 0x2,
  kTextClipped = 0x4,
  kTextGlyphNumbers = 0x10,
  kTextNoRectangle = 0x100,
  kTextSmallCharacters = 0x200,
  kTextPairedAdvances = 0x2000,
};

enum RasterOperation : std::uint32_t {
  kSourceCopy = 0x00CC0020,
  kSourcePaint = 0x00EE0086,
  kSourceAnd = 0x008800C6,
  kSourceInvert = 0x00660046,
  kPatternCopy = 0x00F00021,
  kPatternInvert = 0x005A0049,
  kTargetInvert = 0x00550009,
  kLeaveTarget = 0x00AA0029,
  kBlackness = 0x00000042,
  kWhiteness = 0x00FF0062,
};

enum Rop2 : std::uint32_t { kRop2XorPen = 7, kRop2MaskPen = 9, kRop2CopyPen = 13 };

// One record of a stream. What lies past its end reads as 0.
class Record {
 public:
  Record() = default;
  explicit Record(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  std::uint32_t Type() const { return Long(0); }
  std::span<const std::uint8_t> Bytes() const { return bytes_; }  // with the eight of type and length
  std::size_t Size() const { return bytes_.size(); }

  std::uint8_t Byte(std::size_t at) const { return at < bytes_.size() ? bytes_[at] : std::uint8_t{0}; }
  std::uint16_t Word(std::size_t at) const { return static_cast<std::uint16_t>(Byte(at) | Byte(at + 1) << 8); }
  std::int16_t SignedWord(std::size_t at) const { return static_cast<std::int16_t>(Word(at)); }
  std::uint32_t Long(std::size_t at) const {
    return std::uint32_t{Word(at)} | static_cast<std::uint32_t>(Word(at + 2)) << 16;
  }
  std::int32_t SignedLong(std::size_t at) const { return static_cast<std::int32_t>(Long(at)); }
  float Float(std::size_t at) const {
    const std::uint32_t bits = Long(at);
    float value;
    std::memcpy(&value, &bits, sizeof(value));
    return value;
  }

  // Bytes by an offset from the record's start; empty unless all of them are there.
  std::span<const std::uint8_t> Part(std::size_t at, std::size_t count) const {
    return at <= bytes_.size() && count <= bytes_.size() - at ? bytes_.subspan(at, count)
                                                              : std::span<const std::uint8_t>();
  }
  // How many pieces of `size` bytes there are from `at` on.
  std::size_t Room(std::size_t at, std::size_t size) const {
    return at <= bytes_.size() ? (bytes_.size() - at) / size : 0;
  }

 private:
  std::span<const std::uint8_t> bytes_;
};

// Goes through a stream. A length that can't be ends it, as the end record does.
class RecordReader {
 public:
  explicit RecordReader(std::span<const std::uint8_t> stream) : stream_(stream) {}

  bool Next(Record& record) {
    if (ended_ || stream_.size() - position_ < kHeadBytes) return false;
    const Record head(stream_.subspan(position_, kHeadBytes));
    const std::size_t length = head.Long(4);
    if (length < kHeadBytes || length % 4 != 0 || length > stream_.size() - position_) return false;
    record = Record(stream_.subspan(position_, length));
    position_ += length;
    ended_ = record.Type() == kEmrEof;
    return true;
  }

  // Of the record that comes next.
  std::size_t Position() const { return position_; }

 private:
  static constexpr std::size_t kHeadBytes = 8;

  std::span<const std::uint8_t> stream_;
  std::size_t position_ = 0;
  bool ended_ = false;
};

}  // namespace platform

#endif  // PLATFORM_METAFILE_RECORDS_H_
