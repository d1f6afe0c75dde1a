#include "platform/program.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// A process of its own, since the streams of this one belong to the test program.
TEST(Program, ClosedStreamsAreNoPlaceForFiles) {
  const pid_t child = fork();
  if (child == 0) {
    close(STDIN_FILENO);
    close(STDOUT_FILENO);
    close(STDERR_FILENO);
    platform::FillStandardStreams();
    const bool kept = write(STDOUT_FILENO, "x", 1) == 1 && write(STDERR_FILENO, "x", 1) == 1;
    _exit(kept && open("/proc/self/exe", O_RDONLY) > STDERR_FILENO ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

}  // namespace
