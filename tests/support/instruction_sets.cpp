#include "tests/support/instruction_sets.h"

#include <cstdint>
#include <vector>

#include "hwy/highway.h"

namespace test_support {

void ForEachInstructionSet(const std::function<void(const char*)>& work) {
  hwy::SetSupportedTargetsForTest(0);
  // The wide byte tables go with the set below them.
  for (std::int64_t sets = hwy::SupportedTargets() & (HWY_TARGETS | HWY_AVX3_DL); sets != 0; sets &= sets - 1) {
    const std::int64_t lowest = sets & -sets;
    const std::int64_t set = lowest == HWY_AVX3_DL ? HWY_AVX3_DL | HWY_AVX3 : lowest;
    hwy::SetSupportedTargetsForTest(set);
    hwy::GetChosenTarget().Update(set);
    work(hwy::TargetName(lowest));
  }
  hwy::SetSupportedTargetsForTest(0);
  hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

}  // namespace test_support
