#include "tests/support/instruction_sets.h"

#include <cstdint>
#include <vector>

#include "hwy/highway.h"

namespace test_support {

void ForEachInstructionSet(const std::function<void(const char*)>& work) {
  hwy::SetSupportedTargetsForTest(0);
  for (std::int64_t sets = hwy::SupportedTargets() & HWY_TARGETS; sets != 0; sets &= sets - 1) {
    const std::int64_t set = sets & -sets;
    hwy::SetSupportedTargetsForTest(set);
    hwy::GetChosenTarget().Update(set);
    work(hwy::TargetName(set));
  }
  hwy::SetSupportedTargetsForTest(0);
  hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

}  // namespace test_support
