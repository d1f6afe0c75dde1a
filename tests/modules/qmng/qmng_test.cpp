#include <gtest/gtest.h>
#include <zlib.h>

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <jpeglib.h>

#include "tests/support/byte_writer.h"
#include "tests/support/damage.h"
#include "tests/support/file_info_check.h"
#include "tests/support/page_check.h"
#include "tests/support/temporary_folder.h"

namespace tests {
namespace {

using namespace std::literals;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kMngId = 0x3000001D;
constexpr std::uint32_t kJngId = 0x3000001E;
constexpr std::uint32_t kForever = 0x7FFFFFFF;

std::string TextOf(const ByteWriter& writer) { return {writer.bytes.begin(), writer.bytes.end()}; }

std::string Chunk(std::string_view name, std::string_view data) {
  const std::string body = std::string(name) + std::string(data);
  const uLong check = crc32(0, reinterpret_cast<const Bytef*>(body.data()), static_cast<uInt>(body.size()));
  ByteWriter out;
  out.BigLong(static_cast<std::uint32_t>(data.size())).Text(body).BigLong(static_cast<std::uint32_t>(check));
  return TextOf(out);
}

std::string Deflated(std::string_view rows) {
  std::string packed(compressBound(static_cast<uLong>(rows.size())), '\0');
  uLongf size = static_cast<uLongf>(packed.size());
  compress(reinterpret_cast<Bytef*>(packed.data()), &size, reinterpret_cast<const Bytef*>(rows.data()),
           static_cast<uLong>(rows.size()));
  packed.resize(size);
  return packed;
}

// 2 pixels a row; `rows` begin with the byte for the filter.
std::string Png(std::uint32_t colourKind, std::string_view rows, std::string_view palette = ""sv,
                std::uint32_t height = 1) {
  ByteWriter header;
  header.BigLong(2).BigLong(height).Byte(8).Byte(colourKind).Zeros(3);
  return Chunk("IHDR", TextOf(header)) + (palette.empty() ? "" : Chunk("PLTE", palette)) +
         Chunk("IDAT", Deflated(rows)) + Chunk("IEND", "");
}

std::string Colours(std::string_view sixSamples, std::uint32_t height = 1) {
  std::string rows;
  for (std::uint32_t y = 0; y < height; ++y) rows += "\0"s + std::string(sixSamples);
  return Png(2, rows, ""sv, height);
}

Bytes Mng(const std::string& chunks) {
  ByteWriter header;
  header.BigLong(2).BigLong(1).BigLong(100).BigLong(0).BigLong(0).BigLong(0).BigLong(3);
  return BytesOf("\x8AMNG\r\n\x1A\n" + Chunk("MHDR", TextOf(header)) + chunks + Chunk("MEND", ""));
}

std::string Loop(std::uint32_t depth, std::uint32_t rounds, const std::string& chunks) {
  ByteWriter loop;
  loop.Byte(depth).BigLong(rounds);
  ByteWriter end;
  end.Byte(depth);
  return Chunk("LOOP", TextOf(loop)) + chunks + Chunk("ENDL", TextOf(end));
}

std::string Delay(std::uint32_t hundredths) {
  ByteWriter frame;
  frame.Byte(1).Byte(0).Byte(2).Zeros(3).BigLong(hundredths);
  return Chunk("FRAM", TextOf(frame));
}

// A picture of 8 x 8 pixels of one colour, which the code keeps to within a step or two.
std::string Jpeg(int components, const JSAMPLE* colour) {
  jpeg_compress_struct jpeg;
  jpeg_error_mgr errors;
  jpeg.err = jpeg_std_error(&errors);
  jpeg_create_compress(&jpeg);
  unsigned char* data = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&jpeg, &data, &size);
  jpeg.image_width = 8;
  jpeg.image_height = 8;
  jpeg.input_components = components;
  jpeg.in_color_space = components == 1 ? JCS_GRAYSCALE : JCS_RGB;
  jpeg_set_defaults(&jpeg);
  jpeg_set_quality(&jpeg, 100, TRUE);
  jpeg_start_compress(&jpeg, TRUE);
  JSAMPLE row[24];
  for (int i = 0; i < 8 * components; ++i) row[i] = colour[i % components];
  JSAMPROW rows[] = {row};
  while (jpeg.next_scanline < jpeg.image_height) jpeg_write_scanlines(&jpeg, rows, 1);
  jpeg_finish_compress(&jpeg);
  jpeg_destroy_compress(&jpeg);
  const std::string text(reinterpret_cast<const char*>(data), size);
  std::free(data);
  return text;
}

Bytes Jng(std::uint32_t colourKind, const std::string& jpeg, std::string_view alphaRows = ""sv) {
  ByteWriter header;
  header.BigLong(8).BigLong(8).Byte(colourKind).Byte(8).Byte(8).Byte(0).Byte(alphaRows.empty() ? 0 : 8).Zeros(3);
  return BytesOf("\x8BJNG\r\n\x1A\n" + Chunk("JHDR", TextOf(header)) + Chunk("JDAT", jpeg) +
                 (alphaRows.empty() ? "" : Chunk("IDAT", Deflated(alphaRows))) + Chunk("IEND", ""));
}

// Grey with an alpha of another coding: `more` has its chunks.
Bytes JngWithAlpha(std::uint32_t depth, std::uint32_t compression, const std::string& more, std::uint32_t side = 8) {
  const JSAMPLE kGrey[] = {0x40};
  ByteWriter header;
  header.BigLong(side).BigLong(8).Byte(12).Byte(8).Byte(8).Byte(0).Byte(depth).Byte(compression).Zeros(2);
  ByteWriter resolution;
  resolution.BigLong(10000).BigLong(5000).Byte(1);
  const std::string jpeg = Jpeg(1, kGrey);
  // In two pieces, before the mark behind which the same would come in 12 bits.
  return BytesOf("\x8BJNG\r\n\x1A\n" + Chunk("JHDR", TextOf(header)) + Chunk("pHYs", TextOf(resolution)) +
                 Chunk("JDAT", jpeg.substr(0, 99)) + Chunk("JDAT", jpeg.substr(99)) + more + Chunk("JSEP", "") +
                 Chunk("JDAT", "junk") + Chunk("IEND", ""));
}

class Qmng : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host_.Ok()); }
  ModuleHost host_{"qmng"};
};

