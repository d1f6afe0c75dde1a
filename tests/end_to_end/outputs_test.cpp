// Where outputs stand, and what becomes of what stood there.

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "tests/support/conversion_test.h"

namespace test_support {
namespace {

namespace fs = std::filesystem;

using OutputsTest = ConversionTest;

TEST_F(OutputsTest, TheSourceTreeIsRepeated) {
  Bmp("a.bmp", kRed);
  Bmp("sub.1/deep/b.bmp", kGreen);
  Bmp("sub.1/noext", kBlue);
  Bmp(".hidden", kWhite);
  EXPECT_EQ(Run({"-sf"}).status, 0);
  EXPECT_EQ(Outputs(), (Names{".hidden.gif", "a.gif", "sub.1", "sub.1/deep", "sub.1/deep/b.gif", "sub.gif"}));
  EXPECT_TRUE(HasPages("sub.1/deep/b.gif", {kGreen}));
  EXPECT_TRUE(HasPages("sub.gif", {kBlue}));  // the dot of the folder counts for a name without one
}

TEST_F(OutputsTest, WithoutOverwritingTheNextFreeNameIsTaken) {
  Bmp("a.bmp", kRed);
  Bmp("a.dib", kGreen);
  out.Write("out/a.gif", "mine");
  fs::create_symlink("nowhere", out.path() / "out/a(1).gif");
  EXPECT_EQ(Run({}).output, Found(2) + Converted("a.bmp") + Converted("a.dib") + Finished());
  EXPECT_EQ(Outputs(), (Names{"a(1).gif", "a(2).gif", "a(3).gif", "a.gif"}));
  EXPECT_EQ(out.Read("out/a.gif"), "mine");
  EXPECT_TRUE(fs::is_symlink(out.path() / "out/a(1).gif"));
  EXPECT_TRUE(HasPages("a(2).gif", {kRed}));
  EXPECT_TRUE(HasPages("a(3).gif", {kGreen}));
}

TEST_F(OutputsTest, OverwritingReplaces) {
  Bmp("a.bmp", kRed);
  out.Write("out/a.gif", std::string(100000, 'x'));
  EXPECT_EQ(Run({"-ov"}).output, Found(1) + Converted("a.bmp") + Finished());
  EXPECT_EQ(Outputs(), Names{"a.gif"});
  EXPECT_TRUE(HasPages("a.gif", {kRed}));
}

TEST_F(OutputsTest, WhatMayNotBeReplacedIsPassedOver) {
  Bmp("a.bmp", kRed);
  Bmp("b.bmp", kGreen);
  Bmp("c.bmp", kBlue);
  out.Write("out/a.gif", "mine");
  fs::permissions(out.path() / "out/a.gif", fs::perms::owner_read);
  out.Write("out/b.gif/inside", "mine");
  EXPECT_EQ(Run({"-ov"}).output, Found(3) + LoadedOk("a.bmp") + LoadedOk("b.bmp") + Converted("c.bmp") + Finished());
  EXPECT_EQ(Outputs(), (Names{"a.gif", "b.gif", "b.gif/inside", "c.gif"}));
  EXPECT_EQ(out.Read("out/a.gif"), "mine");
}

TEST_F(OutputsTest, OnlyFilesAreReplaced) {
  Bmp("a.bmp", kRed);
  const std::string pipe = (out.path() / "pipe.gif").string();
  ASSERT_EQ(mkfifo(pipe.c_str(), 0666), 0);
  const std::string passedOver = Found(1) + LoadedOk("a.bmp") + Finished();
  EXPECT_EQ(RunZefa({Sources(), "df=" + pipe, "-ov", "-remsrc"}).output, passedOver);
  EXPECT_EQ(RunZefa({Sources(), "df=" + pipe, "-ov", "-remsrc", "-unite:a"}).status, 253);
  EXPECT_TRUE(fs::is_fifo(pipe));
  fs::rename(pipe, out.path() / "out/collage.gif");
  EXPECT_EQ(Run({"-collage(1;1;0;0;0)", "-ov"}).status, 0);
  EXPECT_EQ(Outputs(), (Names{"collage(1).gif", "collage.gif"}));
  EXPECT_TRUE(fs::is_fifo(out.path() / "out/collage.gif"));
  EXPECT_EQ(in.Contents(), Names{"a.bmp"});
}

TEST_F(OutputsTest, WhatALockedFolderHoldsIsPassedOver) {
  if (geteuid() == 0) GTEST_SKIP() << "no folder is locked for the superuser";
  Bmp("a.bmp", kRed);
  out.Write("out/a.gif", "mine");
  fs::permissions(out.path() / "out", fs::perms::owner_read | fs::perms::owner_exec);
  EXPECT_EQ(Run({"-ov"}).output, Found(1) + LoadedOk("a.bmp") + Finished());
  const ProgramRun united = Run({"-ov", "-unite:a"});
  fs::permissions(out.path() / "out", fs::perms::owner_all);
  EXPECT_EQ(united.output, Found(1));
  EXPECT_EQ(united.status, 253);
  EXPECT_EQ(out.Read("out/a.gif"), "mine");
}

TEST_F(OutputsTest, SlidesAsFilesOfTheirOwn) {
  Gif("a.gif", {kRed, kGreen, kBlue, kWhite});
  Bmp("b.bmp", kRed);
  struct Case {
    const char* word;
    Names names;
  };
  const Case cases[] = {
      {"-sep", {"a_p0.gif", "a_p1.gif", "a_p2.gif", "a_p3.gif", "b.gif"}},
      {"-sep(2)", {"a_p2.gif", "a_p3.gif"}},  // the single slide of b is before the range
      {"-sep(1;2)", {"a_p1.gif", "a_p2.gif"}},
      {"-sep(0;1)", {"a.gif", "b.gif"}},  // a range that ends behind the first slide is no series
  };
  const std::vector<std::uint32_t> colours = {kRed, kGreen, kBlue, kWhite};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.word);
    const TemporaryFolder fresh;
    EXPECT_EQ(RunZefa({Sources(), "d=" + fresh.path().string(), c.word}).status, 0);
    EXPECT_EQ(fresh.Contents(), c.names);
    for (const std::string& name : c.names) {
      const std::size_t number = name.find("_p");
      const std::uint32_t colour =
          number == std::string::npos ? kRed : colours[static_cast<std::size_t>(name[number + 2] - '0')];
      EXPECT_TRUE(HasPages(support::ReadGif((fresh.path() / name).string()), {colour})) << name;
    }
  }
}

