// Pens and brushes of metafiles.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "tests/platform/metafile/drawing.h"

namespace {

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

TEST(MetafilePens, ThinLinesAreOnePixelWide) {
  for (const std::int32_t unitsPerPixel : {1, 3, 20}) {
    Drawing drawing(12, 9, unitsPerPixel);
    drawing.LineOnly(0, kRedRef);
    drawing.out.MoveTo(2 * unitsPerPixel, 4 * unitsPerPixel);
    drawing.out.LineTo(8 * unitsPerPixel, 4 * unitsPerPixel);
    drawing.Play();
    EXPECT_TRUE(drawing.Only({2, 4, 9, 5}, kRedWord)) << unitsPerPixel;
  }
}

TEST(MetafilePens, WideLinesKeepTheirWidth) {
  Drawing drawing(20, 20, 10);
  drawing.out.SelectObject(drawing.out.ExtCreatePen(platform::kPenGeometric | platform::kPenCapFlat, 40, kBlueRef));
  drawing.out.MoveTo(-100, 95);
  drawing.out.LineTo(300, 95);
  drawing.Play();
  EXPECT_TRUE(drawing.Only({0, 8, 20, 12}, kBlueWord));
}

TEST(MetafilePens, DashesLeaveGaps) {
  Drawing drawing(20, 3);
  const std::array<std::uint32_t, 2> dashes{4, 3};
  drawing.out.SetBkMode(platform::kTransparentMode);
  drawing.out.SelectObject(drawing.out.ExtCreatePen(platform::kPenUserStyle, 1, kRedRef, dashes));
  drawing.out.MoveTo(0, 1);
  drawing.out.LineTo(30, 1);
  drawing.Play();
  std::size_t whole = 0;
  std::size_t gaps = 0;
  for (std::int32_t x = 1; x < 19; ++x) {
    whole += drawing.At(x, 1) == kRedWord;
    gaps += drawing.At(x, 1) == kNothing;
  }
  EXPECT_GE(whole, 7U);
  EXPECT_GE(gaps, 4U);
}

TEST(MetafilePens, PensCombineBitsWithTheTarget) {
  // Pen 0x0000FF on target 0xFF0000, for all sixteen operations.
  const std::array<std::uint32_t, 16> expected{0x000000, 0x00FF00, 0xFF0000, 0xFFFF00, 0x0000FF, 0x00FFFF,
                                               0xFF00FF, 0xFFFFFF, 0x000000, 0x00FF00, 0xFF0000, 0xFFFF00,
                                               0x0000FF, 0x00FFFF, 0xFF00FF, 0xFFFFFF};
  for (std::uint32_t rop = 1; rop <= 16; ++rop) {
    Drawing drawing(3, 3);
    drawing.FillOnly(kRedRef);
    drawing.out.Rectangle({0, 0, 3, 3});
    drawing.FillOnly(kBlueRef);
    drawing.out.SetRop2(rop);
    drawing.out.Rectangle({1, 1, 2, 2});
    drawing.Play();
    EXPECT_EQ(drawing.At(1, 1), 0xFF000000 | expected[rop - 1]) << rop;
    EXPECT_EQ(drawing.At(0, 0), kRedWord);
  }
}

TEST(MetafilePens, PatternsRepeatByPixels) {
  Drawing drawing(6, 4);
  const auto dib = WordDib(2, 1, std::array<std::uint32_t, 2>{0xFF0000, 0x0000FF});
  drawing.out.SelectObject(drawing.out.CreatePatternBrush(dib));
  drawing.out.SelectObject(platform::kNullPen);
  drawing.out.Rectangle({0, 0, 6, 4});
  drawing.Play();
  for (std::int32_t x = 0; x < 6; ++x) EXPECT_EQ(drawing.At(x, 2), x % 2 == 0 ? kRedWord : kBlueWord);
}

TEST(MetafilePens, HatchesLeaveOpenWhatIsTransparent) {
  for (const std::uint32_t mode : {platform::kTransparentMode, platform::kOpaqueMode}) {
    Drawing drawing(16, 16);
    drawing.out.SetBkMode(mode);
    drawing.out.SetBkColor(kRedRef);
    drawing.out.SelectObject(drawing.out.CreateBrush(platform::kBrushHatched, kBlueRef, platform::kHatchHorizontal));
    drawing.out.SelectObject(platform::kNullPen);
    drawing.out.Rectangle({0, 0, 16, 16});
    drawing.Play();
    for (std::int32_t y = 0; y < 16; ++y) {
      const std::uint32_t between = mode == platform::kOpaqueMode ? kRedWord : kNothing;
      EXPECT_EQ(drawing.At(5, y), y % 8 == 4 ? kBlueWord : between) << y;
    }
  }
}

// The pixels of a row that are painted, as a picture.
std::string RowOf(const Drawing& drawing, std::int32_t width, std::int32_t y) {
  std::string row;
  for (std::int32_t x = 0; x < width; ++x) {
    const std::uint32_t word = drawing.At(x, y);
    row += word == kNothing ? '.' : word == kRedWord ? 'r' : word == kBlueWord ? 'b' : '?';
  }
  return row;
}

TEST(MetafilePens, WideLinesHaveWideGaps) {
  struct Case {
    const char* name;
    std::uint32_t style;
    const char* row;
  };
  constexpr std::uint32_t kGeometric = platform::kPenGeometric;
  // Four pixels wide, from the left edge on.
  for (const Case& one :
       {Case{"flat", kGeometric | platform::kPenCapFlat | platform::kPenDot, "rrrr....rrrr....rrrr...."},
        Case{"flat", kGeometric | platform::kPenCapFlat | platform::kPenDash, "rrrrrrrrrrrr....rrrrrrrr"},
        Case{"square", kGeometric | platform::kPenCapSquare | platform::kPenDot, "rr....rrrr....rrrr....rr"},
        Case{"simple", platform::kPenDash, "rrrrrrrrrrrrrrrrrrrrrrrr"}}) {
    Drawing drawing(24, 9);
    drawing.out.SetBkMode(platform::kTransparentMode);
    if ((one.style & kGeometric) != 0) {
      drawing.out.SelectObject(drawing.out.ExtCreatePen(one.style, 4, kRedRef));
    } else {
      drawing.out.SelectObject(drawing.out.CreatePen(one.style, 4, kRedRef));
    }
    drawing.PlayWith([](Bytes& bytes) {
      // Half a pixel to the left, as lines run through the middle of pixels.
      Put(bytes, platform::kEmrSetWorldTransform, {0x3F800000, 0, 0, 0x3F800000, 0xBF000000, 0xBF000000});
      Put(bytes, platform::kEmrMoveTo, {0, 4});
      Put(bytes, platform::kEmrLineTo, {100, 4});
    });
    EXPECT_EQ(RowOf(drawing, 24, 4), one.row) << one.name;
  }
}

TEST(MetafilePens, RoundDotsStayApart) {
  Drawing drawing(60, 12);
  drawing.out.SetBkMode(platform::kTransparentMode);
  drawing.out.SelectObject(drawing.out.ExtCreatePen(platform::kPenGeometric | platform::kPenDot, 6, kRedRef));
  drawing.out.MoveTo(0, 5);
  drawing.out.LineTo(59, 5);
  drawing.Play();
  const std::string row = RowOf(drawing, 60, 5);
  EXPECT_EQ(std::count(row.begin(), row.end(), 'r'), 3 + 4 * 5) << row;
  EXPECT_GE(std::count(row.begin(), row.end(), '.'), 20) << row;
}

TEST(MetafilePens, APenIsAsWideAsItsUnits) {
  // A unit is four pixels wide and one high.
  Drawing drawing(60, 40);
  drawing.out.SetMapMode(platform::MapMode::kAnisotropic);
  drawing.out.SetWindowExt(15, 40);
  drawing.out.SetViewportExt(60, 40);
  drawing.out.SelectObject(drawing.out.ExtCreatePen(platform::kPenGeometric | platform::kPenCapFlat, 4, kRedRef));
  drawing.out.MoveTo(7, 0);
  drawing.out.LineTo(7, 30);
  drawing.out.MoveTo(0, 35);
  drawing.out.LineTo(15, 35);
  drawing.Play();
  const std::string row = RowOf(drawing, 60, 10);
  EXPECT_NEAR(static_cast<double>(std::count(row.begin(), row.end(), 'r')), 15, 1) << row;
  std::size_t high = 0;
  for (std::int32_t y = 31; y < 40; ++y) high += drawing.At(50, y) == kRedWord;
  EXPECT_NEAR(static_cast<double>(high), 4, 1);
}

TEST(MetafilePens, LinesAreFilledByBrushes) {
  Drawing drawing(20, 12);
  drawing.PlayWith([](Bytes& bytes) {
    Put(bytes, platform::kEmrSetBkMode, {platform::kTransparentMode});
    // Ten pixels wide, hatched across.
    Put(bytes, platform::kEmrExtCreatePen,
        {1, 0, 0, 0, 0, platform::kPenGeometric | platform::kPenCapFlat, 10, platform::kBrushHatched, kRedRef,
         platform::kHatchHorizontal, 0});
    Put(bytes, platform::kEmrSelectObject, {1});
    Put(bytes, platform::kEmrMoveTo, {0, 5});
    Put(bytes, platform::kEmrLineTo, {30, 5});
  });
  for (std::int32_t y = 1; y < 10; ++y) EXPECT_EQ(drawing.At(10, y), y == 4 ? kRedWord : kNothing) << y;
}

TEST(MetafilePens, AWidenedPathIsItsLine) {
  Drawing drawing(20, 20);
  drawing.FillOnly(kBlueRef);
  drawing.out.SelectObject(drawing.out.ExtCreatePen(platform::kPenGeometric | platform::kPenCapFlat, 6, kRedRef));
  drawing.PlayWith([](Bytes& bytes) {
    Put(bytes, platform::kEmrBeginPath, {});
    Put(bytes, platform::kEmrMoveTo, {0, 0});
    Put(bytes, platform::kEmrLineTo, {19, 19});
    Put(bytes, platform::kEmrLineTo, {0, 19});
    Put(bytes, platform::kEmrEndPath, {});
    Put(bytes, platform::kEmrWidenPath, {});
    Put(bytes, platform::kEmrFillPath, {0, 0, 0, 0});
  });
  EXPECT_EQ(drawing.At(9, 9), kBlueWord);
  EXPECT_EQ(drawing.At(5, 12), kNothing) << "within the triangle";
}

TEST(MetafilePens, ColorsComeByNumber) {
  Drawing drawing(6, 2);
  drawing.out.SelectObject(platform::kNullPen);
  drawing.PlayWith([](Bytes& bytes) {
    constexpr std::uint32_t kByNumber = 0x01000000;
    Put(bytes, platform::kEmrCreatePalette, {1, 0x300 | 2 << 16, kRedRef, kBlueRef});
    const auto box = [&](std::uint32_t brush, std::uint32_t left) {
      Put(bytes, platform::kEmrCreateBrush, {brush, 0, kByNumber | 1, 0});
      Put(bytes, platform::kEmrSelectObject, {brush});
      Put(bytes, platform::kEmrRectangle, {left, 0, left + 2, 2});
    };
    box(2, 0);  // of the system's own
    Put(bytes, platform::kEmrSelectPalette, {1});
    box(3, 2);
    Put(bytes, platform::kEmrSetPaletteEntries, {1, 1, 1, kRedRef});
    box(4, 4);
  });
  EXPECT_EQ(drawing.At(1, 1), 0xFF800000);
  EXPECT_EQ(drawing.At(3, 1), kBlueWord);
  EXPECT_EQ(drawing.At(5, 1), kRedWord);
}

}  // namespace
