#include "platform/source_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <string>

#include "platform/native_path.h"

namespace platform {
namespace {

// A descriptor of a regular file, or -1. Opening a pipe without O_NONBLOCK would wait for its other end.
int OpenRegular(const char* path, std::int64_t& size) {
  if (path == nullptr || *path == '\0') return -1;
  const int file = open(NativePath(path).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (file < 0) return -1;
  struct stat status {};
  if (fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) {
    close(file);
    return -1;
  }
  size = status.st_size;
  return file;
}

}  // namespace

std::FILE* OpenSource(const char* path) {
  std::int64_t size = 0;
  const int file = OpenRegular(path, size);
  if (file < 0) return nullptr;
  std::FILE* stream = fdopen(file, "rb");
  if (stream == nullptr) close(file);
  return stream;
}

std::int64_t SourceSize(const char* path) {
  struct stat status {};
  if (path == nullptr || stat(NativePath(path).c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return -1;
  return status.st_size;
}

std::int64_t OpenFileSize(std::FILE* file) {
  struct stat status {};
  return fstat(fileno(file), &status) != 0 || !S_ISREG(status.st_mode) ? -1 : status.st_size;
}

FileBytes ReadSource(const char* path, std::size_t limit) {
  FileBytes bytes;
  std::int64_t size = 0;
  const int file = OpenRegular(path, size);
  if (file < 0) return bytes;
  const std::size_t wanted = std::min(static_cast<std::size_t>(size), limit);
  bytes.data.reset(static_cast<std::uint8_t*>(AllocateUninitialisedPages(wanted + 1)));
  while (bytes.data != nullptr && bytes.size < wanted) {
    const ssize_t got = read(file, bytes.data.get() + bytes.size, wanted - bytes.size);
    if (got < 0) {
      bytes.data.reset();
      bytes.size = 0;
    }
    if (got <= 0) break;  // a file that became shorter gives what it has
    bytes.size += static_cast<std::size_t>(got);
  }
  close(file);
  return bytes;
}

}  // namespace platform
