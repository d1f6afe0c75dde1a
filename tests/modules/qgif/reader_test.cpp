#include <gtest/gtest.h>

#include <memory>
#include <numeric>

#include "modules/common/limits.h"
#include "modules/qgif/gif_structure.h"
#include "tests/modules/qgif/gif_fixture.h"

namespace {

using namespace qgif_test;

const Words kFour = {Rgb(1, 2, 3), Rgb(250, 0, 0), Rgb(0, 250, 0), Rgb(0, 0, 250)};

// Pages as the screens that an independent composition gives.
void ExpectSeen(const Bytes& bytes, const Exchange& exchange) {
  const support::GifFile file = support::ReadGif(bytes);
  ASSERT_TRUE(file.ok) << file.error;
  ASSERT_EQ(exchange.pages.count, file.pages.size());
  for (std::uint32_t i = 0; i < exchange.pages.count; ++i) {
    SCOPED_TRACE("page " + std::to_string(i));
    const modules::Page& page = *exchange.pages.At(i);
    ASSERT_EQ(page.width, static_cast<int>(file.width));
    ASSERT_EQ(page.height, static_cast<int>(file.height));
    EXPECT_EQ(page.delay, file.pages[i].delay);
    EXPECT_EQ(page.slideNumber, -1);
    EXPECT_EQ(page.visible, 1);
    ASSERT_EQ(SeenOf(page), file.pages[i].pixels);
  }
}

TEST(Reader, KeepsIndicesAndPaletteOfAStillPicture) {
  GifBuilder gif(5, 2, kFour, 49 + 64);
  gif.Control(7, 1, 2);
  gif.Frame(0, 0, 5, 2, {0, 1, 2, 3, 0, 3, 2, 1, 0, 2});
  Exchange exchange;
  ASSERT_EQ(qgif::LoadGif(gif.End(), exchange), glib::RCOK);
  ASSERT_EQ(exchange.pages.count, 1U);
  const modules::Page& page = *exchange.pages.At(0);
  EXPECT_EQ(page.bits, 8);
  EXPECT_EQ(Bytes(page.pixels, page.pixels + 16), (Bytes{0, 1, 2, 3, 0, 0, 0, 0, 3, 2, 1, 0, 2, 0, 0, 0}));
  EXPECT_EQ(page.palette[1], kFour[1]);
  EXPECT_EQ(page.palette[2], kFour[2] & 0x00FFFFFFU);
  EXPECT_EQ(page.palette[200], 0xFF000000U);
  EXPECT_EQ(page.paletteEntries, 4U);
  EXPECT_EQ(page.delay, 7U);
  EXPECT_DOUBLE_EQ(page.dpiX, 72.0);
  EXPECT_DOUBLE_EQ(page.dpiY, 144.0);
}

TEST(Reader, AStillPictureIsNotShownForNoTime) {
  GifBuilder gif(1, 1, kFour);
  gif.Control(0, 0);
  gif.Frame(0, 0, 1, 1, {1});
  Exchange exchange;
  ASSERT_EQ(qgif::LoadGif(gif.End(), exchange), glib::RCOK);
  EXPECT_EQ(exchange.pages.At(0)->delay, 10U);
}

TEST(Reader, DelaysOfAnimationsAreThoseOfTheFile) {
  GifBuilder gif(1, 1, kFour);
  for (const std::uint32_t delay : {0U, 65535U, 3U}) {
    gif.Control(delay, 0);
    gif.Frame(0, 0, 1, 1, {1});
  }
  Exchange exchange;
  ASSERT_EQ(qgif::LoadGif(gif.End(), exchange), glib::RCOK);
  ASSERT_EQ(exchange.pages.count, 3U);
  EXPECT_EQ(exchange.pages.At(0)->delay, 0U);
  EXPECT_EQ(exchange.pages.At(1)->delay, 65535U);
  EXPECT_EQ(exchange.pages.At(2)->delay, 3U);
}

// One colour table serves for all: every page stays at 8 bits, also where a frame is only a part or has holes.
TEST(Reader, OneTableKeepsCompositionsAtEightBits) {
  GifBuilder gif(6, 4, kFour);
  gif.Control(1, 1);
  gif.Frame(0, 0, 6, 4, Bytes(24, 1));
  gif.Control(2, 2, 0);
  gif.Frame(1, 1, 3, 2, {2, 0, 3, 0, 2, 2});
  gif.Control(3, 3, 3);
  gif.Frame(4, 2, 2, 2, {3, 2, 1, 3});
  gif.Control(4, 0);
  gif.Frame(5, 3, 1, 1, {2});
  Exchange exchange;
  ASSERT_EQ(qgif::LoadGif(gif.End(), exchange), glib::RCOK);
  ExpectSeen(gif.bytes, exchange);
  for (std::uint32_t i = 0; i < 4; ++i) EXPECT_EQ(exchange.pages.At(i)->bits, 8) << i;
  // All indices of the table are in use when something is cleared: one behind it is taken.
  EXPECT_EQ(exchange.pages.At(2)->palette[4] >> 24, 0U);
}

TEST(Reader, OtherTablesMakeTrueColorAndACoveringFrameEndsIt) {
  const Words other = {Rgb(9, 9, 9), Rgb(8, 8, 8)};
  GifBuilder gif(3, 3, kFour);
  gif.Control(1, 1);
  gif.Frame(0, 0, 3, 3, Bytes(9, 1));
  gif.Control(1, 1);
  gif.Frame(1, 1, 2, 1, {1, 0}, other);
  gif.Control(1, 1, 0);
  gif.Frame(0, 0, 3, 3, {0, 1, 1, 1, 1, 1, 1, 1, 1}, other);
  gif.Control(1, 1, 0);
  gif.Frame(0, 0, 3, 3, Bytes(9, 1), other);
  Exchange exchange;
  ASSERT_EQ(qgif::LoadGif(gif.End(), exchange), glib::RCOK);
  ExpectSeen(gif.bytes, exchange);
  const int bits[] = {8, 32, 32, 8};
  for (std::uint32_t i = 0; i < 4; ++i) EXPECT_EQ(exchange.pages.At(i)->bits, bits[i]) << i;
}

TEST(Reader, ScreensAndFramesOfUnequalSize) {
  struct {
    const char* name;
    std::uint32_t screenWidth, screenHeight, left, top, width, height;
    int pageWidth, pageHeight;
  } const cases[] = {{"screen without size", 0, 0, 0, 0, 3, 2, 3, 2},
                     {"frame larger than the screen", 2, 2, 0, 0, 3, 4, 3, 4},
                     {"wider only", 2, 8, 0, 0, 3, 4, 3, 4},
                     {"sticks out", 8, 8, 6, 7, 4, 3, 4, 3},
                     {"inside", 8, 9, 2, 3, 4, 3, 8, 9}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    GifBuilder gif(c.screenWidth, c.screenHeight, kFour);
    gif.Frame(c.left, c.top, c.width, c.height, Bytes(c.width * c.height, 2));
    Exchange exchange;
    ASSERT_EQ(qgif::LoadGif(gif.End(), exchange), glib::RCOK);
    EXPECT_EQ(exchange.pages.At(0)->width, c.pageWidth);
    EXPECT_EQ(exchange.pages.At(0)->height, c.pageHeight);
    const Words seen = SeenOf(*exchange.pages.At(0));
    EXPECT_EQ(std::count(seen.begin(), seen.end(), kFour[2]), c.width * c.height);
  }
}

TEST(Reader, FramesWithoutAreaAreLeftOut) {
  GifBuilder gif(2, 1, kFour);
  gif.Control(9, 2);
  gif.Frame(0, 0, 0, 0, {});
  gif.Frame(0, 0, 2, 1, {1, 2});
  gif.Frame(1, 0, 0, 1, {});
  Exchange exchange;
  ASSERT_EQ(qgif::LoadGif(gif.End(), exchange), glib::RCOK);
  ASSERT_EQ(exchange.pages.count, 1U);
  EXPECT_EQ(exchange.pages.At(0)->delay, 10U) << "the control block belonged to the frame before";
  EXPECT_EQ(SeenOf(*exchange.pages.At(0)), (Words{kFour[1], kFour[2]}));
}

TEST(Reader, WhatIsBehindTheLastCodeIsIgnored) {
  GifBuilder gif(2, 1, kFour);
  gif.Frame(0, 0, 2, 1, {1, 2, 3, 3, 3, 3, 1});
  gif.End();
  gif.bytes.insert(gif.bytes.end(), 300, 0x2C);
  Exchange exchange;
  ASSERT_EQ(qgif::LoadGif(gif.bytes, exchange), glib::RCOK);
  EXPECT_EQ(SeenOf(*exchange.pages.At(0)), (Words{kFour[1], kFour[2]}));
  EXPECT_TRUE(exchange.text.IsEmpty());
}

// Rows that are there stay, the missing ones are transparent, whatever the order of the rows is.
TEST(Reader, CutFramesKeepTheirWholeRows) {
  for (const bool interlaced : {false, true}) {
    Bytes pixels(10 * 9);
    std::iota(pixels.begin(), pixels.end(), std::uint8_t{0});
    Words table(128);
    for (std::uint32_t i = 0; i < 128; ++i) table[i] = Rgb(i, 2 * i, 1);
    pixels.resize(10 * 3 + 4);
    GifBuilder gif(10, 9, table);
    gif.Frame(0, 0, 10, 9, pixels, {}, interlaced);
    Exchange exchange;
    ASSERT_EQ(qgif::LoadGif(gif.End(), exchange), glib::RCOK);
    EXPECT_FALSE(exchange.text.IsEmpty());
    Words expected(90, 0);
    for (std::uint32_t i = 0; i < 3; ++i) {
      const std::uint32_t y = interlaced ? std::vector<std::uint32_t>{0, 8, 4}[i] : i;
      for (std::uint32_t x = 0; x < 10; ++x) expected[y * 10 + x] = table[i * 10 + x];
    }
    EXPECT_EQ(SeenOf(*exchange.pages.At(0)), expected) << interlaced;
    EXPECT_EQ(exchange.pages.At(0)->bits, 8);
  }
}

TEST(Reader, NothingDecodedIsAFailure) {
  GifBuilder gif(10, 9, kFour);
  gif.Frame(0, 0, 10, 9, Bytes(9, 1));
  const Bytes good = gif.End();
  for (const Bytes& bytes : {good, Bytes{}, Bytes{'G', 'I', 'F', '8', '9', 'a'}, GifBuilder(3, 3, kFour).End(),
                             Bytes(good.begin(), good.begin() + 20)}) {
    Exchange exchange;
    EXPECT_EQ(qgif::LoadGif(bytes, exchange), glib::IERR);
    EXPECT_FALSE(exchange.text.IsEmpty());
    EXPECT_EQ(exchange.pages.count, 0U);
  }
}

// Random frames of all kinds against giflib and the plain rules of composition.
TEST(Reader, RandomAnimationsAreSeenAsTheyShould) {
  for (std::uint32_t seed = 0; seed < 60; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const std::uint32_t width = 1 + Below(random, 20);
    const std::uint32_t height = 1 + Below(random, 20);
    Words tables[3];
    for (Words& table : tables) {
      table.resize(std::size_t{2} << Below(random, 8));
      for (std::uint32_t& word : table) word = 0xFF000000U | Below(random, 1U << 24);
    }
    const std::uint32_t localTables = seed % 3;  // 0: the global one serves for all frames
    GifBuilder gif(width, height, tables[0]);
    for (std::uint32_t i = 1 + Below(random, 9); i-- > 0;) {
      const bool covers = Below(random, 3) == 0;
      const std::uint32_t left = covers ? 0 : Below(random, width);
      const std::uint32_t top = covers ? 0 : Below(random, height);
      const std::uint32_t w = covers ? width : 1 + Below(random, width - left);
      const std::uint32_t h = covers ? height : 1 + Below(random, height - top);
      const std::uint32_t number = localTables == 0 ? 0 : Below(random, 3);
      const auto colors = static_cast<std::uint32_t>(tables[number].size());
      Bytes pixels(std::size_t{w} * h);
      for (std::uint8_t& pixel : pixels) pixel = static_cast<std::uint8_t>(Below(random, Below(random, colors) + 1));
      const int transparent = Below(random, 3) == 0 ? -1 : static_cast<int>(Below(random, std::min(colors, 4U)));
      gif.Control(Below(random, 300), Below(random, 4), transparent);
      gif.Frame(left, top, w, h, pixels, number == 0 ? Words() : tables[number], Below(random, 2) == 0);
    }
    gif.End();
    Exchange exchange;
    ASSERT_EQ(qgif::LoadGif(gif.bytes, exchange), glib::RCOK) << exchange.text.c_str();
    if (exchange.pages.count == 1) exchange.pages.At(0)->delay = support::ReadGif(gif.bytes).pages[0].delay;
    ExpectSeen(gif.bytes, exchange);
  }
}

TEST(Reader, FileInformationNeedsNoDecoding) {
  const TemporaryFolder folder;
  struct {
    const char* name;
    Words global;
    Words local;
    int bits;
  } const cases[] = {{"global table", kFour, {}, 2},
                     {"both", Words(256, 0), kFour, 8},
                     {"local only", {}, Words(17, 0), 5},
                     {"none", {}, {}, 8}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    GifBuilder gif(7, 5, c.global, 17);
    gif.Frame(0, 0, 7, 5, {}, c.local);  // no pixels: nobody is to look
    gif.Frame(0, 0, 0, 0, {}, c.local);
    gif.Frame(0, 0, 8, 2, {}, c.local);
    gif.End();
    const std::string path = folder.Write("a.gif", {reinterpret_cast<const char*>(gif.bytes.data()), gif.bytes.size()});
    glib::FileInfo* info = nullptr;
    ASSERT_EQ(qgif::ReadGifInfo(path.c_str(), gif.bytes, glib::kGifFormatId, &info), glib::RCOK);
    const std::unique_ptr<glib::FileInfo> owner(info);
    EXPECT_EQ(info->width, 8);
    EXPECT_EQ(info->height, 5);
    EXPECT_EQ(info->bits(), c.bits);
    EXPECT_EQ(info->pages, 2);
    EXPECT_EQ(info->size, static_cast<int>(gif.bytes.size()));
    EXPECT_EQ(info->id, glib::kGifFormatId);
    EXPECT_DOUBLE_EQ(info->dpiX, 72.0);
    EXPECT_DOUBLE_EQ(info->dpiY, 36.0);
  }
}

TEST(Reader, LimitsAreKept) {
  struct {
    const char* name;
    std::uint32_t screen, frame, frames, result;
  } const cases[] = {{"most frames", 1, 1, modules::kMaxPages, glib::RCOK},
                     {"a frame too many", 1, 1, modules::kMaxPages + 1, glib::NSUP},
                     {"ten thousand frames", 1, 1, 10000, glib::NSUP},
                     {"a page too large", 65535, 1, 1, glib::NSUP},
                     {"a frame too large", 1, 65535, 1, glib::NSUP}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    GifBuilder gif(c.screen, c.screen, kFour);
    for (std::uint32_t i = 0; i < c.frames; ++i) gif.Frame(0, 0, c.frame, c.frame, {1}, {}, false, 2);
    Exchange exchange;
    EXPECT_EQ(qgif::LoadGif(gif.End(), exchange), c.result);
    EXPECT_EQ(exchange.text.IsEmpty(), c.result == glib::RCOK);
    EXPECT_EQ(exchange.pages.count, c.result == glib::RCOK ? c.frames : 0);
  }
}

// A host without memory for the third page gets none.
TEST(Reader, AFailureLeavesNoPages) {
  GifBuilder gif(3, 3, kFour);
  for (int i = 0; i < 4; ++i) gif.Frame(0, 0, 3, 3, Bytes(9, 1));
  static int left;
  left = 2;
  Exchange exchange;
  exchange.AllocateRaster = [](std::uint32_t width, std::uint32_t height, std::uint32_t bits) {
    return left-- > 0 ? glib::AllocateRaster(width, height, bits) : nullptr;
  };
  EXPECT_NE(qgif::LoadGif(gif.End(), exchange), glib::RCOK);
  EXPECT_EQ(exchange.pages.count, 0U);
  EXPECT_FALSE(exchange.text.IsEmpty());
}

}  // namespace
