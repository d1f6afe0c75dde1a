// Streams that lie. The player has to come back with what it drew until then.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>

#include "tests/platform/metafile/drawing.h"

namespace {

using platform::Point;
using test_support::Bytes;
using test_support::Drawing;
using test_support::kBlueRef;
using test_support::kNothing;
using test_support::kRedRef;
using test_support::kRedWord;
using test_support::OwnedMetafile;
using test_support::Put;

// A stream of 8 x 8 pixels that begins with a red box at the top left; `add` writes what follows, and a second box may
// come after that.
void PlayWith(Drawing& drawing, const std::function<void(Bytes&)>& add, bool secondBox = true) {
  drawing.FillOnly(kRedRef);
  drawing.out.Rectangle({0, 0, 2, 2});
  drawing.PlayWith([&](Bytes& bytes) {
    add(bytes);
    if (secondBox) Put(bytes, platform::kEmrRectangle, {6, 6, 8, 8});
  });
  EXPECT_EQ(drawing.At(1, 1), kRedWord);
}

TEST(HostileMetafile, ALengthThatCantBeEndsTheStream) {
  for (const std::uint32_t length : {0U, 4U, 7U, 9U, 13U, 0x7FFFFFFCU, 0xFFFFFFFCU, 4000U}) {
    Drawing drawing(8, 8);
    PlayWith(drawing, [&](Bytes& bytes) {
      Put(bytes, platform::kEmrSetBkMode);
      Put(bytes, length);
      Put(bytes, 1);
    });
    EXPECT_EQ(drawing.At(7, 7), kNothing) << length;
  }
}

TEST(HostileMetafile, RecordsThatMakeNoSenseArePassedOver) {
  constexpr std::uint32_t kMany = 0xFFFFFFFF;
  const float nan = std::numeric_limits<float>::quiet_NaN();
  std::uint32_t nanBits;
  std::memcpy(&nanBits, &nan, sizeof(nanBits));
  const std::vector<std::pair<std::uint32_t, std::vector<std::uint32_t>>> records = {
      {9999, {1, 2, 3}},
      {platform::kEmrSelectObject, {77}},
      {platform::kEmrSelectObject, {kMany}},
      {platform::kEmrDeleteObject, {kMany - 5}},
      {platform::kEmrCreatePen, {kMany, 0, 1, 0, 0}},
      {platform::kEmrCreateBrush, {0, 0, 0, 0}},
      {platform::kEmrCreateBrush, {}},
      {platform::kEmrRestoreDc, {static_cast<std::uint32_t>(-3)}},
      {platform::kEmrRestoreDc, {5}},
      {platform::kEmrPolygon, {0, 0, 0, 0, kMany, 1, 2, 3}},
      {platform::kEmrPolygon16, {0, 0, 0, 0, 0x40000001}},
      {platform::kEmrPolyBezierTo, {0, 0, 0, 0, 2, 1, 1, 2, 2}},
      {platform::kEmrPolyPolygon, {0, 0, 0, 0, kMany, kMany, kMany, kMany}},
      {platform::kEmrPolyPolygon16, {0, 0, 0, 0, 2, 4, kMany, kMany, 1, 2, 3, 4}},
      {platform::kEmrPolyDraw, {0, 0, 0, 0, kMany}},
      {platform::kEmrGradientFill, {0, 0, 0, 0, 0x10000000, 0x10000000, 2, 1, 1}},
      {platform::kEmrGradientFill, {0, 0, 0, 0, 1, 1, 0, 0, 0, 0, 0, 500, 600}},
      {platform::kEmrFillRgn, {0, 0, 0, 0, kMany, 1, 32, 1, kMany, 0}},
      {platform::kEmrFillRgn, {0, 0, 0, 0, 32, kMany, 32, 1, 0x10000001, 0, 0, 0, 0, 0}},
      {platform::kEmrStretchDiBits, {0, 0, 0, 0, 0, 0, 0, 0, 9, 9, 80, kMany, 90, kMany, 0, 0x00CC0020, 8, 8}},
      {platform::kEmrBitBlt, {0, 0, 0, 0, 0, 0, 8, 8, 0x00CC0020, 0, 0}},
      {platform::kEmrAlphaBlend, {0, 0, 0, 0, 0, 0, 8, 8}},
      {platform::kEmrMaskBlt, {}},
      {platform::kEmrPlgBlt, {}},
      {platform::kEmrCreateDibPatternBrush, {1, 0, kMany, 40, 8, kMany}},
      {platform::kEmrExtCreatePen, {1, 0, 0, 0, 0, 7, 0, 0, 0, 0, kMany}},
      {platform::kEmrExtTextOutW, {0, 0, 0, 0, 1, 0, 0, 3, 3, kMany, kMany, 0, 0, 0, 0, 0, kMany}},
      {platform::kEmrExtTextOutA, {0, 0, 0, 0, 1, 0, 0, 3, 3, 0x7FFFFFFF, 76, 0x10, 0, 0, 0, 0, 76}},
      {platform::kEmrSmallTextOut, {3, 3, kMany, 0x300}},
      {platform::kEmrArc, {0, 0, 0, 0, 1, 1, 1, 1}},
      {platform::kEmrAngleArc, {0, 0, kMany, nanBits, nanBits}},
      {platform::kEmrSetWorldTransform, {nanBits, nanBits, nanBits, nanBits, nanBits, nanBits}},
      {platform::kEmrSetMapMode, {99}},
      {platform::kEmrSetRop2, {0}},
      {platform::kEmrSetRop2, {17}},
      {platform::kEmrSetMiterLimit, {nanBits}},
      {platform::kEmrScaleWindowExt, {0, 0, 5, 0}},
      {platform::kEmrSetWindowExt, {0, 0}},
      {platform::kEmrExtSelectClipRgn, {kMany, 5, 32, 1, kMany}},
      {platform::kEmrExtSelectClipRgn, {32, 99, 32, 1, 0, 0, 0, 0, 0, 0}},
      {platform::kEmrEndPath, {}},
      {platform::kEmrFillPath, {}},
      {platform::kEmrCloseFigure, {}},
      {platform::kEmrComment, {kMany}},
      {platform::kEmrHeader, {}},
  };
  for (const auto& [type, values] : records) {
    Drawing drawing(8, 8);
    PlayWith(drawing, [&](Bytes& bytes) { Put(bytes, type, values); });
    EXPECT_EQ(drawing.At(7, 7), kRedWord) << "after record " << type;
  }
}

TEST(HostileMetafile, ExtremesAreHeldBack) {
  constexpr std::uint32_t kFar = 0x7FFFFFFF;
  constexpr std::uint32_t kNear = 0x80000000;
  const std::function<void(Bytes&)> streams[] = {
      // States without end.
      [](Bytes& bytes) {
        for (int i = 0; i < 100000; ++i) Put(bytes, platform::kEmrSaveDc, {});
      },
      // A path without end.
      [](Bytes& bytes) {
        Put(bytes, platform::kEmrBeginPath, {});
        for (int i = 0; i < 1000; ++i) Put(bytes, platform::kEmrLineTo, {kFar, kNear});
        Put(bytes, platform::kEmrAbortPath, {});
      },
      // Clips in clips, none of them a box.
      [](Bytes& bytes) {
        for (std::uint32_t i = 0; i < 5000; ++i) {
          Put(bytes, platform::kEmrExtSelectClipRgn, {48, 1, 32, 1, 1, 16, 0, 0, 8, 8, 0, 0, 8 + i % 7, 8 + i % 7});
        }
      },
      [](Bytes& bytes) {
        for (int i = 0; i < 5000; ++i)
          Put(bytes, platform::kEmrExtSelectClipRgn, {48, 2, 32, 1, 1, 16, 0, 0, 8, 8, 0, 0, 8, 8});
      },
      // Lines, widths and dashes beyond any picture.
      [](Bytes& bytes) {
        Put(bytes, platform::kEmrSaveDc, {});
        Put(bytes, platform::kEmrExtCreatePen, {5, 0, 0, 0, 0, 0x10007, kFar, 0, 0, 0, 2, 0, 0});
        Put(bytes, platform::kEmrSelectObject, {5});
        Put(bytes, platform::kEmrIntersectClipRect, {3, 3, 4, 4});
        Put(bytes, platform::kEmrMoveTo, {kNear, kNear});
        Put(bytes, platform::kEmrLineTo, {kFar, kFar});
        Put(bytes, platform::kEmrEllipse, {kNear, kNear, kFar, kFar});
        Put(bytes, platform::kEmrRestoreDc, {static_cast<std::uint32_t>(-1)});
      },
      // A font as high as the world, and one of no height.
      [](Bytes& bytes) {
        Put(bytes, platform::kEmrSaveDc, {});
        Put(bytes, platform::kEmrIntersectClipRect, {3, 3, 4, 4});
        for (const std::uint32_t height : {kFar, kNear, 0U}) {
          std::vector<std::uint32_t> font(83, 0);
          font[0] = 6;
          font[1] = height;
          Put(bytes, platform::kEmrCreateFont, font);
          Put(bytes, platform::kEmrSelectObject, {6});
          Put(bytes, platform::kEmrExtTextOutW, {0, 0, 0, 0, 1, 0, 0, 3, 3, 2, 76, 0x10, 0, 0, 0, 0, 0, 0xFFFE0041});
          Put(bytes, platform::kEmrExtTextOutW, {0, 0, 0, 0, 1, 0, 0, 3, 3, 2, 76, 0, 0, 0, 0, 0, 0, 0xDC00D800});
        }
        Put(bytes, platform::kEmrRestoreDc, {static_cast<std::uint32_t>(-1)});
      },
  };
  for (std::size_t i = 0; i < std::size(streams); ++i) {
    Drawing drawing(8, 8);
    PlayWith(drawing, streams[i]);
    EXPECT_EQ(drawing.At(7, 7), kRedWord) << "stream " << i;
  }
}

TEST(HostileMetafile, AStreamWithoutEndKeepsWhatItDrew) {
  Drawing drawing(8, 8);
  PlayWith(
      drawing, [](Bytes&) {}, false);
}

TEST(HostileMetafile, EndlessFillsComeToAnEnd) {
  Drawing drawing(4000, 3000);
  drawing.FillOnly(kRedRef);
  drawing.out.Rectangle({0, 0, 4000, 3000});
  drawing.out.SetRop2(platform::kRop2XorPen);
  for (int i = 0; i < 20000; ++i) drawing.out.Ellipse({0, 0, 4000, 3000});
  drawing.Play();
  EXPECT_EQ(drawing.At(0, 0), kRedWord);
}

// A stream with one record of nearly every kind.
OwnedMetafile Everything() {
  Drawing drawing(8, 8);
  auto& out = drawing.out;
  const std::array<Point, 4> points{Point{1, 1}, {6, 2}, {5, 6}, {2, 7}};
  const std::array<std::uint32_t, 2> pair{2, 2};
  const auto dib = test_support::WordDib(2, 2, std::array<std::uint32_t, 4>{1, 2, 3, 4});
  out.SetMapMode(platform::MapMode::kAnisotropic);
  out.SetWindowExt(8, 8);
  out.SetViewportExt(8, 8);
  out.SelectObject(out.ExtCreatePen(platform::kPenGeometric | platform::kPenUserStyle, 2, kBlueRef, pair));
  out.SelectObject(out.CreatePatternBrush(dib));
  out.SaveDc();
  out.SetWorldTransform({1, 0.5, 0, 1, 0, 0});
  out.Polygon(points);
  out.PolyBezier(points);
  out.PolyPolygon(pair, points);
  out.RoundRect({0, 0, 7, 7}, 2, 2);
  out.Pie({0, 0, 7, 7}, {0, 0}, {7, 0});
  out.RestoreDc();
  out.SelectClipRegion(std::array<platform::Box, 1>{platform::Box{0, 0, 7, 7}}, platform::kRegionAnd);
  out.SetRop2(platform::kRop2XorPen);
  out.BeginPath();
  out.LineTo(5, 5);
  out.EndPath();
  out.StrokeAndFillPath();
  out.DrawDib({0, 0, 6, 6}, dib, {0, 0, 2, 2}, platform::kSourceAnd);
  out.AlphaBlend({0, 0, 6, 6}, dib, {0, 0, 2, 2});
  out.PatBlt({1, 1, 3, 3}, platform::kPatternInvert);
  return OwnedMetafile(out.Close());
}

TEST(HostileMetafile, SurvivesAnyDamagedByte) {
  const OwnedMetafile whole = Everything();
  std::vector<std::uint32_t> pixels(64);
  for (std::size_t i = 0; i < whole->records.size(); ++i) {
    Bytes cut(whole->records.begin(), whole->records.begin() + static_cast<std::ptrdiff_t>(i));
    platform::PlayEnhMetaFile(std::make_unique<platform::Metafile>(cut).get(), 8, 8, 0xFFFFFFFF, pixels.data());
    for (const std::uint8_t value : {std::uint8_t{0}, std::uint8_t{0x7F}, std::uint8_t{0xFF}}) {
      platform::Metafile damaged(whole->records);
      damaged.records[i] = value;
      platform::PlayEnhMetaFile(&damaged, 8, 8, 0xFFFFFFFF, pixels.data());
    }
  }
}

}  // namespace
