#include <gtest/gtest.h>

#include "tests/support/file_info_check.h"

namespace tests {
namespace {

class Qtga : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host_.Ok()); }
  ModuleHost host_{"qtga"};
};

TEST_F(Qtga, RealFilesLookAsElsewhere) { CheckCorpusAndInfo("tga", host_, 0x2000000D); }

}  // namespace
}  // namespace tests
