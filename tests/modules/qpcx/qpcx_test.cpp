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

constexpr std::uint32_t kPcxId = 0x00000008;
constexpr std::uint32_t kDcxId = 0x10000009;
constexpr std::uint32_t kVga = 12;  // marks the palette at the end

struct Pcx {
  std::uint32_t width = 2;
  std::uint32_t height = 2;
  std::uint32_t bits = 8;
  std::uint32_t planes = 1;
  std::string_view colours16 = ""sv;  // of the header
  std::string_view rows = ""sv;       // packed
  std::uint32_t rowBytes = 2;
};

ByteWriter Make(const Pcx& pcx) {
  ByteWriter out;
  out.Byte(10).Byte(5).Byte(1).Byte(pcx.bits).Word(0).Word(0).Word(pcx.width - 1).Word(pcx.height - 1);
  out.Word(300).Word(150).Text(pcx.colours16).Zeros(48 - pcx.colours16.size());
  return out.Byte(0).Byte(pcx.planes).Word(pcx.rowBytes).Word(1).Zeros(58).Text(pcx.rows);
}

ByteWriter MakeVga(std::string_view rows) {
  ByteWriter out = Make({.rows = rows});
  out.Byte(kVga);
  for (std::uint32_t i = 0; i < 256; ++i) out.Byte(i).Byte(255 - i).Byte(7);
  return out;
}

Bytes MakeDcx(std::initializer_list<Bytes> pages) {
  ByteWriter out;
  out.Long(0x3ADE68B1);
  std::size_t offset = 4 + 4 * (pages.size() + 1);
  for (const Bytes& page : pages) {
    out.Long(static_cast<std::uint32_t>(offset));
    offset += page.size();
  }
  out.Long(0);
  for (const Bytes& page : pages) out.Bytes(page);
  return out.bytes;
}

class Qpcx : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host_.Ok()); }
  ModuleHost host_{"qpcx"};
};

TEST_F(Qpcx, RegistersItsRowsAndOnlyReads) {
  EXPECT_EQ(host_.Ids(), (std::vector<std::uint32_t>{kPcxId, kDcxId}));
  EXPECT_FALSE(host_.HasEntry("SaveImageData"));
}

std::vector<PictureCase> Pictures() {
  // Planes of bits, lowest first: pixels 1, 2, 4, 8, then 15 and 0.
  constexpr auto kPlanes = "\x88\x00\x48\x00\x28\x00\x18\x00"sv;
  constexpr auto kSixteen =
      "\x00\x00\x00\x01\x02\x03\x04\x05\x06\x00\x00\x00\x0A\x0B\x0C\x00\x00\x00\x00\x00\x00\x00\x00\x00"
      "\x10\x20\x30\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x61\x62\x63"sv;
  return {
      {"256 colours",
       MakeVga("\x05\xC1\xFF\xC2\x06"sv).bytes,
       8,
       2,
       2,
       {0xFF05FA07, 0xFFFF0007, 0xFF06F907, 0xFF06F907}},
      {"16 colours in planes",
       Make({.width = 6, .height = 1, .bits = 1, .planes = 4, .colours16 = kSixteen, .rows = kPlanes}).bytes,
       4,
       6,
       1,
       {0xFF010203, 0xFF040506, 0xFF0A0B0C, 0xFF102030, 0xFF616263, 0xFF000000}},
      {"16 colours that the header lacks",
       Make({.width = 6, .height = 1, .bits = 1, .planes = 4, .rows = kPlanes}).bytes,
       4,
       6,
       1,
       {0xFF0000AA, 0xFF00AA00, 0xFFAA0000, 0xFF555555, 0xFFFFFFFF, 0xFF000000}},
      {"full colours",
       Make({.height = 1, .planes = 3, .rows = "\x01\x02\x11\x12\x21\x22"sv}).bytes,
       24,
       2,
       1,
       {0xFF011121, 0xFF021222}},
  };
}

TEST_F(Qpcx, ReadsEveryDepth) {
  for (const PictureCase& c : Pictures()) {
    const Loaded loaded = host_.Load(c.file, kPcxId);
    CheckPicture(c, loaded);
    EXPECT_EQ(loaded.PageAt(0).dpiX, 300.0);
    EXPECT_EQ(loaded.PageAt(0).dpiY, 150.0);
  }
  EXPECT_EQ(host_.Load(Pictures()[1].file, kPcxId).PageAt(0).paletteEntries, 16U);
}

TEST_F(Qpcx, ReadsEveryPage) {
  const Bytes dcx = MakeDcx({Pictures()[0].file, Pictures()[2].file, Pictures()[3].file});
  const Loaded loaded = host_.Load(dcx, kDcxId);
  ASSERT_EQ(loaded.PageCount(), 3U) << loaded.message;
  CheckPicture(Pictures()[0], loaded);
  EXPECT_EQ(PixelAt(loaded.PageAt(1), 0, 0), 0xFF0000AAU);
  EXPECT_EQ(PixelAt(loaded.PageAt(2), 1, 0), 0xFF021222U);
}

TEST_F(Qpcx, TellsWhatItLoads) {
  CheckFileInfos(host_, Pictures(), kPcxId);
  CheckFileInfos(host_, {{"pages", MakeDcx({Pictures()[0].file, Pictures()[2].file}), 0, 0, 0, {}}}, kDcxId);
}

TEST_F(Qpcx, Refuses) {
  Bytes huge = Make({.rows = "\x01\x02"sv}).bytes;
  for (const std::size_t i : {8, 9, 10, 11}) huge[i] = 0xFF;
  CheckRefused({"huge", {}, glib::IERR}, host_.Load(huge, kPcxId));
  CheckRefused({"nothing", {}, glib::IERR}, host_.Load(Bytes{}, kPcxId));
  CheckRefused({"another format", {}, glib::IERR}, host_.Load(BytesOf("P5 1 1 255\na"), kPcxId));
  CheckRefused({"no page", {}, glib::IERR}, host_.Load(MakeDcx({}), kDcxId));
  CheckRefused({"page past the end", {}, glib::IERR}, host_.Load(BytesOf("\xB1\x68\xDE\x3A\xFF\xFF\xFF\x7F"), kDcxId));
}

TEST_F(Qpcx, DamagedFilesEndCleanly) {
  const auto pcx = [&](std::span<const std::uint8_t> bytes) { return host_.Load(bytes, kPcxId); };
  TryDamaged(Pictures()[1].file, pcx);
  TryDamaged(Pictures()[3].file, pcx);
  TryDamaged(MakeDcx({Pictures()[2].file, Pictures()[3].file}),
             [&](std::span<const std::uint8_t> bytes) { return host_.Load(bytes, kDcxId); });
}

TEST_F(Qpcx, RealFilesLookAsElsewhere) {
  if (!CheckCorpusAndInfo("pcx", host_, kPcxId)) GTEST_SKIP() << "no corpus";
  CheckCorpusAndInfo("dcx", host_, kDcxId);
}

}  // namespace
}  // namespace tests
