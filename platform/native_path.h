#ifndef PLATFORM_NATIVE_PATH_H_
#define PLATFORM_NATIVE_PATH_H_

#include <string>

namespace platform {

// The path for a system call: backslashes, which separate names everywhere in the program, become slashes. Bytes are
// passed through otherwise. Only the code of this folder calls it.
std::string NativePath(const char* text);

}  // namespace platform

#endif  // PLATFORM_NATIVE_PATH_H_
