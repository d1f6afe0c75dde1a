#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "glib/module_api/result_values.h"
#include "tests/support/byte_writer.h"
#include "tests/support/corpus.h"
#include "tests/support/damage.h"
#include "tests/support/module_host.h"
#include "tests/support/temporary_folder.h"

namespace tests {
namespace {

using namespace std::string_literals;

constexpr std::uint32_t kPbmId = 0x0000000A;
constexpr std::uint32_t kPgmId = 0x0000000B;
constexpr std::uint32_t kPpmId = 0x0000000C;

std::span<const std::uint8_t> AsBytes(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

class Qppm : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host_.Ok()); }

  Loaded Load(std::string_view file) const { return host_.Load(AsBytes(file), kPpmId); }

  ModuleHost host_{"qppm"};
};

TEST_F(Qppm, RegistersItsRowsAndOnlyReads) {
  EXPECT_EQ(host_.Ids(), (std::vector<std::uint32_t>{kPbmId, kPgmId, kPpmId}));
  EXPECT_FALSE(host_.HasEntry("SaveImageData"));
  EXPECT_FALSE(host_.HasEntry("LoadImageThumbnail"));
}

struct Case {
  const char* name;
  std::string file;
  std::int32_t bits;
  std::int32_t width;
  std::int32_t height;
  std::vector<std::uint32_t> pixels;  // 0xRRGGBB, row by row
};

TEST_F(Qppm, ReadsEveryKind) {
  const Case kCases[] = {
      {"bits as text", "P1\n3 2\n101\n0 1 0\n", 1, 3, 2, {0, 0xFFFFFF, 0, 0xFFFFFF, 0, 0xFFFFFF}},
      {"bits as bytes", "P4 10 2\n\xA0\x40\x7F\x80"s, 1, 10, 2, {0,        0xFFFFFF, 0,        0xFFFFFF, 0xFFFFFF,
                                                                 0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0,
                                                                 0xFFFFFF, 0,        0,        0,        0,
                                                                 0,        0,        0,        0,        0xFFFFFF}},
      {"grey as text", "P2 3 1 255\n0 128 255", 8, 3, 1, {0, 0x808080, 0xFFFFFF}},
      {"grey of four levels", "P2 4 1 3 0 1 2 3", 8, 4, 1, {0, 0x555555, 0xAAAAAA, 0xFFFFFF}},
      {"grey above its highest", "P2 2 1 100 50 101", 8, 2, 1, {0x808080, 0xFFFFFF}},
      {"grey number of 20 digits", "P2 2 1 100 99999999999999999999 0", 8, 2, 1, {0xFFFFFF, 0}},
      {"grey as bytes", "P5 2 2 255\n\x00\x01\xFE\xFF"s, 8, 2, 2, {0, 0x010101, 0xFEFEFE, 0xFFFFFF}},
      {"grey of one level", "P5 2 1 1\n\x01\x00"s, 8, 2, 1, {0xFFFFFF, 0}},
      {"grey of 16 bits", "P5 3 1 65535\n\x80\x00\x00\x80\xFF\x7F"s, 8, 3, 1, {0x808080, 0, 0xFFFFFF}},
      {"grey of 10 bits", "P5 2 1 1023\n\x02\x00\x03\xFF"s, 8, 2, 1, {0x808080, 0xFFFFFF}},
      {"colour as text", "P3 2 1 15 15 0 1\n2 3 4\n", 24, 2, 1, {0xFF0011, 0x223344}},
      {"colour as bytes", "P6 3 1 255\nabcdefghi", 24, 3, 1, {0x616263, 0x646566, 0x676869}},
      {"colour of 7 levels", "P6 1 1 6\n\x01\x02\x03"s, 24, 1, 1, {0x2B5580}},
      {"colour of 16 bits", "P6 1 1 65535\n\x12\x34\x56\x78\x9A\xBC"s, 24, 1, 1, {0x12569A}},
      {"comments", "P5 # kind\n#more\n2# width\n1 #height\n255\nab", 8, 2, 1, {0x616161, 0x626262}},
      {"a comment that ends the header", "P5 2 1 255#now\nab", 8, 2, 1, {0x616161, 0x626262}},
      {"comments between samples", "P2 2 1 9 # a\n3 #4\n6", 8, 2, 1, {0x555555, 0xAAAAAA}},
      {"odd blanks", "P6\t1\v\f1\r\n255 xyz", 24, 1, 1, {0x78797A}},
      {"line ends of two characters", "P5\r\n2 1\r\n255\r\nab", 8, 2, 1, {0x616161, 0x626262}},
      {"a first sample that looks like a line end", "P5 2 1 255\r\nb", 8, 2, 1, {0x0A0A0A, 0x626262}},
      {"something behind", "P5 1 1 255\nabc", 8, 1, 1, {0x616161}},
  };
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.name);
    const Loaded loaded = Load(c.file);
    ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
    EXPECT_EQ(loaded.message, "");
    ASSERT_EQ(loaded.PageCount(), 1U);
    const auto& page = loaded.PageAt(0);
    ASSERT_EQ(page.bits, c.bits);
    ASSERT_EQ(page.width, c.width);
    ASSERT_EQ(page.height, c.height);
    std::size_t i = 0;
    for (std::uint32_t y = 0; y < static_cast<std::uint32_t>(c.height); ++y) {
      for (std::uint32_t x = 0; x < static_cast<std::uint32_t>(c.width); ++x, ++i) {
        EXPECT_EQ(PixelAt(page, x, y), 0xFF000000U | c.pixels[i]) << x << "," << y;
      }
    }
  }
}

