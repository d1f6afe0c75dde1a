#ifndef PLATFORM_CHILD_BOUNDS_H_
#define PLATFORM_CHILD_BOUNDS_H_

#include "platform/child_process.h"

namespace platform {

// To be called in a child between fork and its work. Sets the limits and gives up all rights that drawing a document
// does not need; see ChildProcess. `parent` is the process that forked, `addressSpace` what the child has already.
void BindChild(const ChildLimits& limits, pid_t parent, std::uint64_t addressSpace);

}  // namespace platform

#endif  // PLATFORM_CHILD_BOUNDS_H_
