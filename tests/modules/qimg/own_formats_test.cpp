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

constexpr std::uint32_t kGemId = 0x13, kIffId = 0x14, kSunId = 0x15, kSgiId = 0x16, kXbmId = 0x17, kCutId = 0x20;
constexpr std::uint32_t kInk = 0xFF000000;
constexpr std::uint32_t kPaper = 0xFFFFFFFF;

Bytes Gem(std::uint32_t planes, std::uint32_t width, std::uint32_t height, std::string_view rows,
          std::string_view colours = ""sv) {
  ByteWriter out;
  const auto words = static_cast<std::uint32_t>(8 + (colours.empty() ? 0 : 3 + colours.size() / 2));
  out.BigWord(1).BigWord(words).BigWord(planes).BigWord(2).BigWord(85).BigWord(170).BigWord(width).BigWord(height);
  if (!colours.empty()) out.Text("XIMG").BigWord(0).Text(colours);
  return out.Text(rows).bytes;
}

Bytes Sun(std::uint32_t bits, std::uint32_t kind, std::string_view map, std::uint32_t width, std::uint32_t height,
          std::string_view rows) {
  ByteWriter out;
  out.BigLong(0x59A66A95).BigLong(width).BigLong(height).BigLong(bits).BigLong(0).BigLong(kind);
  out.BigLong(map.empty() ? 0 : 1).BigLong(static_cast<std::uint32_t>(map.size()));
  return out.Text(map).Text(rows).bytes;
}

// Samples are given plane by plane, the bottom row of each first.
Bytes Sgi(std::uint32_t sampleBytes, std::uint32_t width, std::uint32_t height, std::uint32_t planes,
          std::string_view samples, bool packed = false) {
  ByteWriter out;
  out.BigWord(0x01DA).Byte(packed ? 1 : 0).Byte(sampleBytes).BigWord(planes == 1 ? 2 : 3);
  out.BigWord(width).BigWord(height).BigWord(planes).BigLong(0).BigLong(sampleBytes == 1 ? 255 : 65535).Zeros(492);
  return out.Text(samples).bytes;
}

// The rows of all planes in runs, the bottom row of each plane first; they lie in the file from the last to the first.
Bytes PackedSgi(std::uint32_t sampleBytes, std::uint32_t width, std::uint32_t height, std::uint32_t planes,
                const std::vector<std::string>& rows) {
  ByteWriter places, lengths, data;
  const auto tables = static_cast<std::uint32_t>(512 + 8 * rows.size());
  std::vector<std::uint32_t> place(rows.size());
  for (std::size_t i = rows.size(); i-- != 0;) {
    place[i] = tables + static_cast<std::uint32_t>(data.bytes.size());
    data.Text(rows[i]);
  }
  for (std::size_t i = 0; i < rows.size(); ++i) {
    places.BigLong(place[i]);
    lengths.BigLong(static_cast<std::uint32_t>(rows[i].size()));
  }
  ByteWriter all;
  all.Bytes(places.bytes).Bytes(lengths.bytes).Bytes(data.bytes);
  return Sgi(sampleBytes, width, height, planes, {reinterpret_cast<const char*>(all.bytes.data()), all.bytes.size()},
             true);
}

struct Ilbm {
  std::uint32_t width = 2;
  std::uint32_t height = 1;
  std::uint32_t planes = 2;
  std::uint32_t masking = 0;
  bool packed = false;
  std::uint32_t transparent = 0;
  std::uint32_t mode = 0;  // 0: none in the file
  std::string colours = {};
  std::string_view body = ""sv;
  const char* kind = "ILBM";
  bool fullColours = true;
};

void Chunk(ByteWriter& out, const char* name, std::string_view data) {
  out.Text(name).BigLong(static_cast<std::uint32_t>(data.size())).Text(data);
  if (data.size() % 2 != 0) out.Byte(0);
}

std::string_view TextOf(const ByteWriter& writer) {
  return {reinterpret_cast<const char*>(writer.bytes.data()), writer.bytes.size()};
}

