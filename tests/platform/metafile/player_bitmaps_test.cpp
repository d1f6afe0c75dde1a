// Bitmaps of metafiles.

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

TEST(MetafileBitmaps, BitmapsKeepTheirPixels) {
  const std::array<std::uint32_t, 6> words{0x112233, 0x445566, 0x778899, 0xAABBCC, 0xDDEEFF, 0x010203};
  const auto dib = WordDib(3, 2, words);
  Drawing drawing(12, 10);
  drawing.out.DrawDib({1, 1, 4, 3}, dib, {0, 0, 3, 2});
  drawing.out.DrawDib({5, 1, 11, 5}, dib, {0, 0, 3, 2});  // twice as large
  drawing.out.DrawDib({4, 6, 1, 8}, dib, {0, 0, 3, 2});   // mirrored
  drawing.out.DrawDib({6, 7, 8, 8}, dib, {1, 1, 3, 2});   // a part
  drawing.Play();
  for (std::int32_t y = 0; y < 2; ++y) {
    for (std::int32_t x = 0; x < 3; ++x) {
      const std::uint32_t word = 0xFF000000 | words[static_cast<std::size_t>(3 * y + x)];
      EXPECT_EQ(drawing.At(1 + x, 1 + y), word);
      EXPECT_EQ(drawing.At(5 + 2 * x, 1 + 2 * y), word);
      EXPECT_EQ(drawing.At(6 + 2 * x, 2 + 2 * y), word);
      EXPECT_EQ(drawing.At(3 - x, 6 + y), word);
    }
  }
  EXPECT_EQ(drawing.At(6, 7), 0xFFDDEEFF);
  EXPECT_EQ(drawing.At(7, 7), 0xFF010203);
  EXPECT_EQ(drawing.PaintedCount(), 6U + 24U + 6U + 2U);
}

TEST(MetafileBitmaps, RasterOperationsCombineBits) {
  struct Case {
    std::uint32_t rop;
    std::uint32_t onRed, onPaper;  // with the source 0x0F3C5A and the brush 0x0000FF
  };
  constexpr Case kCases[] = {
      {platform::kSourceCopy, 0xFF0F3C5A, 0xFF0F3C5A},
      {platform::kSourceAnd, 0xFF0F0000, 0xFF0F3C5A},
      {platform::kSourcePaint, 0xFFFF3C5A, 0xFFFFFFFF},
      {platform::kSourceInvert, 0xFFF03C5A, 0xFFF0C3A5},
      {platform::kTargetInvert, 0xFF00FFFF, 0xFF000000},
      {platform::kPatternCopy, 0xFF0000FF, 0xFF0000FF},
      {platform::kPatternInvert, 0xFFFF00FF, 0xFFFFFF00},
      {platform::kBlackness, 0xFF000000, 0xFF000000},
      {platform::kWhiteness, 0xFFFFFFFF, 0xFFFFFFFF},
      {platform::kLeaveTarget, 0xFFFF0000, kNothing},
      // Brush where the source is 0, target where it is 1, and the other way round.
      {0x00B8074A, 0xFF0F00A5, 0xFF0F3CFF},
      {0x00E20746, 0xFFF0005A, 0xFFF0C3FF},
  };
  const auto dib = WordDib(
      4, 2,
      std::array<std::uint32_t, 8>{0x0F3C5A, 0x0F3C5A, 0x0F3C5A, 0x0F3C5A, 0x0F3C5A, 0x0F3C5A, 0x0F3C5A, 0x0F3C5A});
  for (const Case& one : kCases) {
    Drawing drawing(4, 2);
    drawing.FillOnly(kRedRef);
    drawing.out.Rectangle({0, 0, 2, 2});
    drawing.FillOnly(kBlueRef);
    drawing.out.DrawDib({0, 0, 4, 2}, dib, {0, 0, 4, 2}, one.rop);
    drawing.Play();
    EXPECT_EQ(drawing.At(1, 1), one.onRed) << std::hex << one.rop;
    EXPECT_EQ(drawing.At(3, 1), one.onPaper) << std::hex << one.rop;
  }
}

TEST(MetafileBitmaps, BlendsByAlpha) {
  // Colours come multiplied by their alpha.
  const auto dib = WordDib(3, 1, std::array<std::uint32_t, 3>{0x80000080, 0xFF0000FF, 0x00000000});
  Drawing drawing(3, 2);
  drawing.FillOnly(kRedRef);
  drawing.out.Rectangle({0, 0, 3, 1});
  drawing.out.AlphaBlend({0, 0, 3, 1}, dib, {0, 0, 3, 1});
  drawing.out.AlphaBlend({0, 1, 3, 2}, dib, {0, 0, 3, 1});
  drawing.Play();
  EXPECT_EQ(drawing.At(0, 0), 0xFF7F0080);
  EXPECT_EQ(drawing.At(1, 0), kBlueWord);
  EXPECT_EQ(drawing.At(2, 0), kRedWord);
  EXPECT_EQ(drawing.At(0, 1), 0xFF7F7FFF);
  EXPECT_EQ(drawing.At(2, 1), kNothing);
}

