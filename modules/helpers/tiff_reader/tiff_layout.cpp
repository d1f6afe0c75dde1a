#include "modules/helpers/tiff_reader/tiff_layout.h"

#include <array>
#include <vector>

#include "modules/common/byte_reader.h"
#include "modules/common/limits.h"
#include "modules/common/page_builder.h"

namespace modules {
namespace {

constexpr std::uint32_t kLinearRaw = 34892;  // of digital negatives; the library's header lacks it
// Rows of tens of thousands of samples a pixel would need gigabytes while they are unpacked.
constexpr std::uint32_t kMaxSamples = 64;

std::uint32_t Short(TIFF* tiff, std::uint32_t tag, std::uint16_t missing) {
  std::uint16_t value = 0;
  return TIFFGetFieldDefaulted(tiff, tag, &value) != 0 ? value : missing;
}

std::uint32_t PhotometricOf(TIFF* tiff, std::uint32_t compression, std::uint32_t samples) {
  std::uint16_t value = 0;
  if (TIFFGetField(tiff, TIFFTAG_PHOTOMETRIC, &value) != 0) return value;
  if (samples >= 3) return PHOTOMETRIC_RGB;
  const bool fax = compression >= COMPRESSION_CCITTRLE && compression <= COMPRESSION_CCITTFAX4;
  return fax ? PHOTOMETRIC_MINISWHITE : PHOTOMETRIC_MINISBLACK;
}

TiffColours ColoursOf(TIFF* tiff, std::uint32_t photometric, std::uint32_t compression, const TiffLayout& layout) {
  switch (photometric) {
    case PHOTOMETRIC_MINISWHITE:
    case PHOTOMETRIC_MINISBLACK:
    case PHOTOMETRIC_MASK:
      return TiffColours::kGray;
    case PHOTOMETRIC_PALETTE:
      return TiffColours::kPalette;
    case kLinearRaw:
      return layout.samples < 3 ? TiffColours::kGray : TiffColours::kRgb;
    case PHOTOMETRIC_RGB:
      return TiffColours::kRgb;
    case PHOTOMETRIC_SEPARATED:
      return Short(tiff, TIFFTAG_INKSET, INKSET_CMYK) == INKSET_CMYK ? TiffColours::kInks : TiffColours::kUnknown;
    case PHOTOMETRIC_YCBCR:
      if (compression != COMPRESSION_JPEG || layout.separate || layout.samples != 3) return TiffColours::kLibrary;
      TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
      return TiffColours::kRgb;
    case PHOTOMETRIC_CIELAB:
      return TiffColours::kLab;
    case PHOTOMETRIC_ICCLAB:
      return TiffColours::kIccLab;
    case PHOTOMETRIC_LOGL:
    case PHOTOMETRIC_LOGLUV:
      return TiffColours::kLibrary;
    default:
      return TiffColours::kUnknown;
  }
}

std::uint32_t ColourSamples(TiffColours colours) {
  switch (colours) {
    case TiffColours::kGray:
    case TiffColours::kPalette:
      return 1;
    case TiffColours::kInks:
      return 4;
    default:
      return 3;
  }
}

// Whether the directory itself has a tag; the library makes up entries for some that are missing.
bool HasTag(TiffFile& file, std::uint32_t tag) {
  std::array<std::uint8_t, 8> start{};
  if (file.ReadAt(0, start.data(), start.size()) != start.size()) return false;
  const bool bigEndian = start[0] == 'M';
  const bool bigFile = start[2] == 43 || start[3] == 43;
  const std::size_t countBytes = bigFile ? 8 : 2;
  const std::size_t entryBytes = bigFile ? 20 : 12;
  constexpr std::size_t kMostEntries = 512;
  std::vector<std::uint8_t> entries(countBytes + kMostEntries * entryBytes);
  entries.resize(file.ReadAt(TIFFCurrentDirOffset(file.Get()), entries.data(), entries.size()));
  ByteReader reader(entries);
  std::uint64_t count = bigEndian ? reader.BigWord() : reader.Word();
  if (bigFile) {
    reader.Seek(bigEndian ? 4 : 0);
    count = bigEndian ? reader.BigLong() : reader.Long();
  }
  for (std::uint64_t i = 0; i < count && i < kMostEntries && reader.Seek(countBytes + i * entryBytes); ++i) {
    if ((bigEndian ? reader.BigWord() : reader.Word()) == tag) return true;
  }
  return false;
}

void FindAlpha(TiffFile& file, TiffLayout& layout) {
  const std::uint32_t colourSamples = ColourSamples(layout.colours);
  std::uint16_t count = 0;
  std::uint16_t* kinds = nullptr;
  TIFFGetFieldDefaulted(file.Get(), TIFFTAG_EXTRASAMPLES, &count, &kinds);
  for (std::uint32_t i = 0; i < count && colourSamples + i < layout.samples; ++i) {
    if (kinds[i] != EXTRASAMPLE_ASSOCALPHA && kinds[i] != EXTRASAMPLE_UNASSALPHA) continue;
    layout.alpha = kinds[i] == EXTRASAMPLE_ASSOCALPHA ? TiffAlpha::kMultiplied : TiffAlpha::kStraight;
    layout.alphaSample = colourSamples + i;
    return;
  }
  // A fourth sample without any word on it is an alpha by common use; one that is declared to be something else isn't.
  if (layout.colours == TiffColours::kRgb && layout.samples == 4 && !HasTag(file, TIFFTAG_EXTRASAMPLES)) {
    layout.alpha = TiffAlpha::kStraight;
    layout.alphaSample = 3;
  }
}

void ReadResolution(TIFF* tiff, TiffLayout& layout) {
  const std::uint32_t unit = Short(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
  if (unit == RESUNIT_NONE) return;
  const double inches = unit == RESUNIT_CENTIMETER ? 2.54 : 1.0;
  float value = 0;
  if (TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &value) != 0) layout.dpiX = CheckedDpi(value * inches);
  if (TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &value) != 0) layout.dpiY = CheckedDpi(value * inches);
}

bool IsReduced(TIFF* tiff) {
  std::uint32_t kind = 0;
  if (TIFFGetField(tiff, TIFFTAG_SUBFILETYPE, &kind) != 0) return (kind & (FILETYPE_REDUCEDIMAGE | FILETYPE_MASK)) != 0;
  std::uint16_t oldKind = 0;
  return TIFFGetField(tiff, TIFFTAG_OSUBFILETYPE, &oldKind) != 0 && oldKind == OFILETYPE_REDUCEDIMAGE;
}

const char* CheckSamples(const TiffLayout& layout) {
  if (layout.colours == TiffColours::kLibrary) return nullptr;
  if (layout.colours == TiffColours::kUnknown) return "This kind of colours is not supported";
  if (layout.samples < ColourSamples(layout.colours)) return "The picture has too few samples";
  if (layout.samples > kMaxSamples) return "Pixels of so many samples are not supported";
  const std::uint32_t bits = layout.bits;
  switch (layout.colours) {
    case TiffColours::kPalette:
      if (bits > 8) return "Palettes of so many colours are not supported";
      break;
    case TiffColours::kLab:
    case TiffColours::kIccLab:
      if (bits != 8 && bits != 16) return "Lab samples of this size are not supported";
      return nullptr;
    default:
      break;
  }
  switch (layout.format) {
    case SAMPLEFORMAT_UINT:
    case SAMPLEFORMAT_INT:
    case SAMPLEFORMAT_VOID:
      return bits >= 1 && bits <= 32 ? nullptr : "Samples of this size are not supported";
    case SAMPLEFORMAT_IEEEFP:
      return bits == 16 || bits == 32 || bits == 64 ? nullptr : "Samples of this size are not supported";
    default:
      return "Complex samples are not supported";
  }
}

}  // namespace

