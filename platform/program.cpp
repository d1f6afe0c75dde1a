#include "platform/program.h"

#include <fcntl.h>
#include <malloc.h>
#include <signal.h>
#include <syslog.h>
#include <unistd.h>

#include <climits>
#include <cstdio>

namespace platform {
namespace {

std::string FindProgramFolder() {
  char path[PATH_MAX];
  const ssize_t length = readlink("/proc/self/exe", path, sizeof(path));
  if (length <= 0) return {};
  const std::string program(path, static_cast<std::size_t>(length));
  const std::size_t slash = program.rfind('/');
  return slash == std::string::npos ? std::string() : program.substr(0, slash);
}

}  // namespace

const std::string& ProgramFolder() {
  static const std::string folder = FindProgramFolder();
  return folder;
}

void FillStandardStreams() {
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    // The lowest free number is given, which is this one: those below it are taken by now.
    if (fcntl(stream, F_GETFD) < 0 && open("/dev/null", O_RDWR) != stream) return;
  }
}

void LetWritesFail() {
  signal(SIGPIPE, SIG_IGN);
  signal(SIGXFSZ, SIG_IGN);
}

void KeepFreedMemory() {
#ifdef M_MMAP_THRESHOLD  // only some C libraries have it
  mallopt(M_MMAP_THRESHOLD, 16 << 20);
  mallopt(M_TRIM_THRESHOLD, 32 << 20);
#endif
}

void DebugMessage(const char* text) {
  // Without a listener the call would still read the time zone and open a socket.
  if (access(_PATH_LOG, W_OK) == 0) syslog(LOG_USER | LOG_DEBUG, "%s", text);
}

void ErrorMessage(const char* text) { std::fprintf(stderr, "%s\n", text); }

}  // namespace platform
