#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "glib/module_api/result_values.h"
#include "tests/modules/qjpg/jpeg_files.h"
#include "tests/support/byte_writer.h"
#include "tests/support/corpus.h"
#include "tests/support/damage.h"
#include "tests/support/module_host.h"
#include "tests/support/temporary_folder.h"

namespace tests {
namespace {

constexpr std::uint32_t kPctId = 0x80001004;
constexpr std::uint32_t kWhite = 0xFFFFFFFF;
constexpr std::uint32_t kBlack = 0xFF000000;
constexpr std::uint32_t kRed = 0xFFFF0000;

ByteWriter& Box(ByteWriter& out, int top, int left, int bottom, int right) {
  for (const int side : {top, left, bottom, right}) out.BigWord(static_cast<std::uint32_t>(side));
  return out;
}

// Operations of version 2, each at an even place.
struct Pict : ByteWriter {
  Pict(int height, int width, bool lead = true) {
    if (lead) Zeros(512);
    start = bytes.size();
    BigWord(0);
    tests::Box(*this, 0, 0, height, width);
    BigWord(0x0011).BigWord(0x02FF);
  }
  Pict& Do(std::uint32_t operation) {
    if ((bytes.size() - start) % 2 != 0) Byte(0);
    BigWord(operation);
    return *this;
  }
  Pict& Byte(std::uint32_t value) { return Put(ByteWriter::Byte(value)); }
  Pict& BigWord(std::uint32_t value) { return Put(ByteWriter::BigWord(value)); }
  Pict& BigLong(std::uint32_t value) { return Put(ByteWriter::BigLong(value)); }
  Pict& Zeros(std::size_t count) { return Put(ByteWriter::Zeros(count)); }
  Pict& Text(std::string_view text) { return Put(ByteWriter::Text(text)); }
  Pict& Put(const ByteWriter&) { return *this; }
  Pict& Box(int top, int left, int bottom, int right) {
    tests::Box(*this, top, left, bottom, right);
    return *this;
  }
  const std::vector<std::uint8_t>& End() { return Do(0xFF).bytes; }

  std::size_t start = 0;
};

// The head of a pixel map without its colour table.
void PixMap(Pict& pict, int width, int height, std::uint32_t rowBytes, std::uint32_t packing, std::uint32_t bits,
            std::uint32_t components) {
  pict.BigWord(rowBytes | 0x8000);
  pict.Box(0, 0, height, width).BigWord(0).BigWord(packing).BigLong(0).BigLong(72 << 16).BigLong(72 << 16);
  pict.BigWord(bits > 8 ? 16 : 0).BigWord(bits).BigWord(components).BigWord(8).Zeros(12);
}

void FourColors(Pict& pict) {
  pict.BigLong(0).BigWord(0).BigWord(3);
  const std::uint32_t kColors[4][3] = {{255, 255, 255}, {0, 0, 0}, {255, 0, 0}, {1, 2, 3}};
  for (std::uint32_t i = 0; i < 4; ++i) {
    pict.BigWord(i);
    for (const std::uint32_t value : kColors[i]) pict.BigWord(value * 257);
  }
}

// 9 x 2 pixels of 8 bits: 0 0 0 ... 1 2, and 3 in all of the second row.
std::vector<std::uint8_t> IndexedPict(int frameHeight = 2, int frameWidth = 9) {
  Pict pict(frameHeight, frameWidth);
  pict.Do(0x98);
  PixMap(pict, 9, 2, 10, 0, 8, 1);
  FourColors(pict);
  pict.Box(0, 0, 2, 9).Box(0, 0, frameHeight, frameWidth).BigWord(0);
  pict.Byte(6).Byte(0xFA).Byte(0).Byte(2).Byte(1).Byte(2).Byte(0);  // 7 x 0, then 1 2 0
  pict.Byte(2).Byte(0xF7).Byte(3);                                  // 10 x 3
  return pict.End();
}

class Qpct : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host_.Ok()); }
  Loaded Load(std::span<const std::uint8_t> bytes) const { return host_.Load(bytes, kPctId); }
  Loaded Draw(std::span<const std::uint8_t> bytes) const {
    Loaded loaded = Load(bytes);
    EXPECT_EQ(loaded.result, glib::RCOK) << loaded.message;
    if (loaded.PageCount() != 0) {
      EXPECT_EQ(loaded.PageAt(0).bits, 0);
    }
    DrawMetafiles(loaded);
    return loaded;
  }

  ModuleHost host_{"qpct"};
};

