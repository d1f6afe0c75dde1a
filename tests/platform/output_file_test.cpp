#include "platform/output_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "tests/support/temporary_folder.h"

namespace {

using platform::OutputFile;
using test_support::TemporaryFolder;

TEST(OutputFile, MakesAndReplaces) {
  const TemporaryFolder folder;
  for (const std::string content : {"a longer content", "short", ""}) {
    OutputFile file;
    ASSERT_TRUE(file.Open(folder.Text("a.gif").c_str()));
    EXPECT_TRUE(file.Write(content.data(), content.size() / 2));
    EXPECT_TRUE(file.Write(content.data() + content.size() / 2, content.size() - content.size() / 2));
    EXPECT_TRUE(file.Close());
    EXPECT_FALSE(file.Close()) << "there is nothing to close any more";
    EXPECT_EQ(folder.Read("a.gif"), content);
  }
}

TEST(OutputFile, UnfinishedFilesGoAwayUnlessTheyWereThere) {
  const TemporaryFolder folder;
  folder.Write("old.gif", "something");
  for (const char* name : {"old.gif", "new.gif"}) {
    OutputFile file;
    ASSERT_TRUE(file.Open(folder.Text(name).c_str()));
    EXPECT_TRUE(file.Write("xyz", 3));
  }
  EXPECT_TRUE(std::filesystem::exists(folder.path() / "old.gif"));
  EXPECT_FALSE(std::filesystem::exists(folder.path() / "new.gif"));
}

TEST(OutputFile, OpeningAnotherFileGivesUpTheFirst) {
  const TemporaryFolder folder;
  OutputFile file;
  ASSERT_TRUE(file.Open(folder.Text("a.gif").c_str()));
  ASSERT_TRUE(file.Open(folder.Text("b.gif").c_str()));
  EXPECT_TRUE(file.Write("b", 1));
  EXPECT_TRUE(file.Close());
  EXPECT_FALSE(std::filesystem::exists(folder.path() / "a.gif"));
  EXPECT_EQ(folder.Read("b.gif"), "b");
}

// The host hands over a file without a name by the descriptor that it keeps open.
TEST(OutputFile, WritesToADescriptor) {
  const TemporaryFolder folder;
  const std::string path = folder.path() / "gone";
  const int descriptor = open(path.c_str(), O_RDWR | O_CREAT, 0600);
  ASSERT_GE(descriptor, 0);
  ASSERT_EQ(unlink(path.c_str()), 0);
  ASSERT_EQ(write(descriptor, "what stood there before", 23), 23);
  OutputFile file;
  ASSERT_TRUE(file.Open(("\\proc\\self\\fd\\" + std::to_string(descriptor)).c_str()));
  EXPECT_TRUE(file.Write("new", 3));
  EXPECT_TRUE(file.Close());
  char content[32] = {};
  EXPECT_EQ(pread(descriptor, content, sizeof(content), 0), 3);
  EXPECT_STREQ(content, "new");
  close(descriptor);
}

TEST(OutputFile, RefusesWhatCantBeWritten) {
  const TemporaryFolder folder;
  OutputFile file;
  EXPECT_FALSE(file.Open(nullptr));
  EXPECT_FALSE(file.Open(""));
  EXPECT_FALSE(file.Open(folder.path().c_str()));
  EXPECT_FALSE(file.Open(folder.Text("missing\\a.gif").c_str()));
  EXPECT_FALSE(file.Write("x", 1));
  EXPECT_FALSE(file.Close());
}

TEST(OutputFile, AFullDeviceIsReported) {
  OutputFile file;
  if (!file.Open("\\dev\\full")) GTEST_SKIP() << "no such device here";
  EXPECT_FALSE(file.Write("x", 1));
  EXPECT_FALSE(file.Write("x", 1)) << "a failure stays";
  EXPECT_FALSE(file.Close());
  EXPECT_TRUE(std::filesystem::exists("/dev/full"));
}

// Waiting for a reader that may never come would hold up the whole run.
TEST(OutputFile, DoesNotWaitForTheOtherEndOfAPipe) {
  const TemporaryFolder folder;
  ASSERT_EQ(mkfifo((folder.path() / "pipe").c_str(), 0600), 0);
  OutputFile file;
  EXPECT_FALSE(file.Open(folder.Text("pipe").c_str()));
}

}  // namespace
