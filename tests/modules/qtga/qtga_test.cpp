#include <gtest/gtest.h>

#include <string_view>
#include <vector>

#include "tests/support/byte_writer.h"
#include "tests/support/damage.h"
#include "tests/support/file_info_check.h"
#include "tests/support/page_check.h"
#include "tests/support/temporary_folder.h"

namespace tests {
namespace {

using namespace std::string_view_literals;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kTgaId = 0x2000000D;
constexpr std::uint32_t kTop = 0x20;
constexpr std::uint32_t kRight = 0x10;

struct Map {
  std::uint32_t first = 0;
  std::uint32_t count = 0;
  std::uint32_t bits = 0;
};

Bytes Tga(std::uint32_t kind, const Map& map, std::uint32_t width, std::uint32_t height, std::uint32_t bits,
          std::uint32_t attributes, std::string_view rest) {
  ByteWriter out;
  out.Byte(0).Byte(map.count != 0 ? 1 : 0).Byte(kind).Word(map.first).Word(map.count).Byte(map.bits).Zeros(4);
  return out.Word(width).Word(height).Byte(bits).Byte(attributes).Text(rest).bytes;
}

class Qtga : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host_.Ok()); }
  ModuleHost host_{"qtga"};
};

TEST_F(Qtga, RegistersItsRowAndOnlyReads) {
  EXPECT_EQ(host_.Ids(), std::vector<std::uint32_t>{kTgaId});
  EXPECT_FALSE(host_.HasEntry("SaveImageData"));
}

std::vector<PictureCase> Pictures() {
  constexpr auto kMap = "\x00\x01\x02\x10\x11\x12\x20\x21\x22\x30\x31\x32"sv;
  const auto mapped = [&](std::string_view indices) { return std::string(kMap) + std::string(indices); };
  constexpr auto kFour = "abcdefghijkl"sv;
  constexpr std::uint32_t kA = 0xFF636261, kD = 0xFF666564, kG = 0xFF696867, kJ = 0xFF6C6B6A;
  constexpr std::uint32_t k0 = 0xFF020100, k1 = 0xFF121110, k2 = 0xFF222120, k3 = 0xFF323130;
  return {
      {"bottom row first", Tga(2, {}, 2, 2, 24, 0, kFour), 24, 2, 2, {kG, kJ, kA, kD}},
      {"top row first", Tga(2, {}, 2, 2, 24, kTop, kFour), 24, 2, 2, {kA, kD, kG, kJ}},
      {"right to left", Tga(2, {}, 2, 2, 24, kTop | kRight, kFour), 24, 2, 2, {kD, kA, kJ, kG}},
      {"from the bottom right", Tga(2, {}, 2, 2, 24, kRight, kFour), 24, 2, 2, {kJ, kG, kD, kA}},
      {"24 bits that claim alpha", Tga(2, {}, 2, 1, 24, kTop | 8, kFour), 24, 2, 1, {kA, kD}},
      {"straight alpha",
       Tga(2, {}, 2, 1, 32, kTop | 8,
           "abc\x00"
           "def\x80"sv),
       32,
       2,
       1,
       {0x00636261, 0x80666564}},
      {"alpha never filled in",
       Tga(2, {}, 2, 1, 32, kTop | 8,
           "abc\x00"
           "def\x00"sv),
       32,
       2,
       1,
       {kA, kD}},
      {"15 bits",
       Tga(2, {}, 4, 1, 15, kTop, "\x00\x7C\xE0\x03\x1F\x00\x42\x08"sv),
       24,
       4,
       1,
       {0xFFFF0000, 0xFF00FF00, 0xFF0000FF, 0xFF101010}},
      {"16 bits with alpha", Tga(2, {}, 2, 1, 16, kTop | 1, "\x00\xFC\x1F\x00"sv), 32, 2, 1, {0xFFFF0000, 0x000000FF}},
      {"16 bits without", Tga(2, {}, 2, 1, 16, kTop, "\x00\xFC\x1F\x00"sv), 24, 2, 1, {0xFFFF0000, 0xFF0000FF}},
      {"map", Tga(1, {0, 4, 24}, 2, 2, 8, kTop, mapped("\x00\x01\x02\x03"sv)), 8, 2, 2, {k0, k1, k2, k3}},
      {"map that begins at 2",
       Tga(1, {2, 4, 24}, 2, 2, 8, kTop, mapped("\x02\x03\x04\x05"sv)),
       8,
       2,
       2,
       {k0, k1, k2, k3}},
      {"index without entry", Tga(1, {0, 4, 24}, 1, 1, 8, kTop, mapped("\x09"sv)), 8, 1, 1, {0xFF000000}},
      {"map of 16 bits",
       Tga(1, {0, 2, 16}, 2, 1, 8, kTop, "\x00\x7C\x1F\x00\x01\x00"sv),
       8,
       2,
       1,
       {0xFF0000FF, 0xFFFF0000}},
      {"map with alpha",
       Tga(1, {0, 2, 32}, 2, 1, 8, kTop,
           "abc\x00"
           "def\x80\x00\x01"sv),
       8,
       2,
       1,
       {0x00636261, kD}},
      {"map whose alpha is empty",
       Tga(1, {0, 2, 32}, 2, 1, 8, kTop,
           "abc\x00"
           "def\x00\x00\x01"sv),
       8,
       2,
       1,
       {kA, kD}},
      {"indices of 16 bits", Tga(1, {0, 4, 24}, 2, 1, 16, kTop, mapped("\x03\x00\x01\x00"sv)), 24, 2, 1, {k3, k1}},
      {"map beside full colours", Tga(2, {0, 4, 24}, 2, 1, 24, kTop, mapped("abcdef"sv)), 24, 2, 1, {kA, kD}},
      {"grey", Tga(3, {}, 2, 1, 8, kTop, "\x00\x80"sv), 8, 2, 1, {0xFF000000, 0xFF808080}},
      {"grey with alpha", Tga(3, {}, 2, 1, 16, kTop | 8, "\x10\x20\x30\xFF"sv), 32, 2, 1, {0x20101010, 0xFF303030}},
      {"runs that cross rows",
       Tga(10, {}, 2, 2, 24, kTop,
           "\x82"
           "abc\x00"
           "def"sv),
       24,
       2,
       2,
       {kA, kA, kA, kD}},
      {"packets of pixels that cross rows",
       Tga(10, {}, 2, 2, 24, kTop,
           "\x03"
           "abcdefghijkl"sv),
       24,
       2,
       2,
       {kA, kD, kG, kJ}},
      {"runs of indices", Tga(9, {0, 4, 24}, 3, 1, 8, kTop, mapped("\x81\x02\x00\x01"sv)), 8, 3, 1, {k2, k2, k1}},
      {"runs of greys", Tga(11, {}, 3, 1, 8, kTop, "\x82\x40"sv), 8, 3, 1, {0xFF404040, 0xFF404040, 0xFF404040}},
      {"cut", Tga(2, {}, 2, 3, 24, kTop, kFour), 24, 2, 3, {kA, kD, kG, kJ, 0xFF000000, 0xFF000000}},
      {"cut runs from the bottom",
       Tga(10, {}, 2, 2, 24, 0,
           "\x81"
           "abc\x81"sv),
       24,
       2,
       2,
       {0xFF000000, 0xFF000000, kA, kA}},
  };
}

