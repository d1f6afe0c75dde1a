#include <gtest/gtest.h>

#include <sys/resource.h>

#include <csignal>
#include <numeric>

#include "modules/qgif/color_index.h"
#include "tests/modules/qgif/gif_fixture.h"

namespace {

using namespace qgif_test;

glib::GIFSave Settings(int paletteItems = 256) {
  glib::GIFSave settings;
  settings.paletteItems = paletteItems;
  return settings;
}

support::GifFile Reread(const Exchange& exchange, const glib::GIFSave& settings) {
  const Bytes bytes = SaveToBytes(exchange, settings);
  support::GifFile file = support::ReadGif(bytes);
  EXPECT_TRUE(file.ok) << file.error;
  EXPECT_EQ(bytes.back(), 0x3B);
  // Our own reader sees the same.
  Exchange again;
  EXPECT_EQ(qgif::LoadGif(bytes, again), glib::RCOK);
  EXPECT_TRUE(again.text.IsEmpty()) << again.text.c_str();
  EXPECT_EQ(again.pages.count, file.pages.size());
  for (std::uint32_t i = 0; i < again.pages.count && i < file.pages.size(); ++i) {
    EXPECT_EQ(SeenOf(*again.pages.At(i)), file.pages[i].pixels) << "page " << i;
  }
  return file;
}

void FillRandom(modules::Page& page, std::mt19937& random, std::uint32_t colors, bool holes) {
  for (std::uint32_t& word : page.palette) word = 0xFF000000U | Below(random, 1U << 24);
  Words words(colors);
  for (std::uint32_t& word : words) word = 0xFF000000U | Below(random, 1U << 24);
  if (holes) page.palette[Below(random, std::min(colors, 1U << std::min(page.bits, 8)))] &= 0xFFFFFFU;
  if (holes) words[0] &= 0xFFFFFFU;
  for (std::uint32_t y = 0; y < static_cast<std::uint32_t>(page.height); ++y) {
    for (std::uint32_t x = 0; x < static_cast<std::uint32_t>(page.width); ++x) {
      if (page.bits <= 8) SetIndex(page, x, y, Below(random, std::min(colors, 1U << page.bits)));
      if (page.bits > 8) SetWord(page, x, y, words[Below(random, colors)]);
    }
  }
}

// What fits is stored exactly: all depths, odd sizes, all numbers of colours.
TEST(Writer, KeepsPagesWhoseColorsFit) {
  for (std::uint32_t seed = 0; seed < 120; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const std::uint32_t depths[] = {1, 4, 8, 24, 32};
    const std::uint32_t bits = depths[seed % 5];
    Exchange exchange;
    modules::Page& page = AddPage(exchange, 1 + Below(random, 40), 1 + Below(random, 30), bits);
    const std::uint32_t colors = 2 + Below(random, 255);
    FillRandom(page, random, colors, bits != 24 && Below(random, 2) == 0);
    page.delay = Below(random, 1000);
    glib::GIFSave settings = Settings(static_cast<int>(bits <= 8 ? std::min(colors, 1U << bits) : colors));
    settings.interlace = Below(random, 2) == 0;
    settings.dither = 1;
    const support::GifFile file = Reread(exchange, settings);
    ASSERT_EQ(file.pages.size(), 1U);
    ASSERT_EQ(file.pages[0].pixels, SeenOf(page));
    EXPECT_EQ(file.pages[0].delay, page.delay);
    EXPECT_EQ(file.frames[0].interlaced, settings.interlace != 0);
    EXPECT_EQ(file.loops, -1);
    EXPECT_LT(file.globalPalette.size(), 2U * static_cast<std::uint32_t>(settings.paletteItems));
  }
}

TEST(Writer, AnIndexedPageKeepsItsIndicesUpToTheHighestInUse) {
  Exchange exchange;
  modules::Page& page = AddPage(exchange, 3, 1, 8);
  const std::uint8_t indices[] = {5, 0, 5};
  std::copy_n(indices, 3, page.pixels);
  for (std::uint32_t i = 0; i < 256; ++i) page.palette[i] = Rgb(i, 7, 9);
  const support::GifFile file = Reread(exchange, Settings());
  EXPECT_EQ(file.frames[0].indices, (Bytes{5, 0, 5}));
  ASSERT_EQ(file.globalPalette.size(), 8U);
  for (std::uint32_t i = 0; i < 6; ++i) EXPECT_EQ(file.globalPalette[i], page.palette[i]) << i;
  EXPECT_EQ(file.frames[0].transparent, -1);
}

TEST(Writer, TransparentIndexOfTheSettings) {
  Exchange exchange;
  modules::Page& page = AddPage(exchange, 4, 1, 8);
  const std::uint8_t indices[] = {0, 255, 9, 255};
  std::copy_n(indices, 4, page.pixels);
  for (std::uint32_t i = 0; i < 256; ++i) page.palette[i] = Rgb(i, 7, 9);
  glib::GIFSave settings = Settings();
  settings.transparentIndex = 255;
  support::GifFile file = Reread(exchange, settings);
  EXPECT_EQ(file.frames[0].transparent, 255);
  EXPECT_EQ(file.pages[0].pixels, (Words{page.palette[0], 0, page.palette[9], 0}));
  // Several entries without colour become one index.
  page.palette[9] = 0x00010203;
  file = Reread(exchange, settings);
  EXPECT_EQ(file.pages[0].pixels, (Words{page.palette[0], 0, 0, 0}));
  // Fewer entries than the highest index: the colours count.
  settings.paletteItems = 2;
  file = Reread(exchange, settings);
  EXPECT_EQ(file.globalPalette.size(), 2U);
  EXPECT_EQ(file.pages[0].pixels, (Words{page.palette[0], 0, 0, 0}));
  // True colour has no indices.
  Exchange direct;
  SetWord(AddPage(direct, 1, 1, 24), 0, 0, Rgb(1, 2, 3));
  settings.transparentIndex = 0;
  EXPECT_EQ(Reread(direct, settings).pages[0].pixels, Words{Rgb(1, 2, 3)});
}

TEST(Writer, OnlyAlphaZeroIsTransparent) {
  Exchange exchange;
  modules::Page& page = AddPage(exchange, 4, 1, 32);
  const std::uint32_t words[] = {0x00112233, 0x01112233, 0xFF000000, 0x80112233};
  for (std::uint32_t x = 0; x < 4; ++x) SetWord(page, x, 0, words[x]);
  const support::GifFile file = Reread(exchange, Settings(3));
  EXPECT_EQ(file.pages[0].pixels, (Words{0, 0xFF112233, 0xFF000000, 0xFF112233}));
}

TEST(Writer, Grayscale) {
  const std::uint32_t colors[] = {Rgb(255, 0, 0), Rgb(0, 255, 0), Rgb(0, 0, 255), Rgb(255, 255, 255), Rgb(10, 200, 30)};
  // (77 red + 150 green + 29 blue) / 256, cut.
  const std::uint32_t levels[] = {76, 149, 28, 255, 123};
  for (const std::uint32_t bits : {8U, 24U, 32U}) {
    Exchange exchange;
    modules::Page& page = AddPage(exchange, 5, 1, bits);
    for (std::uint32_t x = 0; x < 5; ++x) {
      page.palette[x] = colors[x];
      if (bits == 8) SetIndex(page, x, 0, x);
      if (bits != 8) SetWord(page, x, 0, colors[x]);
    }
    glib::GIFSave settings = Settings();
    settings.grayscale = 1;
    const support::GifFile file = Reread(exchange, settings);
    for (std::uint32_t x = 0; x < 5; ++x) {
      EXPECT_EQ(file.pages[0].pixels[x], Rgb(levels[x], levels[x], levels[x])) << bits << " " << x;
    }
  }
}

// More colours than allowed: never more entries than asked for, transparent pixels stay, nothing else becomes so, and
// what is seen is near to what was meant.
TEST(Writer, ReducesColors) {
  for (int items = 2; items <= 256; ++items) {
    for (const bool dither : {false, true}) {
      SCOPED_TRACE(std::to_string(items) + (dither ? " dithered" : ""));
      Exchange exchange;
      modules::Page& page = AddPage(exchange, 61, 47, 32);
      for (std::uint32_t y = 0; y < 47; ++y) {
        for (std::uint32_t x = 0; x < 61; ++x) {
          SetWord(page, x, y, x * y % 7 == 3 ? 0x00123456U : Rgb(x * 4, y * 5, 255 - 2 * x - 2 * y));
        }
      }
      glib::GIFSave settings = Settings(items);
      settings.dither = dither;
      const support::GifFile file = Reread(exchange, settings);
      qgif::ColorIndex used;
      double error = 0;
      const Words meant = SeenOf(page);
      const Words& seen = file.pages[0].pixels;
      for (std::size_t i = 0; i < meant.size(); ++i) {
        ASSERT_EQ(meant[i] == 0, seen[i] == 0) << i;
        ASSERT_TRUE(used.Add(seen[i], static_cast<std::uint32_t>(items)));
        for (const int shift : {0, 8, 16}) {
          const double off =
              static_cast<double>(meant[i] >> shift & 255U) - static_cast<double>(seen[i] >> shift & 255U);
          error += off * off;
        }
      }
      // A cube of colours with the side of two of these faces, cut into as many boxes, has at most this error.
      const double limit = 3.0 * 100 * 100 / std::max(1.0, (items - 1) / 2.0);
      EXPECT_LT(error / static_cast<double>(meant.size()), dither ? 2 * limit : limit);
    }
  }
}

// A palette page with more entries than allowed whose colours in use fit all the same.
TEST(Writer, CountsColorsAndNotIndices) {
  Exchange exchange;
  modules::Page& page = AddPage(exchange, 16, 16, 8);
  for (std::uint32_t i = 0; i < 256; ++i) {
    page.palette[i] = Rgb(i % 3, 5, 5);
    SetIndex(page, i % 16, i / 16, i);
  }
  const support::GifFile file = Reread(exchange, Settings(3));
  EXPECT_EQ(file.globalPalette.size(), 4U);
  EXPECT_EQ(file.pages[0].pixels, SeenOf(page));
}

TEST(Writer, PaletteItemsOutsideTheRange) {
  for (const int items : {-5, 0, 1, 2, 256, 257, 100000}) {
    Exchange exchange;
    std::mt19937 random(3);
    FillRandom(AddPage(exchange, 60, 60, 24), random, 300, false);
    const support::GifFile file = Reread(exchange, Settings(items));
    // 0: nobody set a number.
    EXPECT_EQ(file.globalPalette.size(), items <= 2 && items != 0 ? 2U : 256U) << items;
  }
}

TEST(Writer, AspectByte) {
  struct {
    double dpiX, dpiY, pageX, pageY;
    std::uint32_t aspect;
  } const cases[] = {{0, 0, 72, 72, 0},    {0, 0, 72, 144, 113}, {144, 72, 72, 144, 17}, {0, 72, 144, 9, 17},
                     {1, 1000, 0, 0, 255}, {1000, 1, 0, 0, 1},   {-3, 5, 0, 0, 0},       {0, 0, 0, 0, 0},
                     {300, 300, 0, 0, 0},  {100, 90, 0, 0, 43}};
  for (const auto& c : cases) {
    Exchange exchange;
    modules::Page& page = AddPage(exchange, 1, 1, 8);
    page.dpiX = c.pageX;
    page.dpiY = c.pageY;
    glib::GIFSave settings;
    settings.dpiX = c.dpiX;
    settings.dpiY = c.dpiY;
    EXPECT_EQ(Reread(exchange, settings).aspect, c.aspect) << c.dpiX << " " << c.dpiY;
  }
}

TEST(Writer, RefusesWhatAGifCantHold) {
  struct {
    int bits, width, height;
    std::uint32_t result;
  } const cases[] = {{0, 10, 10, glib::NSUP},   {-1, 10, 10, glib::NSUP}, {16, 10, 10, glib::NSUP},
                     {8, 65536, 1, glib::NSUP}, {8, 0, 1, glib::NSUP},    {8, 1, -3, glib::NSUP},
                     {8, 65535, 1, glib::RCOK}, {8, 1, 65535, glib::RCOK}};
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.bits) + " " + std::to_string(c.width));
    const TemporaryFolder folder;
    Exchange exchange;
    AddPage(exchange, 65535, 1, 8);
    modules::Page& page = AddPage(exchange, 65535, 1, 8);
    page.bits = c.bits;
    page.width = c.width;
    page.height = c.height;
    if (c.height == 65535) page.pixels = (page.Release(), page.bits = c.bits, glib::AllocateRaster(1, 65535, 8));
    EXPECT_EQ(qgif::SaveGif(folder.Path("a.gif").c_str(), exchange, Settings()), c.result);
    EXPECT_EQ(exchange.text.IsEmpty(), c.result == glib::RCOK);
    EXPECT_EQ(std::filesystem::exists(folder.Native() / "a.gif"), c.result == glib::RCOK);
  }
  const TemporaryFolder folder;
  Exchange empty;
  EXPECT_EQ(qgif::SaveGif(folder.Path("a.gif").c_str(), empty, Settings()), glib::IERR);
}

