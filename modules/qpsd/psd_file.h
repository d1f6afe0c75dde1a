#ifndef MODULES_QPSD_PSD_FILE_H_
#define MODULES_QPSD_PSD_FILE_H_

#include <cstdint>
#include <span>

#include "modules/common/page_builder.h"

// The sections of a PSD file. All numbers in it are big-endian.

namespace qpsd {

enum class ColourMode : std::uint32_t {
  kBitmap = 0,
  kGrey = 1,
  kIndexed = 2,
  kRgb = 3,
  kCmyk = 4,
  kInks = 7,     // channels of any meaning
  kDuotone = 8,  // read as grey
  kLab = 9,
};

struct PsdFile {
  std::uint32_t channels = 0;
  std::uint32_t width = 0;  // checked against the limits, as the height
  std::uint32_t height = 0;
  std::uint32_t depth = 0;  // bits of a sample: 1, 8, 16 or 32; goes with the mode
  ColourMode mode = ColourMode::kRgb;

  std::span<const std::uint8_t> palette;  // of indexed pictures: 256 reds, 256 greens, 256 blues
  std::span<const std::uint8_t> profile;  // ICC
  std::span<const std::uint8_t> layers;   // from their count on
  std::span<const std::uint8_t> merged;   // from the kind of compression on

  double dpiX = 72.0;
  double dpiY = 72.0;
  std::uint32_t paletteEntries = 256;
  std::int32_t transparentIndex = -1;
  bool hasMerged = true;        // as the file says
  bool channelsNamed = false;   // channels beyond the colours are there on purpose
  std::int32_t layerCount = 0;  // negative: the channel behind the colours is the transparency of the merged picture

  // Whether the file goes on at least to the layers, so that all fields but the spans are right.
  bool whole = false;
};

// A file that is cut off behind its first header is no failure; what isn't there is empty.
modules::Verdict ReadPsdFile(std::span<const std::uint8_t> file, PsdFile& psd);

// Channels that make the colours: 1, 3 or 4.
std::uint32_t ColourChannels(const PsdFile& psd);
bool MergedHasAlpha(const PsdFile& psd);
// Of the page of the merged picture: 1, 8, 24 or 32.
std::uint32_t MergedBits(const PsdFile& psd);

}  // namespace qpsd

#endif  // MODULES_QPSD_PSD_FILE_H_
