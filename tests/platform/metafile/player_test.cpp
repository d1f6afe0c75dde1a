#include "platform/metafile/player.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "tests/platform/metafile/drawing.h"

namespace {

using platform::Box;
using platform::Point;
using test_support::Bytes;
using test_support::Drawing;
using test_support::kBlackWord;
using test_support::kBlueRef;
using test_support::kBlueWord;
using test_support::kNothing;
using test_support::kRedRef;
using test_support::kRedWord;
using test_support::kWhiteWord;
using test_support::Put;
using test_support::WordDib;

constexpr double kPi = 3.14159265358979;

TEST(MetafilePlayer, PaintsNothingWhereNothingIsDrawn) {
  Drawing drawing(9, 7);
  drawing.out.SetBkColor(kRedRef);
  drawing.Play();
  EXPECT_EQ(drawing.PaintedCount(), 0U);
}

TEST(MetafilePlayer, FillsABoxUpToItsEdges) {
  Drawing drawing(10, 8);
  drawing.FillOnly(kRedRef);
  drawing.out.Rectangle({2, 3, 7, 6});
  drawing.Play();
  EXPECT_TRUE(drawing.Only({2, 3, 7, 6}, kRedWord));
}

TEST(MetafilePlayer, OutlinesABoxWithinIt) {
  Drawing drawing(10, 8);
  drawing.LineOnly(0, kBlueRef);
  drawing.out.Rectangle({2, 1, 9, 7});
  drawing.Play();
  for (std::int32_t y = 0; y < 8; ++y) {
    for (std::int32_t x = 0; x < 10; ++x) {
      const bool within = x >= 2 && x < 9 && y >= 1 && y < 7;
      const bool inner = x >= 3 && x < 8 && y >= 2 && y < 6;
      EXPECT_EQ(drawing.At(x, y), within && !inner ? kBlueWord : kNothing) << x << ", " << y;
    }
  }
}

TEST(MetafilePlayer, SmoothsEdgesOverThePaper) {
  // The box covers a quarter of the pixels of its left column.
  for (const auto& [paper, expected] :
       {std::pair{kWhiteWord, 0xFFFFBFBFU}, std::pair{kBlackWord, 0xFF400000U}, std::pair{kBlueWord, 0xFF4000BFU}}) {
    Drawing drawing(6, 4, 4);
    drawing.FillOnly(kRedRef);
    drawing.out.Rectangle({7, 0, 16, 16});
    drawing.Play(paper);
    EXPECT_EQ(drawing.At(0, 0), kNothing);
    EXPECT_EQ(drawing.At(1, 2), expected);
    EXPECT_EQ(drawing.At(2, 2), kRedWord);
    EXPECT_EQ(drawing.At(3, 2), kRedWord);
    EXPECT_EQ(drawing.At(4, 2), kNothing);
  }
}

TEST(MetafilePlayer, NeighboursShowNoSeam) {
  Drawing drawing(40, 40, 10);
  drawing.FillOnly(kRedRef);
  // Two triangles of a square that share a slanted edge, and a third that ends within pixels.
  drawing.out.Polygon(std::array<Point, 3>{Point{0, 0}, {400, 0}, {0, 400}});
  drawing.out.Polygon(std::array<Point, 3>{Point{400, 0}, {400, 237}, {163, 237}});
  drawing.out.Polygon(std::array<Point, 4>{Point{163, 237}, {400, 237}, {400, 400}, {0, 400}});
  drawing.Play();
  EXPECT_TRUE(drawing.Only({0, 0, 40, 40}, kRedWord));
}

TEST(MetafilePlayer, RoundShapesHaveTheirAreas) {
  struct Case {
    const char* name;
    void (*draw)(platform::MetafileRecorder&);
    double area;
    Point inside, outside;
  };
  const Box box{10, 10, 90, 50};  // half axes 40 and 20
  static const Box kBox = box;
  const double ellipse = kPi * 40 * 20;
  const Case cases[] = {
      {"ellipse", [](auto& out) { out.Ellipse(kBox); }, ellipse, {50, 30}, {12, 12}},
      // A quarter from the right end over the top, against the clock.
      {"pie",
       [](auto& out) {
         out.Pie(kBox, {90, 30}, {50, 10});
       },
       ellipse / 4,
       {60, 25},
       {40, 30}},
      {"rest of it",
       [](auto& out) {
         out.SetArcDirection(platform::kClockwise);
         out.Pie(kBox, {90, 30}, {50, 10});
       },
       ellipse * 3 / 4,
       {40, 30},
       {60, 25}},
      {"chord",
       [](auto& out) {
         out.Chord(kBox, {90, 30}, {50, 10});
       },
       ellipse / 4 - 40 * 20 / 2.0,
       {77, 16},
       {55, 27}},
      {"round box", [](auto& out) { out.RoundRect(kBox, 20, 20); }, 80 * 40 - 100 * (4 - kPi), {50, 11}, {10, 10}},
  };
  for (const Case& one : cases) {
    Drawing drawing(100, 60);
    drawing.FillOnly(kBlueRef);
    one.draw(drawing.out);
    drawing.Play();
    double area = 0;
    for (const std::uint32_t word : drawing.pixels) area += word == 0 ? 0 : (255 - (word >> 16 & 255)) / 255.0;
    EXPECT_NEAR(area, one.area, 12) << one.name;
    EXPECT_EQ(drawing.At(one.inside.x, one.inside.y), kBlueWord) << one.name;
    EXPECT_EQ(drawing.At(one.outside.x, one.outside.y), kNothing) << one.name;
  }
}

TEST(MetafilePlayer, FillModesDecideOverlaps) {
  for (const std::uint32_t mode : {platform::kFillAlternate, platform::kFillWinding}) {
    Drawing drawing(9, 9);
    drawing.FillOnly(kRedRef);
    drawing.out.SetPolyFillMode(mode);
    const std::array<std::uint32_t, 2> counts{4, 4};
    const std::array<Point, 8> points{Point{0, 0}, {9, 0}, {9, 9}, {0, 9}, {3, 3}, {6, 3}, {6, 6}, {3, 6}};
    drawing.out.PolyPolygon(counts, points);
    drawing.Play();
    EXPECT_EQ(drawing.At(4, 4), mode == platform::kFillWinding ? kRedWord : kNothing);
    EXPECT_EQ(drawing.At(1, 4), kRedWord);
  }
}

TEST(MetafilePlayer, CurvesRunThroughTheirMiddle) {
  Drawing drawing(40, 40);
  drawing.LineOnly(3, kRedRef);
  drawing.out.PolyBezier(std::array<Point, 4>{Point{2, 2}, {2, 38}, {38, 38}, {38, 2}});
  drawing.Play();
  EXPECT_EQ(drawing.At(20, 29), kRedWord);  // at half: 2 + 36 * 3 / 4
  EXPECT_EQ(drawing.At(20, 20), kNothing);
  EXPECT_EQ(drawing.At(20, 36), kNothing);
}

TEST(MetafilePlayer, ClipsEndWithTheStateThatHadThem) {
  Drawing drawing(12, 12);
  drawing.FillOnly(kRedRef);
  drawing.out.SaveDc();
  drawing.out.IntersectClipRect({2, 2, 10, 10});
  drawing.out.ExcludeClipRect({4, 2, 12, 12});
  drawing.out.Rectangle({0, 0, 12, 12});
  drawing.out.RestoreDc();
  drawing.out.Rectangle({11, 11, 12, 12});
  drawing.Play();
  EXPECT_EQ(drawing.At(2, 2), kRedWord);
  EXPECT_EQ(drawing.At(3, 9), kRedWord);
  EXPECT_EQ(drawing.At(4, 5), kNothing);
  EXPECT_EQ(drawing.At(1, 5), kNothing);
  EXPECT_EQ(drawing.At(11, 11), kRedWord);
  EXPECT_EQ(drawing.PaintedCount(), 2U * 8U + 1U);
}

TEST(MetafilePlayer, RegionsCombine) {
  struct Case {
    std::uint32_t mode;
    bool first, both, second, outside;
  };
  for (const Case& one :
       {Case{platform::kRegionAnd, false, true, false, false}, Case{platform::kRegionOr, true, true, true, false},
        Case{platform::kRegionXor, true, false, true, false}, Case{platform::kRegionDiff, true, false, false, false},
        Case{platform::kRegionCopy, false, true, true, false}}) {
    Drawing drawing(10, 2);
    drawing.FillOnly(kBlueRef);
    drawing.out.SelectClipRegion(std::array<Box, 1>{Box{1, 0, 5, 2}}, platform::kRegionCopy);
    drawing.out.SelectClipRegion(std::array<Box, 1>{Box{3, 0, 8, 2}}, one.mode);
    drawing.out.Rectangle({0, 0, 10, 2});
    drawing.Play();
    EXPECT_EQ(drawing.At(1, 1) != 0, one.first) << one.mode;
    EXPECT_EQ(drawing.At(4, 1) != 0, one.both) << one.mode;
    EXPECT_EQ(drawing.At(6, 1) != 0, one.second) << one.mode;
    EXPECT_EQ(drawing.At(9, 1) != 0, one.outside) << one.mode;
  }
}

TEST(MetafilePlayer, PathsFillStrokeAndClip) {
  Drawing drawing(20, 10);
  drawing.FillOnly(kRedRef);
  const auto triangle = [&](std::int32_t left) {
    drawing.out.BeginPath();
    drawing.out.MoveTo(left, 0);
    drawing.out.LineTo(left + 8, 0);
    drawing.out.LineTo(left, 8);
    drawing.out.CloseFigure();
    drawing.out.EndPath();
  };
  triangle(0);
  drawing.out.FillPath();
  triangle(10);
  drawing.out.SelectClipPath(platform::kRegionCopy);
  drawing.FillOnly(kBlueRef);
  drawing.out.Rectangle({0, 0, 20, 10});
  drawing.Play();
  EXPECT_EQ(drawing.At(1, 1), kRedWord);
  EXPECT_EQ(drawing.At(6, 6), kNothing);
  EXPECT_EQ(drawing.At(11, 1), kBlueWord);
  EXPECT_EQ(drawing.At(16, 6), kNothing);
}

TEST(MetafilePlayer, TransformsAndMappings) {
  Drawing drawing(20, 20);
  drawing.FillOnly(kRedRef);
  // A quarter turn about the origin, then to the right.
  drawing.out.SetWorldTransform({0, 1, -1, 0, 10, 0});
  drawing.out.Polygon(std::array<Point, 4>{Point{0, 0}, {6, 0}, {6, 2}, {0, 2}});
  drawing.out.SetWorldTransform({});
  drawing.out.SetMapMode(platform::MapMode::kLowEnglish);  // 0.01 inch, y goes up; 72 pixels an inch
  drawing.out.Rectangle({0, -100 * 10 / 72, 100 * 5 / 72 + 1, -100 * 20 / 72});
  drawing.Play();
  EXPECT_EQ(drawing.At(8, 0), kRedWord);
  EXPECT_EQ(drawing.At(9, 5), kRedWord);
  EXPECT_EQ(drawing.At(10, 0), kNothing);
  EXPECT_EQ(drawing.At(8, 6), kNothing);
  EXPECT_EQ(drawing.At(1, 11), kRedWord);
  EXPECT_EQ(drawing.At(1, 8), kNothing);
}

// Bytes of a region record's data: how many boxes, and the boxes.
std::vector<std::uint32_t> RegionData(const std::vector<Box>& boxes) {
  std::vector<std::uint32_t> data = {
      32, 1, static_cast<std::uint32_t>(boxes.size()), static_cast<std::uint32_t>(16 * boxes.size()), 0, 0, 0, 0};
  for (const Box& box : boxes) {
    for (const std::int32_t side : {box.left, box.top, box.right, box.bottom}) {
      data.push_back(static_cast<std::uint32_t>(side));
    }
  }
  return data;
}

TEST(MetafilePlayer, FramesOfRegionsLieWithinThem) {
  // An L of two boxes, framed by three units left and right and two above and below.
  Drawing drawing(24, 24);
  const std::uint32_t brush = drawing.out.CreateBrush(platform::kBrushSolid, kRedRef);
  drawing.PlayWith([&](Bytes& bytes) {
    const auto region = RegionData({{2, 2, 12, 12}, {2, 12, 22, 22}});
    std::vector<std::uint32_t> values = {0, 0, 0, 0, static_cast<std::uint32_t>(4 * region.size()), brush, 3, 2};
    values.insert(values.end(), region.begin(), region.end());
    Put(bytes, platform::kEmrFrameRgn, values);
  });
  const auto within = [](std::int32_t x, std::int32_t y) {
    return (x >= 2 && x < 12 && y >= 2 && y < 22) || (x >= 2 && x < 22 && y >= 12 && y < 22);
  };
  for (std::int32_t y = 0; y < 24; ++y) {
    for (std::int32_t x = 0; x < 24; ++x) {
      bool core = true;
      for (const std::int32_t dx : {-3, 0, 3}) {
        for (const std::int32_t dy : {-2, 0, 2}) core = core && within(x + dx, y + dy);
      }
      EXPECT_EQ(drawing.At(x, y), within(x, y) && !core ? kRedWord : kNothing) << x << ", " << y;
    }
  }
}

TEST(MetafilePlayer, ClipsOfAnyFormJoin) {
  struct Case {
    std::uint32_t mode;
    bool path, both, box, outside;
  };
  for (const Case& one :
       {Case{platform::kRegionOr, true, true, true, false}, Case{platform::kRegionXor, true, false, true, false},
        Case{platform::kRegionDiff, false, false, true, false}}) {
    Drawing drawing(30, 20);
    drawing.FillOnly(kRedRef);
    drawing.out.SelectClipRegion(std::array<Box, 1>{Box{10, 0, 28, 20}}, platform::kRegionCopy);
    drawing.out.BeginPath();
    drawing.out.Ellipse({0, 0, 20, 20});
    drawing.out.EndPath();
    drawing.out.SelectClipPath(one.mode);
    drawing.out.OffsetClip(1, 0);
    drawing.out.Rectangle({0, 0, 30, 20});
    drawing.Play();
    EXPECT_EQ(drawing.At(4, 10) != kNothing, one.path) << one.mode;
    EXPECT_EQ(drawing.At(14, 10) != kNothing, one.both) << one.mode;
    EXPECT_EQ(drawing.At(25, 10) != kNothing, one.box) << one.mode;
    EXPECT_EQ(drawing.At(29, 10) != kNothing, one.outside) << one.mode;
    EXPECT_EQ(drawing.At(1, 1), kNothing) << one.mode;
  }
}

TEST(MetafilePlayer, WhatIsExcludedStaysSoOnEveryTile) {
  Drawing drawing(1024, 2100);
  drawing.FillOnly(kRedRef);
  drawing.out.ExcludeClipRect({100, 100, 200, 2000});
  drawing.out.Rectangle({0, 0, 1024, 2100});
  drawing.Play();
  for (const std::int32_t y : {150, 1100, 1950}) {
    EXPECT_EQ(drawing.At(99, y), kRedWord) << y;
    EXPECT_EQ(drawing.At(150, y), kNothing) << y;
    EXPECT_EQ(drawing.At(200, y), kRedWord) << y;
  }
  EXPECT_EQ(drawing.At(150, 2050), kRedWord);
}

TEST(MetafilePlayer, TilesMeet) {
  // More pixels than one tile holds, by rows and by columns.
  struct Case {
    std::int32_t width, height;
  };
  for (const Case& one : {Case{1024, 2100}, Case{8300, 3}}) {
    Drawing drawing(one.width, one.height);
    drawing.FillOnly(kRedRef);
    drawing.out.Rectangle({0, 0, one.width, one.height});
    drawing.LineOnly(0, kBlueRef);
    drawing.out.MoveTo(0, 1);
    drawing.out.LineTo(one.width, 1);
    drawing.out.MoveTo(1, 0);
    drawing.out.LineTo(1, one.height);
    drawing.Play();
    std::size_t wrong = 0;
    for (std::int32_t y = 0; y < one.height; ++y) {
      for (std::int32_t x = 0; x < one.width; ++x) {
        wrong += drawing.At(x, y) != (x == 1 || y == 1 ? kBlueWord : kRedWord);
      }
    }
    EXPECT_EQ(wrong, 0U) << one.width;
  }
}

}  // namespace
