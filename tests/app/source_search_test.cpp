#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "app/converter.h"
#include "platform/current_folder.h"
#include "tests/support/temporary_folder.h"

namespace {

namespace fs = std::filesystem;
using Paths = std::vector<std::string>;

struct Search {
  std::string folder;
  std::string mask = "*.*";
  bool recurse = false;
  std::int32_t sortOrder = 1;
};

// What is found, without the folder and with slashes. Fails when the current folder is another one afterwards.
Paths Find(const Search& search) {
  app::ConvertSettings settings;
  settings.sourceFolder = search.folder.c_str();
  settings.mask = search.mask.c_str();
  settings.recurse = search.recurse;
  settings.sortOrder = search.sortOrder;
  const std::string before = platform::CurrentFolder();
  app::Converter converter;
  converter.FindSources(settings);
  EXPECT_EQ(platform::CurrentFolder(), before);
  Paths paths;
  for (std::uint32_t i = 0; i < settings.files.count; ++i) {
    std::string path = settings.files.At(i)->c_str();
    EXPECT_EQ(path.rfind(search.folder + "\\", 0), 0U) << path;
    path.erase(0, search.folder.size() + 1);
    std::replace(path.begin(), path.end(), '\\', '/');
    paths.push_back(path);
  }
  return paths;
}

TEST(SourceSearch, FindsWhatTheMaskMatches) {
  const test_support::TemporaryFolder tree;
  for (const char* name : {"a.jpg", "B.JPG", "c.png", "noext", ".hidden", "dir.jpg/inside.jpg"}) tree.Write(name);
  const std::string folder = tree.Text();
  EXPECT_EQ(Find({folder, "*.jpg"}), (Paths{"a.jpg", "B.JPG"}));
  EXPECT_EQ(Find({folder, "*.*"}), (Paths{".hidden", "a.jpg", "B.JPG", "c.png", "noext"}));
  EXPECT_EQ(Find({folder, "?.*"}), (Paths{"a.jpg", "B.JPG", "c.png"}));
  EXPECT_EQ(Find({folder, "dir.jpg"}), Paths{});
  EXPECT_EQ(Find({folder, "C.PNG"}), Paths{"c.png"});
  EXPECT_EQ(Find({folder, "*.bmp"}), Paths{});
}

TEST(SourceSearch, VisitsSubfoldersBehindTheFilesWhateverTheyAreCalled) {
  const test_support::TemporaryFolder tree;
  for (const char* name : {"z.jpg", "b/1.jpg", "b/deep/2.jpg", "a/3.jpg", "a/other.png", "a/x/y/4.jpg", "m.jpg"}) {
    tree.Write(name);
  }
  const std::string folder = tree.Text();
  EXPECT_EQ(Find({folder, "*.jpg", true, 1}),
            (Paths{"m.jpg", "z.jpg", "a/3.jpg", "a/x/y/4.jpg", "b/1.jpg", "b/deep/2.jpg"}));
  EXPECT_EQ(Find({folder, "*.jpg", true, 2}),
            (Paths{"z.jpg", "m.jpg", "b/1.jpg", "b/deep/2.jpg", "a/3.jpg", "a/x/y/4.jpg"}));
  EXPECT_EQ(Find({folder, "*.jpg", false, 2}), (Paths{"z.jpg", "m.jpg"}));
  Paths unsorted = Find({folder, "*.jpg", true, 0});
  std::sort(unsorted.begin(), unsorted.end());
  EXPECT_EQ(unsorted, (Paths{"a/3.jpg", "a/x/y/4.jpg", "b/1.jpg", "b/deep/2.jpg", "m.jpg", "z.jpg"}));
}

TEST(SourceSearch, SortsWithoutRegardToCase) {
  const test_support::TemporaryFolder tree;
  for (const char* name : {"b.gif", "A.gif", "C.gif", "a_.gif", "aZ.gif", "\xC3\xA9.gif", "a.gif"}) tree.Write(name);
  // "_" stands before the small letters, bytes above 127 behind all.
  const Paths ascending{"A.gif", "a.gif", "a_.gif", "aZ.gif", "b.gif", "C.gif", "\xC3\xA9.gif"};
  EXPECT_EQ(Find({tree.Text(), "*", false, 1}), ascending);
  EXPECT_EQ(Find({tree.Text(), "*", false, 2}), Paths(ascending.rbegin(), ascending.rend()));
}

TEST(SourceSearch, KeepsOddNames) {
  const test_support::TemporaryFolder tree;
  const Paths names{"%s%n.gif", "a b  c.gif", "quote\".gif", "\xFF\xFE.gif", std::string(250, 'l') + ".gif"};
  for (const std::string& name : names) tree.Write(name);
  tree.Write("back\\slash.gif");
  tree.Write("back\\folder/x.gif");
  Paths found = Find({tree.Text(), "*.gif", true, 1});
  Paths expected = names;
  std::sort(found.begin(), found.end());
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(found, expected);
}

TEST(SourceSearch, GoesIntoDeepTrees) {
  const test_support::TemporaryFolder tree;
  std::string deep = "f.gif";
  for (int i = 0; i < 300; ++i) deep = "d/" + deep;
  tree.Write(deep);
  EXPECT_EQ(Find({tree.Text(), "*.gif", true, 0}), Paths{deep});
}

TEST(SourceSearch, PassesOverWhatCannotBeEntered) {
  const test_support::TemporaryFolder tree;
  EXPECT_EQ(Find({"", "*"}), Paths{});
  EXPECT_EQ(Find({tree.Text("missing"), "*"}), Paths{});
  tree.Write("file");
  EXPECT_EQ(Find({tree.Text("file"), "*"}), Paths{});
}

TEST(SourceSearch, GoesOnBesideALockedFolder) {
  if (geteuid() == 0) GTEST_SKIP() << "the superuser enters every folder";
  const test_support::TemporaryFolder tree;
  tree.Write("a/locked/x");
  tree.Write("a/open/y");
  fs::permissions(tree.path() / "a/locked", fs::perms::none);
  EXPECT_EQ(Find({tree.Text("a"), "*", true}), Paths{"open/y"});
}

TEST(SourceSearch, EndsInSpiteOfLinksInCircles) {
  const test_support::TemporaryFolder tree;
  tree.Write("a/x.gif");
  fs::create_directory_symlink("..", tree.path() / "a/up");
  fs::create_directory_symlink(".", tree.path() / "a/self");
  fs::create_symlink("x.gif", tree.path() / "a/link.gif");
  EXPECT_EQ(Find({tree.Text(), "*.gif", true}), (Paths{"a/link.gif", "a/x.gif"}));
  // The folder where the search starts may be a link.
  EXPECT_EQ(Find({tree.Text("a/self"), "x*"}), Paths{"x.gif"});
}

TEST(SourceSearch, StaysOneLevelDeepInARelativeFolder) {
  const test_support::TemporaryFolder tree;
  tree.Write("pics/a.gif");
  tree.Write("pics/sub/b.gif");
  const platform::CurrentFolderKeeper keeper;
  ASSERT_TRUE(platform::SetCurrentFolder(tree.Text().c_str()));
  EXPECT_EQ(Find({"pics", "*.gif", true}), Paths{"a.gif"});
}

TEST(SourceSearch, AppendsToTheList) {
  const test_support::TemporaryFolder tree;
  for (int i = 0; i < 200; ++i) tree.Write("f" + std::to_string(1000 + i));
  app::ConvertSettings settings;
  settings.mask = "*";
  settings.sortOrder = 1;
  app::Converter converter;
  converter.ScanFolder(tree.Text().c_str(), settings);
  converter.ScanFolder(tree.Text().c_str(), settings);
  ASSERT_EQ(settings.files.count, 400U);
  EXPECT_EQ(std::string(settings.files.At(200)->c_str()), tree.Text("f1000"));
  EXPECT_EQ(std::string(settings.files.At(399)->c_str()), tree.Text("f1199"));
}

}  // namespace