Bytes Form(const char* name, std::string_view kind, std::string_view chunks) {
  ByteWriter out;
  Chunk(out, name, std::string(kind) + std::string(chunks));
  return out.bytes;
}

Bytes Iff(const Ilbm& picture) {
  ByteWriter header;
  header.BigWord(picture.width).BigWord(picture.height).Zeros(4).Byte(picture.planes).Byte(picture.masking);
  header.Byte(picture.packed ? 1 : 0).Byte(picture.fullColours ? 0x80 : 0).BigWord(picture.transparent);
  header.Byte(10).Byte(20).Zeros(4);
  ByteWriter chunks;
  Chunk(chunks, "BMHD", TextOf(header));
  Chunk(chunks, "NAME", "odd");
  if (!picture.colours.empty()) Chunk(chunks, "CMAP", picture.colours);
  if (picture.mode != 0) Chunk(chunks, "CAMG", TextOf(ByteWriter().BigLong(picture.mode)));
  Chunk(chunks, "BODY", picture.body);
  return Form("FORM", picture.kind, TextOf(chunks));
}

// Colours 0x000102, 0x101112 and so on.
std::string Colours(std::size_t count) {
  std::string colours = {};
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t sample = 0; sample < 3; ++sample) colours += static_cast<char>(i * 16 + sample);
  }
  return colours;
}

std::uint32_t Colour(std::uint32_t i) { return 0xFF000102U + i * 0x101010U; }

std::vector<PictureCase> GemPictures() {
  constexpr auto kTwo = "\x03\xE8\x00\x00\x01\xF4\x00\x00\x03\xE8\xFF\xFF"sv;  // of 1000: 1000 0 500, 0 1000 much
  return {
      {"bytes as they are",
       Gem(1, 10, 1, "\x80\x02\xA5\x40"sv),
       1,
       10,
       1,
       {kInk, kPaper, kInk, kPaper, kPaper, kInk, kPaper, kInk, kPaper, kInk}},
      {"runs",
       Gem(1, 12, 1, "\x81\x01"sv),
       1,
       12,
       1,
       {kInk, kInk, kInk, kInk, kInk, kInk, kInk, kInk, kPaper, kPaper, kPaper, kPaper}},
      {"patterns",
       Gem(1, 16, 1, "\x00\x01\xF0\x0F"sv),
       1,
       16,
       1,
       {kInk, kInk, kInk, kInk, kPaper, kPaper, kPaper, kPaper, kPaper, kPaper, kPaper, kPaper, kInk, kInk, kInk,
        kInk}},
      {"a code that goes past its row", Gem(1, 1, 2, "\x85\x01"sv), 1, 1, 2, {kInk, kPaper}},
      {"repeated rows", Gem(1, 1, 4, "\x00\x00\xFF\x03\x81\x01"sv), 1, 1, 4, {kInk, kInk, kInk, kPaper}},
      {"four colours", Gem(2, 4, 1, "\x80\x01\x50\x80\x01\x30"sv), 4, 4, 1, {kPaper, 0xFFFF0000, 0xFF00FF00, kInk}},
      {"colours of its own", Gem(1, 2, 1, "\x80\x01\x40"sv, kTwo), 1, 2, 1, {0xFFFF0080, 0xFF00FFFF}},
      {"cut", Gem(1, 1, 2, "\x81"sv), 1, 1, 2, {kInk, kPaper}},
  };
}

