#ifndef MODULES_QJP2_JP2_H_
#define MODULES_QJP2_JP2_H_

#include <cstdint>
#include <span>

#include "modules/common/page_builder.h"

namespace qjp2 {

struct Jp2Info {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t bits = 0;
  double dpiX = 72.0;
  double dpiY = 72.0;
};

// Reads headers only. Sides are within the limits if it is fine.
modules::Verdict ReadJp2Info(std::span<const std::uint8_t> file, Jp2Info& info);

// `reduced`: a smaller form that still has the sides of a thumbnail, as far as the file has one.
std::uint32_t LoadJp2(std::span<const std::uint8_t> file, bool reduced, glib::ImageDataExchange& exchange);

}  // namespace qjp2

#endif  // MODULES_QJP2_JP2_H_
