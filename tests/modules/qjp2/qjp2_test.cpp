#include <gtest/gtest.h>

#include <string_view>
#include <vector>

#include "tests/modules/qjp2/jp2_files.h"
#include "tests/support/damage.h"
#include "tests/support/file_info_check.h"
#include "tests/support/icc_profiles.h"
#include "tests/support/page_check.h"
#include "tests/support/temporary_folder.h"

namespace tests {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kJp2Id = 0x20000024;
constexpr std::uint32_t kRgb = 16, kGrey = 17, kYcc = 18, kInks = 12;

const Samples kColours{.height = 1, .components = {{1, 2}, {3, 4}, {5, 6}}};

// Two entries of three or four samples, and that the component is an index into them.
Bytes PaletteBoxes(std::uint32_t columns) {
  ByteWriter palette;
  palette.BigWord(2).Byte(columns);
  for (std::uint32_t i = 0; i < columns; ++i) palette.Byte(7);
  for (std::uint32_t i = 0; i < 2 * columns; ++i) palette.Byte(i * 16);
  ByteWriter map;
  for (std::uint32_t i = 0; i < columns; ++i) map.BigWord(0).Byte(1).Byte(i);
  ByteWriter both;
  return both.Bytes(Box("pclr", palette.bytes)).Bytes(Box("cmap", map.bytes)).bytes;
}

Samples Indices(std::uint32_t precision) {
  return {.width = 3, .height = 1, .precision = precision, .components = {{1, 0, 1}}};
}

std::vector<PictureCase> Pictures() {
  const Samples grey{.components = {{0, 128, 255, 3}}};
  const Samples deep{.width = 3, .height = 1, .precision = 16, .components = {{0x8080, 0x80FF, 0xFFFF}}};
  const Samples shallow{.width = 3, .height = 1, .precision = 2, .components = {{0, 1, 3}}};
  const Samples negative{.width = 2, .height = 1, .isSigned = true, .components = {{-128, 127}}};
  const Samples alpha{.width = 2, .height = 1, .components = {{1, 2}, {3, 4}, {5, 6}, {0, 128}}};
  const Samples greyAlpha{.width = 2, .height = 1, .components = {{1, 2}, {0, 128}}};
  const Samples ycc{.width = 2, .height = 2, .components = {{76, 76, 76, 200}, {85}, {255}}, .chromaStep = 2};
  const Samples inks{.width = 2, .height = 1, .components = {{255, 0}, {0, 0}, {0, 0}, {0, 128}}};
  return {
      {"code stream", CodeStream(kColours), 24, 2, 1, {0xFF010305, 0xFF020406}},
      {"colours", Boxed(kColours, kRgb), 24, 2, 1, {0xFF010305, 0xFF020406}},
      {"grey", Boxed(grey, kGrey), 8, 2, 2, {0xFF000000, 0xFF808080, 0xFFFFFFFF, 0xFF030303}},
      {"16 bits", Boxed(deep, kGrey), 8, 3, 1, {0xFF808080, 0xFF808080, 0xFFFFFFFF}},
      {"2 bits", Boxed(shallow, kGrey), 8, 3, 1, {0xFF000000, 0xFF555555, 0xFFFFFFFF}},
      {"signed", Boxed(negative, kGrey), 8, 2, 1, {0xFF000000, 0xFFFFFFFF}},
      {"alpha", Boxed(alpha, kRgb), 32, 2, 1, {0x00010305, 0x80020406}},
      {"grey with alpha", Boxed(greyAlpha, kGrey), 32, 2, 1, {0x00010101, 0x80020202}},
      {"brightness and halved differences",
       Boxed(ycc, kYcc),
       24,
       2,
       2,
       {0xFFFE0000, 0xFFFE0000, 0xFFFE0000, 0xFFFF7C7C}},
      {"inks", Boxed(inks, kInks), 24, 2, 1, {0xFF00FFFF, 0xFF7F7F7F}},
      {"palette", Boxed(Indices(8), kRgb, PaletteBoxes(3)), 8, 3, 1, {0xFF304050, 0xFF001020, 0xFF304050}},
      {"palette of one bit", Boxed(Indices(1), kRgb, PaletteBoxes(3)), 1, 3, 1, {0xFF304050, 0xFF001020, 0xFF304050}},
      {"palette with alpha", Boxed(Indices(4), kRgb, PaletteBoxes(4)), 4, 3, 1, {0xFF405060, 0xFF001020, 0xFF405060}},
  };
}

class Qjp2 : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host_.Ok()); }
  ModuleHost host_{"qjp2"};
};