TEST_F(Qppm, GreyIsARampAndBitsAreInkOnPaper) {
  const Loaded grey = Load("P5 1 1 7\n\x03");
  EXPECT_EQ(grey.PageAt(0).grayscale, 1);
  EXPECT_EQ(grey.PageAt(0).paletteEntries, 256U);
  EXPECT_EQ(grey.PageAt(0).palette[200], 0xFFC8C8C8U);
  const Loaded bits = Load("P1 1 1 1");
  EXPECT_EQ(bits.PageAt(0).paletteEntries, 2U);
  EXPECT_EQ(bits.PageAt(0).palette[0], 0xFFFFFFFFU);
  EXPECT_EQ(bits.PageAt(0).palette[1], 0xFF000000U);
  EXPECT_EQ(IndexAt(bits.PageAt(0), 0, 0), 1U);
}

TEST_F(Qppm, WideRowsKeepTheirColours) {
  for (const std::uint32_t width : {1U, 2U, 5U, 16U, 17U, 1000U}) {
    std::string file = "P6 " + std::to_string(width) + " 2 255\n";
    for (std::uint32_t i = 0; i < width * 2 * 3; ++i) file += static_cast<char>(i * 37 + i / 256);
    const Loaded loaded = Load(file);
    ASSERT_EQ(loaded.result, glib::RCOK);
    const std::string_view samples = std::string_view(file).substr(file.size() - width * 6U);
    for (std::uint32_t i = 0; i < width * 2; ++i) {
      std::uint32_t expected = 0xFF;
      for (std::size_t s = 0; s < 3; ++s) expected = expected << 8 | static_cast<std::uint8_t>(samples[i * 3 + s]);
      ASSERT_EQ(PixelAt(loaded.PageAt(0), i % width, i / width), expected) << i << " of " << width;
    }
  }
}

TEST_F(Qppm, PicturesInARowArePages) {
  const std::string file = "P5 1 1 255\naP6 1 1 255\nxyz\n P4 8 1\n\xF0P1 1 1 0 P5 1 1 255\nb"s;
  const Loaded loaded = Load(file);
  ASSERT_EQ(loaded.result, glib::RCOK);
  ASSERT_EQ(loaded.PageCount(), 4U);  // text is always the last picture
  EXPECT_EQ(PixelAt(loaded.PageAt(0), 0, 0), 0xFF616161U);
  EXPECT_EQ(PixelAt(loaded.PageAt(1), 0, 0), 0xFF78797AU);
  EXPECT_EQ(PixelAt(loaded.PageAt(2), 3, 0), 0xFF000000U);
  EXPECT_EQ(PixelAt(loaded.PageAt(3), 0, 0), 0xFFFFFFFFU);

  const Loaded cut = Load("P5 1 1 255\naP5 2 2 255\nbcd");
  ASSERT_EQ(cut.result, glib::RCOK);
  ASSERT_EQ(cut.PageCount(), 2U);
  EXPECT_NE(cut.message, "");
  const Loaded cutEarly = Load("P5 1 1 255\naP5 2 2 255\nb");
  ASSERT_EQ(cutEarly.result, glib::RCOK);
  EXPECT_EQ(cutEarly.PageCount(), 1U);
  EXPECT_NE(cutEarly.message, "");
}

TEST_F(Qppm, EndsAtTheLimitOfPages) {
  std::string file;
  for (int i = 0; i < 4097; ++i) file += "P4 1 1\n\x80"s;
  const Loaded loaded = Load(file);
  EXPECT_EQ(loaded.result, glib::RCOK);
  EXPECT_EQ(loaded.PageCount(), 4096U);
  EXPECT_NE(loaded.message, "");
}

struct Refused {
  const char* name;
  std::string file;
  std::uint32_t result;
};

