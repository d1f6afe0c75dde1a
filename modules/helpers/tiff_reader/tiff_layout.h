#ifndef MODULES_HELPERS_TIFF_READER_TIFF_LAYOUT_H_
#define MODULES_HELPERS_TIFF_READER_TIFF_LAYOUT_H_

#include <cstddef>
#include <cstdint>

#include "modules/helpers/tiff_reader/tiff_file.h"

namespace modules {

enum class TiffColours {
  kGray,
  kPalette,
  kRgb,
  kInks,     // cyan, magenta, yellow, black; all ones is full ink
  kLab,      // a and b signed
  kIccLab,   // a and b with an offset
  kLibrary,  // codings that the library turns into red, green, blue itself
  kUnknown,
};

enum class TiffAlpha { kNone, kStraight, kMultiplied };

// What a directory says of its picture.
struct TiffLayout {
  std::uint32_t width = 0;  // as stored
  std::uint32_t height = 0;
  std::uint32_t bits = 0;     // a sample
  std::uint32_t samples = 0;  // a pixel
  std::uint32_t format = 0;   // SAMPLEFORMAT_...
  std::uint32_t orientation = 1;
  bool separate = false;  // one plane a sample
  bool zeroIsWhite = false;
  bool reduced = false;  // a smaller form of another page, or a mask for one
  TiffColours colours = TiffColours::kUnknown;
  TiffAlpha alpha = TiffAlpha::kNone;
  std::uint32_t alphaSample = 0;  // if there is an alpha
  double lowest = 0.0;            // of float samples: what is black
  double highest = 1.0;           // and what is white
  double dpiX = 72.0;             // as stored
  double dpiY = 72.0;

  std::uint32_t Planes() const { return separate ? samples : 1; }
  // Bytes of a row of one plane.
  std::size_t RowBytes() const { return (std::size_t{width} * bits * (separate ? 1 : samples) + 7) / 8; }
  // Samples are palette indices or gray values that a page takes as they are.
  bool IsIndexed() const;
  // Of a page for this picture.
  std::uint32_t PageBits() const;
};

// Reads the directory at which `file` stands. Null, or the cause why its picture can't be read.
const char* ReadLayout(TiffFile& file, TiffLayout& layout);

}  // namespace modules

#endif  // MODULES_HELPERS_TIFF_READER_TIFF_LAYOUT_H_
