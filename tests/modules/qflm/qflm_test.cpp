#include <gtest/gtest.h>

#include <string_view>

#include "tests/support/page_check.h"

namespace tests {
namespace {

TEST(Qflm, IsThereAndReadsNothing) {
  const ModuleHost host("qflm");
  ASSERT_TRUE(host.Ok());
  EXPECT_TRUE(host.Ids().empty());
  CheckRefused({"film", {}, glib::NSUP}, host.Load(BytesOf("Rv60"), 0x70000001));
  std::uint32_t result = 0;
  EXPECT_EQ(host.Info("film.qflm", 0x70000001, &result), nullptr);
  EXPECT_EQ(result, glib::NSUP);
}

}  // namespace
}  // namespace tests