TEST_F(Qpct, OnePixelMapIsARasterPage) {
  const Loaded loaded = Load(IndexedPict());
  ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
  const auto& page = loaded.PageAt(0);
  ASSERT_EQ(page.bits, 8);
  EXPECT_EQ(page.width, 9);
  EXPECT_EQ(page.height, 2);
  EXPECT_EQ(page.metafile, nullptr);
  EXPECT_EQ(page.paletteEntries, 4U);
  EXPECT_EQ(page.dpiX, 72.0);
  EXPECT_EQ(IndexAt(page, 6, 0), 0U);
  EXPECT_EQ(IndexAt(page, 7, 0), 1U);
  EXPECT_EQ(IndexAt(page, 8, 0), 2U);
  EXPECT_EQ(PixelAt(page, 8, 0), kRed);
  EXPECT_EQ(PixelAt(page, 3, 1), 0xFF010203U);
}

TEST_F(Qpct, AFinerPixelMapKeepsItsPixels) {
  const Loaded loaded = Load(IndexedPict(1, 3));
  ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
  EXPECT_EQ(loaded.PageAt(0).width, 9);
  EXPECT_EQ(loaded.PageAt(0).dpiX, 216.0);
  EXPECT_EQ(loaded.PageAt(0).dpiY, 144.0);
}

TEST_F(Qpct, DirectPixelsInEachPacking) {
  const struct {
    const char* name;
    std::uint32_t rowBytes, packing, bits, components;
    std::vector<std::uint8_t> data;
  } kCases[] = {
      {"words, short rows", 6, 3, 16, 3, {0x7C, 0, 0x03, 0xE0, 0, 0x1F}},
      {"words in runs", 8, 3, 16, 3, {9, 1, 0x7C, 0, 0x03, 0xE0, 0xFF, 0, 0x1F, 0}},
      {"components", 12, 4, 32, 3, {12, 8, 255, 0, 0, 0, 255, 0, 0, 0, 255, 0, 0}},
      {"components with alpha", 12, 4, 32, 4, {12, 0xFE, 9, 8, 255, 0, 0, 0, 255, 0, 0, 0, 255}},
      {"without pad", 12, 2, 32, 3, {255, 0, 0, 0, 255, 0, 0, 0, 255}},
      {"not packed", 12, 1, 32, 3, {9, 255, 0, 0, 9, 0, 255, 0, 9, 0, 0, 255}},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    Pict pict(1, 3);
    pict.Do(0x9A).BigLong(255);
    PixMap(pict, 3, 1, c.rowBytes, c.packing, c.bits, c.components);
    pict.Box(0, 0, 1, 3).Box(0, 0, 1, 3).BigWord(0).Bytes(c.data);
    const Loaded loaded = Load(pict.End());
    ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
    const auto& page = loaded.PageAt(0);
    ASSERT_EQ(page.bits, 24);
    EXPECT_EQ(PixelAt(page, 0, 0), kRed);
    EXPECT_EQ(PixelAt(page, 1, 0), 0xFF00FF00U);
    EXPECT_EQ(PixelAt(page, 2, 0), 0xFF0000FFU);
  }
}

TEST_F(Qpct, OldBitmapsTakeTheColorsOfTheDrawing) {
  ByteWriter out;  // version 1: operations are bytes
  out.Zeros(512).BigWord(0);
  Box(out, 0, 0, 2, 10);
  out.BigWord(0x1101).Byte(0x0E).BigLong(205).Byte(0x90).BigWord(2);
  Box(out, 0, 0, 2, 10);
  Box(out, 0, 0, 2, 10);
  Box(out, 0, 0, 2, 10);
  out.BigWord(0).BigWord(0x8040).BigWord(0x0000).Byte(0xFF);
  const Loaded loaded = Load(out.bytes);
  ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
  const auto& page = loaded.PageAt(0);
  ASSERT_EQ(page.bits, 1);
  EXPECT_EQ(PixelAt(page, 0, 0), kRed);
  EXPECT_EQ(PixelAt(page, 9, 0), kRed);
  EXPECT_EQ(PixelAt(page, 1, 0), kWhite);
}