// Settings of another kind than those of GIF say what they can.
TEST(Writer, PlainSettings) {
  Exchange exchange;
  std::mt19937 random(4);
  FillRandom(AddPage(exchange, 9, 9, 24), random, 50, false);
  const TemporaryFolder folder;
  glib::BaseFormatDesc settings(glib::kGifFormatId);
  ASSERT_EQ(qgif::SaveGif(folder.Path("a.gif").c_str(), exchange, settings), glib::RCOK);
  EXPECT_EQ(support::ReadGif(BytesOf(folder.Read("a.gif"))).pages[0].pixels, SeenOf(*exchange.pages.At(0)));
}

TEST(Writer, AFailureLeavesNoNewFile) {
  Exchange exchange;
  std::mt19937 random(4);
  FillRandom(AddPage(exchange, 700, 700, 8), random, 256, false);
  const TemporaryFolder folder;
  EXPECT_EQ(qgif::SaveGif(folder.Path("none\\a.gif").c_str(), exchange, Settings()), glib::IERR);
  EXPECT_FALSE(exchange.text.IsEmpty());
  EXPECT_EQ(qgif::SaveGif("", exchange, Settings()), glib::IERR);
  EXPECT_EQ(qgif::SaveGif(folder.Path("").c_str(), exchange, Settings()), glib::IERR);

  // The file grows to a limit of the system in the midst of the codes.
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  const rlimit small{300000, before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &small);
  const std::uint32_t result = qgif::SaveGif(folder.Path("a.gif").c_str(), exchange, Settings());
  setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ(result, glib::IERR);
  EXPECT_FALSE(std::filesystem::exists(folder.Native() / "a.gif"));
  EXPECT_EQ(qgif::SaveGif(folder.Path("a.gif").c_str(), exchange, Settings()), glib::RCOK);
}

}  // namespace