std::vector<PictureCase> SgiPictures() {
  return {
      {"grey", Sgi(1, 2, 2, 1, "\x10\x20\x30\x40"sv), 8, 2, 2, {0xFF303030, 0xFF404040, 0xFF101010, 0xFF202020}},
      {"grey and alpha", Sgi(1, 2, 1, 2, "\x10\x20\x80\xFF"sv), 32, 2, 1, {0x80101010, 0xFF202020}},
      {"colours", Sgi(1, 2, 1, 3, "\x01\x02\x11\x12\x21\x22"sv), 24, 2, 1, {0xFF011121, 0xFF021222}},
      {"alpha", Sgi(1, 1, 1, 4, "\x01\x02\x03\x80"sv), 32, 1, 1, {0x80010203}},
      {"a fifth plane", Sgi(1, 1, 1, 5, "\x01\x02\x03\x80\x99"sv), 32, 1, 1, {0x80010203}},
      {"16 bits", Sgi(2, 1, 1, 3, "\x10\x10\x20\x20\x30\xB1"sv), 24, 1, 1, {0xFF102031}},
      {"runs",
       PackedSgi(1, 4, 2, 1, {"\x84\x01\x02\x03\x04\0"s, "\x03\x10\x81\x20\0"s}),
       8,
       4,
       2,
       {0xFF101010, 0xFF101010, 0xFF101010, 0xFF202020, 0xFF010101, 0xFF020202, 0xFF030303, 0xFF040404}},
      {"runs of colours",
       PackedSgi(1, 2, 1, 3, {"\x02\x01\0"s, "\x82\x11\x12\0"s, "\x02\x21\0"s}),
       24,
       2,
       1,
       {0xFF011121, 0xFF011221}},
      {"runs of 16 bits",
       PackedSgi(2, 3, 1, 1, {"\0\x02\x10\x10\0\x81\x20\x20\0\0"s}),
       8,
       3,
       1,
       {0xFF101010, 0xFF101010, 0xFF202020}},
      {"runs that end early and pass the end",
       PackedSgi(1, 2, 2, 1, {"\x01\x10\0"s, "\x7F\x20\x85\x01"s}),
       8,
       2,
       2,
       {0xFF202020, 0xFF202020, 0xFF101010, kInk}},
      {"cut", Sgi(1, 2, 2, 1, "\x10\x20\x30"sv), 8, 2, 2, {0xFF303030, kInk, 0xFF101010, 0xFF202020}},
  };
}

std::vector<PictureCase> SunPictures() {
  return {
      {"ink on paper",
       Sun(1, 1, ""sv, 3, 2, "\xA0\x00\x40\x00"sv),
       1,
       3,
       2,
       {kInk, kPaper, kInk, kPaper, kInk, kPaper}},
      {"two colours", Sun(1, 1, "\x01\x11\x02\x12\x03\x13"sv, 2, 1, "\x40\x00"sv), 1, 2, 1, {0xFF010203, 0xFF111213}},
      {"grey", Sun(8, 0, ""sv, 3, 1, "\x00\x80\xFF\x00"sv), 8, 3, 1, {kInk, 0xFF808080, kPaper}},
      {"palette", Sun(8, 1, "\x01\x11\x02\x12\x03\x13"sv, 2, 1, "\x01\x00"sv), 8, 2, 1, {0xFF111213, 0xFF010203}},
      {"blue first", Sun(24, 1, ""sv, 1, 2, "abc\0def\0"sv), 24, 1, 2, {0xFF636261, 0xFF666564}},
      {"red first", Sun(24, 3, ""sv, 1, 2, "abc\0def\0"sv), 24, 1, 2, {0xFF616263, 0xFF646566}},
      {"filling before colours", Sun(32, 1, ""sv, 2, 1, "\0abc\0def"sv), 32, 2, 1, {0xFF636261, 0xFF666564}},
      {"alpha before colours",
       Sun(32, 3, ""sv, 2, 1,
           "\x80"
           "abc\xFF"
           "def"sv),
       32,
       2,
       1,
       {0x80616263, 0xFF646566}},
      {"runs across rows",
       Sun(8, 2, ""sv, 2, 2, "\x80\x02\x05\x80\x00"sv),
       8,
       2,
       2,
       {0xFF050505, 0xFF050505, 0xFF050505, 0xFF808080}},
      {"packed bits", Sun(1, 2, ""sv, 3, 1, "\xA0\x00"sv), 1, 3, 1, {kInk, kPaper, kInk}},
      {"cut", Sun(8, 1, ""sv, 2, 2, "\x10\x20\x30"sv), 8, 2, 2, {0xFF101010, 0xFF202020, kInk, kInk}},
  };
}

