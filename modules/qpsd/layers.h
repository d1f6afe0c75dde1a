#ifndef MODULES_QPSD_LAYERS_H_
#define MODULES_QPSD_LAYERS_H_

#include <cstdint>

#include "modules/qpsd/psd_file.h"

namespace qpsd {

// Layers as pages of one slide, lowest first, with their alpha multiplied by mask and opacity. Groups are no pages, but
// hide and fade what is in them. Blend modes have no place in a page. A layer that is damaged is left out and told in
// the message; the result is a failure if there is no other.
std::uint32_t LoadLayers(const PsdFile& psd, glib::ImageDataExchange& exchange);

}  // namespace qpsd

#endif  // MODULES_QPSD_LAYERS_H_
