#include "platform/any_case_path.h"

#include <gtest/gtest.h>

#include "tests/support/temporary_folder.h"

namespace {

using platform::FindFileInAnyCase;

std::string Found(const test_support::TemporaryFolder& folder, const std::string& name) {
  return FindFileInAnyCase(folder.Text(name).c_str());
}

TEST(AnyCasePath, PrefersTheNameAsItStands) {
  const test_support::TemporaryFolder folder;
  folder.Write("Web.ACT");
  EXPECT_EQ(folder.Text("Web.ACT"), Found(folder, "web.act"));
  folder.Write("WEB.act");
  EXPECT_EQ(folder.Text("WEB.act"), Found(folder, "web.act"));
  folder.Write("web.act");
  EXPECT_EQ(folder.Text("web.act"), Found(folder, "web.act"));
  EXPECT_EQ(folder.Text("Web.ACT"), Found(folder, "Web.ACT"));
}

TEST(AnyCasePath, LooksThroughFoldersToo) {
  const test_support::TemporaryFolder folder;
  folder.Write("Colours/Old/A.pal");
  folder.MakeFolder("colours/old");  // as the name stands, but without the file
  folder.MakeFolder("COLOURS/OLD/a.pal");
  folder.Write("colours/OLD", "a file where a folder is looked for");
  EXPECT_EQ(folder.Text("Colours\\Old\\A.pal"), Found(folder, "colours\\old\\a.pal"));
  EXPECT_EQ(folder.Text("colours\\.\\..\\Colours\\\\Old\\A.pal"),
            Found(folder, "colours\\.\\..\\Colours\\\\old\\a.pal"));
}

TEST(AnyCasePath, GivesTheTextBackWhereNothingFits) {
  const test_support::TemporaryFolder folder;
  folder.Write("b.act");
  folder.MakeFolder("C.act");
  for (const char* name : {"a.act", "c.act", "b.act\\x", "b.ac", "b.actt", "no\\b.act"}) {
    EXPECT_EQ(folder.Text(name), Found(folder, name));
  }
  EXPECT_EQ("", FindFileInAnyCase(""));
  EXPECT_EQ("no such folder\\x", FindFileInAnyCase("no such folder\\x"));
}

}  // namespace
