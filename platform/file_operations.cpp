#include "platform/file_operations.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <random>
#include <string_view>

#include "platform/native_path.h"

namespace platform {
namespace {

constexpr int kNameAttempts = 100;
constexpr mode_t kNewFileMode = 0666;  // less the umask

bool IsEmpty(const char* path) { return path == nullptr || *path == '\0'; }

// Creates `prefix` with six letters behind it, a name that nobody has. Gives the descriptor, or -1.
int CreateUnique(const std::string& prefix, std::string& path) {
  static std::mt19937_64 random{std::random_device{}()};
  constexpr char kLetters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
  for (int attempt = 0; attempt < kNameAttempts; ++attempt) {
    path = prefix;
    for (int i = 0; i < 6; ++i) path += kLetters[random() % (sizeof(kLetters) - 1)];
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, kNewFileMode);
    if (file >= 0 || errno != EEXIST) return file;
  }
  return -1;
}

bool WriteAll(int file, const std::uint8_t* bytes, std::size_t count) {
  while (count != 0) {
    const ssize_t written = write(file, bytes, count);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes += written;
    count -= static_cast<std::size_t>(written);
  }
  return true;
}

bool CopyBytes(int source, int target) {
  constexpr std::size_t kBlock = std::size_t{1} << 18;
  const std::unique_ptr<std::uint8_t[]> block(new std::uint8_t[kBlock]);
  for (;;) {
    const ssize_t got = read(source, block.get(), kBlock);
    if (got == 0) return true;
    if (got < 0 && errno == EINTR) continue;
    if (got < 0 || !WriteAll(target, block.get(), static_cast<std::size_t>(got))) return false;
  }
}

// A complete copy of `from` beside `to`, under a hidden name; empty if there is none.
std::string CopyBeside(const std::string& from, const std::string& to) {
  const int source = open(from.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (source < 0) return {};
  std::string copy;
  struct stat status {};
  int target = -1;
  if (fstat(source, &status) == 0 && S_ISREG(status.st_mode)) {
    const std::size_t slash = to.rfind('/');
    target = CreateUnique((slash == std::string::npos ? "" : to.substr(0, slash + 1)) + ".zefa-", copy);
  }
  bool complete = target >= 0 && CopyBytes(source, target);
  close(source);
  if (target < 0) return {};
  // Some file systems report a full disk only now.
  if (close(target) != 0) complete = false;
  if (complete) return copy;
  unlink(copy.c_str());
  return {};
}

// A link such as /dev/stdout, which leads to whatever file the stream is at the moment.
bool IsStreamLink(const std::string& path) {
  const std::string_view processes = "/proc/";
  char target[sizeof("/proc/")];
  return readlink(path.c_str(), target, sizeof(target)) >= static_cast<ssize_t>(processes.size()) &&
         processes == std::string_view(target, processes.size());
}

// Renames without replacing. `error` is set on failure.
bool RenameToFree(const std::string& from, const std::string& to, int& error) {
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  error = errno;
  if (error != EINVAL && error != ENOSYS) return false;
  // A file system without that flag: a second name never replaces.
  if (link(from.c_str(), to.c_str()) == 0) return unlink(from.c_str()) == 0;
  error = errno;
  if (error == EEXIST || error == EXDEV) return false;
  // Nor does it have second names: what is left is to look first.
  struct stat status {};
  if (lstat(to.c_str(), &status) == 0) return false;
  if (rename(from.c_str(), to.c_str()) == 0) return true;
  error = errno;
  return false;
}

}  // namespace

bool Exists(const char* path) {
  struct stat status {};
  return !IsEmpty(path) && lstat(NativePath(path).c_str(), &status) == 0;
}

bool IsFolder(const char* path) {
  struct stat status {};
  return !IsEmpty(path) && stat(NativePath(path).c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool Readable(const char* path) { return !IsEmpty(path) && access(NativePath(path).c_str(), R_OK) == 0; }

bool Writable(const char* path) {
  if (IsEmpty(path)) return false;
  const std::string native = NativePath(path);
  struct stat status {};
  return access(native.c_str(), W_OK) == 0 && stat(native.c_str(), &status) == 0 &&
         (status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) != 0;
}

bool Deletable(const char* path) {
  if (!Writable(path)) return false;
  const std::string native = NativePath(path);
  struct stat status {};
  if (stat(native.c_str(), &status) != 0 || !S_ISREG(status.st_mode) || IsStreamLink(native)) return false;
  const std::size_t slash = native.rfind('/');
  const std::string folder = slash == std::string::npos ? "." : native.substr(0, slash + 1);
  return access(folder.c_str(), W_OK | X_OK) == 0;
}

bool CreateFolder(const char* path) { return !IsEmpty(path) && mkdir(NativePath(path).c_str(), 0777) == 0; }

bool DeleteFile(const char* path) { return !IsEmpty(path) && unlink(NativePath(path).c_str()) == 0; }

bool MoveFile(const char* from, const char* to) {
  if (IsEmpty(from) || IsEmpty(to)) return false;
  const std::string source = NativePath(from);
  const std::string target = NativePath(to);
  int error = 0;
  if (RenameToFree(source, target, error)) return true;
  if (error != EXDEV) return false;
  const std::string copy = CopyBeside(source, target);
  if (copy.empty()) return false;
  if (!RenameToFree(copy, target, error)) {
    unlink(copy.c_str());
    return false;
  }
  if (unlink(source.c_str()) == 0) return true;
  unlink(target.c_str());
  return false;
}

bool CopyFile(const char* from, const char* to) {
  if (IsEmpty(from) || IsEmpty(to)) return false;
  const std::string target = NativePath(to);
  const std::string copy = CopyBeside(NativePath(from), target);
  if (copy.empty()) return false;
  if (rename(copy.c_str(), target.c_str()) == 0) return true;
  unlink(copy.c_str());
  return false;
}

std::FILE* OpenText(const char* path, const char* mode) {
  if (IsEmpty(path)) return nullptr;
  const std::string native = NativePath(path);
  struct stat status {};
  if (stat(native.c_str(), &status) == 0 && (!S_ISREG(status.st_mode) || !Writable(path))) return nullptr;
  return std::fopen(native.c_str(), mode);
}

std::string TemporaryFolder() {
  const char* chosen = std::getenv("TMPDIR");
  std::string folder = IsEmpty(chosen) ? "/tmp" : chosen;
  while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
  std::replace(folder.begin(), folder.end(), '/', '\\');
  return folder;
}

std::string CreateTemporaryFile() {
  std::string path;
  const int file = CreateUnique(NativePath(TemporaryFolder().c_str()) + "/tmp", path);
  if (file < 0) return {};
  close(file);
  std::replace(path.begin(), path.end(), '/', '\\');
  return path;
}

bool OutputIsTerminal() { return isatty(STDOUT_FILENO) == 1; }

}  // namespace platform
