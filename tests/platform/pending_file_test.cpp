#include "platform/pending_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace platform {
namespace {

namespace fs = std::filesystem;

constexpr rlimit kNothing{0, 0};

std::string ReadAll(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

void WriteAll(const fs::path& path, const std::string& text) { std::ofstream(path, std::ios::binary) << text; }

std::string Slashes(std::string text) {
  std::replace(text.begin(), text.end(), '\\', '/');
  return text;
}

// Both kinds have to behave alike.
class PendingFileTest : public testing::TestWithParam<PendingFile::Kind> {
 protected:
  void SetUp() override {
    std::string pattern = (fs::temp_directory_path() / "pending_XXXXXX").string();
    folder = mkdtemp(pattern.data());
    text = folder.string();
    std::replace(text.begin(), text.end(), '/', '\\');
  }
  void TearDown() override { fs::remove_all(folder); }

  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
  }
  std::string Named(const char* name) const { return text + "\\" + name; }
  static void Fill(const PendingFile& file, const std::string& content) { WriteAll(Slashes(file.Path()), content); }

  fs::path folder;
  std::string text;  // the same with backslashes
};

INSTANTIATE_TEST_SUITE_P(Kinds, PendingFileTest,
                         testing::Values(PendingFile::Kind::kBest, PendingFile::Kind::kHiddenName),
                         [](const auto& kind) { return kind.param == PendingFile::Kind::kBest ? "Best" : "Hidden"; });

TEST_P(PendingFileTest, HasNoNameBeforeTheCommit) {
  PendingFile file(text.c_str(), GetParam());
  ASSERT_TRUE(file.IsOpen());
  Fill(file, "first");
  Fill(file, "second");
  EXPECT_EQ(ReadAll(Slashes(file.Path())), "second");
  for (const std::string& name : Names()) EXPECT_EQ(name.rfind(".zefa-", 0), 0U) << name;
  ASSERT_EQ(file.Commit(Named("a.gif").c_str()), PendingFile::Outcome::kDone);
  EXPECT_TRUE(file.Flush());
  EXPECT_EQ(Names(), std::vector<std::string>{"a.gif"});
  EXPECT_EQ(ReadAll(folder / "a.gif"), "second");
}

TEST_P(PendingFileTest, LeavesNothingWithoutCommit) {
  {
    const PendingFile file(text.c_str(), GetParam());
    Fill(file, "part");
  }
  EXPECT_TRUE(Names().empty());
}

TEST_P(PendingFileTest, CommitLeavesWhatIsThere) {
  WriteAll(folder / "a.gif", "old");
  fs::create_symlink("nowhere", folder / "b.gif");
  fs::create_directory(folder / "c.gif");
  PendingFile file(text.c_str(), GetParam());
  Fill(file, "new");
  for (const char* name : {"a.gif", "b.gif", "c.gif"}) {
    EXPECT_EQ(file.Commit(Named(name).c_str()), PendingFile::Outcome::kTaken) << name;
  }
  EXPECT_EQ(ReadAll(folder / "a.gif"), "old");
  EXPECT_EQ(file.Commit(Named("d.gif").c_str()), PendingFile::Outcome::kDone);
  EXPECT_EQ(ReadAll(folder / "d.gif"), "new");
}

TEST_P(PendingFileTest, ReplacesInOneStep) {
  WriteAll(folder / "a.gif", "old");
  const int reader = open((folder / "a.gif").c_str(), O_RDONLY);
  PendingFile file(text.c_str(), GetParam());
  Fill(file, "new");
  EXPECT_EQ(file.CommitReplacing(Named("a.gif").c_str()), PendingFile::Outcome::kDone);
  EXPECT_EQ(Names(), std::vector<std::string>{"a.gif"});
  EXPECT_EQ(ReadAll(folder / "a.gif"), "new");
  char old[3] = {};
  EXPECT_EQ(read(reader, old, 3), 3);  // who had it open still reads the old one
  EXPECT_EQ(std::string(old, 3), "old");
  close(reader);

  PendingFile other(text.c_str(), GetParam());
  Fill(other, "another");
  EXPECT_EQ(other.CommitReplacing(Named("b.gif").c_str()), PendingFile::Outcome::kDone);
  EXPECT_EQ(ReadAll(folder / "b.gif"), "another");
}

TEST_P(PendingFileTest, DoesNotReplaceAFolder) {
  fs::create_directory(folder / "a.gif");
  {
    PendingFile file(text.c_str(), GetParam());
    Fill(file, "new");
    EXPECT_EQ(file.CommitReplacing(Named("a.gif").c_str()), PendingFile::Outcome::kFailed);
  }
  EXPECT_EQ(Names(), std::vector<std::string>{"a.gif"});
}

TEST_P(PendingFileTest, HasTheModeOfAnOrdinaryFile) {
  for (const mode_t mask : {mode_t{022}, mode_t{077}, mode_t{0}}) {
    const mode_t before = umask(mask);
    PendingFile file(text.c_str(), GetParam());
    const std::string name = std::to_string(mask) + ".gif";
    EXPECT_EQ(file.Commit(Named(name.c_str()).c_str()), PendingFile::Outcome::kDone);
    umask(before);
    struct stat status {};
    ASSERT_EQ(stat((folder / name).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0666U & ~mask);
  }
}

TEST_P(PendingFileTest, FailsInAFolderThatIsNot) {
  PendingFile file((text + "\\none").c_str(), GetParam());
  EXPECT_FALSE(file.IsOpen());
  EXPECT_EQ(file.Commit(Named("a.gif").c_str()), PendingFile::Outcome::kFailed);
  EXPECT_EQ(file.CommitReplacing(Named("a.gif").c_str()), PendingFile::Outcome::kFailed);
  EXPECT_FALSE(file.Flush());
  EXPECT_TRUE(Names().empty());
}

TEST_P(PendingFileTest, IsGoneAfterExitInTheMiddle) {
  const pid_t child = fork();
  if (child == 0) {
    const PendingFile file(text.c_str(), GetParam());
    Fill(file, "part");
    std::exit(1);  // destroys no local object
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(Names().empty());
}

// A process asked to end says so in its status and leaves nothing, of several files either.
TEST_P(PendingFileTest, IsGoneAfterASignalToEnd) {
  for (const int wanted : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
    const pid_t child = fork();
    if (child == 0) {
      setrlimit(RLIMIT_CORE, &kNothing);
      const PendingFile first(text.c_str(), GetParam());
      { const PendingFile passing(text.c_str(), GetParam()); }
      const PendingFile second(text.c_str(), GetParam());
      raise(wanted);
      _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == wanted) << wanted;
    EXPECT_TRUE(Names().empty()) << wanted;
  }
}

TEST_P(PendingFileTest, StaysUnderASignalThatIsIgnored) {
  const pid_t child = fork();
  if (child == 0) {
    signal(SIGHUP, SIG_IGN);
    PendingFile file(text.c_str(), GetParam());
    Fill(file, "whole");
    raise(SIGHUP);
    _exit(file.Commit(Named("a.gif").c_str()) == PendingFile::Outcome::kDone ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(ReadAll(folder / "a.gif"), "whole");
}

TEST_P(PendingFileTest, AKilledProcessLeavesNoFinalName) {
  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  const pid_t child = fork();
  if (child == 0) {
    const PendingFile file(text.c_str(), GetParam());
    Fill(file, "part");
    if (write(ready[1], "x", 1) != 1) _exit(1);
    pause();
    _exit(0);
  }
  char byte = 0;
  ASSERT_EQ(read(ready[0], &byte, 1), 1);
  kill(child, SIGKILL);
  int status = 0;
  waitpid(child, &status, 0);
  close(ready[0]);
  close(ready[1]);
  const auto names = Names();
  if (GetParam() == PendingFile::Kind::kBest) {
    EXPECT_TRUE(names.empty());
  } else {
    ASSERT_EQ(names.size(), 1U);
    EXPECT_EQ(names[0].rfind(".zefa-", 0), 0U);
  }
}

TEST_P(PendingFileTest, OverwritingKeepsNothingOfALongerContent) {
  PendingFile file(text.c_str(), GetParam());
  const std::string large(200000, 'l');
  Fill(file, large);
  PendingFile other(text.c_str(), GetParam());
  Fill(other, "short");
  ASSERT_TRUE(OverwriteContent(other.Path(), file.Path()));
  EXPECT_EQ(ReadAll(Slashes(file.Path())), "short");
  Fill(other, large);
  ASSERT_TRUE(OverwriteContent(other.Path(), file.Path()));
  EXPECT_EQ(ReadAll(Slashes(file.Path())), large);
  EXPECT_FALSE(OverwriteContent(Named("none").c_str(), file.Path()));
  EXPECT_EQ(ReadAll(Slashes(file.Path())), large);
}

}  // namespace
}  // namespace platform
