#include "modules/common/page_builder.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "modules/common/limits.h"
#include "tests/support/module_host.h"
#include "tests/support/temporary_folder.h"

namespace modules {
namespace {

using tests::EmptyExchange;
using tests::Loaded;

TEST(PageBuilder, SizesUpToTheLimits) {
  EXPECT_TRUE(SizeAllowed(1, 1));
  EXPECT_TRUE(SizeAllowed(kMaxSide, 4096));
  EXPECT_FALSE(SizeAllowed(kMaxSide, 4097));
  EXPECT_FALSE(SizeAllowed(kMaxSide + 1, 1));
  EXPECT_FALSE(SizeAllowed(0, 1));
  EXPECT_FALSE(SizeAllowed(1, 0));
  EXPECT_FALSE(SizeAllowed(~std::uint64_t{0}, ~std::uint64_t{0}));
}

TEST(PageBuilder, BelievesWhatTheBytesCanHold) {
  EXPECT_TRUE(SizeBelievable(1024, 1024, 0));
  EXPECT_FALSE(SizeBelievable(1280, 1024, 10239));
  EXPECT_TRUE(SizeBelievable(1280, 1024, 10240));
}

TEST(PageBuilder, NewPagesAreWholeSlides) {
  const Loaded loaded = EmptyExchange();
  loaded.exchange->background = glib::RGB32(1, 2, 3, 4);
  const Page* page = AddPage(*loaded.exchange, 3, 2, 4);
  ASSERT_NE(page, nullptr);
  EXPECT_EQ(loaded.PageCount(), 1U);
  EXPECT_EQ(page->slideNumber, -1);
  EXPECT_EQ(page->visible, 1);
  EXPECT_EQ(page->owned, 1);
  EXPECT_TRUE(page->background == glib::RGB32(1, 2, 3, 4));
  EXPECT_EQ(page->palette[255], 0xFF000000U);
  for (std::size_t i = 0; i < 2 * page->Stride(); ++i) EXPECT_EQ(page->pixels[i], 0);
}

TEST(PageBuilder, RefusesPagesAboveTheLimits) {
  const Loaded loaded = EmptyExchange();
  EXPECT_EQ(AddPage(*loaded.exchange, 65536, 1, 8), nullptr);
  EXPECT_NE(loaded.exchange->message->Length(), 0U);
  for (std::uint32_t i = 0; i < kMaxPages; ++i) ASSERT_NE(AddPage(*loaded.exchange, 1, 1, 1), nullptr);
  EXPECT_EQ(AddPage(*loaded.exchange, 1, 1, 1), nullptr);
  EXPECT_EQ(loaded.PageCount(), kMaxPages);
  DropLastPage(*loaded.exchange);
  EXPECT_NE(AddPage(*loaded.exchange, 1, 1, 1), nullptr);
}

// Blocks that nobody touches, so that pages of 2^28 pixels cost nothing.
Loaded ExchangeOfSmallBlocks() {
  Loaded loaded = EmptyExchange();
  loaded.exchange->AllocateRaster = [](std::uint32_t, std::uint32_t, std::uint32_t) {
    return glib::AllocateRaster(1, 1, 8);
  };
  return loaded;
}

TEST(PageBuilder, DeepPagesHaveFewerPixels) {
  const Loaded loaded = ExchangeOfSmallBlocks();
  const struct {
    std::uint32_t bits, width, height;  // the largest of this width
  } kCases[] = {{8, 16384, 16384}, {24, 16384, 15360}, {32, 10000, 11184}};
  for (const auto& c : kCases) {
    EXPECT_NE(AddPage(*loaded.exchange, c.width, c.height, c.bits), nullptr) << c.bits;
    EXPECT_EQ(AddPage(*loaded.exchange, c.width, c.height + 1, c.bits), nullptr) << c.bits;
  }
}

TEST(PageBuilder, ManyLargePagesAskForALongFile) {
  const Loaded loaded = ExchangeOfSmallBlocks();
  for (int i = 0; i < 2; ++i) ASSERT_NE(AddPage(*loaded.exchange, 16384, 16384, 8), nullptr);
  EXPECT_TRUE(PagesBelievable(*loaded.exchange, 0));
  ASSERT_NE(AddPage(*loaded.exchange, 16384, 16384, 8), nullptr);
  EXPECT_FALSE(PagesBelievable(*loaded.exchange, 3 * 262144 - 1));
  EXPECT_TRUE(PagesBelievable(*loaded.exchange, 3 * 262144));
}

TEST(PageBuilder, ASourceHasItsOwnLimitOfPixels) {
  const Loaded loaded = ExchangeOfSmallBlocks();
  for (int i = 0; i < 4; ++i) ASSERT_NE(AddPage(*loaded.exchange, 16384, 16384, 1), nullptr);
  EXPECT_EQ(AddPage(*loaded.exchange, 1, 1, 1), nullptr);
}

TEST(PageBuilder, NoMemoryIsAMessage) {
  const Loaded loaded = EmptyExchange();
  loaded.exchange->AllocateRaster = [](std::uint32_t, std::uint32_t, std::uint32_t) -> std::uint8_t* {
    return nullptr;
  };
  EXPECT_EQ(AddPage(*loaded.exchange, 1, 1, 1), nullptr);
  EXPECT_EQ(loaded.PageCount(), 0U);
  EXPECT_NE(loaded.exchange->message->Length(), 0U);
}

TEST(PageBuilder, GreyRampsRunFromBlackToWhite) {
  const Loaded loaded = EmptyExchange();
  Page* page = AddPage(*loaded.exchange, 1, 1, 8);
  SetGrayRamp(*page, 256);
  EXPECT_EQ(page->palette[0], 0xFF000000U);
  EXPECT_EQ(page->palette[77], 0xFF4D4D4DU);
  EXPECT_EQ(page->palette[255], 0xFFFFFFFFU);
  EXPECT_EQ(page->grayscale, 1);
  SetGrayRamp(*page, 4);
  EXPECT_EQ(page->palette[1], 0xFF555555U);
  EXPECT_EQ(page->palette[3], 0xFFFFFFFFU);
  EXPECT_EQ(page->paletteEntries, 4U);
}

TEST(PageBuilder, ResolutionsWithoutSenseAre72) {
  EXPECT_EQ(CheckedDpi(0), 72.0);
  EXPECT_EQ(CheckedDpi(0.99), 72.0);
  EXPECT_EQ(CheckedDpi(1), 1.0);
  EXPECT_EQ(CheckedDpi(10000), 10000.0);
  EXPECT_EQ(CheckedDpi(10001), 72.0);
  EXPECT_EQ(CheckedDpi(-96), 72.0);
  EXPECT_EQ(CheckedDpi(std::numeric_limits<double>::quiet_NaN()), 72.0);
  EXPECT_NEAR(DpiFromMetre(3937), 100.0, 0.001);
  EXPECT_NEAR(DpiFromCentimetre(100), 254.0, 0.001);
}

TEST(PageBuilder, FileInformationHasTheFilesLength) {
  const test_support::TemporaryFolder folder;
  const std::string path = folder.Write("a.bin", "12345");
  const std::unique_ptr<glib::FileInfo> info(NewFileInfo(path.c_str(), 7, 1, 2, 8, 3, 72, 96));
  EXPECT_EQ(info->id, 7U);
  EXPECT_EQ(info->size, 5);
  EXPECT_EQ(info->pages, 3);
  EXPECT_EQ(info->dpiY, 96.0);
}

}  // namespace
}  // namespace modules
