#include "platform/vector_targets.h"

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "hwy/highway.h"

// What Highway's dispatch asks for at run time. Its own library answers the same, but measures a clock in its start-up,
// which costs more than all the rest of a short run.

namespace platform {
namespace {

// The bit of the level that Highway has above HWY_AVX3. Nothing is compiled for that level as a whole, which takes more
// than this one extension.
constexpr std::int64_t kWideByteTables = HWY_AVX3_DL;

struct NamedLevel {
  const char* name;
  std::int64_t sets;  // this set and all simpler ones
};

// Sets have the lower bits the better they are.
constexpr std::int64_t UpTo(std::int64_t best) { return ~(best - 1); }

constexpr NamedLevel kLevels[] = {
    {"scalar", UpTo(HWY_SCALAR)}, {"ssse3", UpTo(HWY_SSSE3)}, {"sse4", UpTo(HWY_SSE4)},
    {"avx2", UpTo(HWY_AVX2)},     {"avx3", UpTo(HWY_AVX3)},   {"vbmi", UpTo(kWideByteTables)},
};

std::int64_t AllowedSets() {
  const char* wanted = std::getenv(kVectorVariable);
  if (wanted != nullptr) {
    for (const NamedLevel& level : kLevels) {
      if (std::strcmp(level.name, wanted) == 0) return level.sets;
    }
  }
  return ~std::int64_t{0};
}

std::int64_t ProcessorSets() {
  std::int64_t sets = HWY_STATIC_TARGET | HWY_SCALAR;
#if HWY_ARCH_X86
  // Each level asks for what the compiler is told that it has; what never comes apart from it isn't asked for.
  __builtin_cpu_init();
  if (!__builtin_cpu_supports("ssse3")) return sets;
  sets |= HWY_SSSE3;
  if (!__builtin_cpu_supports("sse4.2") || !__builtin_cpu_supports("aes") || !__builtin_cpu_supports("pclmul")) {
    return sets;
  }
  sets |= HWY_SSE4;
  if (!__builtin_cpu_supports("avx2") || !__builtin_cpu_supports("bmi") || !__builtin_cpu_supports("bmi2") ||
      !__builtin_cpu_supports("fma")) {
    return sets;
  }
  sets |= HWY_AVX2;
  if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512cd") &&
      __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl")) {
    sets |= HWY_AVX3;
    if (__builtin_cpu_supports("avx512vbmi")) sets |= kWideByteTables;
  }
#endif
  return sets;
}

std::int64_t& Sets() {
  static std::int64_t sets = ProcessorSets() & AllowedSets();
  return sets;
}

std::int64_t testSets = 0;

}  // namespace

bool HasWideByteTables() { return (hwy::SupportedTargets() & kWideByteTables) != 0; }

}  // namespace platform

namespace hwy {

// For a broken assumption in the kernels, which an optimised build leaves out.
HWY_DLLEXPORT HWY_NORETURN void HWY_FORMAT(3, 4) Abort(const char* file, int line, const char* format, ...) {
  std::va_list values;
  va_start(values, format);
  std::fprintf(stderr, "%s:%d: ", file, line);
  std::vfprintf(stderr, format, values);
  std::fputc('\n', stderr);
  va_end(values);
  std::abort();
}

HWY_DLLEXPORT std::int64_t SupportedTargets() {
  return platform::testSets != 0 ? platform::testSets : platform::Sets();
}

HWY_DLLEXPORT ChosenTarget& GetChosenTarget() {
  static ChosenTarget chosen;
  return chosen;
}

HWY_DLLEXPORT void DisableTargets(std::int64_t sets) { platform::Sets() &= ~sets; }

// 0 ends the test.
HWY_DLLEXPORT void SetSupportedTargetsForTest(std::int64_t sets) { platform::testSets = sets; }

}  // namespace hwy
