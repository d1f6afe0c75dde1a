#include "platform/output_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "platform/native_path.h"

namespace platform {
namespace {

// What one call writes at most everywhere.
constexpr std::size_t kMaxWrite = std::size_t{1} << 30;
constexpr int kTries = 3;

// O_NONBLOCK: a pipe without a reader is refused instead of waited for. It changes nothing for files.
int OpenAgain(const char* path, int flags) {
  int file = -1;
  do {
    file = open(path, flags | O_WRONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, 0666);
  } while (file < 0 && errno == EINTR);
  return file;
}

}  // namespace

bool OutputFile::Open(const char* path) {
  Abandon();
  failed_ = false;
  const std::string native = NativePath(path);
  if (native.empty()) return false;
  // Another process may make or remove the file between the two calls.
  for (int i = 0; i < kTries && file_ < 0; ++i) {
    file_ = OpenAgain(native.c_str(), O_TRUNC);
    if (file_ >= 0 || errno != ENOENT) break;
    file_ = OpenAgain(native.c_str(), O_CREAT | O_EXCL);
    if (file_ >= 0) created_ = native;
    if (file_ < 0 && errno != EEXIST) break;
  }
  return file_ >= 0;
}

bool OutputFile::Write(const void* bytes, std::size_t size) {
  const auto* next = static_cast<const char*>(bytes);
  while (size != 0 && !failed_) {
    const ssize_t written = file_ < 0 ? -1 : write(file_, next, std::min(size, kMaxWrite));
    if (written <= 0) {
      failed_ = file_ < 0 || written == 0 || errno != EINTR;
      continue;
    }
    next += written;
    size -= static_cast<std::size_t>(written);
  }
  return !failed_;
}

bool OutputFile::Close() {
  if (file_ < 0) return false;
  const int file = file_;
  file_ = -1;
  // Some file systems tell here only that there was no room. After EINTR the descriptor is gone as well.
  if (close(file) != 0 && errno != EINTR) failed_ = true;
  const bool complete = !failed_;
  if (complete) created_.clear();
  Abandon();
  return complete;
}

void OutputFile::Abandon() {
  if (file_ >= 0) close(file_);
  file_ = -1;
  if (!created_.empty()) unlink(created_.c_str());
  created_.clear();
}

}  // namespace platform
