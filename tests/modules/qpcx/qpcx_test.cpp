#include <gtest/gtest.h>

#include "tests/support/file_info_check.h"

namespace tests {
namespace {

class Qpcx : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host_.Ok()); }
  ModuleHost host_{"qpcx"};
};

TEST_F(Qpcx, RealFilesLookAsElsewhere) {
  CheckCorpusAndInfo("pcx", host_, 8);
  CheckCorpusAndInfo("dcx", host_, 0x10000009);
}

}  // namespace
}  // namespace tests
