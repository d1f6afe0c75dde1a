#ifndef PLATFORM_ANY_CASE_PATH_H_
#define PLATFORM_ANY_CASE_PATH_H_

#include <string>

namespace platform {

// The path of a regular file: `path` itself if there is one, else one whose names, from the first folder on, equal
// those of `path` but for the case of ASCII letters; a name as it stands goes before others, which follow in byte
// order. `path` itself if there is none. For names that lost their case on the way.
std::string FindFileInAnyCase(const char* path);

}  // namespace platform

#endif  // PLATFORM_ANY_CASE_PATH_H_
