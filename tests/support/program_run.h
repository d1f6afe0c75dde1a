#ifndef TESTS_SUPPORT_PROGRAM_RUN_H_
#define TESTS_SUPPORT_PROGRAM_RUN_H_

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace test_support {

struct ProgramRun {
  int status = -1;  // as the system shows it; -1: ended by a signal
  std::string output;
  std::string errors;
};

struct RunPlace {
  std::filesystem::path folder = {};          // current folder; empty: that of the test
  std::int64_t fileLimit = -1;                // no file can grow beyond so many bytes, as on a full disk
  std::vector<std::string> environment = {};  // "NAME=value"
  bool isHeard = true;                        // false: nobody reads the output
};

// Runs the built program to its end.
ProgramRun RunZefa(const std::vector<std::string>& words, const RunPlace& place = {});

// Starts it and leaves it running, without output. The caller waits for it.
pid_t StartZefa(const std::vector<std::string>& words);

}  // namespace test_support

#endif  // TESTS_SUPPORT_PROGRAM_RUN_H_
