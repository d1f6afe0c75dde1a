// Sources as cells of sheets.

#include "tests/support/conversion_test.h"

namespace test_support {
namespace {

using CollageTest = ConversionTest;

std::string Laid(const std::string& name) { return " " + name + "....Loaded\n" + Processed(); }
std::string Look() { return ".."; }  // at the format of a batch's first source

TEST_F(CollageTest, SheetsFillInOrder) {
  for (const char* name : {"a.bmp", "b.bmp", "c.bmp", "d.bmp", "e.bmp"}) Bmp(name, name[0] == 'e' ? kBlue : kRed, 4, 4);
  const ProgramRun run = Run({"-collage(2;2;0;0;0)"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output, Found(5) + Look() + Laid("a.bmp") + Laid("b.bmp") + Laid("c.bmp") + Laid("d.bmp") + Saved() +
                            Look() + Laid("e.bmp") + Saved());
  EXPECT_EQ(Outputs(), (Names{"collage(1).gif", "collage.gif"}));
  EXPECT_EQ(Output("collage.gif").width, 8U);
  EXPECT_EQ(Output("collage.gif").height, 8U);
  EXPECT_TRUE(HasPages("collage(1).gif", {kBlue}));
  EXPECT_EQ(Output("collage(1).gif").width, 4U);
}

TEST_F(CollageTest, ImagesStandInTheMiddleOfTheirCells) {
  Bmp("a.bmp", kRed, 2, 4);
  Bmp("b.bmp", kGreen, 4, 2);
  EXPECT_EQ(Run({"-collage(2;1;0;2;2)", "-bch000000"}).status, 0);
  const support::GifFile gif = Output("collage.gif");
  ASSERT_EQ(gif.pages.size(), 1U) << gif.error;
  const support::GifPage& page = gif.pages[0];
  ASSERT_EQ(page.width, 12U);  // cells of 6 by 6
  ASSERT_EQ(page.height, 6U);
  // Laid on black, the colours become 255 * 255 / 256.
  for (std::uint32_t y = 0; y < 6; ++y) {
    for (std::uint32_t x = 0; x < 12; ++x) {
      const bool red = x >= 2 && x < 4 && y >= 1 && y < 5;
      const bool green = x >= 7 && x < 11 && y >= 2 && y < 4;
      EXPECT_EQ(page.At(x, y) & 0xFFFFFF, red ? 0xFE0000U : green ? 0x00FE00U : 0U) << x << ',' << y;
    }
  }
}

TEST_F(CollageTest, SheetsOfTheirOwn) {
  Gif("a.gif", {kRed, kRed, kRed, kRed, kGreen, kGreen});
  Bmp("b.bmp", kBlue);
  EXPECT_EQ(Run({"-collage(2;2;1;0;0)", "-sep"}).status, 0);
  EXPECT_EQ(Outputs(), (Names{"collage(1).gif", "collage(2).gif", "collage.gif"}));
  EXPECT_TRUE(HasPages("collage.gif", {kRed}));
  EXPECT_EQ(Output("collage.gif").height, 6U);
  EXPECT_TRUE(HasPages("collage(1).gif", {kGreen}));
  EXPECT_EQ(Output("collage(1).gif").height, 3U);
  EXPECT_TRUE(HasPages("collage(2).gif", {kBlue}));
}

TEST_F(CollageTest, NoSlideIsDroppedFromCommonSheets) {
  Bmp("a.bmp", kRed);
  Gif("b.gif", {kGreen, kGreen, kGreen, kGreen, kGreen, kGreen});
  EXPECT_EQ(Run({"-collage(2;2;0;0;0)", "-sep"}).status, 0);
  EXPECT_EQ(Outputs(), (Names{"collage(1).gif", "collage.gif"}));
  const support::GifFile first = Output("collage.gif");
  ASSERT_TRUE(first.ok);
  EXPECT_EQ(first.pages[0].At(0, 0), 0xFF000000 | kRed);
  EXPECT_EQ(first.pages[0].At(7, 5), 0xFF000000 | kGreen);
  const support::GifFile second = Output("collage(1).gif");  // the other three
  ASSERT_TRUE(second.ok);
  EXPECT_EQ(second.pages[0].At(7, 0), 0xFF000000 | kGreen);
  EXPECT_EQ(second.pages[0].At(0, 5), 0xFF000000 | kGreen);
  EXPECT_NE(second.pages[0].At(7, 5), 0xFF000000 | kGreen);
}

TEST_F(CollageTest, OverwritingMakesEarlierSheetsGo) {
  Bmp("a.bmp", kRed);
  Bmp("b.bmp", kGreen);
  for (const char* name : {"collage.gif", "collage(1).gif", "collage(7).gif", "collage of mine.gif", "Collage.GIF"}) {
    out.Write(std::string("out/") + name, "old");
  }
  out.Write("out/other.gif", "old");
  EXPECT_EQ(Run({"-collage(1;1;0;0;0)", "-ov"}).status, 0);
  EXPECT_EQ(Outputs(), (Names{"collage(1).gif", "collage.gif", "other.gif"}));
  EXPECT_TRUE(HasPages("collage.gif", {kRed}));
  EXPECT_TRUE(HasPages("collage(1).gif", {kGreen}));

  EXPECT_EQ(Run({"-collage(2;1;0;0;0)"}).status, 0);
  EXPECT_EQ(Outputs(), (Names{"collage(1).gif", "collage(2).gif", "collage.gif", "other.gif"}));
}

TEST_F(CollageTest, EarlierSheetsStayWhenNothingNewStands) {
  in.Write("a.bmp", "BM");
  out.Write("out/collage.gif", "old");
  EXPECT_EQ(Run({"-collage(1;1;0;0;0)", "-ov"}).status, 253);
  EXPECT_EQ(out.Read("out/collage.gif"), "old");

  Bmp("a.bmp", kRed);
  const ProgramRun run = Run({"-collage(1;1;0;2000000000;2000000000)", "-ov"});
  EXPECT_EQ(run.status, 253);
  EXPECT_EQ(run.output, Found(1) + Look() + Laid("a.bmp") + "   Saving..Converting failed\n");
  EXPECT_EQ(out.Read("out/collage.gif"), "old");
}

TEST_F(CollageTest, AFailedSheetCostsNoEarlierOne) {
  Bmp("a.bmp", kRed);
  in.Write("b.bmp", BmpFile({64, 64, Noise(1)}));
  for (const char* name : {"collage.gif", "collage(1).gif", "collage(2).gif"}) {
    out.Write(std::string("out/") + name, "old");
  }
  const RunPlace full = {{}, 2000, {}};
  EXPECT_EQ(Run({"-collage(1;1;0;0;0)", "-ov"}, full).status, 0);
  EXPECT_EQ(Outputs(), (Names{"collage(1).gif", "collage(2).gif", "collage.gif"}));
  EXPECT_TRUE(HasPages("collage.gif", {kRed}));
  EXPECT_EQ(out.Read("out/collage(1).gif"), "old");
}

TEST_F(CollageTest, AnEarlierSheetIsNoSource) {
  Bmp("a.bmp", kRed);
  Gif("collage.gif", {kGreen});
  Gif("collage of mine.gif", {kBlue});
  const ProgramRun run = RunZefa({Sources(), "d=" + in.path().string(), "-collage(1;1;0;0;0)", "-ov", "-sortlstaz"});
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.output, Found(3) + Look() + Laid("a.bmp") + Saved() + Look() + Laid("collage of mine.gif") + Saved() +
                            Look() + LoadingFailed("collage.gif"));
  EXPECT_EQ(in.Contents(), (Names{"a.bmp", "collage of mine.gif", "collage(1).gif", "collage.gif"}));
  EXPECT_TRUE(HasPages(support::ReadGif((in.path() / "collage.gif").string()), {kRed}));
  EXPECT_TRUE(HasPages(support::ReadGif((in.path() / "collage(1).gif").string()), {kBlue}));
}

TEST_F(CollageTest, SheetsStayBelowALimit) {
  in.Write("a.bmp", BmpFile({48, 48, Noise(1)}));
  in.Write("b.bmp", BmpFile({48, 48, Noise(2)}));
  ASSERT_EQ(Run({"-collage(2;1;0;0;0)"}).status, 0);
  const std::size_t whole = out.Read("out/collage.gif").size();
  ASSERT_GT(whole, 4000U);
  const ProgramRun run = Run({"-collage(2;1;0;0;0)", "-ov", "-max" + std::to_string(whole / 2)});
  EXPECT_NE(run.output.find("..Ready\n"), std::string::npos);
  EXPECT_LE(out.Read("out/collage.gif").size(), whole / 2);
}

TEST_F(CollageTest, ARangeBeyondTheSheetSavesNothing) {
  Bmp("a.bmp", kRed);
  EXPECT_EQ(Run({"-collage(1;1;0;0;0)", "-sep(1)"}).status, 253);
  EXPECT_TRUE(Outputs().empty());
}

}  // namespace
}  // namespace test_support
