#ifndef MODULES_COMMON_PNG_PAGE_H_
#define MODULES_COMMON_PNG_PAGE_H_

#include <cstdint>

#include "modules/common/page_builder.h"
#include "modules/common/png_reader.h"

namespace modules {

// Adds the picture whose header has been read with its profile as a page. Damaged rows are told in the message; without
// any row there is no page.
std::uint32_t AddPngPage(PngReader& png, glib::ImageDataExchange& exchange);

}  // namespace modules

#endif  // MODULES_COMMON_PNG_PAGE_H_
