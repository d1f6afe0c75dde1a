// Holding an output below a number of bytes.

#include <filesystem>
#include <set>

#include "tests/support/conversion_test.h"

namespace test_support {
namespace {

namespace fs = std::filesystem;

class SizeLimitTest : public ConversionTest {
 protected:
  std::uintmax_t SizeOf(const std::string& name) const { return fs::file_size(out.path() / "out" / name); }
  // The temporary folder of a run: what it leaves there is seen.
  RunPlace Place() const { return {{}, -1, {"TMPDIR=" + temporary.path().string()}}; }
  static std::string Limit(std::uintmax_t bytes) { return "-max" + std::to_string(bytes); }
  static std::size_t ColoursOf(const support::GifFile& gif) {
    std::set<std::uint32_t> colours;
    for (const auto& page : gif.pages) colours.insert(page.pixels.begin(), page.pixels.end());
    return colours.size();
  }
  // The words of a run without its dots, whose number depends on the tries.
  static std::string WithoutDots(std::string text) {
    std::erase(text, '.');
    return text;
  }

  TemporaryFolder temporary;
};

TEST_F(SizeLimitTest, FewerColoursUntilItFits) {
  in.Write("a.bmp", BmpFile({64, 64, Noise(1)}));
  ASSERT_EQ(Run({}).status, 0);
  const std::uintmax_t all = SizeOf("a.gif");
  ASSERT_EQ(Run({"-palitems2", "df=" + (out.path() / "out/two.gif").string()}).status, 0);
  const std::uintmax_t two = SizeOf("two.gif");
  ASSERT_LT(two, all);

  const std::uintmax_t limit = (all + two) / 2;
  const ProgramRun run = Run({Limit(limit), "-ov"}, Place());
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(WithoutDots(run.output), WithoutDots(Found(1) + Converted("a.bmp") + Finished()));
  EXPECT_LE(SizeOf("a.gif"), limit);
  EXPECT_GT(SizeOf("a.gif"), two);
  const support::GifFile gif = Output("a.gif");
  ASSERT_TRUE(gif.ok) << gif.error;
  EXPECT_EQ(gif.width, 64U);
  EXPECT_GT(ColoursOf(gif), 2U);
  EXPECT_TRUE(temporary.Contents().empty());
}

TEST_F(SizeLimitTest, WhatFitsIsSavedOnce) {
  Bmp("a.bmp", kRed);
  EXPECT_EQ(Run({"-max100000"}, Place()).output, Found(1) + Converted("a.bmp") + Finished());
}

TEST_F(SizeLimitTest, WhatCannotFitIsSaidAndTheSmallerFileStands) {
  in.Write("a.bmp", BmpFile({64, 64, Noise(1)}));
  ASSERT_EQ(Run({"-palitems2", "df=" + (out.path() / "out/two.gif").string()}).status, 0);
  const ProgramRun run = Run({"-max50"}, Place());
  EXPECT_EQ(run.status, 0);
  // Two dots for the save, two for the try with two colours.
  EXPECT_EQ(run.output, Found(1) + LoadedOk("a.bmp") + Processed() +
                            "   Saving....   Cannot create too small GIF file\n..Ready\n" + Finished());
  EXPECT_EQ(out.Read("out/a.gif"), out.Read("out/two.gif"));
  EXPECT_TRUE(temporary.Contents().empty());
}

TEST_F(SizeLimitTest, ATryThatCannotBeWrittenKeepsTheFirstSave) {
  in.Write("a.bmp", BmpFile({64, 64, Noise(1)}));
  ASSERT_EQ(Run({}).status, 0);
  const std::string first = out.Read("out/a.gif");
  RunPlace place;
  place.environment = {"TMPDIR=" + (temporary.path() / "none").string()};
  const ProgramRun run = Run({"-max3000", "-ov"}, place);
  EXPECT_NE(run.output.find("   Cannot create too small GIF file\n..Ready\n"), std::string::npos);
  EXPECT_EQ(out.Read("out/a.gif"), first);
}

TEST_F(SizeLimitTest, OneFileHasNoEffectOnTheNext) {
  in.Write("a.bmp", BmpFile({64, 64, Noise(1)}));
  in.Write("b.bmp", BmpFile({24, 24, [](int x, int y) { return static_cast<std::uint32_t>(x * 10 << 8 | y * 10); }}));
  ASSERT_EQ(Run({}).status, 0);
  const std::string alone = out.Read("out/b.gif");
  ASSERT_LT(alone.size(), 2500U);
  ASSERT_EQ(Run({"-max2500", "-ov"}).status, 0);
  EXPECT_LE(SizeOf("a.gif"), 2500U);
  EXPECT_EQ(out.Read("out/b.gif"), alone);
}

TEST_F(SizeLimitTest, PagesFirstLoseWhatDoesNotChange) {
  std::vector<Picture> frames;
  for (int i = 0; i < 5; ++i) {
    frames.push_back({32, 32, [i](int x, int y) {
                        const auto noise = Noise(1)(x, y) % 100;
                        return x == i && y == i ? kRed : noise;
                      }});
  }
  in.Write("a.gif", GifFileOf(frames));
  ASSERT_EQ(Run({}).status, 0);
  const support::GifFile whole = Output("a.gif");
  ASSERT_EQ(Run({Limit(SizeOf("a.gif") / 2), "-ov"}).status, 0);
  const support::GifFile gif = Output("a.gif");
  ASSERT_EQ(gif.pages.size(), 5U) << gif.error;
  for (std::size_t i = 0; i < 5; ++i) EXPECT_EQ(gif.pages[i].pixels, whole.pages[i].pixels) << "page " << i;
  EXPECT_LT(gif.frames[1].width, 32U);
}

}  // namespace
}  // namespace test_support
