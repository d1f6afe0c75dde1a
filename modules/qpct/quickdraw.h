#ifndef MODULES_QPCT_QUICKDRAW_H_
#define MODULES_QPCT_QUICKDRAW_H_

#include <cstdint>
#include <span>

#include "modules/common/page_builder.h"

namespace qpct {

// A picture that is one bitmap becomes a raster page, any other a metafile of its frame.
std::uint32_t LoadPicture(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange);

}  // namespace qpct

#endif  // MODULES_QPCT_QUICKDRAW_H_
