#include "platform/file_identity.h"

#include <sys/stat.h>

#include <string>

#include "platform/native_path.h"

namespace platform {
void FileSet::Add(const char* path) {
  struct stat status {};
  if (stat(NativePath(path).c_str(), &status) == 0) files_.emplace(status.st_dev, status.st_ino);
}

bool FileSet::Holds(const char* path) const {
  struct stat status {};
  return !files_.empty() && stat(NativePath(path).c_str(), &status) == 0 &&
         files_.count({status.st_dev, status.st_ino}) != 0;
}

bool IsSameName(const char* first, const char* second) {
  const std::string firstPath = NativePath(first);
  const std::string secondPath = NativePath(second);
  struct stat one {};
  struct stat other {};
  if (lstat(firstPath.c_str(), &one) != 0 || lstat(secondPath.c_str(), &other) != 0) return false;
  if (one.st_dev != other.st_dev || one.st_ino != other.st_ino) return false;
  // What has one name only can't have been reached by two.
  return firstPath == secondPath || (!S_ISDIR(one.st_mode) && one.st_nlink == 1);
}

}  // namespace platform
