#ifndef MODULES_QPCT_REGION_H_
#define MODULES_QPCT_REGION_H_

#include <vector>

#include "modules/common/byte_reader.h"
#include "platform/metafile/geometry.h"

namespace qpct {

// A region as boxes that don't overlap. Regions of too many boxes are given as the box around them.
std::vector<platform::Box> ReadRegion(modules::ByteReader& in);

}  // namespace qpct

#endif  // MODULES_QPCT_REGION_H_
