// Text of metafiles.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "tests/platform/metafile/drawing.h"

namespace {

using platform::Box;
using test_support::Bytes;
using test_support::Drawing;
using test_support::kBlueRef;
using test_support::kBlueWord;
using test_support::kNothing;
using test_support::kRedRef;
using test_support::kRedWord;
using test_support::Put;

// The box around what is painted; right and bottom outside.
Box InkOf(const Drawing& drawing, std::int32_t width, std::int32_t height) {
  Box box{width, height, 0, 0};
  for (std::int32_t y = 0; y < height; ++y) {
    for (std::int32_t x = 0; x < width; ++x) {
      if (drawing.At(x, y) == kNothing) continue;
      box = {std::min(box.left, x), std::min(box.top, y), std::max(box.right, x + 1), std::max(box.bottom, y + 1)};
    }
  }
  return box;
}

platform::FontSpec Arial(std::int32_t height, std::int32_t escapement = 0) {
  platform::FontSpec font;
  font.height = height;
  font.face = u"Arial";
  font.escapement = escapement;
  return font;
}

TEST(MetafileText, TextStandsWhereItIsPut) {
  struct Case {
    std::uint32_t align;
    Box within;  // where all of the ink lies, with the reference point at 100, 60
  };
  for (const Case& one : {Case{platform::kAlignBaseline, {99, 40, 150, 62}}, Case{0, {99, 60, 150, 86}},
                          Case{platform::kAlignBottom, {99, 34, 150, 60}},
                          Case{platform::kAlignBaseline | platform::kAlignRight, {50, 40, 101, 62}},
                          Case{platform::kAlignBaseline | platform::kAlignCenter, {75, 40, 125, 62}}}) {
    Drawing drawing(200, 120);
    drawing.out.SetBkMode(platform::kTransparentMode);
    drawing.out.SelectObject(drawing.out.CreateFont(Arial(-24)));
    drawing.out.SetTextAlign(one.align);
    drawing.out.TextOut(100, 60, u"HEH");
    drawing.Play();
    const Box ink = InkOf(drawing, 200, 120);
    EXPECT_GE(ink.left, one.within.left) << one.align;
    EXPECT_GE(ink.top, one.within.top) << one.align;
    EXPECT_LE(ink.right, one.within.right) << one.align;
    EXPECT_LE(ink.bottom, one.within.bottom) << one.align;
    EXPECT_GT(ink.right - ink.left, 40) << one.align;
  }
}

TEST(MetafileText, AdvancesPlaceCharacters) {
  Drawing drawing(100, 40);
  drawing.out.SetBkMode(platform::kTransparentMode);
  drawing.out.SelectObject(drawing.out.CreateFont(Arial(-20)));
  drawing.out.TextOut(5, 5, u"II", std::array<std::int32_t, 2>{70, 5});
  drawing.Play();
  std::size_t middle = 0;
  for (std::int32_t x = 15; x < 70; ++x) middle += drawing.At(x, 20) != kNothing;
  EXPECT_EQ(middle, 0U);
  const Box ink = InkOf(drawing, 100, 40);
  EXPECT_LT(ink.left, 12);
  EXPECT_GT(ink.right, 75);
}

TEST(MetafileText, TextTurnsAndGoesOn) {
  Drawing drawing(100, 100);
  drawing.out.SetBkMode(platform::kTransparentMode);
  drawing.out.SelectObject(drawing.out.CreateFont(Arial(-20, 900)));
  drawing.out.SetTextAlign(platform::kAlignBaseline | platform::kAlignUpdatePosition);
  drawing.out.MoveTo(50, 95);
  drawing.out.TextOut(0, 0, u"I", std::array<std::int32_t, 1>{60});
  drawing.out.TextOut(0, 0, u"I", std::array<std::int32_t, 1>{60});
  drawing.Play();
  const Box ink = InkOf(drawing, 100, 100);
  EXPECT_LE(ink.right, 51) << "the letter's foot stands to the right";
  EXPECT_GT(ink.left, 30);
  EXPECT_LT(ink.top, 40) << "the second letter is further up";
  EXPECT_GT(ink.bottom, 85);
}

TEST(MetafileText, OpaqueTextHasItsBox) {
  Drawing drawing(20, 10);
  drawing.out.SetBkColor(kRedRef);
  drawing.out.SetBkMode(platform::kTransparentMode);
  drawing.out.TextOut(0, 0, u"", {}, platform::kTextOpaque, {3, 2, 15, 8});
  drawing.Play();
  EXPECT_TRUE(drawing.Only({3, 2, 15, 8}, kRedWord));
}

// Ink in the columns from `left` to `right`.
std::size_t InkBetween(const Drawing& drawing, std::int32_t left, std::int32_t right, std::int32_t height) {
  std::size_t ink = 0;
  for (std::int32_t y = 0; y < height; ++y) {
    for (std::int32_t x = left; x < right; ++x) ink += drawing.At(x, y) != kNothing;
  }
  return ink;
}

// The text of EXTTEXTOUT, at the reference point 5, 5.
void PutText(Bytes& bytes, std::uint32_t type, std::uint32_t count, std::uint32_t options,
             const std::vector<std::uint32_t>& textAndAdvances, std::uint32_t advancesAt = 0) {
  std::vector<std::uint32_t> values = {0, 0, 0, 0, 1, 0, 0, 5, 5, count, 76, options, 0, 0, 0, 0, advancesAt};
  values.insert(values.end(), textAndAdvances.begin(), textAndAdvances.end());
  Put(bytes, type, values);
}

void BeginText(Drawing& drawing, std::int32_t height, std::uint8_t charset = 1) {
  drawing.out.SetBkMode(platform::kTransparentMode);
  platform::FontSpec font = Arial(-height);
  font.charset = charset;
  drawing.out.SelectObject(drawing.out.CreateFont(font));
}

TEST(MetafileText, JustifiedLinesSpreadTheirBlanks) {
  Box ink[2];
  for (const std::int32_t extra : {0, 60}) {
    Drawing drawing(200, 40);
    BeginText(drawing, 20);
    drawing.PlayWith([&](Bytes& bytes) {
      Put(bytes, platform::kEmrSetTextJustification, {static_cast<std::uint32_t>(extra), 2});
      PutText(bytes, platform::kEmrExtTextOutA, 5, 0, {0x20492049, 0x49});  // "I I I"
    });
    ink[extra / 60] = InkOf(drawing, 200, 40);
  }
  EXPECT_EQ(ink[0].left, ink[1].left);
  EXPECT_EQ(ink[0].right + 60, ink[1].right);
}

TEST(MetafileText, SeveralTextsInOneRecord) {
  Drawing drawing(100, 40);
  BeginText(drawing, 20);
  drawing.PlayWith([](Bytes& bytes) {
    // Two texts of one letter, at 5 and at 70; they and their advances stand behind both heads.
    Put(bytes, platform::kEmrPolyTextOutW,
        {0, 0, 0, 0, 1, 0, 0, 2, 5, 5, 1, 120, 0, 0, 0, 0, 0, 0, 70, 5, 1, 124, 0, 0, 0, 0, 0, 0, 'H', 'H'});
  });
  EXPECT_GT(InkBetween(drawing, 5, 25, 40), 0U);
  EXPECT_EQ(InkBetween(drawing, 30, 65, 40), 0U);
  EXPECT_GT(InkBetween(drawing, 70, 95, 40), 0U);
}

TEST(MetafileText, PairedAdvancesLiftCharacters) {
  Drawing drawing(100, 80);
  BeginText(drawing, 20);
  drawing.out.SetTextAlign(platform::kAlignBaseline | platform::kAlignUpdatePosition);
  drawing.out.MoveTo(5, 70);
  drawing.PlayWith([](Bytes& bytes) {
    PutText(bytes, platform::kEmrExtTextOutW, 2, platform::kTextPairedAdvances, {'I' | 'I' << 16, 50, 40, 50, 0}, 80);
  });
  EXPECT_EQ(InkBetween(drawing, 5, 30, 50), 0U) << "the first letter stands at the bottom";
  EXPECT_GT(InkBetween(drawing, 5, 30, 80), 0U);
  EXPECT_GT(InkBetween(drawing, 50, 90, 32), 0U) << "the second one is 40 higher";
}

TEST(MetafileText, BytesAreReadInTheFontsSet) {
  // The letter of code 0xCF: in the Cyrillic set it looks as the Greek capital pi does.
  std::vector<std::uint32_t> drawn[2];
  for (const bool wide : {false, true}) {
    Drawing drawing(40, 40);
    BeginText(drawing, 24, 204);
    drawing.PlayWith([&](Bytes& bytes) {
      PutText(bytes, wide ? platform::kEmrExtTextOutW : platform::kEmrExtTextOutA, 1, 0, {wide ? 0x041FU : 0xCFU});
    });
    drawn[wide] = drawing.pixels;
    EXPECT_GT(drawing.PaintedCount(), 20U);
  }
  EXPECT_EQ(drawn[0], drawn[1]);
}

TEST(MetafileText, DingbatsAreFoundInOtherFonts) {
  struct Case {
    const char16_t* face;
    std::uint32_t byte, character;
  };
  for (const Case& one :
       {Case{u"Wingdings", 'l', 0x25CF}, Case{u"Wingdings", 0xE4, 0x2197}, Case{u"Symbol", 'p', 0x03C0}}) {
    std::vector<std::uint32_t> drawn[2];
    for (const bool named : {false, true}) {
      Drawing drawing(40, 40);
      drawing.out.SetBkMode(platform::kTransparentMode);
      platform::FontSpec font = Arial(-24);
      font.face = one.face;
      font.charset = named ? 1 : 2;
      drawing.out.SelectObject(drawing.out.CreateFont(font));
      drawing.PlayWith(
          [&](Bytes& bytes) { PutText(bytes, platform::kEmrExtTextOutW, 1, 0, {named ? one.character : one.byte}); });
      drawn[named] = drawing.pixels;
      EXPECT_GT(drawing.PaintedCount(), 10U) << one.byte;
    }
    EXPECT_EQ(drawn[0], drawn[1]) << one.byte;
  }
}

TEST(MetafileText, InAPathItIsItsOutlines) {
  struct Case {
    const char* name;
    std::uint32_t bkMode;
    bool clip;
    std::uint32_t onLetter, besideIt;
  };
  for (const Case& one : {Case{"filled", platform::kTransparentMode, false, kRedWord, kNothing},
                          Case{"clip", platform::kTransparentMode, true, kRedWord, kNothing},
                          Case{"its cell without it", platform::kOpaqueMode, false, kNothing, kRedWord}}) {
    Drawing drawing(80, 100);
    BeginText(drawing, 80);
    drawing.FillOnly(kRedRef);
    drawing.out.SetTextColor(kBlueRef);
    drawing.out.SetBkMode(one.bkMode);
    drawing.out.BeginPath();
    drawing.out.TextOut(20, 0, u"I", std::array<std::int32_t, 1>{60});
    drawing.out.EndPath();
    if (one.clip) {
      drawing.out.SelectClipPath(platform::kRegionCopy);
      drawing.out.Rectangle({0, 0, 80, 100});
    } else {
      drawing.out.FillPath();
    }
    drawing.Play();
    // The stem of the letter is some 8 pixels wide and begins some 8 from its edge.
    EXPECT_EQ(drawing.At(31, 45), one.onLetter) << one.name;
    EXPECT_EQ(drawing.At(60, 45), one.besideIt) << one.name;
    EXPECT_EQ(drawing.At(5, 45), kNothing) << one.name;
  }
}

}  // namespace
