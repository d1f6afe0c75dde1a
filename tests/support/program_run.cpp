#include "tests/support/program_run.h"

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <stdexcept>

namespace test_support {
namespace {

constexpr const char* kProgram = ZEFA_BUILD_FOLDER "/zefa";

[[noreturn]] void Execute(const std::vector<std::string>& words, const RunPlace& place) {
  if (!place.folder.empty() && chdir(place.folder.c_str()) != 0) _exit(126);
  if (place.fileLimit >= 0) {
    const struct rlimit limit = {static_cast<rlim_t>(place.fileLimit), static_cast<rlim_t>(place.fileLimit)};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  for (const std::string& setting : place.environment) putenv(const_cast<char*>(setting.c_str()));
  std::vector<char*> arguments = {const_cast<char*>(kProgram)};
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  execv(kProgram, arguments.data());
  _exit(127);
}

// Takes what both ends give until they are closed.
void ReadBoth(int outputEnd, int errorEnd, ProgramRun& run) {
  std::array<struct pollfd, 2> ends = {{{outputEnd, POLLIN, 0}, {errorEnd, POLLIN, 0}}};
  std::array<std::string*, 2> texts = {&run.output, &run.errors};
  for (int open = outputEnd < 0 ? 1 : 2; open > 0;) {
    poll(ends.data(), ends.size(), -1);
    for (std::size_t i = 0; i < ends.size(); ++i) {
      if (ends[i].fd < 0 || ends[i].revents == 0) continue;
      std::array<char, 4096> buffer{};
      const ssize_t got = read(ends[i].fd, buffer.data(), buffer.size());
      if (got > 0) {
        texts[i]->append(buffer.data(), static_cast<std::size_t>(got));
      } else {
        close(ends[i].fd);
        ends[i].fd = -1;
        --open;
      }
    }
  }
}

}  // namespace

ProgramRun RunZefa(const std::vector<std::string>& words, const RunPlace& place) {
  std::array<int, 2> output{};
  std::array<int, 2> errors{};
  if (pipe2(output.data(), O_CLOEXEC) != 0 || pipe2(errors.data(), O_CLOEXEC) != 0) {
    throw std::runtime_error("no pipe");
  }
  if (!place.isHeard) {
    close(output[0]);
    output[0] = -1;
  }
  const pid_t child = fork();
  if (child == 0) {
    dup2(output[1], STDOUT_FILENO);
    dup2(errors[1], STDERR_FILENO);
    Execute(words, place);
  }
  close(output[1]);
  close(errors[1]);
  ProgramRun run;
  ReadBoth(output[0], errors[0], run);
  int status = 0;
  waitpid(child, &status, 0);
  if (WIFEXITED(status)) run.status = WEXITSTATUS(status);
  return run;
}

pid_t StartZefa(const std::vector<std::string>& words) {
  const pid_t child = fork();
  if (child == 0) {
    const int nowhere = open("/dev/null", O_RDWR);
    dup2(nowhere, STDOUT_FILENO);
    dup2(nowhere, STDERR_FILENO);
    Execute(words, {});
  }
  return child;
}

}  // namespace test_support