TEST_F(Qpct, FiguresLieWhereThePenPutsThem) {
  Pict pict(40, 60);
  pict.Do(0x1A).BigWord(0xFFFF).BigWord(0).BigWord(0);
  pict.Do(0x31).Box(2, 2, 10, 10);                               // red rectangle
  pict.Do(0x0E).BigLong(33);                                     // black
  pict.Do(0x20).BigWord(20).BigWord(5).BigWord(20).BigWord(15);  // a line of one pixel
  pict.Do(0x07).BigWord(2).BigWord(3);                           // a pen 3 wide, 2 high
  pict.Do(0x30).Box(25, 30, 39, 50);                             // frame
  pict.Do(0x21).BigWord(30).BigWord(15);                         // from the end of the line
  pict.Do(0x33).Box(5, 5, 7, 7);                                 // what it covers changes over
  const Loaded loaded = Draw(pict.End());
  const auto& page = loaded.PageAt(0);
  ASSERT_EQ(page.width, 60);
  ASSERT_EQ(page.height, 40);
  const auto at = [&](std::uint32_t x, std::uint32_t y) { return PixelAt(page, x, y); };
  EXPECT_EQ(at(2, 2), kRed);
  EXPECT_EQ(at(9, 9), kRed);
  EXPECT_EQ(at(10, 9) >> 24, 0U);  // not painted
  EXPECT_EQ(at(5, 6), 0xFF00FFFFU);
  EXPECT_EQ(at(5, 20), kBlack);
  EXPECT_EQ(at(14, 20), kBlack);
  EXPECT_EQ(at(10, 19) >> 24, 0U);
  EXPECT_EQ(at(10, 21) >> 24, 0U);
  EXPECT_EQ(at(32, 30), kBlack);  // 30 to 32
  EXPECT_EQ(at(33, 30) >> 24, 0U);
  EXPECT_EQ(at(40, 26), kBlack);  // 25 and 26
  EXPECT_EQ(at(40, 27) >> 24, 0U);
  EXPECT_EQ(at(49, 38), kBlack);
  EXPECT_EQ(at(50, 38) >> 24, 0U);
  EXPECT_EQ(at(17, 31), kBlack);  // the pen's far corner at the line's end
  EXPECT_EQ(at(18, 31) >> 24, 0U);
}

TEST_F(Qpct, PatternsOvalsPolygonsAndClips) {
  Pict pict(40, 60);
  pict.Do(0x01).BigWord(10).Box(0, 0, 40, 30);  // a clip
  pict.Do(0x0A).BigLong(0xFF00FF00).BigLong(0xFF00FF00);
  pict.Do(0x34).Box(0, 20, 8, 40);  // filled with rows
  pict.Do(0x51).Box(10, 0, 30, 20);
  pict.Do(0x71).BigWord(22).Box(30, 0, 40, 10).BigWord(30).BigWord(0).BigWord(40).BigWord(0).BigWord(40).BigWord(10);
  const Loaded loaded = Draw(pict.End());
  const auto& page = loaded.PageAt(0);
  const auto at = [&](std::uint32_t x, std::uint32_t y) { return PixelAt(page, x, y); };
  EXPECT_NE(at(25, 0), at(25, 1));
  EXPECT_EQ(at(25, 1), at(25, 3));
  EXPECT_EQ(at(35, 0) >> 24, 0U);  // outside the clip
  EXPECT_EQ(at(10, 20), kBlack);
  EXPECT_EQ(at(1, 11) >> 24, 0U);  // beside the oval
  EXPECT_EQ(at(1, 38), kBlack);
  EXPECT_EQ(at(9, 32) >> 24, 0U);
}

TEST_F(Qpct, ColoredPatternsKeepTheirColors) {
  Pict pict(8, 24);
  pict.Do(0x0014).BigWord(2).Zeros(8).BigWord(0xFFFF).BigWord(0).BigWord(0);  // a colour
  pict.Do(0x34).Box(0, 0, 8, 8);
  // A tile of 9 x 2 pixels, its second row blue.
  pict.Do(0x0014).BigWord(1).Zeros(8);
  PixMap(pict, 9, 2, 10, 0, 8, 1);
  pict.BigLong(0).BigWord(0).BigWord(1);
  for (const std::uint32_t value : {0U, 0xFFFFU, 0U, 0U, 1U, 0U, 0U, 0xFFFFU}) pict.BigWord(value);
  pict.Byte(2).Byte(0xF7).Byte(0).Byte(2).Byte(0xF7).Byte(1);
  pict.Do(0x34).Box(0, 8, 8, 24);
  pict.Do(0x0A).BigLong(0xFFFFFFFF).BigLong(0xFFFFFFFF).Do(0x34).Box(6, 0, 8, 4);  // and back
  const Loaded loaded = Draw(pict.End());
  const auto& page = loaded.PageAt(0);
  EXPECT_EQ(PixelAt(page, 4, 4), kRed);
  EXPECT_EQ(PixelAt(page, 2, 7), kBlack);
  for (std::uint32_t y = 0; y < 6; ++y) EXPECT_EQ(PixelAt(page, 12, y), y % 2 == 0 ? kRed : 0xFF0000FF) << y;
}

