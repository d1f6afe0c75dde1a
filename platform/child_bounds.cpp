#include "platform/child_bounds.h"

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/landlock.h>
#include <linux/seccomp.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <iterator>

namespace platform {
namespace {

void Limit(decltype(RLIMIT_CPU) resource, rlim_t value) {
  const rlimit limit{value, value};
  setrlimit(resource, &limit);
}

constexpr std::uint64_t kReading =
    LANDLOCK_ACCESS_FS_EXECUTE | LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;
constexpr std::uint64_t kWriting = LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_REMOVE_DIR |
                                   LANDLOCK_ACCESS_FS_REMOVE_FILE | LANDLOCK_ACCESS_FS_MAKE_CHAR |
                                   LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_MAKE_REG |
                                   LANDLOCK_ACCESS_FS_MAKE_SOCK | LANDLOCK_ACCESS_FS_MAKE_FIFO |
                                   LANDLOCK_ACCESS_FS_MAKE_BLOCK | LANDLOCK_ACCESS_FS_MAKE_SYM;

void Allow(int rules, const char* folder, std::uint64_t access) {
  const int descriptor = open(folder, O_PATH | O_CLOEXEC);
  if (descriptor < 0) return;
  landlock_path_beneath_attr rule{};
  rule.allowed_access = access;
  rule.parent_fd = descriptor;
  syscall(SYS_landlock_add_rule, rules, LANDLOCK_RULE_PATH_BENEATH, &rule, 0);
  close(descriptor);
}

// Files: reading what belongs to the system, nothing else.
void LeaveUsersFolders() {
  landlock_ruleset_attr handled{};
  handled.handled_access_fs = kReading | kWriting;
  const auto rules = static_cast<int>(syscall(SYS_landlock_create_ruleset, &handled, sizeof(handled), 0));
  if (rules < 0) return;
  for (const char* folder : {"/usr", "/bin", "/lib", "/lib32", "/lib64", "/etc", "/opt", "/proc", "/sys", "/nix",
                             "/var/lib", "/var/cache/fontconfig"}) {
    Allow(rules, folder, kReading);
  }
  Allow(rules, "/dev/null", LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_WRITE_FILE);
  Allow(rules, "/dev/urandom", LANDLOCK_ACCESS_FS_READ_FILE);
  syscall(SYS_landlock_restrict_self, rules, 0);
  close(rules);
}

// Calls that fail as not permitted: network, further processes, looking into other processes. Threads may be made; the
// newest call for that says it is unknown, so that libraries take the older one, whose flags can be seen.
void GiveUpCalls() {
#if defined(__x86_64__) || defined(__aarch64__)
#if defined(__x86_64__)
  constexpr std::uint32_t kProcessor = AUDIT_ARCH_X86_64;
#else
  constexpr std::uint32_t kProcessor = AUDIT_ARCH_AARCH64;
#endif
  constexpr std::uint32_t kThread = 0x00010000;  // CLONE_THREAD
  constexpr std::uint32_t kDeny = SECCOMP_RET_ERRNO | EPERM;
  const auto number = [](long call) {
    return sock_filter{BPF_JMP | BPF_JEQ | BPF_K, 0, 1, static_cast<std::uint32_t>(call)};
  };
  const auto result = [](std::uint32_t value) { return sock_filter{BPF_RET | BPF_K, 0, 0, value}; };
  const auto load = [](std::size_t offset) {
    return sock_filter{BPF_LD | BPF_W | BPF_ABS, 0, 0, static_cast<std::uint32_t>(offset)};
  };
  sock_filter program[] = {
    load(offsetof(seccomp_data, arch)),
    {BPF_JMP | BPF_JEQ | BPF_K, 1, 0, kProcessor},
    result(SECCOMP_RET_KILL_PROCESS),
    load(offsetof(seccomp_data, nr)),
    number(SYS_socket),
    result(kDeny),
    number(SYS_ptrace),
    result(kDeny),
    number(SYS_process_vm_readv),
    result(kDeny),
    number(SYS_process_vm_writev),
    result(kDeny),
    number(SYS_clone3),
    result(SECCOMP_RET_ERRNO | ENOSYS),
#if defined(__x86_64__)
    number(SYS_fork),
    result(kDeny),
    number(SYS_vfork),
    result(kDeny),
#endif
    {BPF_JMP | BPF_JEQ | BPF_K, 0, 3, SYS_clone},
    load(offsetof(seccomp_data, args)),  // its low half, on little-endian machines
    {BPF_JMP | BPF_JSET | BPF_K, 1, 0, kThread},
    result(kDeny),
    result(SECCOMP_RET_ALLOW),
  };
  const sock_fprog filter{static_cast<unsigned short>(std::size(program)), program};
  prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter);
#endif
}

}  // namespace

void BindChild(const ChildLimits& limits, pid_t parent, std::uint64_t addressSpace) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) _exit(0);  // it ended before it could be told of
  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  Limit(RLIMIT_CORE, 0);
  Limit(RLIMIT_FSIZE, 0);
  Limit(RLIMIT_CPU, limits.cpuSeconds);
  Limit(RLIMIT_AS, addressSpace + limits.memoryBytes);
  LeaveUsersFolders();
  GiveUpCalls();
}

}  // namespace platform
