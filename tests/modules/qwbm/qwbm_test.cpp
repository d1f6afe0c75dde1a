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

constexpr std::uint32_t kWbmpId = 0x00000012;
constexpr std::uint32_t kOtbId = 0x00000021;
constexpr std::uint32_t kInk = 0xFF000000;
constexpr std::uint32_t kPaper = 0xFFFFFFFF;

class Qwbm : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host_.Ok()); }
  ModuleHost host_{"qwbm"};
};

TEST_F(Qwbm, RegistersItsRowsAndOnlyReads) {
  EXPECT_EQ(host_.Ids(), (std::vector<std::uint32_t>{kWbmpId, kOtbId}));
  EXPECT_FALSE(host_.HasEntry("SaveImageData"));
}

TEST_F(Qwbm, BitsAreLightInOneAndInkInTheOther) {
  CheckPicture({"wbmp", {}, 1, 3, 2, {kPaper, kInk, kPaper, kInk, kPaper, kInk}},
               host_.Load(BytesOf("\x00\x00\x03\x02\xA0\x40"sv), kWbmpId));
  CheckPicture({"otb", {}, 1, 3, 2, {kInk, kPaper, kInk, kPaper, kInk, kPaper}},
               host_.Load(BytesOf("\x00\x03\x02\x01\xA0\x40"sv), kOtbId));
}

TEST_F(Qwbm, ReadsWideSides) {
  std::vector<std::uint32_t> row(300, kInk);
  for (std::uint32_t x = 0; x < 300; x += 2) row[x] = kPaper;
  ByteWriter wbmp;
  wbmp.Byte(0).Byte(0).Byte(0x82).Byte(0x2C).Byte(1);  // seven bits a byte, high ones first
  ByteWriter otb;
  otb.Byte(0x10).BigWord(300).BigWord(1).Byte(1);
  ByteWriter longer;  // a further byte of flags
  longer.Byte(0x90).Byte(0).BigWord(300).BigWord(1).Byte(1);
  for (int i = 0; i < 38; ++i) {
    wbmp.Byte(0xAA);
    otb.Byte(0x55);
    longer.Byte(0x55);
  }
  CheckPicture({"wbmp", {}, 1, 300, 1, row}, host_.Load(wbmp.bytes, kWbmpId));
  CheckPicture({"otb", {}, 1, 300, 1, row}, host_.Load(otb.bytes, kOtbId));
  CheckPicture({"otb with more flags", {}, 1, 300, 1, row}, host_.Load(longer.bytes, kOtbId));
}

TEST_F(Qwbm, KeepsTheRowsOfACutFile) {
  const Loaded loaded = host_.Load(BytesOf("\x00\x08\x03\x01\xFF\x0F"sv), kOtbId);
  EXPECT_NE(loaded.message, "");
  std::vector<std::uint32_t> pixels(24, kPaper);
  for (const std::uint32_t x : {0, 1, 2, 3, 4, 5, 6, 7, 12, 13, 14, 15}) pixels[x] = kInk;
  CheckPicture({"cut", {}, 1, 8, 3, pixels}, loaded);
}

TEST_F(Qwbm, RefusesOtb) {
  const RefusedCase kCases[] = {
      {"nothing", {}, glib::IERR},
      {"flags without end", BytesOf("\x80\x80\x80"sv), glib::IERR},
      {"no width", BytesOf("\x00\x00\x01\x01\xFF"sv), glib::NSUP},
      {"packed", BytesOf("\x40\x08\x01\x01\xFF"sv), glib::NSUP},
      {"two bits", BytesOf("\x00\x08\x01\x02\xFF\xFF"sv), glib::NSUP},
      {"no row", BytesOf("\x00\x09\x01\x01\xFF"sv), glib::IERR},
      {"far too large", BytesOf("\x10\xFF\xFF\x0F\xFF\x01\xFF"sv), glib::IERR},
  };
  for (const RefusedCase& c : kCases) CheckRefused(c, host_.Load(c.file, kOtbId));
}

TEST_F(Qwbm, RefusesWbmp) {
  const RefusedCase kCases[] = {
      {"nothing", {}, glib::IERR},
      {"no rows", BytesOf("\x00\x00\x08\x08"sv), glib::IERR},
      {"a number without end", BytesOf("\x00\x00\xFF\xFF\xFF\xFF"sv), glib::IERR},
      {"too large", BytesOf("\x00\x00\xFF\xFF\x7F\xFF\xFF\x7F\x01"sv), glib::NSUP},
      {"a number of more than 32 bits", BytesOf("\x00\x00\x90\x80\x80\x80\x80\x80\x08\x08\x01"sv), glib::NSUP},
      {"far too large", BytesOf("\x00\x00\x83\xFF\x7F\x83\xFF\x7F\x01"sv), glib::NSUP},
      {"larger than its data", BytesOf("\x00\x00\x80\xC0\x00\x80\xC0\x00\x01"sv), glib::IERR},
      {"no width", BytesOf("\x00\x00\x00\x01\x00"sv), glib::NSUP},
      {"another type", BytesOf("\x01\x00\x08\x01\xFF"sv), glib::NSUP},
  };
  for (const RefusedCase& c : kCases) CheckRefused(c, host_.Load(c.file, kWbmpId));
}

TEST_F(Qwbm, TellsWhatItLoads) {
  const test_support::TemporaryFolder folder;
  CheckFileInfo(host_, folder.Write("a.wbmp", "\x00\x00\x03\x02\xA0\x40"sv), kWbmpId);
  CheckFileInfo(host_, folder.Write("a.otb", "\x10\x00\x03\x00\x02\x01\xA0\x40"sv), kOtbId);
}

TEST_F(Qwbm, DamagedFilesEndCleanly) {
  TryDamaged(BytesOf("\x10\x00\x09\x00\x02\x01\xA0\x40\x12\x34"sv),
             [&](std::span<const std::uint8_t> bytes) { return host_.Load(bytes, kOtbId); });
  TryDamaged(BytesOf("\x00\x00\x09\x02\xA0\x40\x12\x34"sv),
             [&](std::span<const std::uint8_t> bytes) { return host_.Load(bytes, kWbmpId); });
}

TEST_F(Qwbm, RealFilesLookAsElsewhere) {
  if (!CheckCorpusAndInfo("wbmp", host_, kWbmpId)) GTEST_SKIP() << "no corpus";
  CheckCorpusAndInfo("otb", host_, kOtbId);
}

}  // namespace
}  // namespace tests
