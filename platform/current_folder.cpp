#include "platform/current_folder.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdlib>

#include "platform/native_path.h"

namespace platform {
namespace {

std::string SystemPath() {
  char* text = getcwd(nullptr, 0);
  std::string path = text == nullptr ? "" : text;
  std::free(text);
  return path;
}

}  // namespace

std::string CurrentFolder() {
  std::string path = SystemPath();
  std::replace(path.begin(), path.end(), '/', '\\');
  return path;
}

bool SetCurrentFolder(const char* path) {
  return path != nullptr && *path != '\0' && chdir(NativePath(path).c_str()) == 0;
}

CurrentFolderKeeper::CurrentFolderKeeper() : path_(SystemPath()) {
  if (path_.empty() || path_.front() != '/' || path_.size() >= PATH_MAX) {
    descriptor_ = open(".", O_PATH | O_DIRECTORY | O_CLOEXEC);
  }
}

CurrentFolderKeeper::~CurrentFolderKeeper() {
  // Where neither way leads back there is nothing that could be done about it.
  [[maybe_unused]] const int result = descriptor_ >= 0 ? fchdir(descriptor_) : chdir(path_.c_str());
  if (descriptor_ >= 0) close(descriptor_);
}

}  // namespace platform
