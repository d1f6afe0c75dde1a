#include "platform/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "platform/child_bounds.h"

namespace platform {
namespace {

std::int64_t Now() {
  using std::chrono::milliseconds;
  return std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// Bytes of address space that this process has.
std::uint64_t AddressSpace() {
  std::FILE* file = std::fopen("/proc/self/statm", "re");
  if (file == nullptr) return 0;
  unsigned long long pages = 0;
  if (std::fscanf(file, "%llu", &pages) != 1) pages = 0;
  std::fclose(file);
  return pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

// A file without a name that holds `bytes`, at its beginning; -1 if it can't be had.
int MemoryFile(std::span<const std::uint8_t> bytes) {
  const int file = memfd_create("source", MFD_CLOEXEC);
  if (file < 0) return -1;
  if (WriteAll(file, bytes.data(), bytes.size()) && lseek(file, 0, SEEK_SET) == 0) return file;
  close(file);
  return -1;
}

// In the child: lets only standard input and output go on, standard error leads nowhere.
void SetDescriptors(int input, int output) {
  // Out of the way first: they may be among the three that are set.
  const int nowhere = fcntl(open("/dev/null", O_RDWR), F_DUPFD, STDERR_FILENO + 1);
  const int from = input >= 0 ? fcntl(input, F_DUPFD, STDERR_FILENO + 1) : nowhere;
  const int to = fcntl(output, F_DUPFD, STDERR_FILENO + 1);
  dup2(from, STDIN_FILENO);
  dup2(to, STDOUT_FILENO);
  dup2(nowhere, STDERR_FILENO);
  close_range(STDERR_FILENO + 1, ~0U, 0);
}

void ResetSignals() {
  for (const int signal : {SIGPIPE, SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGXCPU, SIGXFSZ}) std::signal(signal, SIG_DFL);
}

// The file that a shell would run, or an empty text. A folder of the search path that is relative is passed over: the
// current folder may be anyone's.
std::string FindProgram(const std::string& name) {
  const char* path = std::getenv("PATH");
  std::string_view folders = path != nullptr ? path : "/usr/local/bin:/usr/bin:/bin";
  while (!folders.empty()) {
    const std::size_t end = std::min(folders.find(':'), folders.size());
    std::string file = std::string(folders.substr(0, end)) + "/" + name;
    folders.remove_prefix(std::min(end + 1, folders.size()));
    struct stat state {};
    if (file[0] == '/' && access(file.c_str(), X_OK) == 0 && stat(file.c_str(), &state) == 0 &&
        S_ISREG(state.st_mode)) {
      return file;
    }
  }
  return {};
}

struct Pipe {
  Pipe() {
    if (pipe2(ends, O_CLOEXEC) != 0) ends[0] = ends[1] = -1;
  }
  int ends[2];
};

}  // namespace

bool ProgramExists(const std::string& name) { return !FindProgram(name).empty(); }

bool WriteAll(int descriptor, const void* bytes, std::size_t count) {
  const auto* at = static_cast<const char*>(bytes);
  while (count != 0) {
    const ssize_t written = write(descriptor, at, count);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    at += written;
    count -= static_cast<std::size_t>(written);
  }
  return true;
}

ChildProcess::ChildProcess(pid_t pid, int output, std::uint32_t milliseconds)
    : pid_(pid), output_(output), milliseconds_(milliseconds), start_(Now()), deadline_(start_ + milliseconds) {}

ChildProcess ChildProcess::Program(const std::vector<std::string>& arguments, std::span<const std::uint8_t> input,
                                   const ChildLimits& limits) {
  const std::string file = FindProgram(arguments[0]);
  const int source = MemoryFile(input);
  const Pipe output;
  // All that allocates stands before the fork.
  std::vector<char*> words;
  for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);
  char* environment[] = {const_cast<char*>("PATH=/usr/bin:/bin"), const_cast<char*>("LC_ALL=C"), nullptr};
  const pid_t parent = getpid();
  pid_t pid = -1;
  if (!file.empty() && source >= 0 && output.ends[1] >= 0) pid = fork();
  if (pid == 0) {
    SetDescriptors(source, output.ends[1]);
    ResetSignals();
    BindChild(limits, parent, 0);
    execve(file.c_str(), words.data(), environment);
    _exit(127);
  }
  if (source >= 0) close(source);
  if (output.ends[1] >= 0) close(output.ends[1]);
  return {pid, output.ends[0], limits.milliseconds};
}

ChildProcess ChildProcess::Copy(const std::function<void(int output)>& work, const ChildLimits& limits) {
  const std::uint64_t space = AddressSpace();
  const Pipe output;
  const pid_t parent = getpid();
  const pid_t pid = output.ends[1] >= 0 ? fork() : -1;
  if (pid == 0) {
    SetDescriptors(-1, output.ends[1]);
    ResetSignals();
    BindChild(limits, parent, space);
    work(STDOUT_FILENO);
    _exit(0);
  }
  if (output.ends[1] >= 0) close(output.ends[1]);
  return {pid, output.ends[0], limits.milliseconds};
}

ChildProcess::~ChildProcess() { EndedWell(); }

bool ChildProcess::WaitForOutput() {
  for (;;) {
    const std::int64_t left = deadline_ - Now();
    if (left <= 0) {
      timedOut_ = true;
      return false;
    }
    pollfd state{output_, POLLIN, 0};
    const int ready = poll(&state, 1, static_cast<int>(left));
    if (ready > 0) return true;
    if (ready < 0 && errno != EINTR) return false;
  }
}

std::size_t ChildProcess::ReadSome(void* target, std::size_t count) {
  while (output_ >= 0 && !timedOut_ && WaitForOutput()) {
    const ssize_t got = read(output_, target, count);
    if (got < 0 && errno == EINTR) continue;
    return static_cast<std::size_t>(std::max<ssize_t>(got, 0));
  }
  return 0;
}

std::size_t ChildProcess::Read(void* target, std::size_t count) {
  std::size_t done = 0;
  while (done < count) {
    const std::size_t got = ReadSome(static_cast<char*>(target) + done, count - done);
    if (got == 0) break;
    done += got;
  }
  return done;
}

void ChildProcess::ExtendTime(std::uint32_t milliseconds) {
  deadline_ = std::max(deadline_, std::min(Now() + milliseconds_, start_ + milliseconds));
}

bool ChildProcess::EndedWell() {
  if (output_ >= 0) close(std::exchange(output_, -1));
  if (pid_ <= 0) return false;
  const pid_t pid = std::exchange(pid_, -1);
  int status = 0;
  // A child whose output has ended is about to end; one that goes on without an output does nothing of use.
  for (int i = 0; i < 20; ++i) {
    const pid_t ended = waitpid(pid, &status, WNOHANG);
    if (ended == pid) return WIFEXITED(status) && WEXITSTATUS(status) == 0;
    if (timedOut_) break;
    usleep(500);
  }
  kill(pid, SIGKILL);
  while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  return false;
}

}  // namespace platform
