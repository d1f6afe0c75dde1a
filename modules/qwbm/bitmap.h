#ifndef MODULES_QWBM_BITMAP_H_
#define MODULES_QWBM_BITMAP_H_

#include <cstdint>
#include <span>

#include "modules/common/page_builder.h"

// Pictures of telephones, black and white: a short header and rows of whole bytes.

namespace qwbm {

// As much of a file as its header takes, if nothing is odd.
inline constexpr std::size_t kBitmapStart = 64;

struct BitmapHeader {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::size_t size = 0;  // bytes of this header
  bool setIsInk = true;  // what a set bit shows: ink, or else light
};

// Over-the-air bitmaps. Sides are within the limits if the header is fine, here and below.
modules::Verdict ReadOtbHeader(std::span<const std::uint8_t> file, BitmapHeader& header);

// Wireless bitmaps, of which there is only one type.
modules::Verdict ReadWbmpHeader(std::span<const std::uint8_t> file, BitmapHeader& header);

using ReadHeaderFunction = decltype(ReadOtbHeader);
std::uint32_t LoadBitmap(std::span<const std::uint8_t> file, ReadHeaderFunction& readHeader,
                         glib::ImageDataExchange& exchange);

}  // namespace qwbm

#endif  // MODULES_QWBM_BITMAP_H_
