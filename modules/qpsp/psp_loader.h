#ifndef MODULES_QPSP_PSP_LOADER_H_
#define MODULES_QPSP_PSP_LOADER_H_

#include <cstdint>
#include <span>

#include "glib/module_api/exchange.h"

namespace qpsp {

// The composite as one page, or the layers where there is none that can be read.
std::uint32_t LoadPsp(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange);

}  // namespace qpsp

#endif  // MODULES_QPSP_PSP_LOADER_H_
