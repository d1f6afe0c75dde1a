// All sources in one output.

#include "tests/support/conversion_test.h"

namespace test_support {
namespace {

using UniteTest = ConversionTest;

std::string United() { return "   Saving..   Saving..Task finished\n"; }

TEST_F(UniteTest, PagesFollowTheSources) {
  Bmp("a.bmp", kRed);
  Gif("b.gif", {kGreen, kBlue, kWhite});
  in.Write("c.bmp", "BM");
  const ProgramRun run = Run({"-unite:all.tmp"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output,
            Found(3) + " a.bmp....Ok\r\n" + " b.gif....Ok\r\n" + LoadingFailed("c.bmp") + Processed() + United());
  EXPECT_EQ(Outputs(), Names{"all.gif"});
  EXPECT_TRUE(HasPages("all.gif", {kRed, kGreen, kBlue, kWhite}));
}

TEST_F(UniteTest, TheOutputMayHaveTheNameOfASource) {
  Gif("a.gif", {kRed});
  Gif("b.gif", {kGreen});
  const std::string here = "d=" + in.path().string();
  EXPECT_EQ(RunZefa({Sources("a*"), here, "-unite:a", "-ov"}).status, 0);
  EXPECT_TRUE(HasPages(support::ReadGif((in.path() / "a.gif").string()), {kRed}));
  EXPECT_EQ(RunZefa({Sources("*"), here, "-unite:a", "-ov", "-remsrc", "-sortlstza"}).status, 0);
  EXPECT_EQ(in.Contents(), Names{"a.gif"});
  EXPECT_TRUE(HasPages(support::ReadGif((in.path() / "a.gif").string()), {kGreen, kRed}));
}

TEST_F(UniteTest, NamesAreCleanedAndRangesDontCount) {
  Gif("a.gif", {kRed, kGreen});
  EXPECT_EQ(Run({"-unite:what?*", "-sep(1;1)"}).status, 0);
  EXPECT_TRUE(HasPages("what__.gif", {kRed, kGreen}));
}

TEST_F(UniteTest, GoesBeforeTheCollage) {
  Bmp("a.bmp", kRed);
  EXPECT_EQ(Run({"-unite:all", "-collage(2;2;0;0;0)"}).status, 0);
  EXPECT_EQ(Outputs(), Names{"all.gif"});
}

TEST_F(UniteTest, NothingLoadedFailsAndKeepsTheOldOutput) {
  in.Write("a.bmp", "BM");
  out.Write("out/all.gif", "old");
  const ProgramRun run = Run({"-unite:all", "-ov"});
  EXPECT_EQ(run.status, 253);
  EXPECT_EQ(run.output.substr(run.output.rfind("   Saving")), "   Saving..Converting failed\n");
  EXPECT_EQ(out.Read("out/all.gif"), "old");
}

TEST_F(UniteTest, AnOutputThatMayNotBeReplacedFailsWithoutWords) {
  Bmp("a.bmp", kRed);
  out.MakeFolder("out/all.gif");
  const ProgramRun run = Run({"-unite:all", "-ov"});
  EXPECT_EQ(run.status, 253);
  EXPECT_EQ(run.output, Found(1));
}

}  // namespace
}  // namespace test_support
