#include <gtest/gtest.h>

#include "tests/support/file_info_check.h"

namespace tests {
namespace {

class Qimg : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host_.Ok()); }
  ModuleHost host_{"qimg"};
};

TEST_F(Qimg, RealFilesLookAsElsewhere) {
  const struct {
    const char* folder;
    std::uint32_t id;
  } kRows[] = {{"img", 0x13}, {"iff", 0x14}, {"sun", 0x15},  {"sgi", 0x16},
               {"xbm", 0x17}, {"xpm", 0x18}, {"utah", 0x1C}, {"cut", 0x20}};
  for (const auto& row : kRows) {
    if (!CheckCorpusAndInfo(row.folder, host_, row.id)) GTEST_SKIP() << "no corpus";
  }
}

}  // namespace
}  // namespace tests
