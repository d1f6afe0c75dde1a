#include <gtest/gtest.h>

#include <string>

#include "glib/module_api/result_values.h"
#include "tests/modules/qpng/png_files.h"
#include "tests/support/corpus.h"
#include "tests/support/damage.h"
#include "tests/support/icc_profiles.h"
#include "tests/support/module_host.h"
#include "tests/support/temporary_folder.h"

namespace tests {
namespace {

using Page = glib::ImageDataExchange::Page;

constexpr std::uint32_t kPngId = 0x20000010;

class Qpng : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host_.Ok()); }

  // Gives the path.
  std::string Write(const Bytes& bytes) const {
    return folder_.Write("file", {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  }
  void TryDamaged(const Bytes& file) const {
    tests::TryDamaged(file, [&](std::span<const std::uint8_t> bytes) { return host_.Load(bytes); });
  }

  ModuleHost host_{"qpng"};
  test_support::TemporaryFolder folder_;
};

std::uint32_t Rounded(std::uint32_t sample, int depth) {
  const double full = (1 << depth) - 1;
  return static_cast<std::uint32_t>(sample * 255.0 / full + 0.5);
}

std::uint32_t ExpectedPixel(const PngOptions& o, std::uint32_t x, std::uint32_t y) {
  if (o.type == PNG_COLOR_TYPE_PALETTE) {
    const std::uint32_t index = StoredSample(o, x, y, 0);
    const png_color colour = PngPaletteColour(index);
    const std::uint32_t alpha = index < o.alphas.size() ? o.alphas[index] : 255U;
    return alpha << 24 | static_cast<std::uint32_t>(colour.red) << 16 | static_cast<std::uint32_t>(colour.green) << 8 |
           colour.blue;
  }
  const std::uint32_t channels = PngChannels(o.type);
  std::uint32_t values[4] = {};
  bool transparent = o.transparentColour;
  for (std::uint32_t c = 0; c < channels; ++c) {
    const std::uint32_t stored = StoredSample(o, x, y, c);
    values[c] = Rounded(stored, o.depth);
    transparent = transparent && stored == StoredSample(o, 1, 0, c);
  }
  const bool gray = channels <= 2;
  const std::uint32_t alpha = channels % 2 == 0 ? values[channels - 1] : transparent ? 0U : 255U;
  return alpha << 24 | values[0] << 16 | values[gray ? 0 : 1] << 8 | values[gray ? 0 : 2];
}

void ExpectPicture(const Page& page, const PngOptions& o) {
  ASSERT_EQ(page.width, static_cast<std::int32_t>(o.width));
  ASSERT_EQ(page.height, static_cast<std::int32_t>(o.height));
  for (std::uint32_t y = 0; y < o.height; ++y) {
    for (std::uint32_t x = 0; x < o.width; ++x) {
      ASSERT_EQ(PixelAt(page, x, y), ExpectedPixel(o, x, y)) << "at " << x << ", " << y;
    }
  }
}

TEST_F(Qpng, RegistersItsRow) { EXPECT_EQ(host_.Ids(), std::vector<std::uint32_t>{kPngId}); }

struct Case {
  std::string name;
  PngOptions options;
  std::int32_t bits;
  std::uint32_t entries;
};

TEST_F(Qpng, KeepsThePixelsOfEveryKind) {
  constexpr int kGray = PNG_COLOR_TYPE_GRAY;
  constexpr int kPalette = PNG_COLOR_TYPE_PALETTE;
  const Case cases[] = {
      {"gray 1", {.type = kGray, .depth = 1}, 1, 2},
      {"gray 2", {.type = kGray, .depth = 2}, 4, 4},
      {"gray 4", {.type = kGray, .depth = 4}, 4, 16},
      {"gray 8", {.type = kGray, .depth = 8}, 8, 256},
      {"gray 16", {.type = kGray, .depth = 16}, 8, 256},
      {"gray 1 with a transparent level", {.type = kGray, .depth = 1, .transparentColour = true}, 32, 256},
      {"gray 4 with a transparent level", {.type = kGray, .depth = 4, .transparentColour = true}, 32, 256},
      {"gray 16 with a transparent level", {.type = kGray, .depth = 16, .transparentColour = true}, 32, 256},
      {"gray with alpha 8", {.type = PNG_COLOR_TYPE_GRAY_ALPHA}, 32, 256},
      {"gray with alpha 16", {.type = PNG_COLOR_TYPE_GRAY_ALPHA, .depth = 16}, 32, 256},
      {"palette 1", {.type = kPalette, .depth = 1}, 1, 2},
      {"palette 2", {.type = kPalette, .depth = 2, .alphas = {9, 0}}, 4, 4},
      {"palette 4", {.type = kPalette, .depth = 4, .alphas = {255, 255, 0}}, 4, 16},
      {"palette 8", {.type = kPalette, .alphas = {0, 128, 255, 1}}, 8, 256},
      {"short palette", {.type = kPalette, .paletteSize = 7, .alphas = {0}}, 8, 7},
      {"RGB 8", {}, 24, 256},
      {"RGB 16", {.depth = 16}, 24, 256},
      {"RGB 8 with a transparent colour", {.transparentColour = true}, 32, 256},
      {"RGB 16 with a transparent colour", {.depth = 16, .transparentColour = true}, 32, 256},
      {"RGBA 8", {.type = PNG_COLOR_TYPE_RGB_ALPHA}, 32, 256},
      {"RGBA 16", {.type = PNG_COLOR_TYPE_RGB_ALPHA, .depth = 16}, 32, 256},
  };
  for (const Case& c : cases) {
    for (const bool interlaced : {false, true}) {
      for (const std::uint32_t width : {1U, 2U, 3U, 21U, 64U}) {
        SCOPED_TRACE(c.name + (interlaced ? ", interlaced, " : ", ") + std::to_string(width));
        PngOptions options = c.options;
        options.width = width;
        options.interlaced = interlaced;
        if (options.transparentColour && width == 1) continue;
        const Loaded loaded = host_.Load(MakePng(options));
        ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
        EXPECT_EQ(loaded.message, "");
        ASSERT_EQ(loaded.PageCount(), 1U);
        const Page& page = loaded.PageAt(0);
        EXPECT_EQ(page.bits, c.bits);
        EXPECT_EQ(page.paletteEntries, c.entries);
        EXPECT_EQ(page.grayscale, options.type == kGray && c.bits <= 8 ? 1 : 0);
        ExpectPicture(page, options);
      }
    }
  }
}

TEST_F(Qpng, ColoursOfAProfileBecomeSrgb) {
  const PngOptions cases[] = {{.type = PNG_COLOR_TYPE_PALETTE, .depth = 1},
                              {.type = PNG_COLOR_TYPE_PALETTE, .depth = 4, .alphas = {255, 0, 9}},
                              {.type = PNG_COLOR_TYPE_PALETTE, .paletteSize = 77},
                              {},
                              {.interlaced = true},
                              {.depth = 16},
                              {.type = PNG_COLOR_TYPE_RGB_ALPHA},
                              {.width = 150, .height = 150, .type = PNG_COLOR_TYPE_RGB_ALPHA},
                              {.transparentColour = true},
                              {.type = PNG_COLOR_TYPE_GRAY, .depth = 2},
                              {.type = PNG_COLOR_TYPE_GRAY},
                              {.type = PNG_COLOR_TYPE_GRAY_ALPHA}};
  for (const PngOptions& one : cases) {
    SCOPED_TRACE("type " + std::to_string(one.type) + ", depth " + std::to_string(one.depth));
    const Loaded plain = host_.Load(MakePng(one));
    PngOptions options = one;
    const bool grey = (one.type & PNG_COLOR_MASK_COLOR) == 0;
    for (const bool other : {false, true}) {
      options.profile = grey ? GreyProfile(other ? 1.0 : 2.4) : RgbProfile(other ? 1.8 : 0, true);
      ExpectConverted(plain, host_.Load(MakePng(options)), options.profile);
    }
    options.profile = RgbProfile(0, false);
    if (!grey) ExpectUnchanged(plain, host_.Load(MakePng(options)));
  }
}

// The same profile without its mark, which the library drops with a warning.
TEST_F(Qpng, ABrokenProfileIsLeftOut) {
  Bytes profile = RgbProfile(1.0, false);
  profile[36] = 'x';
  Bytes packed(compressBound(profile.size()));
  uLongf size = packed.size();
  compress(packed.data(), &size, profile.data(), profile.size());
  packed.resize(size);
  packed.insert(packed.begin(), {'x', 0, 0});
  Bytes file = MakePng({});
  const Loaded plain = host_.Load(file);
  InsertChunk(file, FindChunk(file, "IDAT"), "iCCP", packed);
  ExpectUnchanged(plain, host_.Load(file));
}

TEST_F(Qpng, TakesTheResolution) {
  const struct {
    int unit;
    double x, y;
  } cases[] = {{-1, 72, 72}, {PNG_RESOLUTION_UNKNOWN, 72, 72}, {PNG_RESOLUTION_METER, 11811 * 0.0254, 5906 * 0.0254}};
  for (const auto& c : cases) {
    const Bytes file = MakePng({.resolutionUnit = c.unit});
    const Loaded loaded = host_.Load(file);
    ASSERT_EQ(loaded.result, glib::RCOK);
    EXPECT_DOUBLE_EQ(loaded.PageAt(0).dpiX, c.x);
    EXPECT_DOUBLE_EQ(loaded.PageAt(0).dpiY, c.y);
  }
}

TEST_F(Qpng, PassesOverOtherChunks) {
  const PngOptions options{.resolutionUnit = PNG_RESOLUTION_METER};
  Bytes file = MakePng(options);
  const std::size_t data = FindChunk(file, "IDAT");
  InsertChunk(file, data, "acTL", {0, 0, 0, 1, 0, 0, 0, 0});
  InsertChunk(file, data, "iCCP", {'x', 0, 0, 1, 2, 3});
  InsertChunk(file, data, "gAMA", {0, 0, 0xFF, 0xFF});
  InsertChunk(file, data, "zTXt", Bytes(5000, 7));
  InsertChunk(file, data, "prIv", {1});
  file[FindChunk(file, "pHYs") + 8] ^= 1;  // its checksum is wrong now
  const Loaded loaded = host_.Load(file);
  ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
  ExpectPicture(loaded.PageAt(0), options);
  EXPECT_EQ(loaded.PageAt(0).dpiX, 72.0);
}

TEST_F(Qpng, KeepsTheWholeRowsOfACutFile) {
  for (const int type : {PNG_COLOR_TYPE_RGB, PNG_COLOR_TYPE_RGB_ALPHA}) {
    const PngOptions options{.width = 50, .height = 60, .type = type};
    const Bytes file = MakePng(options);
    const Loaded loaded = host_.Load(std::span(file).first(file.size() / 2));
    ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
    EXPECT_NE(loaded.message, "");
    const Page& page = loaded.PageAt(0);
    const std::uint32_t empty = type == PNG_COLOR_TYPE_RGB ? 0xFF000000U : 0;
    std::uint32_t y = 0;
    while (y < 60 && PixelAt(page, 0, y) == ExpectedPixel(options, 0, y)) {
      for (std::uint32_t x = 0; x < 50; ++x) ASSERT_EQ(PixelAt(page, x, y), ExpectedPixel(options, x, y));
      ++y;
    }
    EXPECT_GT(y, 20U);
    for (; y < 60; ++y) {
      for (std::uint32_t x = 0; x < 50; ++x) ASSERT_EQ(PixelAt(page, x, y), empty) << x << ", " << y;
    }
  }
}

TEST_F(Qpng, FillsTheBlocksOfACutInterlacedFile) {
  const PngOptions options{.width = 80, .height = 80, .interlaced = true};
  const Bytes file = MakePng(options);
  const Loaded loaded = host_.Load(std::span(file).first(file.size() / 3));
  ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
  const Page& page = loaded.PageAt(0);
  // The fourth pass is behind by then: each square of four columns and eight rows begins with its own pixel and none
  // is left empty.
  for (std::uint32_t y = 0; y < 80; ++y) {
    for (std::uint32_t x = 0; x < 80; ++x) {
      if (y % 8 == 0 && x % 4 == 0) {
        ASSERT_EQ(PixelAt(page, x, y), ExpectedPixel(options, x, y)) << x << ", " << y;
      }
      if (y % 4 == 3) {
        ASSERT_EQ(PixelAt(page, x, y), PixelAt(page, x, y - 1)) << x << ", " << y;
      }
    }
  }
}

TEST_F(Qpng, SurvivesDamage) {
  for (const bool interlaced : {false, true}) {
    for (const PngOptions& options :
         {PngOptions{.width = 9, .height = 7, .resolutionUnit = 1},
          PngOptions{.width = 9, .height = 7, .type = PNG_COLOR_TYPE_PALETTE, .depth = 2, .alphas = {0}}}) {
      PngOptions o = options;
      o.interlaced = interlaced;
      const Bytes file = MakePng(o);
      TryDamaged(file);
    }
  }
}

TEST_F(Qpng, RefusesWhatItDoesNotRead) {
  const Bytes file = MakePng({});
  Bytes badHeader = file;
  badHeader[19] ^= 1;
  Bytes withoutData = file;
  withoutData.resize(FindChunk(file, "IDAT"));
  Bytes withoutPalette = MakePng({.type = PNG_COLOR_TYPE_PALETTE});
  const std::size_t palette = FindChunk(withoutPalette, "PLTE");
  withoutPalette.erase(withoutPalette.begin() + static_cast<std::ptrdiff_t>(palette),
                       withoutPalette.begin() + static_cast<std::ptrdiff_t>(palette) + 12 + 768);
  const struct {
    const char* name;
    Bytes bytes;
    std::uint32_t result;
  } cases[] = {
      {"no columns", WithSize(file, 0, 19), glib::IERR},
      {"no rows", WithSize(file, 21, 0), glib::IERR},
      {"a side too long", WithSize(file, 65536, 1), glib::NSUP},
      {"too many pixels", WithSize(file, 65535, 65535), glib::NSUP},
      {"largest numbers", WithSize(file, 0x7FFFFFFF, 0x7FFFFFFF), glib::NSUP},
      {"a size beyond the numbers", WithSize(file, 0xFFFFFFFF, 0xFFFFFFFF), glib::IERR},
      {"a wrong checksum of the header", badHeader, glib::IERR},
      {"no data", withoutData, glib::IERR},
      {"no palette", withoutPalette, glib::IERR},
      {"no PNG", {'G', 'I', 'F', '8', '9', 'a'}, glib::IERR},
      {"nothing", {}, glib::IERR},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const Loaded loaded = host_.Load(c.bytes);
    EXPECT_EQ(loaded.result, c.result) << loaded.message;
    EXPECT_EQ(loaded.PageCount(), 0U);
    EXPECT_NE(loaded.message, "");
  }
}

TEST_F(Qpng, TellsAboutAFile) {
  for (const std::size_t padding : {std::size_t{1}, std::size_t{300000}}) {
    Bytes bytes = MakePng({.transparentColour = true, .resolutionUnit = PNG_RESOLUTION_METER});
    InsertChunk(bytes, FindChunk(bytes, "pHYs"), "prIv", Bytes(padding, 3));
    const std::string path = Write(bytes);
    const auto info = host_.Info(path, kPngId);
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->id, kPngId);
    EXPECT_EQ(info->width, 21);
    EXPECT_EQ(info->height, 19);
    EXPECT_EQ(info->bits(), 32);
    EXPECT_EQ(info->pages, 1);
    EXPECT_EQ(info->size, static_cast<std::int32_t>(bytes.size()));
    EXPECT_DOUBLE_EQ(info->dpiX, 11811 * 0.0254);
    EXPECT_DOUBLE_EQ(info->dpiY, 5906 * 0.0254);
  }
  std::uint32_t result = 0;
  EXPECT_EQ(host_.Info("/nonexistent/file.png", kPngId, &result), nullptr);
  EXPECT_EQ(result, glib::IERR);
}

TEST_F(Qpng, ReadsRealFiles) {
  if (!CheckCorpus("png", host_, kPngId)) GTEST_SKIP();
}

}  // namespace
}  // namespace tests