TEST_F(Qmng, RegistersItsRowsAndOnlyReads) {
  EXPECT_EQ(host_.Ids(), (std::vector<std::uint32_t>{kMngId, kJngId}));
  EXPECT_FALSE(host_.HasEntry("SaveImageData"));
}

TEST_F(Qmng, FramesArePagesWithTheirDelays) {
  const Bytes file = Mng(Delay(25) + Colours("abcdef"sv) + Delay(7) + Png(3, "\0\1\0"sv, "\1\2\3\4\5\6"sv) +
                         Png(6,
                             "\0abc\x80"
                             "def\xFF"sv));
  const Loaded loaded = host_.Load(file, kMngId);
  CheckPicture({"colours", {}, 24, 2, 1, {0xFF616263, 0xFF646566}}, loaded);
  ASSERT_EQ(loaded.PageCount(), 3U) << loaded.message;
  EXPECT_EQ(loaded.PageAt(0).delay, 25U);
  EXPECT_EQ(loaded.PageAt(1).delay, 7U);
  EXPECT_EQ(loaded.PageAt(1).bits, 8);
  EXPECT_EQ(PixelAt(loaded.PageAt(1), 0, 0), 0xFF040506U);
  EXPECT_EQ(PixelAt(loaded.PageAt(1), 1, 0), 0xFF010203U);
  EXPECT_EQ(loaded.PageAt(2).bits, 32);
  EXPECT_EQ(PixelAt(loaded.PageAt(2), 0, 0), 0x80616263U);
}

TEST_F(Qmng, NothingIsPlayedBehindTheEnd) {
  const std::string zeros(40, '\0');
  EXPECT_EQ(host_.Load(Mng(Colours("abcdef"sv) + Chunk("MEND", "") + Colours("ghijkl"sv)), kMngId).PageCount(), 1U);
  EXPECT_EQ(host_.Load(Mng(Colours("abcdef"sv) + zeros + Colours("ghijkl"sv)), kMngId).PageCount(), 1U);
}

TEST_F(Qmng, LoopsPlayAsOftenAsTheyEnd) {
  const std::string frame = Colours("abcdef"sv);
  const struct {
    const char* name;
    std::string chunks;
    std::uint32_t pages;
  } kCases[] = {
      {"three rounds", Loop(0, 3, frame), 3},
      {"for ever", Loop(0, kForever, frame + frame), 2},
      {"nothing for ever", frame + Loop(0, kForever, ""), 1},
      {"ages within each other", frame + Loop(0, 50000, Loop(1, 50000, Loop(2, 50000, ""))), 1},
      {"ages within no round", frame + Loop(0, 0, Loop(1, kForever, "")), 1},
      {"ages of what can't be read", frame + Loop(0, 60000, Chunk("IHDR", "") + Chunk("IEND", "")), 1},
      {"ages of frames", Loop(0, 3000, Loop(1, 3000, frame)), 1},
      {"without an end", frame + Chunk("LOOP", "\0\x7F\xFF\xFF\xFF"sv), 1},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    const Loaded loaded = host_.Load(Mng(c.chunks), kMngId);
    EXPECT_EQ(loaded.result, glib::RCOK) << loaded.message;
    EXPECT_EQ(loaded.PageCount(), c.pages);
  }
}