TEST_F(Qppm, RefusesWithTheRightResult) {
  const Refused kCases[] = {
      {"nothing", "", glib::IERR},
      {"another kind", "P7\nWIDTH 1\n", glib::IERR},
      {"no numbers", "P5 abc", glib::IERR},
      {"negative", "P5 -1 1 255\na", glib::IERR},
      {"no width", "P5 0 1 255\na", glib::IERR},
      {"no levels", "P5 1 1 0\na", glib::IERR},
      {"too many levels", "P5 1 1 65536\naa", glib::IERR},
      {"too wide", "P5 65536 1 255\na", glib::NSUP},
      {"too many pixels", "P4 65535 4097\na", glib::NSUP},
      {"numbers past all types", "P5 99999999999 99999999999 255\na", glib::NSUP},
      {"no blank behind the header", "P5 1 1 255a", glib::IERR},
      {"header only", "P5 1 1 255\n", glib::IERR},
      {"comment without end", "P5 1 1 255# a", glib::IERR},
      {"a row cut", "P5 3 1 255\nab", glib::IERR},
      {"far more pixels than data", "P5 60000 4000 255\n" + std::string(70000, 'a'), glib::IERR},
      {"letters for samples", "P2 2 1 255 a b", glib::IERR},
      {"a two for a bit", "P1 2 1 2 0", glib::IERR},
  };
  for (const Refused& refused : kCases) {
    SCOPED_TRACE(refused.name);
    const Loaded loaded = Load(refused.file);
    EXPECT_EQ(loaded.result, refused.result) << loaded.message;
    EXPECT_EQ(loaded.PageCount(), 0U);
    EXPECT_NE(loaded.message, "");
  }
}

TEST_F(Qppm, RowsThatAreMissingStayZero) {
  for (const std::string& file : {"P5 2 3 255\nabc"s, "P2 2 3 255 97 97 97"s}) {
    const Loaded loaded = Load(file);
    ASSERT_EQ(loaded.result, glib::RCOK);
    EXPECT_NE(loaded.message, "");
    EXPECT_EQ(IndexAt(loaded.PageAt(0), 1, 0) - IndexAt(loaded.PageAt(0), 0, 0), file[1] == '5' ? 1U : 0U);
    EXPECT_EQ(IndexAt(loaded.PageAt(0), 1, 2), 0U);
  }
}

TEST_F(Qppm, TellsOfAFile) {
  const test_support::TemporaryFolder folder;
  const std::string longComment = "P6 #" + std::string(5000, 'c') + "\n7 5 255\nabc";
  struct {
    const char* name;
    std::string file;
    std::int32_t width, height, bits, pages;
  } const kCases[] = {
      {"bits", "P4 7 5\n", 7, 5, 1, 1},
      {"text", "P3 2 1 255 ", 2, 1, 24, 1},
      {"comment", longComment, 7, 5, 24, 1},
      {"three", "P5 1 1 255\naP6 1 1 255\nxyzP4 8 1\n\xF0"s, 1, 1, 8, 3},
      {"junk", "P5 1 1 255\naP5 junk", 1, 1, 8, 1},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    const auto info = host_.Info(folder.Write(c.name, c.file), kPgmId);
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->id, kPgmId);
    EXPECT_EQ(info->width, c.width);
    EXPECT_EQ(info->height, c.height);
    EXPECT_EQ(info->bits(), c.bits);
    EXPECT_EQ(info->pages, c.pages);
    EXPECT_EQ(info->size, static_cast<std::int32_t>(c.file.size()));
    EXPECT_EQ(info->dpiX, 72.0);
  }
  std::uint32_t result = 0;
  EXPECT_EQ(host_.Info(folder.Write("wide", "P5 70000 1 255\n"), kPgmId, &result), nullptr);
  EXPECT_EQ(result, glib::NSUP);
  EXPECT_EQ(host_.Info(folder.Write("cut", "P5 7"), kPgmId, &result), nullptr);
  EXPECT_EQ(result, glib::IERR);
}

TEST_F(Qppm, DamagedFilesEndCleanly) {
  for (const std::string& file : {"P1 3 2 #c\n101 010"s, "P2 3 2 9\n1 2 3 4 5 6"s, "P3 1 2 99 1 2 3 4 5 6"s,
                                  "P4 9 2\nabcd"s, "P5 2 2 300\nabcdefgh"s, "P6 1 2 255\nabcdefP5 1 1 255\nx"s}) {
    SCOPED_TRACE(file);
    TryDamaged(AsBytes(file), [&](std::span<const std::uint8_t> bytes) { return host_.Load(bytes, kPpmId); });
  }
}

TEST_F(Qppm, RealFilesLookAsElsewhere) {
  if (!CheckCorpus("pbm", host_, kPbmId)) GTEST_SKIP() << "no corpus";
  CheckCorpus("pgm", host_, kPgmId);
  CheckCorpus("ppm", host_, kPpmId);
}

}  // namespace
}  // namespace tests
