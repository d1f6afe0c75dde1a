#ifndef MODULES_QIMG_XBM_H_
#define MODULES_QIMG_XBM_H_

#include <cstdint>
#include <span>

#include "modules/common/page_builder.h"

// Bitmaps of the X window system: program text with a list of bytes or, in the old form, of words. An own reader, as
// the image library fails on the old form.

namespace qimg {

// As much of a file as its header takes, if no long comment leads it.
inline constexpr std::size_t kXbmStart = 4096;

struct XbmHeader {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  bool words = false;    // numbers of 16 bits instead of 8
  std::size_t size = 0;  // where the numbers begin
};

// Reads all up to the list. Sides are within the limits if it is fine.
modules::Verdict ReadXbmHeader(std::span<const std::uint8_t> file, XbmHeader& header);

std::uint32_t LoadXbm(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange);

}  // namespace qimg

#endif  // MODULES_QIMG_XBM_H_
