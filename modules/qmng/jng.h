#ifndef MODULES_QMNG_JNG_H_
#define MODULES_QMNG_JNG_H_

#include <cstdint>

#include "modules/common/page_builder.h"
#include "modules/qmng/chunks.h"

// Photographs with transparency: a JPEG stream for the colours and one of PNG or JPEG for the alpha, in chunks.

namespace qmng {

struct JngHeader {
  std::uint32_t width = 0;  // checked against the limits, as the height
  std::uint32_t height = 0;
  bool grey = false;
  bool alpha = false;
  std::uint8_t alphaDepth = 0;
  bool alphaIsJpeg = false;
  double dpiX = 72.0;
  double dpiY = 72.0;

  std::uint32_t PageBits() const { return alpha ? 32 : grey ? 8 : 24; }
};

modules::Verdict ReadJngHeader(Bytes file, JngHeader& header);

std::uint32_t LoadJng(Bytes file, glib::ImageDataExchange& exchange);

}  // namespace qmng

#endif  // MODULES_QMNG_JNG_H_
