#ifndef MODULES_QWBM_OTB_H_
#define MODULES_QWBM_OTB_H_

#include <cstdint>
#include <span>

#include "modules/common/page_builder.h"

// Over-the-air bitmaps: pictures of telephones, black and white, in rows of whole bytes.

namespace qwbm {

struct OtbHeader {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::size_t size = 0;  // bytes of this header
};

// As much of a file as its header takes, if nothing is odd.
inline constexpr std::size_t kOtbStart = 64;

// Reads a header. Sides are within the limits if it is fine.
modules::Verdict ReadOtbHeader(std::span<const std::uint8_t> file, OtbHeader& header);

std::uint32_t LoadOtb(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange);

}  // namespace qwbm

#endif  // MODULES_QWBM_OTB_H_