std::vector<PictureCase> IffPictures() {
  const std::uint32_t half = 0xFF000000U | (Colour(3) >> 1 & 0x7F7F7FU);
  return {
      {"two planes",
       Iff({.width = 4, .colours = Colours(4), .body = "\x50\x00\x30\x00"sv}),
       4,
       4,
       1,
       {Colour(0), Colour(1), Colour(2), Colour(3)}},
      {"one plane", Iff({.planes = 1, .colours = Colours(2), .body = "\x40\x00"sv}), 1, 2, 1, {Colour(0), Colour(1)}},
      {"without colours", Iff({.planes = 1, .body = "\x40\x00"sv}), 1, 2, 1, {kInk, kPaper}},
      {"runs over planes",
       Iff({.width = 4, .packed = true, .colours = Colours(4), .body = "\x80\xFE\x50\x00\x00"sv}),
       4,
       4,
       1,
       {Colour(0), Colour(3), Colour(0), Colour(3)}},
      {"a byte a pixel",
       Iff({.width = 3, .planes = 8, .colours = Colours(4), .body = "\x03\x01\x02\x00"sv, .kind = "PBM "}),
       8,
       3,
       1,
       {Colour(3), Colour(1), Colour(2)}},
      {"colours of four bits",
       Iff({.planes = 1, .colours = "\x10\x20\x30\xF0\x00\xA0"s, .body = "\x40\x00"sv, .fullColours = false}),
       1,
       2,
       1,
       {0xFF112233, 0xFFFF00AA}},
      {"half brightness",
       Iff({.width = 2,
            .planes = 6,
            .mode = 0x80,
            .colours = Colours(32),
            .body = "\xC0\x00\xC0\x00\x00\x00\x00\x00\x00\x00\x40\x00"sv}),
       8,
       2,
       1,
       {Colour(3), half}},
      // Indices 5; blue 15; red 1; green 2.
      {"held and modified",
       Iff({.width = 4,
            .planes = 6,
            .mode = 0x800,
            .colours = Colours(16),
            .body = "\xE0\x00\x50\x00\xC0\x00\x40\x00\x50\x00\x30\x00"sv}),
       24,
       4,
       1,
       {Colour(5), 0xFF5051FF, 0xFF1151FF, 0xFF1122FF}},
      {"held and modified without saying so",
       Iff({.width = 1,
            .planes = 6,
            .colours = Colours(16),
            .body = "\x80\x00\x80\x00\x80\x00\x80\x00\x80\x00\x00\x00"sv}),
       24,
       1,
       1,
       {0xFF0001FF}},
      // 32 x 4 + 1 in blue, of 63.
      {"held and modified of 8 planes",
       Iff({.width = 1,
            .planes = 8,
            .mode = 0x800,
            .colours = Colours(16),
            .body = "\x80\x00\0\0\0\0\0\0\0\0\x80\x00\x80\x00\0\0"sv}),
       24,
       1,
       1,
       {0xFF000186}},
      {"a transparent colour",
       Iff({.width = 4, .masking = 2, .transparent = 2, .colours = Colours(4), .body = "\x50\x00\x30\x00"sv}),
       4,
       4,
       1,
       {Colour(0), Colour(1), Colour(2) & 0xFFFFFFU, Colour(3)}},
      {"a mask",
       Iff({.planes = 1, .masking = 1, .colours = Colours(2), .body = "\xC0\x00\x40\x00"sv}),
       32,
       2,
       1,
       {Colour(1) & 0xFFFFFFU, Colour(1)}},
      {"full colours",
       Iff({.width = 1,
            .planes = 24,
            .body = "\x80\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"       // red 1
                    "\0\0\x80\0\0\0\0\0\0\0\0\0\0\0\0\0"       // green 2
                    "\0\0\0\0\0\0\0\0\0\0\0\0\0\0\x80\0"sv}),  // blue 128
       24,
       1,
       1,
       {0xFF010280}},
      {"cut",
       Iff({.planes = 1, .colours = Colours(2), .body = "\xC0\x00"sv, .kind = "ILBM"}),
       1,
       2,
       1,
       {Colour(1), Colour(1)}},
  };
}

