// When a source goes, and when it stays.

#include <filesystem>

#include "tests/support/conversion_test.h"

namespace test_support {
namespace {

namespace fs = std::filesystem;

using RemovedSourcesTest = ConversionTest;

TEST_F(RemovedSourcesTest, OnlyWhatWasConvertedGoes) {
  Bmp("a.bmp", kRed);
  in.Write("b.bmp", "BM");
  Bmp("c.bmp", kBlue);
  fs::permissions(in.path() / "c.bmp", fs::perms::owner_read);
  EXPECT_EQ(Run({"-remsrc"}).output,
            Found(3) + Converted("a.bmp") + LoadingFailed("b.bmp") + Converted("c.bmp") + Finished());
  EXPECT_EQ(in.Contents(), (Names{"b.bmp", "c.bmp"}));
  EXPECT_EQ(Outputs(), (Names{"a.gif", "c.gif"}));
}

TEST_F(RemovedSourcesTest, AnOutputOfTheSameNameStays) {
  for (const bool overwrite : {false, true}) {
    const TemporaryFolder folder;
    folder.Write("a.gif", GifFileOf({{4, 3, Plain(kRed)}, {4, 3, Plain(kGreen)}}));
    folder.Write("b.bmp", BmpFile({4, 3, Plain(kBlue)}));
    std::vector<std::string> words = {"s=" + folder.path().string() + "/", "-remsrc", "-delay33"};
    if (overwrite) words.push_back("-ov");
    EXPECT_EQ(RunZefa(words).status, 0);
    EXPECT_EQ(folder.Contents(), (Names{"a.gif", "b.gif"}));
    const support::GifFile gif = support::ReadGif((folder.path() / "a.gif").string());
    EXPECT_TRUE(HasPages(gif, {kRed, kGreen}));
    EXPECT_EQ(gif.pages[0].delay, 33U);
  }
}

TEST_F(RemovedSourcesTest, AnotherSpellingOfTheNameStaysToo) {
  Gif("a.gif", {kRed});
  fs::create_directory_symlink(in.path(), out.path() / "way");
  EXPECT_EQ(RunZefa({Sources(), "d=" + (out.path() / "way").string(), "-remsrc", "-ov"}).status, 0);
  EXPECT_EQ(in.Contents(), Names{"a.gif"});
  EXPECT_TRUE(HasPages(support::ReadGif((in.path() / "a.gif").string()), {kRed}));
}

TEST_F(RemovedSourcesTest, ASecondNameOfTheSourceIsNotTheSource) {
  Gif("a.gif", {kRed});
  fs::create_hard_link(in.path() / "a.gif", out.path() / "out/a.gif");
  EXPECT_EQ(Run({"-remsrc"}).status, 0);
  EXPECT_TRUE(in.Contents().empty());
  EXPECT_EQ(Outputs(), (Names{"a(1).gif", "a.gif"}));
}

TEST_F(RemovedSourcesTest, StaysWhenASlideOfItHasNoFile) {
  Gif("a.gif", {kRed, kGreen});
  Gif("b.gif", {kRed, kGreen});
  out.MakeFolder("out/a_p1.gif");
  EXPECT_EQ(Run({"-remsrc", "-sep", "-ov"}).status, 0);
  EXPECT_EQ(in.Contents(), Names{"a.gif"});
  EXPECT_EQ(Outputs(), (Names{"a_p0.gif", "a_p1.gif", "b_p0.gif", "b_p1.gif"}));
}

TEST_F(RemovedSourcesTest, UnitedSourcesGoBehindTheSave) {
  Bmp("a.bmp", kRed);
  in.Write("b.bmp", "BM");
  EXPECT_EQ(Run({"-remsrc", "-unite:all"}).status, 0);
  EXPECT_EQ(in.Contents(), Names{"b.bmp"});
  EXPECT_TRUE(HasPages("all.gif", {kRed}));

  Bmp("a.bmp", kRed);
  EXPECT_EQ(Run({"-remsrc", "-unite:none/all"}).status, 253);  // no such folder
  EXPECT_EQ(in.Contents(), (Names{"a.bmp", "b.bmp"}));
}

TEST_F(RemovedSourcesTest, CollagedSourcesGoWithTheirSheets) {
  for (const char* name : {"a.bmp", "b.bmp", "c.bmp"}) Bmp(name, kRed);
  in.Write("d.bmp", "BM");
  EXPECT_EQ(Run({"-remsrc", "-collage(2;1;0;0;0)"}).status, 0);
  EXPECT_EQ(in.Contents(), Names{"d.bmp"});
  EXPECT_EQ(Outputs(), (Names{"collage(1).gif", "collage.gif"}));
}

}  // namespace
}  // namespace test_support
