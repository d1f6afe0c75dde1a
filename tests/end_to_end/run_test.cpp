// What a run says and how it ends.

#include "tests/support/conversion_test.h"

namespace test_support {
namespace {

using RunTest = ConversionTest;

TEST_F(RunTest, WithoutWordsShowsTheBanner) {
  const ProgramRun run = RunZefa({}, {in.path()});
  EXPECT_EQ(run.status, 255);
  EXPECT_EQ(run.output.rfind("\n//=====", 0), 0U);
  EXPECT_NE(run.output.find("//                         Orvane Group International                        //\n"),
            std::string::npos);
  EXPECT_NE(run.output.find("/support/index.htm\n\n"), std::string::npos);
  EXPECT_TRUE(in.Contents().empty());
}

TEST_F(RunTest, HelpDoesNothingElse) {
  Bmp("a.bmp", kRed);
  const ProgramRun run = Run({"-log", "-?"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output.rfind(" Do you have any troubles or questions?\n", 0), 0U);
  EXPECT_TRUE(Outputs().empty());
}

TEST_F(RunTest, FindingNothingIsAFailure) {
  const ProgramRun run = Run({"-log"});
  EXPECT_EQ(run.status, 254);
  EXPECT_EQ(run.output, Found(0));
  EXPECT_EQ(out.Read("out/ZEFA.log"), Found(0));
  EXPECT_EQ(RunZefa({"-ov", "nonsense"}, {in.path()}).status, 254);
}

TEST_F(RunTest, ABadFileCostsNothingButItself) {
  Bmp("a.bmp", kRed);
  in.Write("b.bmp", "BM is not enough");
  in.Write("c.bmp", "");
  in.Write("d.txt", "no image at all");
  Bmp("e.bmp", kBlue);
  const ProgramRun run = Run({});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output, Found(5) + Converted("a.bmp") + LoadingFailed("b.bmp") + LoadingFailed("c.bmp") +
                            LoadingFailed("d.txt") + Converted("e.bmp") + Finished());
  EXPECT_EQ(run.errors, "");
  EXPECT_EQ(Outputs(), (Names{"a.gif", "e.gif"}));
  EXPECT_TRUE(HasPages("a.gif", {kRed}));
  EXPECT_TRUE(HasPages("e.gif", {kBlue}));
}

TEST_F(RunTest, OnlyBadFilesStillEndWell) {
  in.Write("b.bmp", "BM");
  EXPECT_EQ(Run({}).status, 0);
  EXPECT_TRUE(Outputs().empty());
}

TEST_F(RunTest, TheLogRepeatsTheConsole) {
  Bmp("a.bmp", kRed);
  in.Write("b.bmp", "BM");
  out.Write("out/ZEFA.log", "of an earlier run");
  const ProgramRun run = Run({"-log"});
  std::string expected = run.output;
  for (const std::string name : {" a.bmp", " b.bmp"}) expected.erase(expected.find(name), 1);
  EXPECT_EQ(out.Read("out/ZEFA.log"), expected);
  EXPECT_EQ(run.output, Found(2) + Converted("a.bmp") + LoadingFailed("b.bmp") + Finished());
}

TEST_F(RunTest, TheLogBeginsWhenItsFolderIsThere) {
  Bmp("a.bmp", kRed);
  EXPECT_EQ(RunZefa({Sources(), "d=" + (out.path() / "new").string(), "-log"}).status, 0);
  EXPECT_EQ(out.Read("new/ZEFA.log"), Processed() + Saved() + Finished());
}

TEST_F(RunTest, StepsOfTheChainShowTheirDots) {
  Bmp("a.bmp", kRed, 8, 8);
  // A mirror reports its begin, its slide and its end.
  const ProgramRun run = Run({"-mirror(1;0)"});
  EXPECT_EQ(run.output, Found(1) + LoadedOk("a.bmp") + Processed("...") + Saved() + Finished());
}

TEST_F(RunTest, DelayAndRangeReachTheFile) {
  Gif("a.gif", {kRed, kGreen, kBlue});
  EXPECT_EQ(Run({"-delay7"}).status, 0);
  const support::GifFile gif = Output("a.gif");
  EXPECT_TRUE(HasPages(gif, {kRed, kGreen, kBlue}));
  for (const support::GifPage& page : gif.pages) EXPECT_EQ(page.delay, 7U);
}

TEST_F(RunTest, FlatteningLaysTransparentPixelsOnTheBackground) {
  Bmp("a.bmp", 0x102030);
  // All pixels become transparent and are then blended: c + (b - c) * 255 / 256, rounded down.
  const ProgramRun run = Run({"-totransph302010", "-notransp", "-bch0000FF"});
  EXPECT_EQ(run.status, 0);
  EXPECT_TRUE(HasPages("a.gif", {0xFE0000}));
}

TEST_F(RunTest, TheHighestByteOfTheBackgroundIsItsAlpha) {
  Bmp("a.bmp", kRed, 8, 8);
  const struct {
    std::string background;
    std::uint32_t corner;
  } cases[] = {{"-bchFF008000", 0xFF008000}, {"-bc-16744448", 0xFF008000}, {"-bch008000", 0}, {"-bcm(0;128;0)", 0}};
  for (const auto& c : cases) {
    EXPECT_EQ(Run({"-rot45", "-palitems256", "-ov", c.background}).status, 0) << c.background;
    const support::GifFile gif = Output("a.gif");
    ASSERT_EQ(gif.pages.size(), 1U) << c.background;
    EXPECT_EQ(gif.pages[0].At(0, 0), c.corner) << c.background;
    // Opaque red laid on a background without red: (255 - 0) * 255 / 256, rounded down.
    EXPECT_EQ(gif.pages[0].At(gif.width / 2, gif.height / 2), 0xFFFE0000) << c.background;
  }
}

}  // namespace
}  // namespace test_support
