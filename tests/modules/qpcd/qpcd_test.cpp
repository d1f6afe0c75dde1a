#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "tests/support/file_info_check.h"
#include "tests/support/page_check.h"
#include "tests/support/temporary_folder.h"

namespace tests {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kPcdId = 0x0000000F;
constexpr std::uint32_t kWidth = 768;
constexpr std::uint32_t kHeight = 512;
constexpr std::size_t kBaseAt = 96 * 2048;

// Brightness and two differences that stand for a grey where they are these.
constexpr std::uint8_t kNoBlue = 156;
constexpr std::uint8_t kNoRed = 137;

// Grey with four brightnesses, one in each quarter; the upper left one is reddish.
Bytes PhotoCd() {
  Bytes file(kBaseAt + kWidth * kHeight * 3 / 2, 0);
  std::memset(file.data(), 0xFF, 11);
  std::memcpy(file.data() + 2048, "PCD_IPI", 7);
  std::uint8_t* row = file.data() + kBaseAt;
  for (std::uint32_t y = 0; y < kHeight; y += 2) {  // two rows of brightness, half a row of each difference
    for (std::uint32_t i = 0; i < 2; ++i, row += kWidth) {
      const bool upper = y < kHeight / 2;
      std::fill_n(row, kWidth / 2, static_cast<std::uint8_t>(upper ? 60 : 100));
      std::fill_n(row + kWidth / 2, kWidth / 2, static_cast<std::uint8_t>(upper ? 140 : 180));
    }
    std::fill_n(row, kWidth / 2, kNoBlue);
    row += kWidth / 2;
    std::fill_n(row, kWidth / 2, kNoRed);
    if (y < kHeight / 2) std::fill_n(row, kWidth / 4, static_cast<std::uint8_t>(kNoRed + 20));
    row += kWidth / 2;
  }
  return file;
}

class Qpcd : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host_.Ok()); }
  ModuleHost host_{"qpcd"};
};

TEST_F(Qpcd, RegistersItsRowAndOnlyReads) {
  EXPECT_EQ(host_.Ids(), std::vector<std::uint32_t>{kPcdId});
  EXPECT_FALSE(host_.HasEntry("SaveImageData"));
}

TEST_F(Qpcd, ReadsTheBasePicture) {
  const Loaded loaded = host_.Load(PhotoCd(), kPcdId);
  ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
  ASSERT_EQ(loaded.PageCount(), 1U);
  const auto& page = loaded.PageAt(0);
  ASSERT_EQ(page.bits, 24);
  ASSERT_EQ(page.width, static_cast<std::int32_t>(kWidth));
  ASSERT_EQ(page.height, static_cast<std::int32_t>(kHeight));
  const auto sample = [&](std::uint32_t x, std::uint32_t y, int shift) {
    return static_cast<int>(PixelAt(page, x, y) >> shift & 255U);
  };
  int last = 0;
  const std::uint32_t kGreyPlaces[][2] = {{100, 400}, {700, 100}, {700, 400}};
  for (const auto& [x, y] : kGreyPlaces) {
    EXPECT_NEAR(sample(x, y, 16), sample(x, y, 8), 3);
    EXPECT_NEAR(sample(x, y, 0), sample(x, y, 8), 3);
    EXPECT_GT(sample(x, y, 8), last + 20);
    last = sample(x, y, 8);
  }
  EXPECT_GT(sample(100, 100, 16), sample(100, 100, 8) + 20);
}

TEST_F(Qpcd, ThumbnailsTakeASmallerPicture) {
  ASSERT_TRUE(host_.HasEntry("LoadImageThumbnail"));
  Bytes file = PhotoCd();
  // Pictures of 192 x 128 and 384 x 256 stand in front, all of one grey each.
  const auto put = [&](std::size_t at, std::uint32_t width, std::uint32_t height, std::uint8_t luminance) {
    for (std::uint32_t y = 0; y < height; y += 2) {
      std::uint8_t* row = file.data() + at + std::size_t{y} * width * 3 / 2;
      std::fill_n(row, 2 * width, luminance);
      std::fill_n(row + 2 * width, width / 2, kNoBlue);
      std::fill_n(row + 2 * width + width / 2, width / 2, kNoRed);
    }
  };
  put(4 * 2048, 192, 128, 60);
  put(23 * 2048, 384, 256, 100);
  const test_support::TemporaryFolder folder;
  const std::string path = folder.Write("a.pcd", {reinterpret_cast<const char*>(file.data()), file.size()});
  const struct {
    std::uint32_t width, height;
    std::int32_t gotWidth, gotHeight;
  } kCases[] = {{0, 0, 768, 512},   {100, 100, 192, 128}, {192, 128, 192, 128},  {0, 129, 384, 256},
                {384, 1, 384, 256}, {385, 1, 768, 512},   {5000, 5000, 768, 512}};
  std::uint32_t last = 0;
  for (const auto& c : kCases) {
    SCOPED_TRACE(std::to_string(c.width) + " x " + std::to_string(c.height));
    const Loaded loaded = host_.LoadThumbnail(path, c.width, c.height);
    ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
    const auto& page = loaded.PageAt(0);
    EXPECT_EQ(page.width, c.gotWidth);
    EXPECT_EQ(page.height, c.gotHeight);
    const std::uint32_t grey = PixelAt(page, 50, 50) >> 8 & 255U;
    EXPECT_EQ(grey, PixelAt(page, 60, 60) >> 8 & 255U);
    if (c.gotWidth == 384) {
      EXPECT_GT(grey, last + 20);
    } else if (c.gotWidth == 192) {
      last = grey;
    }
  }
}

TEST_F(Qpcd, RefusesWhatIsCutOrElse) {
  Bytes file = PhotoCd();
  CheckRefused({"nothing", {}, glib::IERR}, host_.Load(Bytes{}, kPcdId));
  CheckRefused({"header only", {}, glib::IERR}, host_.Load(std::span(file).first(4096), kPcdId));
  std::memcpy(file.data() + 2048, "NO", 2);
  CheckRefused({"another file", {}, glib::IERR}, host_.Load(file, kPcdId));
}

TEST_F(Qpcd, TellsWhatItLoads) {
  const test_support::TemporaryFolder folder;
  const Bytes file = PhotoCd();
  CheckFileInfo(host_, folder.Write("a.pcd", {reinterpret_cast<const char*>(file.data()), file.size()}), kPcdId);
}

TEST_F(Qpcd, RealFilesLookAsElsewhere) {
  if (!CheckCorpusAndInfo("pcd", host_, kPcdId)) GTEST_SKIP() << "no corpus";
}

}  // namespace
}  // namespace tests