TEST_F(Qmng, LoopsOfLargeFramesPlayOnce) {
  constexpr std::uint32_t kSide = 6000;
  ByteWriter header;
  header.BigLong(kSide).BigLong(kSide).Byte(1).Byte(0).Zeros(3);
  const std::string rows(kSide * (kSide / 8 + 1), '\0');
  const std::string large = Chunk("IHDR", TextOf(header)) + Chunk("IDAT", Deflated(rows)) + Chunk("IEND", "");
  const Loaded loaded = host_.Load(Mng(Loop(0, 50, large + Colours("abcdef"sv))), kMngId);
  ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
  EXPECT_EQ(loaded.PageCount(), 2U);
}

TEST_F(Qmng, ReadsPhotographs) {
  const JSAMPLE kGrey[] = {0x40};
  const JSAMPLE kRed[] = {0xC0, 0x20, 0x30};
  const Loaded grey = host_.Load(Jng(8, Jpeg(1, kGrey)), kJngId);
  ASSERT_EQ(grey.result, glib::RCOK) << grey.message;
  EXPECT_EQ(grey.PageAt(0).bits, 8);
  EXPECT_EQ(grey.PageAt(0).grayscale, 1);
  EXPECT_EQ(PixelAt(grey.PageAt(0), 7, 7), 0xFF404040U);

  const Loaded red = host_.Load(Jng(10, Jpeg(3, kRed)), kJngId);
  ASSERT_EQ(red.result, glib::RCOK) << red.message;
  EXPECT_EQ(red.PageAt(0).bits, 24);
  for (const int shift : {0, 8, 16}) {
    EXPECT_NEAR(PixelAt(red.PageAt(0), 3, 3) >> shift & 255U, kRed[2 - shift / 8], 2);
  }

  std::string alphaRows;
  for (int y = 0; y < 8; ++y) alphaRows += std::string(1, '\0') + std::string(8, static_cast<char>(y * 16));
  const Loaded seeThrough = host_.Load(Jng(14, Jpeg(3, kRed), alphaRows), kJngId);
  ASSERT_EQ(seeThrough.result, glib::RCOK) << seeThrough.message;
  ASSERT_EQ(seeThrough.PageAt(0).bits, 32);
  for (std::uint32_t y = 0; y < 8; ++y) EXPECT_EQ(PixelAt(seeThrough.PageAt(0), 5, y) >> 24, y * 16);
}

TEST_F(Qmng, AlphaComesInManyCodings) {
  const auto rows = [](std::string_view row) {
    std::string all;
    for (int y = 0; y < 8; ++y) all += "\0"s + std::string(row);
    return Chunk("IDAT", Deflated(all));
  };
  const JSAMPLE kHalf[] = {0x80};
  const struct {
    const char* name;
    Bytes file;
    std::uint32_t alpha[2];  // of the first two pixels of a row
  } kCases[] = {
      {"one bit", JngWithAlpha(1, 0, rows("\x80"sv)), {255, 0}},
      {"two bits", JngWithAlpha(2, 0, rows("\x60\0"sv)), {85, 170}},
      {"four bits", JngWithAlpha(4, 0, rows("\x1F\0\0\0"sv)), {17, 255}},
      {"16 bits", JngWithAlpha(16, 0, rows("\x40\x40\xFF\xFF\0\0\0\0\0\0\0\0\0\0\0\0"sv)), {64, 255}},
      {"JPEG", JngWithAlpha(8, 8, Chunk("JDAA", Jpeg(1, kHalf))), {128, 128}},
      {"none that can be read", JngWithAlpha(8, 0, Chunk("IDAT", "junk")), {255, 255}},
      {"none at all", JngWithAlpha(8, 8, ""), {255, 255}},
  };
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    const Loaded loaded = host_.Load(c.file, kJngId);
    ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
    const auto& page = loaded.PageAt(0);
    ASSERT_EQ(page.bits, 32);
    EXPECT_DOUBLE_EQ(page.dpiX, 254.0);
    EXPECT_DOUBLE_EQ(page.dpiY, 127.0);
    for (std::uint32_t y = 0; y < 8; ++y) {
      for (std::uint32_t x = 0; x < 2; ++x) EXPECT_EQ(PixelAt(page, x, y), c.alpha[x] << 24 | 0x404040U);
    }
  }
  EXPECT_EQ(host_.Load(JngWithAlpha(8, 8, "", 9), kJngId).result, glib::IERR);
}

