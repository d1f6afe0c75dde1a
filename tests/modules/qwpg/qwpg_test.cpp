#include <gtest/gtest.h>

#include <vector>

#include "glib/module_api/result_values.h"
#include "tests/support/byte_writer.h"
#include "tests/support/corpus.h"
#include "tests/support/damage.h"
#include "tests/support/module_host.h"
#include "tests/support/temporary_folder.h"

namespace tests {
namespace {

constexpr std::uint32_t kWpgId = 0x80001005;

// The first version: records of a type, a length and data. Lengths are 1200 to the inch, y goes up.
class WpgWriter {
 public:
  WpgWriter(std::uint32_t width, std::uint32_t height) {
    out_.Byte(0xFF).Text("WPC").Long(16).Byte(1).Byte(0x16).Byte(1).Byte(0).Word(0).Word(0);
    Record(0x0F, ByteWriter().Byte(1).Byte(0).Word(width).Word(height));
  }
  WpgWriter& Record(std::uint32_t type, const ByteWriter& data) {
    out_.Byte(type);
    if (data.bytes.size() < 255) {
      out_.Byte(static_cast<std::uint32_t>(data.bytes.size()));
    } else {
      out_.Byte(255).Word(static_cast<std::uint32_t>(data.bytes.size()));
    }
    out_.Bytes(data.bytes);
    return *this;
  }
  WpgWriter& Fill(std::uint32_t color) { return Record(1, ByteWriter().Byte(1).Byte(color)); }
  WpgWriter& Pen(std::uint32_t style, std::uint32_t color, std::uint32_t width) {
    return Record(2, ByteWriter().Byte(style).Byte(color).Word(width));
  }
  WpgWriter& Rectangle(std::uint32_t x, std::uint32_t y, std::uint32_t width, std::uint32_t height) {
    return Record(7, ByteWriter().Word(x).Word(y).Word(width).Word(height));
  }
  std::vector<std::uint8_t> End() { return Record(0x10, ByteWriter()).out_.bytes; }

 private:
  ByteWriter out_;
};

// 2 x 2 inches with a red square an inch wide at the lower left. Colour 4 is red in the standard palette.
std::vector<std::uint8_t> RedSquare() {
  return WpgWriter(2400, 2400).Fill(4).Pen(0, 0, 0).Rectangle(0, 0, 1200, 1200).End();
}

class Qwpg : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host_.Ok()); }
  Loaded Draw(const std::vector<std::uint8_t>& file) const {
    Loaded loaded = host_.Load(file, kWpgId);
    EXPECT_EQ(loaded.result, glib::RCOK) << loaded.message;
    if (loaded.PageCount() != 0) {
      EXPECT_EQ(loaded.PageAt(0).bits, 0);
    }
    DrawMetafiles(loaded);
    return loaded;
  }

  ModuleHost host_{"qwpg"};
};

TEST_F(Qwpg, ShapesLieOnThePage) {
  const Loaded loaded = Draw(RedSquare());
  const auto& page = loaded.PageAt(0);
  ASSERT_EQ(page.width, 144);
  ASSERT_EQ(page.height, 144);
  const auto red = PixelAt(page, 30, 100);
  EXPECT_GT(red >> 16 & 255, 100U) << std::hex << red;
  EXPECT_LT(red & 0xFFFF, 0x4000U) << std::hex << red;
  EXPECT_EQ(PixelAt(page, 100, 100) >> 24, 0U);
  EXPECT_EQ(PixelAt(page, 30, 40) >> 24, 0U);
}

TEST_F(Qwpg, LinesPolygonsAndEllipses) {
  WpgWriter wpg(2400, 2400);
  wpg.Fill(4).Pen(1, 4, 40);
  wpg.Record(5, ByteWriter().Word(0).Word(1800).Word(2400).Word(1800));  // a line at three quarters of the height
  wpg.Record(8, ByteWriter().Word(3).Word(1200).Word(0).Word(2400).Word(0).Word(2400).Word(1200));
  wpg.Record(9, ByteWriter().Word(600).Word(600).Word(500).Word(300).Word(0).Word(0).Word(360).Word(0));
  const Loaded loaded = Draw(wpg.End());
  const auto& page = loaded.PageAt(0);
  const auto inked = [&](std::uint32_t x, std::uint32_t y) { return PixelAt(page, x, y) >> 24 != 0; };
  EXPECT_TRUE(inked(70, 36));
  EXPECT_FALSE(inked(70, 30));
  EXPECT_TRUE(inked(135, 130));
  EXPECT_FALSE(inked(80, 80));
  EXPECT_TRUE(inked(36, 108));
  EXPECT_TRUE(inked(60, 108));
  EXPECT_FALSE(inked(36, 80));
}

// The second version, on 2 x 2 inches of 1200 units, y going up.
class Wpg2Writer {
 public:
  Wpg2Writer() {
    out_.Byte(0xFF).Text("WPC").Long(16).Byte(1).Byte(0x16).Byte(2).Byte(0).Word(0).Word(0);
    ByteWriter start;
    start.Word(1200).Word(1200).Byte(0).Zeros(8).Word(0).Word(0).Word(2400).Word(2400);
    Record(0x01, start);
  }
  Wpg2Writer& Record(std::uint32_t type, const ByteWriter& data) {
    out_.Byte(0).Byte(type).Byte(0).Byte(static_cast<std::uint32_t>(data.bytes.size())).Bytes(data.bytes);
    return *this;
  }
  Wpg2Writer& Rectangle(std::uint32_t flags, std::uint32_t left, std::uint32_t low, std::uint32_t right,
                        std::uint32_t high) {
    return Record(0x18, ByteWriter().Word(flags).Word(left).Word(low).Word(right).Word(high).Word(0).Word(0));
  }
  std::vector<std::uint8_t> End() { return Record(0x02, ByteWriter()).out_.bytes; }