TEST_F(OutputsTest, SlidesPassOverWhatIsTaken) {
  Gif("a.gif", {kRed, kGreen, kBlue});
  out.Write("out/a_p1.gif", "mine");
  const std::string words = Found(1) + LoadedOk("a.gif") + Processed() + "   Saving......" + "..Ready\n" + Finished();
  EXPECT_EQ(Run({"-sep"}).output, words);
  EXPECT_EQ(Outputs(), (Names{"a_p0.gif", "a_p1(1).gif", "a_p1.gif", "a_p2.gif"}));
  EXPECT_TRUE(HasPages("a_p1(1).gif", {kGreen}));

  fs::permissions(out.path() / "out/a_p1.gif", fs::perms::owner_read);
  out.Write("out/a.gif", "not of this run");
  EXPECT_EQ(Run({"-sep", "-ov"}).output,
            Found(1) + LoadedOk("a.gif") + Processed() + "   Saving....." + ".Ready\n" + Finished());
  EXPECT_EQ(out.Read("out/a_p1.gif"), "mine");
  EXPECT_EQ(out.Read("out/a.gif"), "not of this run");
}

TEST_F(OutputsTest, AWholePathForEveryFile) {
  Bmp("a.bmp", kRed);
  Bmp("b.bmp", kGreen);
  const std::string path = (out.path() / "new/deep/name.xyz").string();
  EXPECT_EQ(RunZefa({Sources(), "df=" + path, "-sortlstaz"}).status, 0);
  EXPECT_TRUE(HasPages(support::ReadGif(path), {kRed}));
  EXPECT_TRUE(HasPages(support::ReadGif((out.path() / "new/deep/name(1).gif").string()), {kGreen}));

  EXPECT_EQ(RunZefa({Sources(), "df=" + path, "-sortlstaz", "-ov"}).status, 0);
  EXPECT_TRUE(HasPages(support::ReadGif(path), {kGreen}));
}

TEST_F(OutputsTest, SlidesOfANameWithoutADot) {
  Gif("a.gif", {kRed, kGreen});
  EXPECT_EQ(RunZefa({Sources(), "df=" + (out.path() / "set.2/name").string(), "-sep"}).status, 0);
  EXPECT_TRUE(out.Has("set.2/name_p0.gif"));
  EXPECT_TRUE(out.Has("set.2/name_p1.gif"));
}

TEST_F(OutputsTest, ABareNameStandsInTheCurrentFolder) {
  Bmp("a.bmp", kRed);
  for (const char* word : {"-ov", "-unite:x"}) {
    const TemporaryFolder here;
    EXPECT_EQ(RunZefa({Sources(), "df=name.gif", word}, {here.path()}).status, 0);
    EXPECT_EQ(here.Contents(), Names{"name.gif"}) << word;
  }
}

TEST_F(OutputsTest, AFolderThatCannotBeMade) {
  Bmp("a.bmp", kRed);
  out.Write("file", "no folder");
  const std::string folder = (out.path() / "file/sub").string();
  std::string text = folder;
  for (char& c : text) c = c == '/' ? '\\' : c;
  EXPECT_EQ(RunZefa({Sources(), "d=" + folder}).output, Found(1) + LoadedOk("a.bmp") + FolderFailed(text) + Finished());
  for (const char* word : {"-unite:all", "-collage(2;2;0;0;0)"}) {
    const ProgramRun run = RunZefa({Sources(), "d=" + folder, word});
    EXPECT_EQ(run.status, 253);
    EXPECT_EQ(run.output, Found(1) + FolderFailed(text));
  }
}

TEST_F(OutputsTest, AFolderThatIsAFile) {
  Bmp("a.bmp", kRed);
  out.Write("file", "no folder");
  const ProgramRun run = RunZefa({Sources(), "d=" + (out.path() / "file").string()});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output, Found(1) + LoadedOk("a.bmp") + Processed() + SaveFailed() + Finished());
  EXPECT_EQ(out.Read("file"), "no folder");
}

}  // namespace
}  // namespace test_support
