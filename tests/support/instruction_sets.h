#ifndef TESTS_SUPPORT_INSTRUCTION_SETS_H_
#define TESTS_SUPPORT_INSTRUCTION_SETS_H_

#include <functional>

namespace test_support {

// Calls `work` once for each instruction set that kernels are compiled for and this processor has, with only that set
// in use.
void ForEachInstructionSet(const std::function<void(const char* name)>& work);

}  // namespace test_support

#endif  // TESTS_SUPPORT_INSTRUCTION_SETS_H_
