// Animations as other programs of the machine read them. What isn't installed is passed over.

#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/modules/qgif/gif_fixture.h"

namespace {

using namespace qgif_test;

bool IsInstalled(const std::string& program) {
  return std::system(("command -v " + program + " >/dev/null 2>&1").c_str()) == 0;
}

// A ground, on which two things move; 255 colours at most, so that all is exact.
void MakeAnimation(Exchange& exchange, std::uint32_t seed, bool holes) {
  std::mt19937 random(seed);
  const std::uint32_t width = 20 + Below(random, 70);
  const std::uint32_t height = 20 + Below(random, 50);
  for (std::uint32_t i = 0; i < 7; ++i) {
    modules::Page& page = AddPage(exchange, width, height, 32);
    page.delay = 2 + Below(random, 300);
    const std::uint32_t left = Below(random, width);
    const std::uint32_t top = Below(random, height);
    for (std::uint32_t y = 0; y < height; ++y) {
      for (std::uint32_t x = 0; x < width; ++x) {
        std::uint32_t word = holes && (x / 7 + y / 5) % 4 == 0 ? 0 : Rgb((x + y) / 10 * 9, x / 8 * 7 % 90, 40);
        if (x - left < 12 && y - top < 12) word = Rgb(200, 20 * (x - left), Below(random, 4) * 60);
        if (y == i * 2) word = Rgb(255, 255, 255);
        SetWord(page, x, y, word);
      }
    }
  }
}

template <typename Check>
void ForAnimations(const TemporaryFolder& folder, Check check) {
  for (std::uint32_t seed = 0; seed < 8; ++seed) {
    SCOPED_TRACE(seed);
    Exchange exchange;
    MakeAnimation(exchange, seed, seed % 2 == 0);
    glib::GIFSave settings;
    settings.nfi = seed % 4 != 3;
    settings.interlace = seed % 3 == 0;
    ASSERT_EQ(qgif::SaveGif(folder.Text("a.gif").c_str(), exchange, settings), glib::RCOK);
    check(exchange);
  }
}

// gifsicle takes the frames apart and writes them whole.
TEST(OtherReaders, Gifsicle) {
  if (!IsInstalled("gifsicle")) GTEST_SKIP() << "gifsicle is not installed";
  const TemporaryFolder folder;
  ForAnimations(folder, [&](const Exchange& exchange) {
    const std::string path = folder.path().string();
    ASSERT_EQ(std::system(("gifsicle -U " + path + "/a.gif -o " + path + "/b.gif 2>" + path + "/words").c_str()), 0);
    EXPECT_EQ(folder.Read("words"), "");
    const support::GifFile file = support::ReadGif(path + "/b.gif");
    ASSERT_EQ(file.pages.size(), exchange.pages.count);
    for (std::uint32_t i = 0; i < exchange.pages.count; ++i) {
      ASSERT_EQ(file.pages[i].pixels, SeenOf(*exchange.pages.At(i))) << i;
      EXPECT_EQ(file.pages[i].delay, exchange.pages.At(i)->delay);
    }
  });
}

TEST(OtherReaders, Ffmpeg) {
  if (!IsInstalled("ffmpeg")) GTEST_SKIP() << "ffmpeg is not installed";
  const TemporaryFolder folder;
  ForAnimations(folder, [&](const Exchange& exchange) {
    const std::string path = folder.path().string();
    ASSERT_EQ(std::system(("ffmpeg -v error -nostdin -y -i " + path +
                           "/a.gif -vsync passthrough -f rawvideo -pix_fmt bgra " + path + "/raw 2>" + path + "/words")
                              .c_str()),
              0);
    const std::string raw = folder.Read("raw");
    std::size_t place = 0;
    for (std::uint32_t i = 0; i < exchange.pages.count; ++i) {
      const Words seen = SeenOf(*exchange.pages.At(i));
      ASSERT_GE(raw.size(), place + seen.size() * 4);
      for (std::size_t k = 0; k < seen.size(); ++k, place += 4) {
        std::uint32_t word = 0;
        for (std::size_t b = 0; b < 4; ++b) word |= std::uint32_t{static_cast<std::uint8_t>(raw[place + b])} << (8 * b);
        ASSERT_EQ(word >> 24 == 0 ? 0 : word, seen[k]) << i << " " << k;
      }
    }
    EXPECT_EQ(place, raw.size());
  });
}

}  // namespace
