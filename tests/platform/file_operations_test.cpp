#include "platform/file_operations.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "platform/native_path.h"
#include "tests/support/temporary_folder.h"

namespace {

namespace fs = std::filesystem;

void Protect(const fs::path& path) { fs::permissions(path, fs::perms::owner_read | fs::perms::group_read); }

TEST(FileOperations, AnswerForWhatIsThere) {
  const test_support::TemporaryFolder tree;
  tree.Write("file");
  tree.Write("locked");
  tree.MakeFolder("folder");
  Protect(tree.path() / "locked");
  fs::create_symlink("nowhere", tree.path() / "dangling");
  struct {
    const char* name;
    bool exists, isFolder, readable, writable;
  } const cases[] = {
      {"file", true, false, true, true},       {"locked", true, false, true, false},
      {"folder", true, true, true, true},      {"dangling", true, false, false, false},
      {"missing", false, false, false, false}, {"file/below", false, false, false, false},
  };
  for (const auto& c : cases) {
    const std::string path = tree.Text(c.name);
    EXPECT_EQ(platform::Exists(path.c_str()), c.exists) << c.name;
    EXPECT_EQ(platform::IsFolder(path.c_str()), c.isFolder) << c.name;
    EXPECT_EQ(platform::Readable(path.c_str()), c.readable) << c.name;
    EXPECT_EQ(platform::Writable(path.c_str()), c.writable) << c.name;
  }
}

TEST(FileOperations, KnowWhatCanBeDeleted) {
  const test_support::TemporaryFolder tree;
  tree.Write("file");
  tree.Write("locked");
  tree.MakeFolder("folder");
  Protect(tree.path() / "locked");
  ASSERT_EQ(mkfifo((tree.path() / "pipe").c_str(), 0666), 0);
  fs::create_symlink("file", tree.path() / "link");
  fs::create_symlink("pipe", tree.path() / "link to pipe");
  fs::create_symlink("missing", tree.path() / "dangling");
  fs::create_symlink("/proc/self/exe", tree.path() / "handle");
  EXPECT_TRUE(platform::Deletable(tree.Text("file").c_str()));
  EXPECT_TRUE(platform::Deletable(tree.Text("link").c_str()));
  for (const char* name : {"pipe", "link to pipe", "dangling", "handle"}) {
    EXPECT_FALSE(platform::Deletable(tree.Text(name).c_str())) << name;
  }
  EXPECT_FALSE(platform::Deletable(tree.Text("locked").c_str()));
  EXPECT_FALSE(platform::Deletable(tree.Text("folder").c_str()));
  EXPECT_FALSE(platform::Deletable(tree.Text("missing").c_str()));
  EXPECT_FALSE(platform::Deletable(""));
}

TEST(FileOperations, TakeNothingForNoPath) {
  for (const char* path : {static_cast<const char*>(nullptr), ""}) {
    EXPECT_FALSE(platform::Exists(path));
    EXPECT_FALSE(platform::Readable(path));
    EXPECT_FALSE(platform::Writable(path));
    EXPECT_FALSE(platform::CreateFolder(path));
    EXPECT_FALSE(platform::DeleteFile(path));
    EXPECT_FALSE(platform::MoveFile(path, "x"));
    EXPECT_FALSE(platform::CopyFile("x", path));
    EXPECT_EQ(platform::OpenText(path, "w"), nullptr);
  }
}

TEST(FileOperations, CreateOneFolderAndDeleteNone) {
  const test_support::TemporaryFolder tree;
  EXPECT_TRUE(platform::CreateFolder(tree.Text("a").c_str()));
  EXPECT_FALSE(platform::CreateFolder(tree.Text("a").c_str()));
  EXPECT_FALSE(platform::CreateFolder(tree.Text("b/c").c_str()));
  EXPECT_FALSE(platform::DeleteFile(tree.Text("a").c_str()));
  EXPECT_EQ(tree.Contents(), std::vector<std::string>{"a"});
}

TEST(FileOperations, MoveNeverReplaces) {
  const test_support::TemporaryFolder tree;
  tree.Write("from", "new");
  tree.Write("taken", "old");
  EXPECT_FALSE(platform::MoveFile(tree.Text("from").c_str(), tree.Text("taken").c_str()));
  EXPECT_EQ(tree.Read("taken"), "old");
  EXPECT_TRUE(platform::MoveFile(tree.Text("from").c_str(), tree.Text("free").c_str()));
  EXPECT_EQ(tree.Read("free"), "new");
  EXPECT_FALSE(tree.Has("from"));
}

TEST(FileOperations, MoveCrossesDevices) {
  struct stat here {};
  struct stat there {};
  const test_support::TemporaryFolder tree;
  if (stat("/dev/shm", &there) != 0 || stat(tree.path().c_str(), &here) != 0 || here.st_dev == there.st_dev) {
    GTEST_SKIP() << "no second device";
  }
  std::string name = "/dev/shm/zefa-test-XXXXXX";
  if (mkdtemp(name.data()) == nullptr) GTEST_SKIP() << "the second device can't be written";
  const std::string content(1000000, 'q');
  tree.Write("from", content);
  EXPECT_TRUE(platform::MoveFile(tree.Text("from").c_str(), (name + "/to").c_str()));
  EXPECT_FALSE(tree.Has("from"));
  EXPECT_EQ(fs::file_size(name + "/to"), content.size());
  tree.Write("from", "other");
  EXPECT_FALSE(platform::MoveFile(tree.Text("from").c_str(), (name + "/to").c_str()));
  EXPECT_EQ(tree.Read("from"), "other");
  EXPECT_EQ(std::distance(fs::directory_iterator(name), fs::directory_iterator()), 1) << "a hidden copy is left";
  fs::remove_all(name);
}

TEST(FileOperations, CopyReplacesAsAWhole) {
  const test_support::TemporaryFolder tree;
  tree.Write("from", "new");
  tree.Write("to", "a longer old content");
  EXPECT_TRUE(platform::CopyFile(tree.Text("from").c_str(), tree.Text("to").c_str()));
  EXPECT_EQ(tree.Read("to"), "new");
  EXPECT_FALSE(platform::CopyFile(tree.Text("missing").c_str(), tree.Text("to").c_str()));
  EXPECT_FALSE(platform::CopyFile(tree.Text("from").c_str(), tree.Text("no/folder").c_str()));
  tree.MakeFolder("folder");
  EXPECT_FALSE(platform::CopyFile(tree.Text("from").c_str(), tree.Text("folder").c_str()));
  EXPECT_EQ(tree.Contents(), (std::vector<std::string>{"folder", "from", "to"}));
}

TEST(FileOperations, OpenTextKeepsAwayFromWhatItMayNotWrite) {
  const test_support::TemporaryFolder tree;
  ASSERT_EQ(mkfifo((tree.path() / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(platform::OpenText(tree.Text("pipe").c_str(), "w"), nullptr);
  EXPECT_EQ(platform::OpenText(tree.Text().c_str(), "a+"), nullptr);
  tree.Write("locked", "old");
  Protect(tree.path() / "locked");
  EXPECT_EQ(platform::OpenText(tree.Text("locked").c_str(), "w"), nullptr);
  EXPECT_EQ(tree.Read("locked"), "old");
  std::FILE* file = platform::OpenText(tree.Text("new").c_str(), "a+");
  ASSERT_NE(file, nullptr);
  std::fclose(file);
}

TEST(FileOperations, TemporaryFilesAreNewAndEmpty) {
  const std::string first = platform::CreateTemporaryFile();
  const std::string second = platform::CreateTemporaryFile();
  EXPECT_NE(first, second);
  for (const std::string& path : {first, second}) {
    EXPECT_EQ(path.find('/'), std::string::npos);
    EXPECT_EQ(path.rfind(platform::TemporaryFolder() + "\\tmp", 0), 0U) << path;
    EXPECT_EQ(fs::file_size(platform::NativePath(path.c_str())), 0U);
    EXPECT_TRUE(platform::DeleteFile(path.c_str()));
  }
}

}  // namespace