TEST_F(Qpct, ARegionMasksItsPicture) {
  Pict pict(2, 9);
  pict.Do(0x99);
  PixMap(pict, 9, 2, 10, 0, 8, 1);
  FourColors(pict);
  pict.Box(0, 0, 2, 9).Box(0, 0, 2, 9).BigWord(0);
  // Columns 1 to 3 of the first row, 5 to 9 of the second.
  pict.BigWord(10 + 2 * 16).Box(0, 1, 2, 9);
  for (const std::uint32_t value : {0, 1, 3, 0x7FFF, 1, 1, 3, 5, 9, 0x7FFF, 2, 5, 9, 0x7FFF, 0x7FFF, 0}) {
    pict.BigWord(value);
  }
  pict.Byte(2).Byte(0xF7).Byte(2).Byte(2).Byte(0xF7).Byte(2);
  const Loaded loaded = Draw(pict.End());
  const auto& page = loaded.PageAt(0);
  for (std::uint32_t x = 0; x < 9; ++x) {
    EXPECT_EQ(PixelAt(page, x, 0), x >= 1 && x < 3 ? kRed : 0U) << x;
    EXPECT_EQ(PixelAt(page, x, 1), x >= 5 ? kRed : 0U) << x;
  }
}

TEST_F(Qpct, PlainQuickTimeStandsBeforeItsImage) {
  Pict pict(2, 9);
  pict.Do(0x8201).BigLong(50).BigWord(0).Zeros(36).BigLong(0).Zeros(8);
  pict.Do(0x98);
  PixMap(pict, 9, 2, 10, 0, 8, 1);
  FourColors(pict);
  pict.Box(0, 0, 2, 9).Box(0, 0, 2, 9).BigWord(0);
  pict.Byte(2).Byte(0xF7).Byte(2).Byte(2).Byte(0xF7).Byte(2);
  const Loaded loaded = Load(pict.End());
  ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
  EXPECT_EQ(loaded.PageAt(0).bits, 8);
  EXPECT_EQ(PixelAt(loaded.PageAt(0), 4, 1), kRed);
}

TEST_F(Qpct, TextIsDrawn) {
  Pict pict(40, 60);
  pict.Do(0x0D).BigWord(24);
  pict.Do(0x28).BigWord(30).BigWord(5).Byte(3).Text("HHH");
  const Loaded loaded = Draw(pict.End());
  std::uint32_t painted = 0;
  for (std::uint32_t x = 0; x < 60; ++x) painted += PixelAt(loaded.PageAt(0), x, 24) >> 24 != 0 ? 1 : 0;
  EXPECT_GT(painted, 10U);
  EXPECT_EQ(PixelAt(loaded.PageAt(0), 3, 24) >> 24, 0U);
}

TEST_F(Qpct, QuickTimeHoldsAJpeg) {
  const Bytes jpeg = MakeJpeg({.width = 16, .height = 8});
  Pict pict(8, 16);
  pict.Do(0x8200).BigLong(static_cast<std::uint32_t>(68 + 86 + jpeg.size())).BigWord(0);
  const std::uint32_t kMatrix[] = {1 << 16, 0, 0, 0, 1 << 16, 0, 0, 0, 1 << 30};
  for (const std::uint32_t value : kMatrix) pict.BigLong(value);
  pict.BigLong(0).Zeros(8).BigWord(64);
  pict.Box(0, 0, 8, 16).BigLong(0).BigLong(0);
  pict.BigLong(86).Text("jpeg").Zeros(78).Bytes(jpeg);
  pict.Do(0x28).BigWord(5).BigWord(0).Byte(4).Text("need");  // the words for others
  const auto& bytes = pict.End();
  const Loaded loaded = Load(bytes);
  ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
  EXPECT_EQ(loaded.PageAt(0).bits, 24);
  EXPECT_EQ(loaded.PageAt(0).width, 16);
  EXPECT_EQ(loaded.PageAt(0).height, 8);
}

