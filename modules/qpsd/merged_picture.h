#ifndef MODULES_QPSD_MERGED_PICTURE_H_
#define MODULES_QPSD_MERGED_PICTURE_H_

#include <cstdint>

#include "modules/qpsd/psd_file.h"

namespace qpsd {

// The picture that a file keeps for programs that know nothing of layers, as one page.
std::uint32_t LoadMerged(const PsdFile& psd, glib::ImageDataExchange& exchange);

}  // namespace qpsd

#endif  // MODULES_QPSD_MERGED_PICTURE_H_