// Where a record of a blit has its bitmap.
struct Placed {
  std::uint32_t header, headerBytes, rows, rowBytes;
};

// A bitmap behind `fixed` bytes of a record and behind what is there already.
Placed AddBitmap(std::vector<std::uint32_t>& data, std::uint32_t fixed, const std::vector<std::uint8_t>& dib,
                 std::uint32_t headerBytes = 40) {
  const auto at = static_cast<std::uint32_t>(fixed + 4 * data.size());
  for (std::size_t i = 0; i < dib.size(); i += 4) {
    data.push_back(static_cast<std::uint32_t>(dib[i] | dib[i + 1] << 8 | dib[i + 2] << 16) |
                   static_cast<std::uint32_t>(dib[i + 3]) << 24);
  }
  return {at, headerBytes, at + headerBytes, static_cast<std::uint32_t>(dib.size()) - headerBytes};
}

constexpr std::uint32_t kOne = 0x3F800000;  // as a fraction
constexpr std::uint32_t kTwo = 0x40000000;

void Append(std::vector<std::uint32_t>& values, const std::vector<std::uint32_t>& more) {
  values.insert(values.end(), more.begin(), more.end());
}

// Eight pixels of one bit: the left four 0, the right ones 1; 0 is black and 1 white.
std::vector<std::uint8_t> HalfAndHalf(std::uint32_t zero = 0, std::uint32_t one = 0x00FFFFFF) {
  Bytes dib;
  for (const std::uint32_t value : {40U, 8U, 1U, 1U | 1U << 16, 0U, 0U, 0U, 0U, 0U, 0U, zero, one, 0x0FU})
    Put(dib, value);
  return dib;
}

// The whole of a bitmap into the box, by BITBLT.
void BlitRow(Bytes& bytes, std::uint32_t left, std::uint32_t width, const std::vector<std::uint8_t>& dib,
             std::uint32_t headerBytes, std::uint32_t mapScale = kOne, std::uint32_t sourceLeft = 0) {
  std::vector<std::uint32_t> data;
  const Placed at = AddBitmap(data, 100, dib, headerBytes);
  std::vector<std::uint32_t> values = {0, 0, 0, 0, left, 0, width, 1, platform::kSourceCopy, sourceLeft, 0};
  Append(values, {mapScale, 0, 0, kOne, 0, 0, 0, 0, at.header, at.headerBytes, at.rows, at.rowBytes});
  Append(values, data);
  Put(bytes, platform::kEmrBitBlt, values);
}

TEST(MetafileBitmaps, TwoColorsAreThoseOfTheTarget) {
  for (const bool blackAndWhite : {true, false}) {
    Drawing drawing(8, 1);
    drawing.out.SetTextColor(kRedRef);
    drawing.out.SetBkColor(kBlueRef);
    drawing.PlayWith([&](Bytes& bytes) {
      BlitRow(bytes, 0, 8, blackAndWhite ? HalfAndHalf() : HalfAndHalf(0x112233, 0x445566), 48);
    });
    EXPECT_EQ(drawing.At(1, 0), blackAndWhite ? kRedWord : 0xFF112233);
    EXPECT_EQ(drawing.At(6, 0), blackAndWhite ? kBlueWord : 0xFF445566);
  }
}

TEST(MetafileBitmaps, TheSourceHasUnitsOfItsOwn) {
  Drawing drawing(8, 1);
  // Two pixels of the bitmap to a unit: four units from the second one on are its pixels 2 to 9.
  drawing.PlayWith([](Bytes& bytes) { BlitRow(bytes, 0, 4, HalfAndHalf(), 48, kTwo, 1); });
  EXPECT_EQ(drawing.At(0, 0), kBlackWord);
  EXPECT_EQ(drawing.At(1, 0), kWhiteWord);
  EXPECT_EQ(drawing.At(2, 0), kWhiteWord);
  EXPECT_EQ(drawing.At(3, 0), kNothing) << "there is no picture beside the bitmap";
}

TEST(MetafileBitmaps, NothingIsDrawnBesideTheBitmap) {
  const auto dib = WordDib(2, 2, std::array<std::uint32_t, 4>{0xFF0000, 0x0000FF, 0xFF0000, 0x0000FF});
  Drawing drawing(9, 4);
  drawing.out.DrawDib({1, 0, 5, 4}, dib, {-1, -1, 3, 3});
  drawing.out.DrawDib({9, 0, 6, 4}, dib, {1, 0, 4, 4});  // mirrored
  drawing.Play();
  EXPECT_EQ(drawing.PaintedCount(), 4U + 2U);
  EXPECT_EQ(drawing.At(2, 1), kRedWord);
  EXPECT_EQ(drawing.At(3, 2), kBlueWord);
  EXPECT_EQ(drawing.At(8, 1), kBlueWord);
}

