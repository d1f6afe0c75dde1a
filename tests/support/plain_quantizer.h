#ifndef TESTS_SUPPORT_PLAIN_QUANTIZER_H_
#define TESTS_SUPPORT_PLAIN_QUANTIZER_H_

#include <cstdint>

#include "glib/raster/raster_block.h"

namespace plain {

// What glib::Quantize must equal in pixels, palette and reports: a tree that is walked for every pixel, pruned in whole
// passes and searched by recursion. Shares no code with the product but blocks and the thinning of reports.
std::uint32_t Quantize(glib::RasterBlock& block, std::uint32_t colors, bool alignRows);

}  // namespace plain

#endif  // TESTS_SUPPORT_PLAIN_QUANTIZER_H_