TEST_F(Qtga, ReadsEveryKind) { CheckPictures(host_, Pictures(), kTgaId); }

TEST_F(Qtga, TellsWhatItLoads) { CheckFileInfos(host_, Pictures(), kTgaId); }

TEST_F(Qtga, PalettesSayHowManyEntriesTheyHave) {
  const Loaded mapped = host_.Load(Tga(1, {2, 1, 24}, 1, 1, 8, kTop, "abc\x02"sv), kTgaId);
  EXPECT_EQ(mapped.PageAt(0).paletteEntries, 3U);
  EXPECT_EQ(mapped.PageAt(0).grayscale, 0);
  const Loaded grey = host_.Load(Tga(3, {}, 1, 1, 8, kTop, "a"sv), kTgaId);
  EXPECT_EQ(grey.PageAt(0).paletteEntries, 256U);
  EXPECT_EQ(grey.PageAt(0).grayscale, 1);
}

TEST_F(Qtga, SkipsTheIdentification) {
  Bytes file = Tga(3, {}, 1, 1, 8, kTop, "textA"sv);
  file[0] = 4;
  CheckPicture({"text", {}, 8, 1, 1, {0xFF414141}}, host_.Load(file, kTgaId));
}

TEST_F(Qtga, Refuses) {
  const RefusedCase kCases[] = {
      {"nothing", {}, glib::IERR},
      {"no picture", Tga(0, {}, 1, 1, 24, 0, "abc"), glib::NSUP},
      {"another code", Tga(32, {}, 1, 1, 8, 0, "abc"), glib::NSUP},
      {"colours of 8 bits", Tga(2, {}, 1, 1, 8, 0, "abc"), glib::NSUP},
      {"entries of 8 bits", Tga(1, {0, 1, 8}, 1, 1, 8, 0, "aa"), glib::NSUP},
      {"no width", Tga(2, {}, 0, 1, 24, 0, "abc"), glib::NSUP},
      {"too many pixels", Tga(10, {}, 65535, 65535, 24, 0, "abc"), glib::NSUP},
      {"more pixels than data",
       Tga(10, {}, 60000, 4000, 24, 0,
           "\xFF"
           "abc"),
       glib::IERR},
      {"no row", Tga(2, {}, 2, 1, 24, 0, "abcde"), glib::IERR},
      {"map past the end", Tga(1, {0, 9, 24}, 1, 1, 8, 0, "abcdef"), glib::IERR},
  };
  for (const RefusedCase& c : kCases) CheckRefused(c, host_.Load(c.file, kTgaId));
}

TEST_F(Qtga, DamagedFilesEndCleanly) {
  for (const PictureCase& c : Pictures()) {
    SCOPED_TRACE(c.name);
    TryDamaged(c.file, [&](std::span<const std::uint8_t> bytes) { return host_.Load(bytes, kTgaId); });
  }
}

TEST_F(Qtga, RealFilesLookAsElsewhere) {
  if (!CheckCorpusAndInfo("tga", host_, kTgaId)) GTEST_SKIP() << "no corpus";
}

}  // namespace
}  // namespace tests