TEST(MetafileBitmaps, MasksChooseTheOperation) {
  struct Case {
    std::uint32_t rop;  // that outside of the mask in the highest byte
    std::uint32_t inside, outside;
  };
  // The source is 0x112233, the target red, the brush blue.
  for (const Case& one : {Case{0xAA000000 | platform::kSourceCopy, 0xFF112233, kRedWord},
                          Case{0xAA000000 | platform::kPatternCopy, kBlueWord, kRedWord},
                          Case{0x00000000 | platform::kSourceCopy, 0xFF112233, kBlackWord},
                          Case{0x55000000 | platform::kSourceCopy, 0xFF112233, 0xFF00FFFF},
                          Case{0xCC000000 | platform::kLeaveTarget, kRedWord, 0xFF112233}}) {
    Drawing drawing(8, 1);
    drawing.FillOnly(kRedRef);
    drawing.out.Rectangle({0, 0, 8, 1});
    drawing.FillOnly(kBlueRef);
    const std::array<std::uint32_t, 8> words{0x112233, 0x112233, 0x112233, 0x112233,
                                             0x112233, 0x112233, 0x112233, 0x112233};
    drawing.PlayWith([&](Bytes& bytes) {
      std::vector<std::uint32_t> data;
      const Placed source = AddBitmap(data, 128, WordDib(8, 1, words));
      const Placed mask = AddBitmap(data, 128, HalfAndHalf(), 48);
      std::vector<std::uint32_t> values = {0, 0, 0, 0, 0, 0, 8, 1, one.rop, 0, 0, kOne, 0, 0, kOne, 0, 0, 0, 0};
      Append(values, {source.header, source.headerBytes, source.rows, source.rowBytes});
      Append(values, {0, 0, 0, mask.header, mask.headerBytes, mask.rows, mask.rowBytes});
      Append(values, data);
      Put(bytes, platform::kEmrMaskBlt, values);
    });
    EXPECT_EQ(drawing.At(2, 0), one.outside) << std::hex << one.rop;
    EXPECT_EQ(drawing.At(5, 0), one.inside) << std::hex << one.rop;
  }
}

TEST(MetafileBitmaps, ARecordMayHoldSomeRows) {
  // Of four rows, counted from the bottom, the second and the third.
  const std::array<std::uint32_t, 2> words{0x0000FF, 0xFF0000};
  auto dib = WordDib(1, 2, words);
  dib[8] = 4;
  std::fill_n(dib.begin() + 9, 3, std::uint8_t{0});
  Drawing drawing(1, 4);
  drawing.PlayWith([&](Bytes& bytes) {
    std::vector<std::uint32_t> data;
    const Placed at = AddBitmap(data, 76, dib);
    std::vector<std::uint32_t> values = {0, 0, 0, 0, 0, 0, 0, 0, 1, 4};
    Append(values, {at.header, at.headerBytes, at.rows, at.rowBytes, 0, 1, 2});
    Append(values, data);
    Put(bytes, platform::kEmrSetDiBitsToDevice, values);
  });
  EXPECT_EQ(drawing.pixels, (std::vector<std::uint32_t>{kNothing, kRedWord, kBlueWord, kNothing}));
}

TEST(MetafileBitmaps, ColorsComeFromTheSelectedPalette) {
  for (const std::uint32_t usage : {platform::kPaletteColors, platform::kPaletteIndices}) {
    Bytes dib;
    for (const std::uint32_t value : {40U, 4U, 1U, 1U | 8U << 16, 0U, 0U, 0U, 0U, 2U, 0U}) Put(dib, value);
    if (usage == platform::kPaletteColors) Put(dib, 1 | 0 << 16);  // the palette's second colour comes first
    Put(dib, 0x01000100);
    Drawing drawing(4, 1);
    drawing.PlayWith([&](Bytes& bytes) {
      Put(bytes, platform::kEmrCreatePalette, {1, 0x300 | 2 << 16, kRedRef, kBlueRef});
      Put(bytes, platform::kEmrSelectPalette, {1});
      std::vector<std::uint32_t> data;
      const Placed at = AddBitmap(data, 80, dib, usage == platform::kPaletteColors ? 44 : 40);
      std::vector<std::uint32_t> values = {0, 0, 0, 0, 0, 0, 0, 0, 4, 1};
      Append(values, {at.header, at.headerBytes, at.rows, at.rowBytes, usage, platform::kSourceCopy, 4, 1});
      Append(values, data);
      Put(bytes, platform::kEmrStretchDiBits, values);
    });
    const bool turned = usage == platform::kPaletteColors;
    EXPECT_EQ(drawing.At(0, 0), turned ? kBlueWord : kRedWord);
    EXPECT_EQ(drawing.At(1, 0), turned ? kRedWord : kBlueWord);
  }
}

}  // namespace
