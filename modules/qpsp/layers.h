#ifndef MODULES_QPSP_LAYERS_H_
#define MODULES_QPSP_LAYERS_H_

#include <cstdint>

#include "modules/qpsp/psp_file.h"

namespace qpsp {

// Layers with pixels as pages of one slide, lowest first. Groups hide and fade what is in them; blend modes, drawings
// and adjustments have no place in a page. A layer that is damaged is left out and told in the message; the result is a
// failure if there is no other.
std::uint32_t LoadLayers(const PspFile& psp, glib::ImageDataExchange& exchange);

}  // namespace qpsp

#endif  // MODULES_QPSP_LAYERS_H_
