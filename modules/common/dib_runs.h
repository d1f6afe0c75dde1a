#ifndef MODULES_COMMON_DIB_RUNS_H_
#define MODULES_COMMON_DIB_RUNS_H_

#include <cstdint>
#include <span>

#include "modules/common/dib.h"

namespace modules {

// Decodes a run-length code into a zeroed page of the header's size. Pixels outside of the picture are dropped, skipped
// ones stay as they are. Gives the rows that the data came to, which is all of them if it says that it ends.
std::uint32_t ReadDibRuns(std::span<const std::uint8_t> data, const DibHeader& header, Page& page);

}  // namespace modules

#endif  // MODULES_COMMON_DIB_RUNS_H_
