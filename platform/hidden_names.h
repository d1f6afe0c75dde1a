#ifndef PLATFORM_HIDDEN_NAMES_H_
#define PLATFORM_HIDDEN_NAMES_H_

#include <string>

namespace platform {

// Names of unfinished files, which go when the process ends by exit() or by a signal that asks it to end: neither
// destroys the objects of an open scope. What the signal does otherwise stays as it is. A process that is killed leaves
// them.
//
// To be given before the file gets the name, so that there is no moment in which nobody knows of it.
void AddHiddenName(const std::string& native);
void ForgetHiddenName(const std::string& native);

}  // namespace platform

#endif  // PLATFORM_HIDDEN_NAMES_H_