std::vector<PictureCase> XbmPictures() {
  const std::vector<std::uint32_t> kTen = {kInk, kPaper, kPaper, kPaper, kPaper, kPaper, kPaper, kInk, kPaper, kInk};
  return {
      {"bytes", BytesOf("#define a_width 10\n#define a_height 1\nstatic unsigned char a_bits[] = { 0x81, 0x02 };"), 1,
       10, 1, kTen},
      {"words", BytesOf("#define a_width 10\n#define a_height 1\nstatic short a_bits[] = {0x0281};"), 1, 10, 1, kTen},
      {"other numbers and comments", BytesOf("/* width */ #define width 0xA\n#define height 01\n{ /* { */ 129,2"), 1,
       10, 1, kTen},
      {"cut", BytesOf("#define a_width 2\n#define a_height 2\n{3,"), 1, 2, 2, {kInk, kInk, kPaper, kPaper}},
  };
}

Bytes Cut(std::uint32_t width, std::uint32_t height, std::initializer_list<std::string_view> rows) {
  ByteWriter out;
  out.Word(width).Word(height).Word(0);
  for (const std::string_view row : rows) out.Word(static_cast<std::uint32_t>(row.size())).Text(row);
  return out.bytes;
}

std::vector<PictureCase> CutPictures() {
  return {
      {"runs and bytes",
       Cut(4, 1, {"\x82\x10\x02\x20\x30\x00"sv}),
       8,
       4,
       1,
       {0xFF101010, 0xFF101010, 0xFF202020, 0xFF303030}},
      {"rows that are too short or too long",
       Cut(2, 3, {"\x01\x40"sv, "\xFF\x50"sv, "\x03\x60\x61\x62"sv}),
       8,
       2,
       3,
       {0xFF404040, kInk, 0xFF505050, 0xFF505050, 0xFF606060, 0xFF616161}},
      {"cut", Cut(1, 2, {"\x01\x40"sv}), 8, 1, 2, {0xFF404040, kInk}},
  };
}

struct Row {
  const char* name;
  std::uint32_t id;
  std::vector<PictureCase> pictures;
};

class QimgOwn : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host_.Ok()); }

  ModuleHost host_{"qimg"};
  const std::vector<Row> rows_ = {{"GEM", kGemId, GemPictures()}, {"IFF", kIffId, IffPictures()},
                                  {"SUN", kSunId, SunPictures()}, {"SGI", kSgiId, SgiPictures()},
                                  {"XBM", kXbmId, XbmPictures()}, {"CUT", kCutId, CutPictures()}};
};

TEST_F(QimgOwn, ReadsEveryKind) {
  for (const Row& row : rows_) {
    SCOPED_TRACE(row.name);
    CheckPictures(host_, row.pictures, row.id);
  }
}

TEST_F(QimgOwn, TellsWhatItLoads) {
  for (const Row& row : rows_) {
    SCOPED_TRACE(row.name);
    CheckFileInfos(host_, row.pictures, row.id);
  }
}

TEST_F(QimgOwn, DamagedFilesEndCleanly) {
  for (const Row& row : rows_) {
    SCOPED_TRACE(row.name);
    for (const PictureCase& c : row.pictures) {
      TryDamaged(c.file, [&](std::span<const std::uint8_t> bytes) { return host_.Load(bytes, row.id); });
    }
  }
}

TEST_F(QimgOwn, TakesResolutions) {
  const Loaded gem = host_.Load(GemPictures()[0].file, kGemId);
  EXPECT_NEAR(gem.PageAt(0).dpiX, 25400.0 / 85, 1e-9);
  EXPECT_NEAR(gem.PageAt(0).dpiY, 25400.0 / 170, 1e-9);
  const Loaded iff = host_.Load(IffPictures()[0].file, kIffId);  // pixels half as wide as high
  EXPECT_EQ(iff.PageAt(0).dpiX, 72.0);
  EXPECT_EQ(iff.PageAt(0).dpiY, 36.0);
}

