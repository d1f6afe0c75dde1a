#include <gtest/gtest.h>

#include "tests/support/file_info_check.h"

namespace tests {
namespace {

class Qpcd : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host_.Ok()); }
  ModuleHost host_{"qpcd"};
};

TEST_F(Qpcd, RealFilesLookAsElsewhere) { CheckCorpusAndInfo("pcd", host_, 0xF); }

}  // namespace
}  // namespace tests
