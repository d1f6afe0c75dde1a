#ifndef PLATFORM_CHILD_PROCESS_H_
#define PLATFORM_CHILD_PROCESS_H_

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace platform {

// What a child may use up. Over any of these it is killed, or its allocations fail.
struct ChildLimits {
  std::uint32_t cpuSeconds = 30;
  // Of address space beyond what this process has; with what both share a child stays below 1 GiB.
  std::uint64_t memoryBytes = std::uint64_t{960} << 20;
  std::uint32_t milliseconds = 4500;  // from the start, or from the last ExtendTime, to the end
};

// Work on something that can't be trusted, in a process of its own. The child can make no file, can write to none but
// its output and starts no further process; it reads system folders (fonts, libraries), not those of users; it has no
// network. These bounds are the kernel's; an old kernel has fewer of them, the limits always hold. The child ends with
// its parent.
class ChildProcess {
 public:
  // The program `arguments[0]`, looked for as a shell would. It reads `input` as its standard input, which is a file
  // that it may seek in; its standard error is lost.
  static ChildProcess Program(const std::vector<std::string>& arguments, std::span<const std::uint8_t> input,
                              const ChildLimits& limits);
  // A copy of this process that calls `work` with the descriptor of its output and ends.
  static ChildProcess Copy(const std::function<void(int output)>& work, const ChildLimits& limits);

  ChildProcess(ChildProcess&& other) noexcept
      : pid_(std::exchange(other.pid_, -1)),
        output_(std::exchange(other.output_, -1)),
        milliseconds_(other.milliseconds_),
        start_(other.start_),
        deadline_(other.deadline_),
        timedOut_(other.timedOut_) {}
  ChildProcess& operator=(ChildProcess&&) = delete;
  ~ChildProcess();  // kills what still runs

  bool Started() const { return pid_ > 0; }

  // The next bytes of the output, or as many as come before it ends or the time is up.
  std::size_t Read(void* target, std::size_t count);
  // The same, but gives what is there as soon as there is something; 0 at the end.
  std::size_t ReadSome(void* target, std::size_t count);
  bool TimedOut() const { return timedOut_; }

  // Progress was made: the time begins anew, as far as it doesn't go past `milliseconds` from the first start.
  void ExtendTime(std::uint32_t milliseconds);

  // Kills the child if it runs, and tells whether it had ended by itself with exit status 0. To be asked once.
  bool EndedWell();

 private:
  ChildProcess(pid_t pid, int output, std::uint32_t milliseconds);
  bool WaitForOutput();

  pid_t pid_;
  int output_;
  std::uint32_t milliseconds_;
  std::int64_t start_ = 0;     // milliseconds of the monotonic clock
  std::int64_t deadline_ = 0;  // the same
  bool timedOut_ = false;
};

// Whether a shell would find the program.
bool ProgramExists(const std::string& name);

// Writes all of it to a descriptor; false if that fails.
bool WriteAll(int descriptor, const void* bytes, std::size_t count);

}  // namespace platform

#endif  // PLATFORM_CHILD_PROCESS_H_
