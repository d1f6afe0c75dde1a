#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/byte_writer.h"
#include "tests/support/damage.h"
#include "tests/support/file_info_check.h"
#include "tests/support/page_check.h"
#include "tests/support/temporary_folder.h"

namespace tests {
namespace {

using namespace std::literals;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kXpmId = 0x18, kUtahId = 0x1C;

// Pictures of which every sample is given, the bottom row first.
Bytes Utah(std::uint32_t width, std::uint32_t height, std::uint32_t planes, std::string_view codes) {
  ByteWriter out;
  out.Word(0xCC52).Word(0).Word(0).Word(width).Word(height).Byte(2).Byte(planes).Byte(8).Byte(0).Byte(0).Byte(0);
  return out.Text(codes).bytes;
}

std::vector<PictureCase> XpmPictures() {
  const std::string two = "/* XPM */\nstatic char *a[] = {\n\"3 1 2 1\",\n\"a c #102030\",\n\"b c red\",\n\"aba\"};\n";
  return {
      {"two colours", BytesOf(two), 1, 3, 1, {0xFF102030, 0xFFFF0000, 0xFF102030}},
      {"blanks before the numbers",
       BytesOf(
           "/* XPM */\nstatic char *a.b[] = {\n/* c */\"  \t2 1 2 2\",\n\"aa c #102030\",\n\"ab c blue\",\n\"abaa\"};"),
       1,
       2,
       1,
       {0xFF0000FF, 0xFF102030}},
      {"a transparent colour",
       BytesOf("/* XPM */\nstatic char *a[] = {\n\"3 2 3 1\",\n\"  c None\",\n\"a c #102030\",\n\"b c red\",\n"
               "\"a b\",\n\" ba\"};\n"),
       4,
       3,
       2,
       {0xFF102030, 0, 0xFFFF0000, 0, 0xFFFF0000, 0xFF102030}},
      {"two with a transparent one",
       BytesOf("/* XPM */\nstatic char *a[] = {\n\"2 1 2 1\",\n\"  c None\",\n\"a c #102030\",\n\" a\"};\n"),
       1,
       2,
       1,
       {0, 0xFF102030}},
  };
}

std::vector<PictureCase> UtahPictures() {
  // Codes: 2 n chooses a plane, 5 n gives bytes, 1 n goes up, 7 ends.
  constexpr auto kColours =
      "\x02\x00\x05\x01\x01\x02\x02\x01\x05\x01\x11\x12\x02\x02\x05\x01\x21\x22\x01\x01"
      "\x02\x00\x05\x01\x31\x32\x02\x01\x05\x01\x41\x42\x02\x02\x05\x01\x51\x52\x07\x00"sv;
  return {
      {"colours", Utah(2, 2, 3, kColours), 24, 2, 2, {0xFF314151, 0xFF324252, 0xFF011121, 0xFF021222}},
      {"grey", Utah(2, 1, 1, "\x02\x00\x05\x01\x10\x20\x07\x00"sv), 8, 2, 1, {0xFF101010, 0xFF202020}},
  };
}

struct Row {
  const char* name;
  std::uint32_t id;
  std::vector<PictureCase> pictures;
};

class QimgLibrary : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host_.Ok()); }

  ModuleHost host_{"qimg"};
  const std::vector<Row> rows_ = {{"XPM", kXpmId, XpmPictures()}, {"RLE", kUtahId, UtahPictures()}};
};

TEST_F(QimgLibrary, RegistersItsRowsAndOnlyReads) {
  EXPECT_EQ(host_.Ids(), (std::vector<std::uint32_t>{0x13, 0x14, 0x15, 0x16, 0x17, 0x18, 0x1C, 0x20}));
  EXPECT_FALSE(host_.HasEntry("SaveImageData"));
}

TEST_F(QimgLibrary, ReadsEveryKind) {
  for (const Row& row : rows_) {
    SCOPED_TRACE(row.name);
    CheckPictures(host_, row.pictures, row.id);
  }
}

TEST_F(QimgLibrary, TellsWhatItLoads) {
  for (const Row& row : rows_) {
    SCOPED_TRACE(row.name);
    CheckFileInfos(host_, row.pictures, row.id);
  }
}

TEST_F(QimgLibrary, DamagedFilesEndCleanly) {
  for (const Row& row : rows_) {
    SCOPED_TRACE(row.name);
    // One of each is enough: what lies behind is the library's.
    Bytes file = row.pictures.back().file;
    TryDamaged(file, [&](std::span<const std::uint8_t> bytes) { return host_.Load(bytes, row.id); });
  }
}

TEST_F(QimgLibrary, ManyTransparentColoursStayColours) {
  std::string file = "/* XPM */\nstatic char *a[] = {\n\"258 1 258 2\",\n\"xx c None\",\n";
  std::string pixels = "\"xx";
  for (int i = 0; i < 257; ++i) {
    const char name[] = {static_cast<char>('A' + i / 16), static_cast<char>('a' + i % 16), 0};
    char line[40];
    std::snprintf(line, sizeof(line), "\"%s c #%02X%02X00\",\n", name, i % 256, i / 256);
    file += line;
    pixels += name;
  }
  const Loaded loaded = host_.Load(BytesOf(file + pixels + "\"};\n"), kXpmId);
  ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
  ASSERT_EQ(loaded.PageAt(0).bits, 32);
  EXPECT_EQ(PixelAt(loaded.PageAt(0), 0, 0) >> 24, 0U);
  EXPECT_EQ(PixelAt(loaded.PageAt(0), 257, 0), 0xFF000100U);
}

TEST_F(QimgLibrary, Refuses) {
  const struct {
    std::uint32_t id;
    RefusedCase refused;
  } kCases[] = {
      {kXpmId, {"no text", BytesOf("/* XPM */"), glib::IERR}},
      {kXpmId, {"too wide", BytesOf("/* XPM */ \"99999999999 1 2 1\""), glib::NSUP}},
      {kXpmId, {"far too large", BytesOf("/* XPM */ \"60000 4000 2 1\""), glib::IERR}},
      {kUtahId, {"nothing", {}, glib::IERR}},
      {kUtahId, {"far too large", Utah(65535, 65535, 3, "\x07\x00"sv), glib::IERR}},
      {0x99, {"unknown", BytesOf("abc"), glib::NSUP}},
  };
  for (const auto& c : kCases) CheckRefused(c.refused, host_.Load(c.refused.file, c.id));
}

TEST_F(QimgLibrary, RealFilesLookAsElsewhere) {
  const struct {
    const char* folder;
    std::uint32_t id;
  } kRows[] = {{"img", 0x13}, {"iff", 0x14}, {"sun", 0x15},  {"sgi", 0x16},
               {"xbm", 0x17}, {"xpm", 0x18}, {"utah", 0x1C}, {"cut", 0x20}};
  for (const auto& row : kRows) {
    if (!CheckCorpusAndInfo(row.folder, host_, row.id)) GTEST_SKIP() << "no corpus";
  }
}

}  // namespace
}  // namespace tests
