#include <gtest/gtest.h>

#include "tests/support/file_info_check.h"

namespace tests {
namespace {

class Qmng : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host_.Ok()); }
  ModuleHost host_{"qmng"};
};

TEST_F(Qmng, RealFilesLookAsElsewhere) {
  CheckCorpusAndInfo("mng", host_, 0x3000001D);
  CheckCorpusAndInfo("jng", host_, 0x3000001E);
}

}  // namespace
}  // namespace tests