TEST_F(Qjp2, RegistersItsRowAndOnlyReads) {
  EXPECT_EQ(host_.Ids(), std::vector<std::uint32_t>{kJp2Id});
  EXPECT_FALSE(host_.HasEntry("SaveImageData"));
}

TEST_F(Qjp2, ReadsEveryKind) { CheckPictures(host_, Pictures(), kJp2Id); }

TEST_F(Qjp2, ThumbnailsTakeAResolutionOfTheFile) {
  ASSERT_TRUE(host_.HasEntry("LoadImageThumbnail"));
  Samples picture{.width = 100, .height = 64, .components = {{}, {}, {}}, .resolutions = 4};
  for (std::int32_t i = 0; i < 3; ++i) picture.components[static_cast<std::size_t>(i)].assign(6400, 50 * i);
  const test_support::TemporaryFolder folder;
  const Bytes file = Boxed(picture, kRgb);
  const std::string path = folder.Write("a.jp2", {reinterpret_cast<const char*>(file.data()), file.size()});
  const struct {
    std::uint32_t width, height;
    std::int32_t gotWidth, gotHeight;
  } kCases[] = {{0, 0, 100, 64}, {200, 100, 100, 64}, {51, 1, 100, 64}, {50, 32, 50, 32},
                {0, 17, 50, 32}, {1, 1, 13, 8},       {12, 0, 13, 8},   {13, 8, 25, 16}};
  for (const auto& c : kCases) {
    SCOPED_TRACE(std::to_string(c.width) + " x " + std::to_string(c.height));
    const Loaded loaded = host_.LoadThumbnail(path, c.width, c.height);
    ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
    EXPECT_EQ(loaded.PageAt(0).width, c.gotWidth);
    EXPECT_EQ(loaded.PageAt(0).height, c.gotHeight);
    EXPECT_EQ(PixelAt(loaded.PageAt(0), 5, 5), 0xFF003264U);
  }
}

TEST_F(Qjp2, ColoursOfAProfileBecomeSrgb) {
  const Samples grey{.components = {{0, 128, 255, 3}}};
  const Samples alpha{.width = 2, .height = 1, .components = {{1, 2}, {3, 4}, {5, 6}, {0, 128}}};
  const struct {
    Samples samples;
    std::uint32_t space;
    Bytes more;
  } kCases[] = {{kColours, kRgb, {}}, {alpha, kRgb, {}}, {grey, kGrey, {}}, {Indices(4), kRgb, PaletteBoxes(3)}};
  for (const auto& c : kCases) {
    const Loaded plain = host_.Load(Boxed(c.samples, c.space, c.more), kJp2Id);
    const IccBytes profile = c.space == kGrey ? GreyProfile(1.0) : RgbProfile(1.0, true);
    ExpectConverted(plain, host_.Load(Boxed(c.samples, c.space, c.more, profile), kJp2Id), profile);
    const IccBytes same = c.space == kGrey ? RgbProfile(1.0, false) : RgbProfile(0, false);
    ExpectUnchanged(plain, host_.Load(Boxed(c.samples, c.space, c.more, same), kJp2Id));
    // A second description doesn't count.
    Bytes second = c.more;
    const Bytes box = Box("colr", ByteWriter().Byte(2).Byte(0).Byte(0).Bytes(profile).bytes);
    second.insert(second.end(), box.begin(), box.end());
    ExpectUnchanged(plain, host_.Load(Boxed(c.samples, c.space, second), kJp2Id));
  }
}

