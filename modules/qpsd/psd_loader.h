#ifndef MODULES_QPSD_PSD_LOADER_H_
#define MODULES_QPSD_PSD_LOADER_H_

#include <cstdint>
#include <span>

#include "glib/module_api/exchange.h"

namespace qpsd {

// The merged picture as one page, or the layers where the file says that it has none.
std::uint32_t LoadPsd(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange);

}  // namespace qpsd

#endif  // MODULES_QPSD_PSD_LOADER_H_