TEST_F(QimgOwn, PalettesSayHowManyEntriesTheyHave) {
  EXPECT_EQ(host_.Load(IffPictures()[0].file, kIffId).PageAt(0).paletteEntries, 4U);
  EXPECT_EQ(host_.Load(SunPictures()[3].file, kSunId).PageAt(0).paletteEntries, 2U);
  EXPECT_EQ(host_.Load(SunPictures()[2].file, kSunId).PageAt(0).grayscale, 1);
  EXPECT_EQ(host_.Load(GemPictures()[5].file, kGemId).PageAt(0).paletteEntries, 4U);
  EXPECT_EQ(host_.Load(CutPictures()[0].file, kCutId).PageAt(0).grayscale, 1);
}

TEST_F(QimgOwn, FindsPicturesInForms) {
  const Bytes one = Iff({.planes = 1, .colours = Colours(2), .body = "\x40\x00"sv});
  const Bytes two = Iff({.planes = 1, .colours = Colours(2), .body = "\x80\x00"sv});
  ByteWriter both;
  both.Bytes(one).Bytes(two);
  const Loaded list = host_.Load(Form("LIST", "ILBM", TextOf(both)), kIffId);
  ASSERT_EQ(list.PageCount(), 2U) << list.message;
  EXPECT_EQ(PixelAt(list.PageAt(0), 0, 0), Colour(0));
  EXPECT_EQ(PixelAt(list.PageAt(1), 0, 0), Colour(1));

  Bytes nested = one;
  for (int depth = 0; depth < 3; ++depth) nested = Form("FORM", "ANIM", TextOf(ByteWriter().Bytes(nested)));
  EXPECT_EQ(host_.Load(nested, kIffId).PageCount(), 1U);
  nested = Form("FORM", "ANIM", TextOf(ByteWriter().Bytes(nested)));
  CheckRefused({"nested too deep", {}, glib::IERR}, host_.Load(nested, kIffId));
}

TEST_F(QimgOwn, FindsThePaletteOfACut) {
  const test_support::TemporaryFolder folder;
  const std::string picture = std::string(TextOf(ByteWriter().Bytes(Cut(2, 1, {"\x02\x01\x4F"sv}))));
  ByteWriter palette;  // 86 entries of 0 to 63: the 79th is the first of the second block
  palette.Text("AH").Word(0xE3).Word(600).Byte(10).Byte(0).Word(0).Word(0).Word(85).Word(63).Word(63).Word(63).Zeros(
      20);
  for (std::uint32_t i = 0; i < 86; ++i) {
    if (i == 78) palette.Zeros(4);
    palette.Word(i == 79 ? 63 : 0).Word(i == 1 ? 21 : 0).Word(99);
  }
  folder.Write("A.PAL", TextOf(palette));
  folder.Write("b.x.pal", TextOf(palette));
  for (const char* name : {"A.CUT", "b.x.cut"}) {
    const Loaded loaded = host_.Load(folder.Write(name, picture), kCutId);
    CheckPicture({name, {}, 8, 2, 1, {0xFF0055FF, 0xFFFF00FF}}, loaded);
    EXPECT_EQ(loaded.PageAt(0).paletteEntries, 86U);
    EXPECT_EQ(loaded.PageAt(0).grayscale, 0);
  }
  // One for another kind of screen, and one that is cut.
  palette.bytes[6] = 11;
  folder.Write("c.pal", TextOf(palette));
  folder.Write("d.pal", "AH");
  for (const char* name : {"c.cut", "d.cut"}) {
    CheckPicture({name, {}, 8, 2, 1, {0xFF010101, 0xFF4F4F4F}}, host_.Load(folder.Write(name, picture), kCutId));
  }
}

