#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "glib/module_api/result_values.h"
#include "tests/support/byte_writer.h"
#include "tests/support/corpus.h"
#include "tests/support/damage.h"
#include "tests/support/dib_writer.h"
#include "tests/support/module_host.h"
#include "tests/support/temporary_folder.h"

namespace tests {
namespace {

constexpr std::uint32_t kBmpId = 0x00000002;
constexpr std::uint32_t kClpId = 0x1000001F;

std::string_view AsText(const std::vector<std::uint8_t>& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

DibSpec SmallPicture() {
  DibSpec spec{.width = 3, .height = 2, .bits = 8, .perMetreX = 3937, .perMetreY = 7874, .declaredColours = 4};
  spec.palette = {0x000000, 0x112233, 0x445566, 0xFFFFFF};
  spec.data = DibRows(3, 2, 8, [](std::uint32_t x, std::uint32_t y) { return x + y; });
  return spec;
}

void ExpectSmallPicture(const Loaded& loaded) {
  ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
  ASSERT_EQ(loaded.PageCount(), 1U);
  const auto& page = loaded.PageAt(0);
  EXPECT_EQ(page.bits, 8);
  EXPECT_EQ(page.paletteEntries, 4U);
  EXPECT_EQ(page.slideNumber, -1);
  EXPECT_EQ(page.visible, 1);
  EXPECT_EQ(page.delay, 10U);
  EXPECT_NEAR(page.dpiX, 100.0, 0.01);
  EXPECT_NEAR(page.dpiY, 200.0, 0.01);
  EXPECT_EQ(PixelAt(page, 0, 0), 0xFF000000U);
  EXPECT_EQ(PixelAt(page, 1, 0), 0xFF112233U);
  EXPECT_EQ(PixelAt(page, 2, 1), 0xFFFFFFFFU);
}

struct ClipEntry {
  std::uint32_t kind;
  std::vector<std::uint8_t> data;
};

std::vector<std::uint8_t> MakeClp(const std::vector<ClipEntry>& entries) {
  ByteWriter out;
  out.Word(0xC350).Word(static_cast<std::uint32_t>(entries.size()));
  auto offset = static_cast<std::uint32_t>(4 + entries.size() * 89);
  for (const ClipEntry& entry : entries) {
    const auto length = static_cast<std::uint32_t>(entry.data.size());
    out.Word(entry.kind).Long(length).Long(offset).Zeros(79);
    offset += length;
  }
  for (const ClipEntry& entry : entries) out.Bytes(entry.data);
  return out.bytes;
}

std::vector<std::uint8_t> EmptyMetafile() {
  ByteWriter out;
  out.Long(1).Long(88).Zeros(16);            // header record with its bounds
  out.Long(0).Long(0).Long(1000).Long(500);  // frame
  out.Text(" EMF").Long(0x10000).Long(108).Long(2).Word(1).Word(0).Zeros(28);
  return out.Long(14).Long(20).Long(0).Long(16).Long(20).bytes;
}

class Qbmp : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host_.Ok()); }

  ModuleHost host_{"qbmp"};
};

TEST_F(Qbmp, RegistersItsRowsAndOnlyReads) {
  EXPECT_EQ(host_.Ids(), (std::vector<std::uint32_t>{kBmpId, kClpId}));
  EXPECT_FALSE(host_.HasEntry("SaveImageData"));
  EXPECT_FALSE(host_.HasEntry("LoadImageThumbnail"));
}

TEST_F(Qbmp, ReadsFromMemoryAndFromFiles) {
  const auto bmp = MakeBmp(SmallPicture());
  ExpectSmallPicture(host_.Load(bmp, kBmpId));
  ExpectSmallPicture(host_.Load(MakeDib(SmallPicture()), kBmpId));  // without a file header
  const test_support::TemporaryFolder folder;
  ExpectSmallPicture(host_.Load(folder.Write("small.bmp", AsText(bmp)), kBmpId));
  const Loaded missing = host_.Load(folder.Text("missing.bmp"), kBmpId);
  EXPECT_EQ(missing.result, glib::IERR);
  EXPECT_NE(missing.message, "");
}

