#ifndef PLATFORM_CHILD_BOUNDS_H_
#define PLATFORM_CHILD_BOUNDS_H_

#include "platform/child_process.h"

namespace platform {

// To be called in a child between fork and its work. Sets the limits and gives up all rights that drawing a document
// does not need; see ChildProcess. `addressSpace` is what the child has already.
void BindChild(const ChildLimits& limits, std::uint64_t addressSpace);

}  // namespace platform

#endif  // PLATFORM_CHILD_BOUNDS_H_
