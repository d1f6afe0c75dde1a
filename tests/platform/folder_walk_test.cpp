#include "platform/folder_walk.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/current_folder.h"
#include "tests/support/temporary_folder.h"

namespace {

struct MaskCase {
  const char* mask;
  const char* name;
  bool matches;
};

TEST(MatchesMask, FollowsTheWildcards) {
  const MaskCase cases[] = {
      {"*.jpg", "a.jpg", true},
      {"*.jpg", "A.JPG", true},
      {"*.JPG", "a.jpg", true},
      {"*.jpg", ".jpg", true},
      {"*.jpg", "a.jpeg", false},
      {"*.jpg", "a.jpg.gif", false},
      {"*.*", "readme", true},
      {"*.*", ".hidden", true},
      {"*", "anything.at.all", true},
      {"a*b*c", "aXbYbZc", true},
      {"a*b*c", "aXbYbZ", false},
      {"a**c", "ac", true},
      {"?.gif", "a.gif", true},
      {"?.gif", "ab.gif", false},
      {"?.gif", ".gif", false},
      {"a?", "a", false},
      {"a*?", "ab", true},
      {"a*?", "a", false},
      {"name", "NAME", true},
      {"name", "names", false},
      {"[ab].gif", "a.gif", false},
      {"[ab].gif", "[AB].gif", true},
      {"?.gif", "\xC3\xA9.gif", true},
      {"??.gif", "\xC3\xA9.gif", false},
      {"\xC3\xA9*", "\xC3\xA9t", true},
      {"\xC3\x89*", "\xC3\xA9", false},
      {"*?", "\xC3\xA9", true},
      {"*.*.gif", "a.gif", false},
      {"*.*.gif", "a.b.gif", true},
      {"", "a", false},
      {"*aab", "aaaaab", true},
      {"img???.*", "img007.png", true},
      {"*a*a*a*a*a*a*a*b", "aaaaaaaaaaaaaaaa", false},
      {"@", "`", false},
      {"[", "{", false},
  };
  for (const MaskCase& c : cases) {
    EXPECT_EQ(platform::MatchesMask(c.name, c.mask), c.matches) << c.mask << " on " << c.name;
  }
}

TEST(MatchesMask, TakesNoExponentialTime) {
  const std::string name(20000, 'a');
  std::string mask;
  for (int i = 0; i < 50; ++i) mask += "*a";
  EXPECT_FALSE(platform::MatchesMask(name.c_str(), (mask + "*b").c_str()));
}

TEST(ListCurrentFolder, TellsFoldersAndLinksFromFiles) {
  const test_support::TemporaryFolder tree;
  tree.Write("file.txt");
  tree.Write("folder/inside.txt");
  tree.Write("odd\\name.txt");
  std::filesystem::create_directory_symlink("folder", tree.path() / "link.d");
  std::filesystem::create_symlink("file.txt", tree.path() / "link.f");
  std::filesystem::create_symlink("nowhere", tree.path() / "link.n");

  const platform::CurrentFolderKeeper keeper;
  ASSERT_TRUE(platform::SetCurrentFolder(tree.Text().c_str()));
  std::vector<std::string> seen;
  for (const platform::FolderEntry& entry : platform::ListCurrentFolder("*.*")) {
    seen.push_back(entry.name + (entry.isFolder ? " folder" : "") + (entry.isLink ? " link" : ""));
  }
  std::sort(seen.begin(), seen.end());
  EXPECT_EQ(seen, (std::vector<std::string>{"file.txt", "folder folder", "link.d folder link", "link.f link",
                                            "link.n link"}));
}

TEST(CurrentFolderKeeper, GoesBack) {
  const test_support::TemporaryFolder tree;
  tree.MakeFolder("a/b");
  const std::string before = platform::CurrentFolder();
  {
    const platform::CurrentFolderKeeper outer;
    ASSERT_TRUE(platform::SetCurrentFolder(tree.Text("a").c_str()));
    {
      const platform::CurrentFolderKeeper inner;
      ASSERT_TRUE(platform::SetCurrentFolder("b"));
      EXPECT_EQ(platform::CurrentFolder(), tree.Text("a/b"));
    }
    EXPECT_EQ(platform::CurrentFolder(), tree.Text("a"));
  }
  EXPECT_EQ(platform::CurrentFolder(), before);
}

TEST(CurrentFolderKeeper, GoesBackToAFolderWithoutAPath) {
  const test_support::TemporaryFolder tree;
  tree.MakeFolder("gone");
  const platform::CurrentFolderKeeper keeper;
  ASSERT_TRUE(platform::SetCurrentFolder(tree.Text("gone").c_str()));
  std::filesystem::remove(tree.path() / "gone");
  EXPECT_EQ(platform::CurrentFolder(), "");
  {
    const platform::CurrentFolderKeeper inner;
    ASSERT_TRUE(platform::SetCurrentFolder(tree.Text().c_str()));
  }
  EXPECT_EQ(platform::CurrentFolder(), "");
}

}  // namespace