TEST_F(QimgOwn, Refuses) {
  const auto xbm = [](std::string_view head) { return BytesOf(std::string(head) + " { 1, 2 };"); };
  const struct {
    std::uint32_t id;
    RefusedCase refused;
  } kCases[] = {
      {kGemId, {"nothing", {}, glib::IERR}},
      {kGemId, {"nine planes", Gem(9, 1, 1, "\x81"sv), glib::NSUP}},
      {kGemId, {"no height", Gem(1, 1, 0, "\x81"sv), glib::NSUP}},
      {kGemId, {"far too large", Gem(1, 60000, 4000, "\x81"sv), glib::IERR}},
      {kGemId, {"no row", Gem(1, 8, 1, ""sv), glib::IERR}},
      {kIffId, {"no picture", Form("FORM", "8SVX", ""), glib::IERR}},
      {kIffId, {"nine planes", Iff({.planes = 9, .body = "abcdefghijklmnopqr"sv}), glib::NSUP}},
      {kIffId, {"no width", Iff({.width = 0, .body = "abcd"sv}), glib::NSUP}},
      {kIffId, {"far too large", Iff({.width = 60000, .height = 4000, .packed = true, .body = "\x81"sv}), glib::IERR}},
      {kIffId, {"no row", Iff({.body = "ab"sv}), glib::IERR}},
      {kSgiId, {"nothing", {}, glib::IERR}},
      {kSgiId, {"three bytes a sample", Sgi(3, 1, 1, 1, "abc"sv), glib::NSUP}},
      {kSgiId, {"no width", Sgi(1, 0, 1, 1, "abc"sv), glib::NSUP}},
      {kSgiId, {"no planes", Sgi(1, 1, 1, 0, "abc"sv), glib::NSUP}},
      {kSgiId, {"too many pixels", Sgi(1, 65535, 65535, 3, "abc"), glib::NSUP}},
      {kSgiId, {"far too large", Sgi(1, 60000, 4000, 3, "abc"), glib::IERR}},
      {kSgiId, {"runs that are nowhere", PackedSgi(1, 2, 1, 1, {""s}), glib::IERR}},
      {kSunId, {"another magic", BytesOf(std::string(40, 'a')), glib::IERR}},
      {kSunId, {"four bits", Sun(4, 1, ""sv, 1, 1, "ab"sv), glib::NSUP}},
      {kSunId, {"another kind", Sun(8, 5, ""sv, 1, 1, "ab"sv), glib::NSUP}},
      {kSunId, {"too many pixels", Sun(8, 2, ""sv, 0xFFFFFFFF, 0xFFFFFFFF, "ab"sv), glib::NSUP}},
      {kSunId, {"far too large", Sun(24, 2, ""sv, 60000, 4000, "ab"sv), glib::IERR}},
      {kSunId, {"map past the end", Sun(8, 1, "abc"sv, 1, 1, ""sv), glib::IERR}},
      {kXbmId, {"no list", BytesOf("#define a_width 1\n#define a_height 1"), glib::IERR}},
      {kXbmId, {"no sides", xbm(""), glib::NSUP}},
      {kXbmId, {"too wide", xbm("#define w_width 99999999999\n#define h_height 1"), glib::NSUP}},
      {kXbmId, {"far too large", xbm("#define w_width 60000\n#define h_height 4000"), glib::IERR}},
      {kXbmId, {"no number", BytesOf("#define w_width 1\n#define h_height 1\n{ x }"), glib::IERR}},
      {kCutId, {"nothing", {}, glib::IERR}},
      {kCutId, {"no width", Cut(0, 1, {""sv}), glib::NSUP}},
      {kCutId, {"far too large", Cut(60000, 4000, {"\xFF\x01"sv}), glib::IERR}},
      {kCutId, {"no row", Cut(1, 1, {}), glib::IERR}},
  };
  for (const auto& c : kCases) CheckRefused(c.refused, host_.Load(c.refused.file, c.id));
}

}  // namespace
}  // namespace tests