TEST_F(Qbmp, FindsTheRowsWhereTheFileHeaderSays) {
  auto bmp = MakeBmp(SmallPicture());
  const auto rows = static_cast<std::ptrdiff_t>(SmallPicture().data.size());
  bmp.insert(bmp.end() - rows, 10, 0xEE);
  bmp[10] = static_cast<std::uint8_t>(bmp[10] + 10);
  ExpectSmallPicture(host_.Load(bmp, kBmpId));
}

TEST_F(Qbmp, TellsOfAFileFromItsHeaderAlone) {
  auto bmp = MakeBmp(SmallPicture());
  bmp.resize(14 + 40);
  const test_support::TemporaryFolder folder;
  const auto info = host_.Info(folder.Write("head.bmp", AsText(bmp)), kBmpId);
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->id, kBmpId);
  EXPECT_EQ(info->width, 3);
  EXPECT_EQ(info->height, 2);
  EXPECT_EQ(info->bits(), 8);
  EXPECT_EQ(info->pages, 1);
  EXPECT_EQ(info->size, 54);
  EXPECT_NEAR(info->dpiX, 100.0, 0.01);
  std::uint32_t result = 0;
  EXPECT_EQ(host_.Info(folder.Write("none.bmp", "BM"), kBmpId, &result), nullptr);
  EXPECT_EQ(result, glib::IERR);
  EXPECT_EQ(host_.Info(folder.Text("missing"), kBmpId, &result), nullptr);
  EXPECT_EQ(result, glib::IERR);
}

TEST_F(Qbmp, TakesTheBestFormOfAClipboard) {
  DibSpec other = SmallPicture();
  other.palette[0] = 0xFF0000;
  DibSpec newest = SmallPicture();
  newest.headerSize = 124;
  const auto small = MakeDib(SmallPicture());
  ExpectSmallPicture(host_.Load(MakeClp({{1, {'t'}}, {8, small}}), kClpId));
  ExpectSmallPicture(host_.Load(MakeClp({{14, EmptyMetafile()}, {8, small}, {8, MakeDib(other)}}), kClpId));
  ExpectSmallPicture(host_.Load(MakeClp({{8, MakeDib(other)}, {17, MakeDib(newest)}}), kClpId));
}

TEST_F(Qbmp, HandsAMetafileOfAClipboardOver) {
  const auto metafile = EmptyMetafile();
  const auto clp = MakeClp({{3, {1, 2}}, {14, metafile}});
  const Loaded loaded = host_.Load(clp, kClpId);
  ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
  const auto& page = loaded.PageAt(0);
  EXPECT_EQ(page.bits, 0);
  EXPECT_EQ(page.width, -1);
  EXPECT_EQ(page.height, -1);
  EXPECT_EQ(page.pixels, nullptr);
  EXPECT_NE(page.metafile, nullptr);

  const test_support::TemporaryFolder folder;
  const auto info = host_.Info(folder.Write("drawing.clp", AsText(clp)), kClpId);
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->bits(), 0);
}

TEST_F(Qbmp, RefusesClipboardsWithoutAPicture) {
  EXPECT_EQ(host_.Load(MakeClp({{1, {'t', 0}}}), kClpId).result, glib::NSUP);
  EXPECT_EQ(host_.Load(MakeClp({{3, {1, 2, 3}}}), kClpId).result, glib::NSUP);
  EXPECT_EQ(host_.Load(MakeClp({{14, {1, 2, 3}}}), kClpId).result, glib::IERR);
  std::vector<ClipEntry> many(257, {8, MakeDib(SmallPicture())});
  EXPECT_EQ(host_.Load(MakeClp(many), kClpId).result, glib::NSUP);
  many.pop_back();
  ExpectSmallPicture(host_.Load(MakeClp(many), kClpId));
}

TEST_F(Qbmp, DamagedFilesEndCleanly) {
  TryDamaged(MakeBmp(SmallPicture()), [&](std::span<const std::uint8_t> bytes) { return host_.Load(bytes, kBmpId); });
  TryDamaged(MakeClp({{1, {'t'}}, {8, MakeDib(SmallPicture())}, {14, EmptyMetafile()}}),
             [&](std::span<const std::uint8_t> bytes) { return host_.Load(bytes, kClpId); });
}

TEST_F(Qbmp, RealFilesLookAsElsewhere) {
  if (!CheckCorpus("bmp", host_, kBmpId) || !CheckCorpus("clp", host_, kClpId)) GTEST_SKIP() << "no corpus";
}

}  // namespace
}  // namespace tests