 private:
  ByteWriter out_;
};

constexpr std::uint32_t kFilled = 1 << 13;
constexpr std::uint32_t kFramed = 1 << 15;

TEST_F(Qwpg, GradientsRunFromColorToColor) {
  Wpg2Writer wpg;
  wpg.Record(0x2F, ByteWriter().Word(0).Word(0).Word(65535).Word(65535).Word(0));  // straight down, from one end
  wpg.Record(0x31, ByteWriter().Byte(1).Word(2).Long(0x000000FF).Long(0x00FF0000).Word(0));
  const Loaded loaded = Draw(wpg.Rectangle(kFilled, 0, 0, 2400, 2400).End());
  const auto& page = loaded.PageAt(0);
  const auto red = [&](std::uint32_t y) { return PixelAt(page, 70, y) >> 16 & 255; };
  const auto blue = [&](std::uint32_t y) { return PixelAt(page, 70, y) & 255; };
  EXPECT_GT(blue(2), 240U);
  EXPECT_LT(red(2), 15U);
  EXPECT_NEAR(red(72), 128, 8);
  EXPECT_NEAR(blue(72), 128, 8);
  EXPECT_GT(red(141), 240U);
  EXPECT_EQ(PixelAt(page, 10, 72), PixelAt(page, 130, 72));
}

TEST_F(Qwpg, LinesHaveTheirDashes) {
  Wpg2Writer wpg;
  wpg.Record(0x25, ByteWriter().Long(0)).Record(0x2B, ByteWriter().Word(12)).Record(0x27, ByteWriter().Long(0));
  wpg.Record(0x29, ByteWriter().Word(4));
  const Loaded loaded = Draw(wpg.Rectangle(kFramed, 100, 1200, 2300, 2500).End());
  std::uint32_t changes = 0;
  for (std::uint32_t x = 10; x < 134; ++x) {
    const auto inked = [&](std::uint32_t at) { return PixelAt(loaded.PageAt(0), at, 72) >> 24 != 0; };
    changes += inked(x) != inked(x + 1) ? 1 : 0;
  }
  EXPECT_GE(changes, 3U);
}

TEST_F(Qwpg, OneBitmapIsARasterPage) {
  WpgWriter wpg(31, 32);
  // 3 x 2 pixels of one bit, 75 to the inch: a run of one byte in each row.
  wpg.Record(0x0B, ByteWriter().Word(3).Word(2).Word(1).Word(75).Word(75).Byte(1).Byte(0xA0).Byte(1).Byte(0x40));
  const Loaded loaded = host_.Load(wpg.End(), kWpgId);
  ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
  const auto& page = loaded.PageAt(0);
  ASSERT_GT(page.bits, 0);
  ASSERT_EQ(page.width, 3);
  ASSERT_EQ(page.height, 2);
  EXPECT_EQ(PixelAt(page, 0, 0), PixelAt(page, 2, 0));
  EXPECT_NE(PixelAt(page, 0, 0), PixelAt(page, 1, 0));
  EXPECT_EQ(PixelAt(page, 1, 0), PixelAt(page, 0, 1));
}

TEST_F(Qwpg, InformationSaysDrawing) {
  const test_support::TemporaryFolder folder;
  const auto file = RedSquare();
  const auto info =
      host_.Info(folder.Write("d.wpg", {reinterpret_cast<const char*>(file.data()), file.size()}), kWpgId);
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->bits(), 0);
}

TEST_F(Qwpg, WhatDrawsNothingIsRefused) {
  EXPECT_EQ(host_.Load(WpgWriter(2400, 2400).End(), kWpgId).result, glib::IERR);
  EXPECT_EQ(host_.Load(std::vector<std::uint8_t>{}, kWpgId).result, glib::IERR);
  WpgWriter absurd(2400, 2400);
  absurd.Record(0x0B, ByteWriter().Word(65535).Word(65535).Word(8).Word(75).Word(75).Byte(1).Byte(0));
  CheckOutcome(host_.Load(absurd.End(), kWpgId));
  WpgWriter many(2400, 2400);
  many.Record(8, ByteWriter().Word(65535).Word(1).Word(1));
  CheckOutcome(host_.Load(many.End(), kWpgId));
}

TEST_F(Qwpg, DamagedFilesEndCleanly) {
  TryDamaged(RedSquare(), [&](std::span<const std::uint8_t> bytes) { return host_.Load(bytes, kWpgId); });
}

TEST_F(Qwpg, RealFilesLookAsElsewhere) {
  const auto files = CorpusFiles("wpg");
  if (files.empty()) GTEST_SKIP() << "no corpus";
  for (const Expected& file : files) {
    // The programs that the look comes from show the first of its bitmaps, which is the mask of the second.
    if (file.name == "im-input.wpg") continue;
    const Loaded loaded = host_.Load(file.path, kWpgId);
    DrawMetafiles(loaded);
    EXPECT_EQ(Compare(file, loaded), "") << file.name;
  }
}

}  // namespace
}  // namespace tests
