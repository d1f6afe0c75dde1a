#include <gtest/gtest.h>

#include "tests/support/file_info_check.h"

namespace tests {
namespace {

constexpr std::uint32_t kJp2Id = 0x20000024;

class Qjp2 : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host_.Ok()); }
  ModuleHost host_{"qjp2"};
};

TEST_F(Qjp2, RealFilesLookAsElsewhere) {
  if (!CheckCorpusAndInfo("jp2", host_, kJp2Id)) GTEST_SKIP() << "no corpus";
}

}  // namespace
}  // namespace tests