bool TiffLayout::IsIndexed() const {
  if (alpha != TiffAlpha::kNone || samples != 1) return false;
  if (bits != 1 && bits != 2 && bits != 4 && bits != 8) return false;
  if (colours == TiffColours::kPalette) return true;
  return colours == TiffColours::kGray && (format == SAMPLEFORMAT_UINT || format == SAMPLEFORMAT_VOID);
}

std::uint32_t TiffLayout::PageBits() const {
  if (IsIndexed()) return bits == 2 ? 4 : bits;
  if (alpha != TiffAlpha::kNone) return 32;
  return colours == TiffColours::kGray || colours == TiffColours::kPalette ? 8 : 24;
}

const char* ReadLayout(TiffFile& file, TiffLayout& layout) {
  TIFF* tiff = file.Get();
  layout = TiffLayout();
  TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &layout.width);
  TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &layout.height);
  layout.reduced = IsReduced(tiff);
  layout.bits = Short(tiff, TIFFTAG_BITSPERSAMPLE, 1);
  layout.samples = Short(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
  layout.format = Short(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
  layout.separate =
      layout.samples > 1 && Short(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) == PLANARCONFIG_SEPARATE;
  layout.orientation = Short(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
  if (layout.orientation < 1 || layout.orientation > 8) layout.orientation = 1;
  ReadResolution(tiff, layout);
  if (!SizeAllowed(layout.width, layout.height)) return "The picture has no pixels or too many";

  const std::uint32_t compression = Short(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
  if (TIFFIsCODECConfigured(static_cast<std::uint16_t>(compression)) == 0) return "This compression is not supported";
  if (compression == COMPRESSION_NONE &&
      std::uint64_t{layout.width} * layout.height / kMaxRunPixelsPerByte > file.Size()) {
    return "The file is too short for its picture";
  }
  const std::uint32_t photometric = PhotometricOf(tiff, compression, layout.samples);
  layout.zeroIsWhite = photometric == PHOTOMETRIC_MINISWHITE;
  layout.colours = ColoursOf(tiff, photometric, compression, layout);
  if (const char* cause = CheckSamples(layout)) return cause;
  if (layout.colours == TiffColours::kLibrary) return nullptr;

  FindAlpha(file, layout);
  double lowest = 0.0;
  double highest = 0.0;
  if (TIFFGetField(tiff, TIFFTAG_SMINSAMPLEVALUE, &lowest) != 0 &&
      TIFFGetField(tiff, TIFFTAG_SMAXSAMPLEVALUE, &highest) != 0 && highest > lowest) {
    layout.lowest = lowest;
    layout.highest = highest;
  }
  return nullptr;
}

}  // namespace modules
