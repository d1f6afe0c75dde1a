#include "platform/pending_file.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "platform/hidden_names.h"
#include "platform/native_path.h"

namespace platform {
namespace {

constexpr mode_t kMode = 0666;  // the umask takes its part
constexpr int kNameTries = 100;

std::string HiddenName(const std::string& folder) {
  static unsigned count = 0;
  struct timespec now {};
  clock_gettime(CLOCK_REALTIME, &now);
  std::array<char, 64> name{};
  snprintf(name.data(), name.size(), "/.zefa-%d-%ld-%u", getpid(), now.tv_nsec, ++count);
  return folder + name.data();
}

std::string DescriptorPath(int descriptor) { return "/proc/self/fd/" + std::to_string(descriptor); }

std::string WithBackslashes(std::string path) {
  std::replace(path.begin(), path.end(), '/', '\\');
  return path;
}

bool WriteAll(int file, const char* data, std::size_t size) {
  while (size > 0) {
    const ssize_t written = write(file, data, size);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    data += written;
    size -= static_cast<std::size_t>(written);
  }
  return true;
}

bool CopyAll(int from, int to) {
  std::array<char, 1 << 16> buffer{};
  off_t total = 0;
  for (;;) {
    const ssize_t got = read(from, buffer.data(), buffer.size());
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return false;
    if (got == 0) break;
    if (!WriteAll(to, buffer.data(), static_cast<std::size_t>(got))) return false;
    total += got;
  }
  return ftruncate(to, total) == 0;
}

}  // namespace

PendingFile::PendingFile(const char* folder, Kind kind) : folderNative(NativePath(folder)) {
  if (folderNative.empty()) folderNative = ".";
  if (kind == Kind::kBest && OpenNameless(folderNative)) return;
  OpenHidden(folderNative);
}

PendingFile::~PendingFile() {
  DropHidden();
  if (descriptor >= 0) close(descriptor);
}

bool PendingFile::OpenNameless(const std::string& folder) {
  descriptor = open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, kMode);
  if (descriptor < 0) return false;
  const std::string path = DescriptorPath(descriptor);
  if (access(path.c_str(), R_OK | W_OK) == 0) {
    pathText = WithBackslashes(path);
    return true;
  }
  close(descriptor);  // without that view of open files nothing could reach it
  descriptor = -1;
  return false;
}

bool PendingFile::OpenHidden(const std::string& folder) {
  for (int i = 0; i < kNameTries && descriptor < 0; ++i) {
    const std::string name = HiddenName(folder);
    AddHiddenName(name);
    descriptor = open(name.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, kMode);
    if (descriptor >= 0) {
      hiddenName = name;
      break;
    }
    const int error = errno;
    ForgetHiddenName(name);
    if (error != EEXIST) return false;
  }
  if (descriptor < 0) return false;
  pathText = WithBackslashes(hiddenName);
  return true;
}

void PendingFile::DropHidden() {
  if (hiddenName.empty()) return;
  unlink(hiddenName.c_str());
  ForgetHidden();
}

void PendingFile::ForgetHidden() {
  ForgetHiddenName(hiddenName);
  hiddenName.clear();
}

bool PendingFile::LinkTo(const std::string& target, int& error) const {
  if (linkat(AT_FDCWD, DescriptorPath(descriptor).c_str(), AT_FDCWD, target.c_str(), AT_SYMLINK_FOLLOW) == 0) {
    return true;
  }
  error = errno;
  return false;
}

PendingFile::Outcome PendingFile::Commit(const char* path) {
  if (descriptor < 0) return Outcome::kFailed;
  const std::string target = NativePath(path);
  if (!hiddenName.empty()) return CommitHidden(target);
  int error = 0;
  if (LinkTo(target, error)) return Outcome::kDone;
  return error == EEXIST ? Outcome::kTaken : Outcome::kFailed;
}

PendingFile::Outcome PendingFile::CommitHidden(const std::string& target) {
  bool done = renameat2(AT_FDCWD, hiddenName.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0;
  if (!done && errno == EEXIST) return Outcome::kTaken;
  if (!done && (errno == EINVAL || errno == ENOSYS)) {
    // The file system can't promise to leave what is there; a second name fails when the name is taken.
    done = link(hiddenName.c_str(), target.c_str()) == 0;
    if (!done && errno == EEXIST) return Outcome::kTaken;
    if (done) {
      DropHidden();
      return Outcome::kDone;
    }
    // No second names either: an empty file keeps the place.
    const int place = open(target.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, kMode);
    if (place < 0) return errno == EEXIST ? Outcome::kTaken : Outcome::kFailed;
    close(place);
    done = rename(hiddenName.c_str(), target.c_str()) == 0;
    if (!done) unlink(target.c_str());
  }
  if (!done) return Outcome::kFailed;
  ForgetHidden();
  return Outcome::kDone;
}

PendingFile::Outcome PendingFile::CommitReplacing(const char* path) {
  const Outcome plain = Commit(path);
  if (plain != Outcome::kTaken) return plain;
  // A nameless file can only take a free name, so it gets a hidden one first; a rename then replaces in one step.
  if (hiddenName.empty()) {
    for (int i = 0; i < kNameTries && hiddenName.empty(); ++i) {
      const std::string name = HiddenName(folderNative);
      AddHiddenName(name);
      int error = 0;
      if (LinkTo(name, error)) {
        hiddenName = name;
        break;
      }
      ForgetHiddenName(name);
      if (error != EEXIST) return Outcome::kFailed;
    }
    if (hiddenName.empty()) return Outcome::kFailed;
  }
  if (rename(hiddenName.c_str(), NativePath(path).c_str()) != 0) {
    DropHidden();
    return Outcome::kFailed;
  }
  ForgetHidden();
  return Outcome::kDone;
}

bool PendingFile::Flush() {
  if (descriptor < 0) return false;
  // A file system that knows no waiting has nothing that could fail later either.
  return fsync(descriptor) == 0 || errno == EINVAL || errno == ENOSYS;
}

bool OverwriteContent(const char* from, const char* to) {
  const int source = open(NativePath(from).c_str(), O_RDONLY | O_CLOEXEC);
  if (source < 0) return false;
  // Without O_TRUNC: the blocks that the target has are those that it needs.
  const int target = open(NativePath(to).c_str(), O_WRONLY | O_CLOEXEC);
  bool good = target >= 0 && CopyAll(source, target);
  if (target >= 0 && close(target) != 0) good = false;
  close(source);
  return good;
}

}  // namespace platform
