#include <gtest/gtest.h>

#include "tests/modules/qgif/gif_fixture.h"

namespace {

using namespace qgif_test;

// How pages of an animation are made.
enum class Sizes { kEqual, kUnequal };

struct AnimationCase {
  const char* name;
  std::uint32_t bits;
  std::uint32_t colors;
  bool holes;
  Sizes sizes;
};

std::ostream& operator<<(std::ostream& stream, const AnimationCase& c) { return stream << c.name; }

// Something moves over a ground that stays: a part of each page is drawn anew.
void MakePages(Exchange& exchange, const AnimationCase& c, std::mt19937& random) {
  const std::uint32_t width = 1 + Below(random, 30);
  const std::uint32_t height = 1 + Below(random, 30);
  Words words(c.colors);
  for (std::uint32_t& word : words) word = 0xFF000000U | Below(random, 1U << 24);
  if (c.holes) words[Below(random, c.colors)] &= 0xFFFFFFU;
  std::vector<std::uint32_t> ground(40 * 40);
  for (std::uint32_t& number : ground) number = Below(random, c.colors);
  for (std::uint32_t i = 2 + Below(random, 6); i-- > 0;) {
    const bool own = c.sizes == Sizes::kUnequal;
    modules::Page& page =
        AddPage(exchange, own ? 1 + Below(random, 40) : width, own ? 1 + Below(random, 40) : height, c.bits);
    page.delay = Below(random, 70000);
    std::copy(words.begin(), words.end(), page.palette);
    const std::uint32_t left = Below(random, 40);
    const std::uint32_t top = Below(random, 40);
    for (std::uint32_t y = top; y < std::min(40U, top + Below(random, 20)); ++y) {
      for (std::uint32_t x = left; x < std::min(40U, left + 12); ++x) {
        ground[y * 40 + x] = Below(random, Below(random, c.colors) + 1);
      }
    }
    for (std::uint32_t y = 0; y < static_cast<std::uint32_t>(page.height); ++y) {
      for (std::uint32_t x = 0; x < static_cast<std::uint32_t>(page.width); ++x) {
        if (c.bits <= 8) SetIndex(page, x, y, ground[y * 40 + x]);
        if (c.bits > 8) SetWord(page, x, y, words[ground[y * 40 + x]]);
      }
    }
  }
}

support::GifFile Reread(const Exchange& exchange, const glib::GIFSave& settings, Bytes& bytes) {
  bytes = SaveToBytes(exchange, settings);
  support::GifFile file = support::ReadGif(bytes);
  EXPECT_TRUE(file.ok) << file.error;
  EXPECT_EQ(file.loops, 0);
  EXPECT_EQ(file.pages.size(), exchange.pages.count);
  return file;
}

class Animation : public testing::TestWithParam<AnimationCase> {};

// What is seen of each page is the page, in all four ways to write it, and our own reader sees it too.
TEST_P(Animation, IsSeenAsItsPages) {
  for (std::uint32_t seed = 0; seed < 25; ++seed) {
    std::mt19937 random(seed);
    Exchange exchange;
    MakePages(exchange, GetParam(), random);
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    for (std::uint32_t i = 0; i < exchange.pages.count; ++i) {
      width = std::max(width, static_cast<std::uint32_t>(exchange.pages.At(i)->width));
      height = std::max(height, static_cast<std::uint32_t>(exchange.pages.At(i)->height));
    }
    for (int way = 0; way < 4; ++way) {
      SCOPED_TRACE("seed " + std::to_string(seed) + " way " + std::to_string(way));
      glib::GIFSave settings;
      settings.nfi = way % 2 != 0;
      settings.interlace = way >= 2;
      Bytes bytes;
      const support::GifFile file = Reread(exchange, settings, bytes);
      ASSERT_EQ(file.width, width);
      ASSERT_EQ(file.height, height);
      Exchange again;
      ASSERT_EQ(qgif::LoadGif(bytes, again), glib::RCOK);
      ASSERT_EQ(again.pages.count, exchange.pages.count);
      for (std::uint32_t i = 0; i < exchange.pages.count; ++i) {
        SCOPED_TRACE("page " + std::to_string(i));
        const modules::Page& page = *exchange.pages.At(i);
        EXPECT_EQ(file.pages[i].delay, std::min(page.delay, 65535U));
        ASSERT_EQ(file.pages[i].pixels, OnScreen(SeenOf(page), static_cast<std::uint32_t>(page.width), width, height));
        ASSERT_EQ(SeenOf(*again.pages.At(i)), file.pages[i].pixels);
        if (way % 2 != 0) continue;
        EXPECT_EQ(file.frames[i].width, static_cast<std::uint32_t>(page.width)) << "without nfi pages are whole";
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Pages, Animation,
                         testing::Values(AnimationCase{"few", 32, 5, false, Sizes::kEqual},
                                         AnimationCase{"fewHoles", 32, 5, true, Sizes::kEqual},
                                         AnimationCase{"fewUnequal", 32, 4, true, Sizes::kUnequal},
                                         AnimationCase{"all", 24, 256, false, Sizes::kEqual},
                                         AnimationCase{"allHoles", 32, 256, true, Sizes::kEqual},
                                         AnimationCase{"allUnequal", 24, 256, false, Sizes::kUnequal},
                                         AnimationCase{"indexed", 8, 256, false, Sizes::kEqual},
                                         AnimationCase{"indexedHoles", 8, 16, true, Sizes::kEqual},
                                         AnimationCase{"indexedUnequal", 8, 255, true, Sizes::kUnequal},
                                         AnimationCase{"four", 4, 16, true, Sizes::kEqual},
                                         AnimationCase{"oneBit", 1, 2, false, Sizes::kEqual},
                                         AnimationCase{"oneBitHoles", 1, 2, true, Sizes::kUnequal}),
                         [](const auto& suite) { return std::string(suite.param.name); });

// Each page has 200 colours of its own, so that no table holds them all: exactness takes tables of their own.
TEST(AnimationTables, PagesWithOtherColorsHaveOwnTables) {
  for (const std::uint32_t bits : {8U, 24U}) {
    Exchange exchange;
    for (std::uint32_t i = 0; i < 3; ++i) {
      modules::Page& page = AddPage(exchange, 20, 10, bits);
      for (std::uint32_t k = 0; k < 200; ++k) {
        page.palette[k] = Rgb(k, 80 * i, k / 2);
        if (bits == 8) SetIndex(page, k % 20, k / 20, k);
        if (bits != 8) SetWord(page, k % 20, k / 20, page.palette[k]);
      }
    }
    for (const bool nfi : {false, true}) {
      glib::GIFSave settings;
      settings.nfi = nfi;
      Bytes bytes;
      const support::GifFile file = Reread(exchange, settings, bytes);
      for (std::uint32_t i = 0; i < 3; ++i) {
        EXPECT_EQ(file.pages[i].pixels, SeenOf(*exchange.pages.At(i))) << bits << " " << i;
        EXPECT_EQ(file.frames[i].localTable, i != 0);
      }
    }
  }
}

// Pages that agree in their palettes share the global table, and no index changes.
TEST(AnimationTables, EqualPalettesStayAsTheyAre) {
  Exchange exchange;
  for (std::uint32_t i = 0; i < 3; ++i) {
    modules::Page& page = AddPage(exchange, 4, 1, 8);
    for (std::uint32_t k = 0; k < 256; ++k) page.palette[k] = Rgb(k, k, 1);
    for (std::uint32_t x = 0; x < 4; ++x) SetIndex(page, x, 0, 10 * i + x);
  }
  Bytes bytes;
  const support::GifFile file = Reread(exchange, glib::GIFSave(), bytes);
  EXPECT_EQ(file.globalPalette.size(), 32U);
  for (std::uint32_t i = 0; i < 3; ++i) {
    EXPECT_FALSE(file.frames[i].localTable);
    EXPECT_EQ(file.frames[i].indices[1], 10 * i + 1);
  }
}

// A page too rich in colours makes an adaptive palette; a plain one beside it stays exact all the same. Where nothing
// changes in the source nothing changes on the screen, however it was dithered.
TEST(AnimationTables, ReducedPagesAreSteady) {
  Exchange exchange;
  for (std::uint32_t i = 0; i < 4; ++i) {
    modules::Page& page = AddPage(exchange, 50, 50, 24);
    for (std::uint32_t y = 0; y < 50; ++y) {
      for (std::uint32_t x = 0; x < 50; ++x) {
        const bool moves = x - 10 * i < 8 && y < 20;
        SetWord(page, x, y, moves ? Rgb(255, 255, 5 * y) : Rgb(x * 5, y * 5, x + y));
      }
    }
  }
  modules::Page& plain = AddPage(exchange, 50, 50, 24);
  for (std::uint32_t y = 0; y < 50; ++y) {
    for (std::uint32_t x = 0; x < 50; ++x) SetWord(plain, x, y, Rgb(x / 25 * 99, y / 25 * 77, 1));
  }
  for (const int items : {4, 30, 255}) {
    glib::GIFSave settings;
    settings.nfi = 1;
    settings.paletteItems = items;
    Bytes bytes;
    const support::GifFile file = Reread(exchange, settings, bytes);
    for (std::uint32_t i = 1; i < 4; ++i) {
      const Words before = SeenOf(*exchange.pages.At(i - 1));
      const Words now = SeenOf(*exchange.pages.At(i));
      for (std::size_t k = 0; k < now.size(); ++k) {
        if (now[k] != before[k]) continue;
        ASSERT_EQ(file.pages[i].pixels[k], file.pages[i - 1].pixels[k]) << i << " " << k;
      }
      EXPECT_LE(file.frames[i].height, 20U);
      EXPECT_LE(file.frames[i].width, 18U);
    }
    EXPECT_EQ(file.pages[4].pixels, SeenOf(plain)) << items;
    settings.nfi = 0;
    Bytes whole;
    Reread(exchange, settings, whole);
    EXPECT_LT(bytes.size(), whole.size());
  }
}

// What is drawn is no more than what changes; a page without a change is a frame of one pixel.
TEST(AnimationFrames, OnlyChangesAreStored) {
  Exchange exchange;
  for (std::uint32_t i = 0; i < 4; ++i) {
    modules::Page& page = AddPage(exchange, 40, 30, 8);
    for (std::uint32_t k = 0; k < 256; ++k) page.palette[k] = Rgb(k, k, k);
    std::fill_n(page.pixels, 40 * 30, std::uint8_t{9});
    if (i >= 2) page.pixels[7 * 40 + 5] = 3;
    if (i >= 2) page.pixels[12 * 40 + 30] = 4;
  }
  glib::GIFSave settings;
  settings.nfi = 1;
  Bytes bytes;
  const support::GifFile file = Reread(exchange, settings, bytes);
  const std::uint32_t expected[][4] = {{0, 0, 40, 30}, {0, 0, 1, 1}, {5, 7, 26, 6}, {0, 0, 1, 1}};
  for (std::uint32_t i = 0; i < 4; ++i) {
    const support::GifFrame& frame = file.frames[i];
    EXPECT_EQ((Words{frame.left, frame.top, frame.width, frame.height}),
              Words(std::begin(expected[i]), std::end(expected[i])))
        << i;
    EXPECT_EQ(frame.disposal, 1U);
  }
}

// With a loss, what is at most so far off stays as it is shown; the error never adds up over pages.
TEST(AnimationFrames, LossLeavesSmallChangesOut) {
  for (const std::uint32_t bits : {8U, 24U}) {
    Exchange exchange;
    for (std::uint32_t i = 0; i < 8; ++i) {
      modules::Page& page = AddPage(exchange, 3, 1, bits);
      const Words colors = {Rgb(100 + 2 * i, 100, 100), Rgb(3, 4 + i, 5), i == 4 ? 0x00FFFFFFU : Rgb(9, 9, 9)};
      for (std::uint32_t x = 0; x < 3; ++x) {
        page.palette[x] = colors[x];
        if (bits == 8) SetIndex(page, x, 0, x);
        if (bits != 8) SetWord(page, x, 0, colors[x]);
      }
    }
    glib::GIFSave settings;
    settings.nfi = 1;
    settings.quantize = 58;
    Bytes bytes;
    const support::GifFile file = Reread(exchange, settings, bytes);
    for (std::uint32_t i = 0; i < 8; ++i) {
      SCOPED_TRACE(std::to_string(bits) + " " + std::to_string(i));
      const bool hole = bits == 8 && i == 4;
      // 2 a page: every third page goes past 5.
      EXPECT_LE((SeenOf(*exchange.pages.At(i))[0] - file.pages[i].pixels[0]) >> 16, 5U);
      EXPECT_EQ(file.pages[i].pixels[2] == 0, hole);
    }
    EXPECT_EQ(file.pages[2].pixels[0], Rgb(100, 100, 100));
    EXPECT_EQ(file.pages[3].pixels[0], Rgb(106, 100, 100));
    EXPECT_EQ(file.pages[3].pixels[1], Rgb(3, 4, 5));
    settings.quantize = 8;
    EXPECT_EQ(Reread(exchange, settings, bytes).pages[1].pixels[0], Rgb(102, 100, 100));
  }
}

// Without dither or loss a page of a reduced animation is seen the same whether it is stored whole or by its changes.
TEST(AnimationFrames, ChangesShowWhatWholePagesShow) {
  for (std::uint32_t seed = 0; seed < 12; ++seed) {
    std::mt19937 random(seed);
    const bool holes = seed % 3 == 0;
    Exchange exchange;
    for (std::uint32_t i = 0; i < 5; ++i) {
      modules::Page& page = AddPage(exchange, 60, 45, 32);
      const std::uint32_t left = Below(random, 60);
      for (std::uint32_t y = 0; y < 45; ++y) {
        for (std::uint32_t x = 0; x < 60; ++x) {
          const bool moves = x - left < 25 && y < 30;
          const std::uint32_t word =
              moves ? Rgb(255 - 3 * y, Below(random, 64), 9 * (x - left)) : Rgb(x * 4, y * 5, 80);
          SetWord(page, x, y, holes && moves && (x + y) % 9 == 0 ? 0 : word);
        }
      }
    }
    glib::GIFSave settings;
    settings.dither = 0;
    settings.paletteItems = static_cast<std::int32_t>(2 + Below(random, 255));
    settings.interlace = seed % 2;
    Bytes bytes;
    const support::GifFile whole = Reread(exchange, settings, bytes);
    settings.nfi = 1;
    const support::GifFile changes = Reread(exchange, settings, bytes);
    for (std::size_t i = 0; i < 5; ++i) ASSERT_EQ(changes.pages[i].pixels, whole.pages[i].pixels) << seed << " " << i;
  }
}

// The colours that small changes need have low indices, although the first page has them last and least.
TEST(AnimationFrames, SmallChangesHaveShortCodes) {
  for (const std::uint32_t colors : {250U, 20000U}) {
    Exchange exchange;
    for (std::uint32_t i = 0; i < 6; ++i) {
      modules::Page& page = AddPage(exchange, 200, 100, 24);
      for (std::uint32_t k = 0; k < 20000; ++k) {
        const std::uint32_t number = k % colors % 20000;
        SetWord(page, k % 200, k / 200, Rgb(number % 250, number / 250 * 3, 0));
      }
      for (std::uint32_t x = 0; i != 0 && x < 20; ++x)
        SetWord(page, 10 * i + x, 50, x % 3 == 0 ? Rgb(9, 9, 255) : Rgb(255, 255, 250));
    }
    glib::GIFSave settings;
    settings.nfi = 1;
    settings.dither = 0;
    Bytes bytes;
    const support::GifFile file = Reread(exchange, settings, bytes);
    EXPECT_GT(*std::max_element(file.frames[0].indices.begin(), file.frames[0].indices.end()), 200);
    EXPECT_LT(*std::max_element(file.frames[1].indices.begin(), file.frames[1].indices.end()), 4);
  }
}

// More pages than a source may have: many sources can be united.
TEST(AnimationFrames, TenThousandPages) {
  Exchange exchange;
  for (std::uint32_t i = 0; i < 10000; ++i) {
    auto* page = new modules::Page;
    page->bits = 24;
    page->width = 3;
    page->height = 2;
    page->pixels = glib::AllocateRaster(3, 2, 24);
    page->delay = i;
    SetWord(*page, i % 3, i / 3 % 2, Rgb(i % 251, i / 251, 7));
    exchange.pages.Append(page);
  }
  for (const bool nfi : {false, true}) {
    glib::GIFSave settings;
    settings.nfi = nfi;
    settings.dither = 0;
    Bytes bytes;
    const support::GifFile file = Reread(exchange, settings, bytes);
    ASSERT_EQ(file.pages.size(), 10000U);
    for (std::uint32_t i = 0; i < 10000; i += 123) ASSERT_EQ(file.pages[i].delay, i);
    // A colour each page, of which the palette has one not far off.
    const std::uint32_t last = file.pages[9999].At(9999 % 3, 9999 / 3 % 2);
    EXPECT_NEAR(last >> 16 & 255U, 9999 % 251, 12);
    EXPECT_NEAR(last >> 8 & 255U, 9999 / 251, 12);
  }
}

}  // namespace