TEST_F(Qmng, DelaysComeFromTicks) {
  const std::string frame = Colours("abcdef"sv);
  ByteWriter once;  // for the next picture only, behind a name
  once.Byte(1).Text("name").Byte(0).Byte(1).Zeros(3).BigLong(50);
  Bytes file = Mng(frame + Delay(30) + frame + Chunk("FRAM", TextOf(once)) + frame + Chunk("FRAM", "\1"sv) + frame);
  const auto delays = [&] {
    const Loaded loaded = host_.Load(file, kMngId);
    std::vector<std::uint32_t> all;
    for (std::uint32_t i = 0; i < loaded.PageCount(); ++i) all.push_back(loaded.PageAt(i).delay);
    return all;
  };
  EXPECT_EQ(delays(), (std::vector<std::uint32_t>{1, 30, 50, 30}));
  file[27] = 30;  // ticks a second
  EXPECT_EQ(delays(), (std::vector<std::uint32_t>{3, 100, 167, 100}));
  file[27] = 0;
  EXPECT_EQ(delays(), (std::vector<std::uint32_t>{10, 10, 10, 10}));
}

TEST_F(Qmng, PicturesShareAPalette) {
  std::string picture = Png(3, "\0\1\0"sv, "abc"sv);
  const std::string own = Chunk("PLTE", "abc"sv);
  picture.replace(picture.find(own), own.size(), Chunk("PLTE", ""));
  const Loaded loaded = host_.Load(Mng(Chunk("PLTE", "\1\2\3\4\5\6"sv) + picture), kMngId);
  CheckPicture({"shared", {}, 8, 2, 1, {0xFF040506, 0xFF010203}}, loaded);
}

TEST_F(Qmng, ABrokenPhotographChangesNothingForOthers) {
  const JSAMPLE kGrey[] = {0x40};
  const Bytes photograph = Jng(8, Jpeg(1, kGrey));
  for (std::size_t size = 8; size < photograph.size(); ++size) {
    host_.Load(std::span(photograph).first(size), kJngId);
    ASSERT_EQ(host_.Load(Mng(Colours("abcdef"sv, 9)), kMngId).result, glib::RCOK) << size;
  }
}

TEST_F(Qmng, TellsWhatItLoads) {
  const test_support::TemporaryFolder folder;
  const auto write = [&](const char* name, const Bytes& file) {
    return folder.Write(name, {reinterpret_cast<const char*>(file.data()), file.size()});
  };
  const JSAMPLE kGrey[] = {0x40};
  CheckFileInfo(host_, write("a.mng", Mng(Colours("abcdef"sv) + Colours("ghijkl"sv))), kMngId);
  CheckFileInfo(host_, write("b.mng", Mng(Loop(0, kForever, Colours("abcdef"sv)))), kMngId);
  CheckFileInfo(host_, write("c.mng", Mng(Png(6, "\0abcdefgh"sv))), kMngId);
  CheckFileInfo(host_, write("b.jng", Jng(12, Jpeg(1, kGrey), std::string(72, '\0'))), kJngId);
  CheckFileInfo(host_, write("a.jng", Jng(8, Jpeg(1, kGrey))), kJngId);
}

TEST_F(Qmng, Refuses) {
  CheckRefused({"nothing", {}, glib::IERR}, host_.Load(Bytes{}, kMngId));
  CheckRefused({"no frame", {}, glib::IERR}, host_.Load(Mng(""), kMngId));
  CheckRefused({"a photograph as animation", {}, glib::IERR}, host_.Load(Bytes(40, 0x8B), kMngId));
  Bytes huge = Jng(10, "no jpeg");
  for (std::size_t i = 16; i < 24; ++i) huge[i] = 0x7F;
  CheckRefused({"huge", {}, glib::NSUP}, host_.Load(huge, kJngId));
}

TEST_F(Qmng, DamagedFilesEndCleanly) {
  const JSAMPLE kGrey[] = {0x40};
  TryDamaged(Mng(Delay(9) + Loop(0, 2, Colours("abcdef"sv))),
             [&](std::span<const std::uint8_t> bytes) { return host_.Load(bytes, kMngId); });
  TryDamaged(Jng(8, Jpeg(1, kGrey)), [&](std::span<const std::uint8_t> bytes) { return host_.Load(bytes, kJngId); });
}

TEST_F(Qmng, RealFilesLookAsElsewhere) {
  if (!CheckCorpusAndInfo("mng", host_, kMngId)) GTEST_SKIP() << "no corpus";
  CheckCorpusAndInfo("jng", host_, kJngId);
}

}  // namespace
}  // namespace tests
