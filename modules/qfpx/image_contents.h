#ifndef MODULES_QFPX_IMAGE_CONTENTS_H_
#define MODULES_QFPX_IMAGE_CONTENTS_H_

#include <array>
#include <cstdint>
#include <span>
#include <string>

#include "modules/common/page_builder.h"
#include "modules/qfpx/property_set.h"

// What a FlashPix file says of its picture, which it keeps in several resolutions.

namespace qfpx {

enum class Space : std::uint32_t { kGrey = 1, kYcc = 2, kRgb = 3 };

struct ImageContents {
  std::uint32_t width = 0;  // of the highest resolution; checked against the limits, as the height
  std::uint32_t height = 0;
  std::uint32_t resolution = 0;  // its number
  Space space = Space::kRgb;
  std::uint32_t channels = 0;  // 1 to 4
  // For each channel where it belongs: 0 to 2 for red, green, blue (or grey, or luminance and chrominances), 3:
  // opacity.
  std::array<std::uint8_t, 4> place{};

  bool HasOpacity() const { return channels == 2 || channels == 4; }
  std::uint32_t Bits() const { return HasOpacity() ? 32 : channels == 1 ? 8 : 24; }
};

// Of the properties of the stream "Image Contents".
modules::Verdict ReadImageContents(const PropertySet& properties, ImageContents& contents);

// Tables that JPEG tiles of this number share; empty if there are none.
std::span<const std::uint8_t> JpegTables(const PropertySet& properties, std::uint32_t number);

}  // namespace qfpx

#endif  // MODULES_QFPX_IMAGE_CONTENTS_H_
