#include <gtest/gtest.h>

#include "tests/support/file_info_check.h"

namespace tests {
namespace {

class Qwbm : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host_.Ok()); }
  ModuleHost host_{"qwbm"};
};

TEST_F(Qwbm, RealFilesLookAsElsewhere) {
  CheckCorpusAndInfo("wbmp", host_, 0x12);
  CheckCorpusAndInfo("otb", host_, 0x21);
}

}  // namespace
}  // namespace tests
