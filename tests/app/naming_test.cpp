#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "app/converter.h"
#include "platform/current_folder.h"
#include "tests/support/temporary_folder.h"

namespace {

namespace fs = std::filesystem;
using app::Converter;
using Text = Converter::Text;

void Protect(const fs::path& path) { fs::permissions(path, fs::perms::owner_read | fs::perms::owner_exec); }

TEST(Naming, ChangesTheExtension) {
  struct {
    const char *path, *name, *result;
  } const cases[] = {
      {"c:\\out\\a.jpg", "a.jpg", "c:\\out\\a.gif"},
      {"c:\\out\\a.b.jpg", "a.b.jpg", "c:\\out\\a.b.gif"},
      {"c:\\in\\.hidden", ".hidden", "c:\\in\\.hidden.gif"},
      {"c:\\out\\set.2\\readme", "set.2\\readme", "c:\\out\\set.gif"},
      {"c:\\out\\readme", "readme", "c:\\out\\readme.gif"},
      {"c:\\my.out\\readme", "readme", "c:\\my.gif"},
      {"c:\\out\\sub\\.hidden", "sub\\.hidden", "c:\\out\\sub\\.gif"},
      {".hidden", "x.y", ".hidden.gif"},
      {"a.", "a.", "a.gif"},
      {"", "", ".gif"},
      {"c:\\my.out\\", "", "c:\\my.out\\.gif"},
  };
  for (const auto& c : cases) {
    Text path(c.path);
    Converter::ChangeExtension(path, c.name, ".gif");
    EXPECT_STREQ(path.c_str(), c.result) << c.path;
  }
}

TEST(Naming, CleansNames) {
  struct {
    const char *path, *result;
  } const cases[] = {
      {"d:\\\\a.gif", "d:\\a.gif"},
      {"a*b?c\"d<e>f|g.gif", "a_b_c_d_e_f_g.gif"},
      {"***", "___"},
      {"c:\\a\\\\b", "c:\\a\\\\b"},
      {"c:\\\\\\a", "c:\\a"},
      {"a:b;c", "a:b;c"},
      {"", ""},
  };
  for (const auto& c : cases) {
    Text path(c.path);
    Converter::CleanName(path);
    EXPECT_STREQ(path.c_str(), c.result) << c.path;
  }
}

TEST(Naming, KnowsTheFolderOfAPath) {
  EXPECT_EQ(Converter::FolderOf("c:\\a\\b.gif"), "c:\\a");
  EXPECT_EQ(Converter::FolderOf("\\b.gif"), "\\");
  EXPECT_EQ(Converter::FolderOf("b.gif"), ".");
  EXPECT_EQ(Converter::FolderOf("a\\b.gif"), "a");
  EXPECT_EQ(Converter::FolderOf(""), ".");
}

TEST(Naming, MakesFoldersWithTheirParents) {
  const test_support::TemporaryFolder tree;
  tree.MakeFolder("a");
  EXPECT_TRUE(Converter::EnsureFolder(tree.Text("a").c_str()));
  EXPECT_TRUE(Converter::EnsureFolder(tree.Text("a/b/c").c_str()));
  EXPECT_TRUE(Converter::EnsureFolder((tree.Text("d") + "\\\\e\\").c_str()));
  EXPECT_EQ(tree.Contents(), (std::vector<std::string>{"a", "a/b", "a/b/c", "d", "d/e"}));
}

TEST(Naming, MakesRelativeFoldersWhereTheRunStands) {
  const test_support::TemporaryFolder tree;
  const platform::CurrentFolderKeeper keeper;
  ASSERT_TRUE(platform::SetCurrentFolder(tree.Text().c_str()));
  EXPECT_TRUE(Converter::EnsureFolder("."));
  EXPECT_TRUE(Converter::EnsureFolder("\\"));
  EXPECT_TRUE(Converter::EnsureFolder("x\\y"));
  EXPECT_TRUE(Converter::EnsureFolder(".\\z"));
  EXPECT_EQ(tree.Contents(), (std::vector<std::string>{"x", "x/y", "z"}));
}

TEST(Naming, MakesNoFolderWhereNoneCanBe) {
  const test_support::TemporaryFolder tree;
  tree.Write("file");
  tree.MakeFolder("locked");
  Protect(tree.path() / "locked");
  EXPECT_FALSE(Converter::EnsureFolder(tree.Text("file/below").c_str()));
  EXPECT_FALSE(Converter::EnsureFolder((tree.Text("new/") + std::string(300, 'x')).c_str()));
  const platform::CurrentFolderKeeper keeper;
  ASSERT_TRUE(platform::SetCurrentFolder(tree.Text().c_str()));
  EXPECT_FALSE(Converter::EnsureFolder("c:\\out"));
  EXPECT_FALSE(Converter::EnsureFolder("c:\\"));
  // What was made before the failure stays; a folder that is there is not looked at any further.
  EXPECT_EQ(tree.Contents(), (std::vector<std::string>{"file", "locked", "new"}));
  EXPECT_TRUE(Converter::EnsureFolder("locked"));
}

TEST(Naming, NumbersNamesThatAreTaken) {
  const test_support::TemporaryFolder tree;
  const auto name = [&tree](const char* wanted) {
    return std::string(Converter::FreeName(tree.Text(wanted).c_str(), ".gif").c_str());
  };
  tree.Write("a(1).gif");
  EXPECT_EQ(name("a.gif"), tree.Text("a.gif"));
  tree.Write("a.gif");
  EXPECT_EQ(name("a.gif"), tree.Text("a(2).gif"));
  tree.Write("a(2).gif");
  EXPECT_EQ(name("a.gif"), tree.Text("a(3).gif"));
  EXPECT_EQ(name("a(1).gif"), tree.Text("a(1)(1).gif"));
  // The extension is always the one that is given.
  tree.Write("b.png");
  EXPECT_EQ(name("b.png"), tree.Text("b(1).gif"));
  tree.Write("plain");
  EXPECT_EQ(name("plain"), tree.Text("plain(1).gif"));
  // A link that leads nowhere holds its name.
  fs::create_symlink("nowhere", tree.path() / "l.gif");
  EXPECT_EQ(name("l.gif"), tree.Text("l(1).gif"));
}

TEST(Naming, RemovesFilesThatMayGo) {
  const test_support::TemporaryFolder tree;
  tree.Write("file");
  tree.Write("locked");
  tree.MakeFolder("folder");
  Protect(tree.path() / "locked");
  EXPECT_FALSE(Converter::RemoveFile(""));
  EXPECT_TRUE(Converter::RemoveFile(tree.Text("missing").c_str()));
  EXPECT_TRUE(Converter::RemoveFile(tree.Text("file").c_str()));
  EXPECT_FALSE(Converter::RemoveFile(tree.Text("locked").c_str()));
  EXPECT_FALSE(Converter::RemoveFile(tree.Text("folder").c_str()));
  EXPECT_EQ(tree.Contents(), (std::vector<std::string>{"folder", "locked"}));
}

TEST(Naming, ListsWhatMatches) {
  const test_support::TemporaryFolder tree;
  for (const char* name : {"collage.gif", "Collage(1).GIF", "collage.png", "x.gif", "sub/collage.gif"}) {
    tree.Write(name);
  }
  tree.MakeFolder("collage-folder.gif");
  const auto matching = [](const std::string& folder, const char* pattern) {
    std::vector<std::string> paths;
    for (const auto& path : Converter::ListMatching(folder.c_str(), pattern)) paths.emplace_back(path.c_str());
    std::sort(paths.begin(), paths.end());
    return paths;
  };
  const std::string before = platform::CurrentFolder();
  EXPECT_EQ(matching(tree.Text(), "collage*.gif"),
            (std::vector<std::string>{tree.Text("Collage(1).GIF"), tree.Text("collage.gif")}));
  EXPECT_TRUE(matching(tree.Text("missing"), "*").empty());
  EXPECT_EQ(platform::CurrentFolder(), before);
  const platform::CurrentFolderKeeper keeper;
  ASSERT_TRUE(platform::SetCurrentFolder(tree.Text().c_str()));
  EXPECT_EQ(matching("sub", "*.*"), std::vector<std::string>{"sub\\collage.gif"});
}

}  // namespace