TEST_F(Qjp2, InksOfAProfileBecomeSrgb) {
  const IccBytes profile = InkProfile();
  const IccReference reference(profile);
  const Samples inks{.width = 2, .height = 1, .components = {{255, 7}, {9, 0}, {30, 60}, {0, 128}, {77, 255}}};
  for (const bool alpha : {false, true}) {
    Samples samples = inks;
    if (!alpha) samples.components.pop_back();
    const Loaded loaded = host_.Load(Boxed(samples, kInks, {}, profile), kJp2Id);
    ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
    ASSERT_EQ(loaded.PageAt(0).bits, alpha ? 32 : 24);
    const std::uint32_t left = reference.OfInks({255, 9, 30, 0});
    const std::uint32_t right = reference.OfInks({7, 0, 60, 128});
    EXPECT_TRUE(OneStepApart(PixelAt(loaded.PageAt(0), 0, 0), alpha ? (left & 0xFFFFFFU) | 77U << 24 : left));
    EXPECT_TRUE(OneStepApart(PixelAt(loaded.PageAt(0), 1, 0), right));
  }
}

TEST_F(Qjp2, TellsWhatItLoads) { CheckFileInfos(host_, Pictures(), kJp2Id); }

TEST_F(Qjp2, TakesTheResolution) {
  ByteWriter capture;  // 10000 / 1 and 5000 / 2 dots a metre
  capture.BigWord(1).BigWord(1).BigWord(5000).BigWord(2).Byte(4).Byte(0);
  const Bytes more = Box("res ", Box("resc", capture.bytes));
  const Loaded loaded = host_.Load(Boxed(kColours, kRgb, more), kJp2Id);
  EXPECT_NEAR(loaded.PageAt(0).dpiY, 254.0, 1e-9);
  EXPECT_NEAR(loaded.PageAt(0).dpiX, 63.5, 1e-9);
}

TEST_F(Qjp2, PalettesSayHowManyEntriesTheyHave) {
  EXPECT_EQ(host_.Load(Pictures()[10].file, kJp2Id).PageAt(0).paletteEntries, 2U);
  EXPECT_EQ(host_.Load(Pictures()[2].file, kJp2Id).PageAt(0).grayscale, 1);
}

// The sides in the header of a code stream.
Bytes WithSides(std::uint32_t width, std::uint32_t height) {
  Bytes file = CodeStream(kColours);
  ByteWriter sides;
  sides.BigLong(width).BigLong(height);
  for (const std::size_t at : {8, 24})
    std::copy(sides.bytes.begin(), sides.bytes.end(), file.begin() + static_cast<std::ptrdiff_t>(at));
  return file;
}

TEST_F(Qjp2, Refuses) {
  const RefusedCase kCases[] = {
      {"nothing", {}, glib::IERR},
      {"another format", BytesOf("P5 1 1 255\na"), glib::IERR},
      {"too wide", WithSides(65536, 1), glib::NSUP},
      {"too many pixels", WithSides(65535, 65535), glib::NSUP},
      {"far too large", WithSides(60000, 4000), glib::IERR},
      {"no width", WithSides(0, 1), glib::IERR},
  };
  for (const RefusedCase& c : kCases) CheckRefused(c, host_.Load(c.file, kJp2Id));
}

TEST_F(Qjp2, DamagedFilesEndCleanly) {
  for (const std::size_t i : {0, 7, 11}) {
    SCOPED_TRACE(Pictures()[i].name);
    TryDamaged(Pictures()[i].file, [&](std::span<const std::uint8_t> bytes) { return host_.Load(bytes, kJp2Id); });
  }
}

TEST_F(Qjp2, RealFilesLookAsElsewhere) {
  if (!CheckCorpusAndInfo("jp2", host_, kJp2Id)) GTEST_SKIP() << "no corpus";
}

}  // namespace
}  // namespace tests