TEST_F(Qpct, TheHeaderMayBeFinerThanAPoint) {
  Pict pict(10, 20);
  pict.Do(0x0C00).BigWord(0xFFFE).BigWord(0).BigLong(144 << 16).BigLong(144 << 16).Box(0, 0, 20, 40).BigLong(0);
  pict.Do(0x31).Box(0, 0, 20, 20);
  const Loaded loaded = Draw(pict.End());
  const auto& page = loaded.PageAt(0);
  ASSERT_EQ(page.width, 20);
  ASSERT_EQ(page.height, 10);
  EXPECT_EQ(PixelAt(page, 9, 9), kBlack);
  EXPECT_EQ(PixelAt(page, 10, 9) >> 24, 0U);
}

TEST_F(Qpct, UnknownOperationsArePassedOver) {
  Pict pict(10, 10);
  pict.Do(0xA1).BigWord(1).BigWord(3).Text("abc");
  pict.Do(0x0200).Zeros(4);
  pict.Do(0x8100).BigLong(2).Zeros(2);
  pict.Do(0x00D0).BigLong(1).Byte(0);
  pict.Do(0x2E).BigWord(2).Zeros(2);
  pict.Do(0x1E).Do(0x31).Box(0, 0, 10, 10);
  EXPECT_EQ(PixelAt(Draw(pict.End()).PageAt(0), 5, 5), kBlack);
}

TEST_F(Qpct, InformationTellsRastersFromDrawings) {
  const test_support::TemporaryFolder folder;
  const auto write = [&](const std::vector<std::uint8_t>& bytes) {
    return folder.Write("p", {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  };
  const auto raster = host_.Info(write(IndexedPict()), kPctId);
  ASSERT_NE(raster, nullptr);
  EXPECT_EQ(raster->bits(), 8);
  EXPECT_EQ(raster->width, 9);
  Pict pict(10, 10);
  pict.Do(0x31).Box(0, 0, 5, 5);
  const auto drawing = host_.Info(write(pict.End()), kPctId);
  ASSERT_NE(drawing, nullptr);
  EXPECT_EQ(drawing->bits(), 0);
}

TEST_F(Qpct, AbsurdSizesAreRefused) {
  const struct {
    int width, height;
    std::uint32_t rowBytes;
  } kCases[] = {{-5, 5, 8}, {32000, 32000, 32000}, {100, 1, 8}, {32767, 1, 8}};
  for (const auto& c : kCases) {
    Pict pict(2, 9);
    pict.Do(0x98);
    PixMap(pict, c.width, c.height, c.rowBytes, 0, 8, 1);
    FourColors(pict);
    pict.Box(0, 0, 2, 9).Box(0, 0, 2, 9).BigWord(0).Zeros(40);
    const Loaded loaded = Load(pict.End());
    EXPECT_NE(loaded.result, glib::RCOK) << c.width;
    CheckOutcome(loaded);
  }
  Pict huge(30000, 30000);
  EXPECT_NE(Load(huge.Do(0x31).Box(0, 0, 9, 9).End()).result, glib::RCOK);
  EXPECT_EQ(Load(Pict(0, 0).End()).result, glib::IERR);
  EXPECT_EQ(Load(Pict(5, 5).End()).result, glib::IERR);  // nothing drawn
}

TEST_F(Qpct, DamagedFilesEndCleanly) {
  auto load = [&](std::span<const std::uint8_t> bytes) { return Load(bytes); };
  const auto indexed = IndexedPict();
  TryDamaged(std::span(indexed).subspan(512), load);
  Pict pict(40, 60, false);
  pict.Do(0x01).BigWord(26).Box(0, 0, 9, 9).BigWord(0).BigWord(2).BigWord(5).BigWord(0x7FFF).BigWord(9).BigWord(2);
  pict.BigWord(0x7FFF);
  pict.Do(0x12).BigWord(2).Zeros(8).Zeros(6);
  pict.Do(0x2C).BigWord(5).BigWord(3).Byte(2).Text("Ab");
  pict.Do(0x28).BigWord(30).BigWord(5).Byte(3).Text("abc");
  pict.Do(0x40).Box(1, 1, 9, 9).Do(0x58).Do(0x60).Box(1, 1, 9, 9).BigWord(10).BigWord(90).Do(0x81).BigWord(10);
  pict.Box(2, 2, 8, 8).Do(0x23).Byte(3).Byte(0xF0);
  TryDamaged(pict.End(), load);
}

TEST_F(Qpct, RealFilesLookAsElsewhere) {
  if (!CheckCorpus("pict", host_, kPctId)) GTEST_SKIP() << "no corpus";
}

}  // namespace
}  // namespace tests
