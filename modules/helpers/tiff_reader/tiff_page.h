#ifndef MODULES_HELPERS_TIFF_READER_TIFF_PAGE_H_
#define MODULES_HELPERS_TIFF_READER_TIFF_PAGE_H_

#include <cstdint>

#include "glib/module_api/exchange.h"
#include "modules/helpers/tiff_reader/tiff_file.h"
#include "modules/helpers/tiff_reader/tiff_layout.h"

namespace modules {

// Adds the picture of the directory at which `file` stands, whose layout has been read without an objection, as an
// upright page. On failure no page is left and the message says why.
std::uint32_t ReadTiffPage(TiffFile& file, const TiffLayout& layout, glib::ImageDataExchange& exchange);

}  // namespace modules

#endif  // MODULES_HELPERS_TIFF_READER_TIFF_PAGE_H_
