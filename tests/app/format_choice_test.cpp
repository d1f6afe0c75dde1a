#include "app/format_choice.h"

#include <gtest/gtest.h>

namespace app {
namespace {

TEST(FormatChoice, DepthIsTheSmallestThatHoldsThePalette) {
  const struct {
    std::int32_t items;
    std::int32_t depth;
  } cases[] = {{-5, 0},  {0, 0},   {1, 0},   {2, 1},   {3, 2},   {4, 2},         {5, 3},
               {128, 7}, {129, 8}, {256, 8}, {257, 9}, {512, 9}, {0x7FFFFFFF, 9}};
  for (const auto& c : cases) EXPECT_EQ(DepthForPalette(c.items), c.depth) << c.items;
}

TEST(FormatChoice, TheKeeperPutsBackWhatOneOutputDecided) {
  glib::GIFSave desc;
  desc.depth = 0;
  desc.dpiX = 0.0;
  desc.paletteItems = 0;
  {
    const FormatKeeper keeper(desc);
    desc.depth = 24;
    desc.dpiX = desc.dpiY = 300.0;
    desc.firstSlide = 3;
    desc.slideCount = 1;
    desc.paletteItems = 17;
    desc.transparentIndex = 4;
    desc.nfi = 1;
    desc.interlace = 1;
  }
  EXPECT_EQ(desc.depth, 0);
  EXPECT_EQ(desc.dpiX, 0.0);
  EXPECT_EQ(desc.dpiY, 0.0);
  EXPECT_EQ(desc.firstSlide, 0U);
  EXPECT_EQ(desc.slideCount, glib::kAllSlides);
  EXPECT_EQ(desc.paletteItems, 0);
  EXPECT_EQ(desc.transparentIndex, -1);
  EXPECT_EQ(desc.nfi, 0);
  EXPECT_EQ(desc.interlace, 1);  // a decision of the run
}

}  // namespace
}  // namespace app
