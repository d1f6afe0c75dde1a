#include "platform/native_path.h"

#include <algorithm>

namespace platform {

std::string NativePath(const char* text) {
  std::string path = text == nullptr ? "" : text;
  std::replace(path.begin(), path.end(), '\\', '/');
  return path;
}

}  // namespace platform
