#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "glib/module_api/result_values.h"
#include "tests/modules/qtif/tiff_files.h"
#include "tests/support/corpus.h"
#include "tests/support/damage.h"
#include "tests/support/icc_profiles.h"
#include "tests/support/module_host.h"
#include "tests/support/temporary_folder.h"

namespace tests {
namespace {

using Page = glib::ImageDataExchange::Page;

constexpr std::uint32_t kTiffId = 0x3000000E;

class Qtif : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host_.Ok()); }

  // Gives the path.
  std::string Write(const Bytes& bytes) const {
    return folder_.Write("file", {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  }
  void TryDamaged(const Bytes& file) const {
    tests::TryDamaged(file, [&](std::span<const std::uint8_t> bytes) { return host_.Load(bytes); });
  }

  ModuleHost host_{"qtif"};
  test_support::TemporaryFolder folder_;
};

std::uint32_t Word(std::uint32_t alpha, std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
  return alpha << 24 | red << 16 | green << 8 | blue;
}

// A sample as a share of full.
double Share(const TiffOptions& o, std::uint32_t x, std::uint32_t y, std::uint32_t channel) {
  if (o.format == SAMPLEFORMAT_IEEEFP) return std::clamp(FloatSample(o, x, y, channel), 0.0, 1.0);
  const double full = std::pow(2.0, o.bits) - 1;
  std::uint32_t sample = TiffSample(o, x, y, channel);
  if (o.format == SAMPLEFORMAT_INT) sample ^= 1U << (o.bits - 1);
  return sample / full;
}

// Halves go up, also those that a division left a little short.
std::uint32_t ToByte(double share) { return static_cast<std::uint32_t>(share * 255.0 + 0.5 + 1e-9); }

// What an upright page shows of the made picture, worked out in floating point.
std::uint32_t ExpectedPixel(const TiffOptions& o, std::uint32_t x, std::uint32_t y) {
  const auto share = [&](std::uint32_t channel) { return Share(o, x, y, channel); };
  const std::uint32_t colours = o.photometric == PHOTOMETRIC_RGB         ? 3U
                                : o.photometric == PHOTOMETRIC_SEPARATED ? 4U
                                                                         : 1U;
  const bool undeclared = o.photometric == PHOTOMETRIC_RGB && o.samples == 4 && o.extra.empty();
  std::uint32_t alpha = undeclared ? ToByte(share(3)) : 255U;
  double multiplied = 1.0;
  for (std::size_t i = 0; i < o.extra.size(); ++i) {
    if (o.extra[i] == EXTRASAMPLE_UNSPECIFIED) continue;
    const double found = share(colours + static_cast<std::uint32_t>(i));
    alpha = ToByte(found);
    if (o.extra[i] == EXTRASAMPLE_ASSOCALPHA) multiplied = found;
    break;
  }
  const auto colour = [&](double value) { return multiplied == 0.0 ? 0U : ToByte(std::min(1.0, value / multiplied)); };
  switch (o.photometric) {
    case PHOTOMETRIC_MINISBLACK:
      return Word(alpha, colour(share(0)), colour(share(0)), colour(share(0)));
    case PHOTOMETRIC_MINISWHITE: {
      const std::uint32_t gray = 255 - colour(share(0));
      return Word(alpha, gray, gray, gray);
    }
    case PHOTOMETRIC_PALETTE: {
      const std::uint32_t index = TiffSample(o, x, y, 0);
      const auto map = [&](std::uint32_t c) { return MapValue(o, index, c) / (o.bytesInMap ? 1U : 257U); };
      return Word(alpha, map(0), map(1), map(2));
    }
    case PHOTOMETRIC_RGB:
      return Word(alpha, colour(share(0)), colour(share(1)), colour(share(2)));
    default: {
      const auto through = [&](std::uint32_t c) {
        return static_cast<std::uint32_t>((255 - ToByte(share(c))) * (255 - ToByte(share(3))) / 255.0 + 0.5);
      };
      return Word(alpha, through(0), through(1), through(2));
    }
  }
}

// Position in the file of the pixel that an upright page shows at x, y.
std::pair<std::uint32_t, std::uint32_t> StoredPosition(const TiffOptions& o, std::uint32_t x, std::uint32_t y) {
  if (o.orientation >= 5) std::swap(x, y);
  const bool fromRight = o.orientation == 2 || o.orientation == 3 || o.orientation == 7 || o.orientation == 8;
  const bool fromBottom = o.orientation == 3 || o.orientation == 4 || o.orientation == 6 || o.orientation == 7;
  return {fromRight ? o.width - 1 - x : x, fromBottom ? o.height - 1 - y : y};
}

void ExpectPicture(const Page& page, const TiffOptions& o, std::uint32_t tolerance = 0) {
  const bool exchanged = o.orientation >= 5;
  ASSERT_EQ(page.width, static_cast<std::int32_t>(exchanged ? o.height : o.width));
  ASSERT_EQ(page.height, static_cast<std::int32_t>(exchanged ? o.width : o.height));
  for (std::uint32_t y = 0; y < static_cast<std::uint32_t>(page.height); ++y) {
    for (std::uint32_t x = 0; x < static_cast<std::uint32_t>(page.width); ++x) {
      const auto [storedX, storedY] = StoredPosition(o, x, y);
      const std::uint32_t expected = ExpectedPixel(o, storedX, storedY);
      const std::uint32_t got = PixelAt(page, x, y);
      for (int shift = 0; shift < 32; shift += 8) {
        const int difference = static_cast<int>(expected >> shift & 0xFF) - static_cast<int>(got >> shift & 0xFF);
        ASSERT_LE(static_cast<std::uint32_t>(std::abs(difference)), tolerance)
            << "at " << x << ", " << y << ": " << std::hex << got << " for " << expected;
      }
    }
  }
}

TEST_F(Qtif, RegistersItsRow) { EXPECT_EQ(host_.Ids(), std::vector<std::uint32_t>{kTiffId}); }

TEST_F(Qtif, ColoursOfAProfileBecomeSrgb) {
  const TiffOptions cases[] = {
      {},
      {.bits = 1},
      {.bits = 16},
      {.photometric = PHOTOMETRIC_MINISWHITE},
      {.samples = 2, .extra = {EXTRASAMPLE_UNASSALPHA}},
      {.bits = 4, .photometric = PHOTOMETRIC_PALETTE},
      {.photometric = PHOTOMETRIC_PALETTE},
      {.samples = 3, .photometric = PHOTOMETRIC_RGB},
      {.width = 40, .samples = 3, .photometric = PHOTOMETRIC_RGB},
      {.width = 150, .height = 150, .samples = 3, .photometric = PHOTOMETRIC_RGB, .orientation = 6},
      {.samples = 3, .photometric = PHOTOMETRIC_RGB, .separate = true},
      {.samples = 4, .photometric = PHOTOMETRIC_RGB, .extra = {EXTRASAMPLE_UNASSALPHA}},
      {.samples = 4, .photometric = PHOTOMETRIC_RGB, .extra = {EXTRASAMPLE_ASSOCALPHA}},
  };
  for (const TiffOptions& one : cases) {
    SCOPED_TRACE("photometric " + std::to_string(one.photometric) + ", samples " + std::to_string(one.samples));
    const Loaded plain = host_.Load(MakeTiff({one}));
    TiffOptions options = one;
    const bool grey = one.photometric <= PHOTOMETRIC_MINISBLACK;
    options.profile = grey ? GreyProfile(1.0) : RgbProfile(1.8, true);
    ExpectConverted(plain, host_.Load(MakeTiff({options})), options.profile);
    options.profile = grey ? RgbProfile(1.0, false) : SrgbTableProfile(1024);
    ExpectUnchanged(plain, host_.Load(MakeTiff({options})));
  }
}

TEST_F(Qtif, InksOfAProfileBecomeSrgb) {
  const IccBytes profile = InkProfile();
  const IccReference reference(profile);
  for (const bool alpha : {false, true}) {
    for (const bool separate : {false, true}) {
      TiffOptions options{.samples = alpha ? 5U : 4U, .photometric = PHOTOMETRIC_SEPARATED, .separate = separate};
      if (alpha) options.extra = {EXTRASAMPLE_UNASSALPHA};
      options.profile = profile;
      const Loaded loaded = host_.Load(MakeTiff({options}));
      ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
      ASSERT_EQ(loaded.PageAt(0).bits, alpha ? 32 : 24);
      for (std::uint32_t y = 0; y < options.height; ++y) {
        for (std::uint32_t x = 0; x < options.width; ++x) {
          std::uint8_t inks[4];
          for (std::uint32_t i = 0; i < 4; ++i) inks[i] = static_cast<std::uint8_t>(TiffSample(options, x, y, i));
          std::uint32_t expected = reference.OfInks(inks);
          if (alpha) expected = (expected & 0xFFFFFFU) | TiffSample(options, x, y, 4) << 24;
          const std::uint32_t pixel = PixelAt(loaded.PageAt(0), x, y);
          ASSERT_TRUE(OneStepApart(pixel, expected)) << std::hex << pixel << " for " << expected;
        }
      }
    }
  }
}

struct Case {
  std::string name;
  TiffOptions options;
  std::int32_t bits;
  std::uint32_t entries = 256;
};

const Case kKinds[] = {
    {"bilevel, 0 is black", {.bits = 1}, 1, 2},
    {"bilevel, 0 is white", {.bits = 1, .photometric = PHOTOMETRIC_MINISWHITE}, 1, 2},
    {"gray 2", {.bits = 2}, 4, 4},
    {"gray 4", {.bits = 4}, 4, 16},
    {"gray 4, 0 is white", {.bits = 4, .photometric = PHOTOMETRIC_MINISWHITE}, 4, 16},
    {"gray 8", {}, 8},
    {"gray 8, rows without padding", {.width = 36}, 8},
    {"gray 8, 0 is white", {.photometric = PHOTOMETRIC_MINISWHITE}, 8},
    {"gray 12", {.bits = 12}, 8},
    {"gray 16", {.bits = 16}, 8},
    {"gray 16, 0 is white", {.bits = 16, .photometric = PHOTOMETRIC_MINISWHITE}, 8},
    {"gray 16 signed", {.bits = 16, .format = SAMPLEFORMAT_INT}, 8},
    {"gray 8 signed", {.format = SAMPLEFORMAT_INT}, 8},
    {"gray 32", {.bits = 32}, 8},
    {"gray float", {.bits = 32, .format = SAMPLEFORMAT_IEEEFP}, 8},
    {"gray double", {.bits = 64, .format = SAMPLEFORMAT_IEEEFP}, 8},
    {"gray 8 with alpha", {.samples = 2, .extra = {EXTRASAMPLE_UNASSALPHA}}, 32},
    {"gray 8 with something else", {.samples = 2, .extra = {EXTRASAMPLE_UNSPECIFIED}}, 8},
    {"palette 1", {.bits = 1, .photometric = PHOTOMETRIC_PALETTE}, 1, 2},
    {"palette 2", {.bits = 2, .photometric = PHOTOMETRIC_PALETTE}, 4, 4},
    {"palette 4", {.bits = 4, .photometric = PHOTOMETRIC_PALETTE}, 4, 16},
    {"palette 8", {.photometric = PHOTOMETRIC_PALETTE}, 8},
    {"palette 8 of bytes", {.photometric = PHOTOMETRIC_PALETTE, .bytesInMap = true}, 8},
    {"palette 8 with alpha", {.samples = 2, .photometric = PHOTOMETRIC_PALETTE, .extra = {EXTRASAMPLE_UNASSALPHA}}, 32},
    {"RGB 8", {.samples = 3, .photometric = PHOTOMETRIC_RGB}, 24},
    {"RGB 8, rows without padding", {.width = 36, .samples = 3, .photometric = PHOTOMETRIC_RGB}, 24},
    {"RGB 8, one plane a colour", {.samples = 3, .photometric = PHOTOMETRIC_RGB, .separate = true}, 24},
    {"RGB 4", {.bits = 4, .samples = 3, .photometric = PHOTOMETRIC_RGB}, 24},
    {"RGB 16", {.bits = 16, .samples = 3, .photometric = PHOTOMETRIC_RGB}, 24},
    {"RGB 16, one plane a colour", {.bits = 16, .samples = 3, .photometric = PHOTOMETRIC_RGB, .separate = true}, 24},
    {"RGB float", {.bits = 32, .samples = 3, .photometric = PHOTOMETRIC_RGB, .format = SAMPLEFORMAT_IEEEFP}, 24},
    {"RGB 8 with alpha", {.samples = 4, .photometric = PHOTOMETRIC_RGB, .extra = {EXTRASAMPLE_UNASSALPHA}}, 32},
    {"RGB 8 with alpha multiplied in",
     {.samples = 4, .photometric = PHOTOMETRIC_RGB, .extra = {EXTRASAMPLE_ASSOCALPHA}},
     32},
    {"RGB 16 with alpha",
     {.bits = 16, .samples = 4, .photometric = PHOTOMETRIC_RGB, .extra = {EXTRASAMPLE_UNASSALPHA}},
     32},
    {"RGB 8 with something else",
     {.samples = 4, .photometric = PHOTOMETRIC_RGB, .extra = {EXTRASAMPLE_UNSPECIFIED}},
     24},
    {"RGB 8 with a fourth sample", {.samples = 4, .photometric = PHOTOMETRIC_RGB}, 32},
    {"RGB 8, alpha behind something else",
     {.samples = 5, .photometric = PHOTOMETRIC_RGB, .extra = {EXTRASAMPLE_UNSPECIFIED, EXTRASAMPLE_UNASSALPHA}},
     32},
    {"inks 8", {.samples = 4, .photometric = PHOTOMETRIC_SEPARATED}, 24},
    {"inks 16", {.bits = 16, .samples = 4, .photometric = PHOTOMETRIC_SEPARATED}, 24},
    {"inks 8 with alpha", {.samples = 5, .photometric = PHOTOMETRIC_SEPARATED, .extra = {EXTRASAMPLE_UNASSALPHA}}, 32},
};

TEST_F(Qtif, KeepsThePixelsOfEveryKind) {
  for (const Case& c : kKinds) {
    for (const char* mode : {"w", "wb", "w8"}) {
      for (const std::uint32_t tile : {0U, 16U, 64U}) {
        SCOPED_TRACE(c.name + ", " + mode + ", tile " + std::to_string(tile));
        TiffOptions options = c.options;
        options.tile = tile;
        const Loaded loaded = host_.Load(MakeTiff({options}, mode));
        ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
        EXPECT_EQ(loaded.message, "");
        ASSERT_EQ(loaded.PageCount(), 1U);
        const Page& page = loaded.PageAt(0);
        EXPECT_EQ(page.bits, c.bits);
        EXPECT_EQ(page.paletteEntries, c.entries);
        // A share in floating point meets the half way between two bytes a little off.
        const bool exact = options.bits <= 16 && options.format != SAMPLEFORMAT_IEEEFP;
        ExpectPicture(page, options, exact ? 0 : 1);
      }
    }
  }
}

TEST_F(Qtif, KeepsTheIndicesOfBilevelPictures) {
  for (const int photometric : {PHOTOMETRIC_MINISWHITE, PHOTOMETRIC_MINISBLACK}) {
    const TiffOptions options{.bits = 1, .photometric = photometric};
    const Loaded loaded = host_.Load(MakeTiff({options}));
    ASSERT_EQ(loaded.result, glib::RCOK);
    for (std::uint32_t x = 0; x < options.width; ++x) {
      EXPECT_EQ(IndexAt(loaded.PageAt(0), x, 3), TiffSample(options, x, 3, 0));
    }
  }
}

TEST_F(Qtif, ReadsEveryCompression) {
  const struct {
    const char* name;
    int compression, predictor;
  } packed[] = {{"PackBits", COMPRESSION_PACKBITS, 0},
                {"LZW", COMPRESSION_LZW, 0},
                {"LZW of differences", COMPRESSION_LZW, PREDICTOR_HORIZONTAL},
                {"Deflate", COMPRESSION_ADOBE_DEFLATE, 0},
                {"Deflate of differences", COMPRESSION_ADOBE_DEFLATE, PREDICTOR_HORIZONTAL},
                {"Zstandard", COMPRESSION_ZSTD, 0},
                {"LZMA", COMPRESSION_LZMA, 0},
                {"LERC", COMPRESSION_LERC, 0}};
  for (const auto& c : packed) {
    for (const std::uint32_t rows : {1U, 8U, 100U}) {
      for (const std::uint32_t samples : {1U, 3U}) {
        SCOPED_TRACE(std::string(c.name) + ", strips of " + std::to_string(rows));
        const TiffOptions options{.samples = samples,
                                  .photometric = samples == 1 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB,
                                  .compression = c.compression,
                                  .predictor = c.predictor,
                                  .rowsPerStrip = rows};
        const Loaded loaded = host_.Load(MakeTiff({options}));
        ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
        ExpectPicture(loaded.PageAt(0), options);
      }
    }
  }
  for (const int compression : {COMPRESSION_CCITTRLE, COMPRESSION_CCITTFAX3, COMPRESSION_CCITTFAX4, COMPRESSION_LZW}) {
    for (const int fillOrder : {FILLORDER_MSB2LSB, FILLORDER_LSB2MSB}) {
      SCOPED_TRACE("compression " + std::to_string(compression));
      const TiffOptions options{.bits = 1,
                                .photometric = PHOTOMETRIC_MINISWHITE,
                                .compression = compression,
                                .rowsPerStrip = 29,
                                .fillOrder = fillOrder};
      const Loaded loaded = host_.Load(MakeTiff({options}));
      ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
      EXPECT_EQ(loaded.PageAt(0).bits, 1);
      ExpectPicture(loaded.PageAt(0), options);
    }
  }
}

// What the library itself shows of a file, top row first: red, green, blue, alpha from the lowest byte.
std::vector<std::uint32_t> LibraryPicture(const Bytes& bytes, std::uint32_t width, std::uint32_t height) {
  const test_support::TemporaryFolder folder;
  folder.Write("file", {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  std::vector<std::uint32_t> raster(std::size_t{width} * height);
  TIFF* tiff = TIFFOpen((folder.path() / "file").c_str(), "r");
  EXPECT_EQ(TIFFReadRGBAImageOriented(tiff, width, height, raster.data(), ORIENTATION_TOPLEFT, 0), 1);
  TIFFClose(tiff);
  return raster;
}

TEST_F(Qtif, ShowsLossyPicturesAsTheLibraryDoes) {
  const TiffOptions cases[] = {
      {.compression = COMPRESSION_JPEG, .rowsPerStrip = 16},
      {.samples = 3, .photometric = PHOTOMETRIC_RGB, .compression = COMPRESSION_JPEG, .rowsPerStrip = 16},
      {.samples = 3, .photometric = PHOTOMETRIC_YCBCR, .compression = COMPRESSION_JPEG, .rowsPerStrip = 16},
      {.samples = 3, .photometric = PHOTOMETRIC_YCBCR, .compression = COMPRESSION_JPEG, .tile = 32},
      {.samples = 3, .photometric = PHOTOMETRIC_YCBCR},
      {.samples = 3, .photometric = PHOTOMETRIC_YCBCR, .compression = COMPRESSION_LZW, .tile = 16},
  };
  for (const TiffOptions& options : cases) {
    SCOPED_TRACE(std::to_string(options.photometric) + " by " + std::to_string(options.compression));
    const Bytes file = MakeTiff({options});
    const auto raster = LibraryPicture(file, options.width, options.height);
    const Loaded loaded = host_.Load(file);
    ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
    EXPECT_EQ(loaded.message, "");
    const Page& page = loaded.PageAt(0);
    EXPECT_EQ(page.bits, options.samples == 1 ? 8 : 24);
    for (std::uint32_t i = 0; i < raster.size(); ++i) {
      ASSERT_EQ(PixelAt(page, i % options.width, i / options.width),
                Word(TIFFGetA(raster[i]), TIFFGetR(raster[i]), TIFFGetG(raster[i]), TIFFGetB(raster[i])))
          << i;
    }
  }
}

TEST_F(Qtif, TurnsLabIntoSrgb) {
  // Samples of one pixel and the colour, known from the definition of the two spaces.
  const struct {
    const char* name;
    int photometric;
    std::uint8_t samples[3];
    std::uint32_t word;
  } cases[] = {
      {"white", PHOTOMETRIC_CIELAB, {255, 0, 0}, 0xFFFFFFFF},
      {"black", PHOTOMETRIC_CIELAB, {0, 0, 0}, 0xFF000000},
      {"middle gray", PHOTOMETRIC_CIELAB, {136, 0, 0}, 0xFF7F7F7F},
      {"red", PHOTOMETRIC_CIELAB, {138, 81, 70}, 0xFFFF0000},
      {"white with an offset", PHOTOMETRIC_ICCLAB, {255, 128, 128}, 0xFFFFFFFF},
      {"red with an offset", PHOTOMETRIC_ICCLAB, {138, 209, 198}, 0xFFFF0000},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const TiffOptions options{.width = 1, .height = 1, .samples = 3, .photometric = c.photometric};
    Bytes file = MakeTiff({options});
    std::copy(std::begin(c.samples), std::end(c.samples), file.begin() + 8);  // where the only strip begins
    const Loaded loaded = host_.Load(file);
    ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
    const std::uint32_t got = PixelAt(loaded.PageAt(0), 0, 0);
    for (int shift = 0; shift < 32; shift += 8) {
      EXPECT_NEAR(static_cast<int>(got >> shift & 0xFF), static_cast<int>(c.word >> shift & 0xFF), 3)
          << std::hex << got;
    }
  }
}

TEST_F(Qtif, StandsUpright) {
  const TiffOptions kinds[] = {{.bits = 1},
                               {.bits = 4},
                               {},
                               {.samples = 3, .photometric = PHOTOMETRIC_RGB},
                               {.samples = 4, .photometric = PHOTOMETRIC_RGB, .extra = {EXTRASAMPLE_UNASSALPHA}}};
  for (int orientation = 1; orientation <= 8; ++orientation) {
    for (TiffOptions options : kinds) {
      SCOPED_TRACE("orientation " + std::to_string(orientation) + ", bits " + std::to_string(options.bits));
      options.width = 75;
      options.height = 133;
      options.orientation = orientation;
      options.resolutionUnit = RESUNIT_INCH;
      const Loaded loaded = host_.Load(MakeTiff({options}));
      ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
      ExpectPicture(loaded.PageAt(0), options);
      EXPECT_EQ(loaded.PageAt(0).dpiX, orientation >= 5 ? 60.0 : 120.0);
    }
  }
}

// The library's own road stands behind one more turn.
TEST_F(Qtif, StandsUprightThroughTheLibrary) {
  const TiffOptions upright{.samples = 3, .photometric = PHOTOMETRIC_YCBCR};
  const Loaded plain = host_.Load(MakeTiff({upright}));
  ASSERT_EQ(plain.result, glib::RCOK);
  for (int orientation = 1; orientation <= 8; ++orientation) {
    TiffOptions options = upright;
    options.orientation = orientation;
    const Loaded loaded = host_.Load(MakeTiff({options}));
    ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
    const Page& page = loaded.PageAt(0);
    ASSERT_EQ(page.width, orientation >= 5 ? 29 : 37);
    for (std::uint32_t y = 0; y < static_cast<std::uint32_t>(page.height); ++y) {
      for (std::uint32_t x = 0; x < static_cast<std::uint32_t>(page.width); ++x) {
        const auto [storedX, storedY] = StoredPosition(options, x, y);
        ASSERT_EQ(PixelAt(page, x, y), PixelAt(plain.PageAt(0), storedX, storedY)) << orientation;
      }
    }
  }
}

TEST_F(Qtif, TakesTheResolution) {
  const struct {
    int unit;
    double x, y;
  } cases[] = {{0, 72, 72}, {RESUNIT_NONE, 72, 72}, {RESUNIT_INCH, 120, 60}, {RESUNIT_CENTIMETER, 304.8, 152.4}};
  for (const auto& c : cases) {
    const Loaded loaded = host_.Load(MakeTiff({{.resolutionUnit = c.unit}}));
    ASSERT_EQ(loaded.result, glib::RCOK);
    EXPECT_DOUBLE_EQ(loaded.PageAt(0).dpiX, c.x);
    EXPECT_DOUBLE_EQ(loaded.PageAt(0).dpiY, c.y);
  }
}

TEST_F(Qtif, GivesEveryDirectoryButReducedOnes) {
  const TiffOptions whole{.subfile = 0};
  const TiffOptions second{.width = 20, .samples = 3, .photometric = PHOTOMETRIC_RGB};
  const TiffOptions reduced{.width = 5, .height = 5, .subfile = FILETYPE_REDUCEDIMAGE};
  const struct {
    std::vector<TiffOptions> pages;
    std::vector<std::int32_t> widths;
  } cases[] = {{{whole, second}, {37, 20}},
               {{reduced, whole, reduced, second}, {37, 20}},
               {{reduced}, {5}},
               {{reduced, reduced}, {5, 5}}};
  for (const auto& c : cases) {
    const Bytes bytes = MakeTiff(c.pages);
    const Loaded loaded = host_.Load(bytes);
    ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
    std::vector<std::int32_t> widths;
    for (std::uint32_t i = 0; i < loaded.PageCount(); ++i) widths.push_back(loaded.PageAt(i).width);
    EXPECT_EQ(widths, c.widths);

    const std::string path = Write(bytes);
    const auto info = host_.Info(path, kTiffId);
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->pages, static_cast<std::int32_t>(c.widths.size()));
    EXPECT_EQ(info->width, c.widths[0]);
    EXPECT_EQ(info->bits(), 8);
    EXPECT_EQ(info->size, static_cast<std::int32_t>(bytes.size()));
  }
}

TEST_F(Qtif, KeepsGoodPagesBesideBadOnes) {
  const TiffOptions good{};
  const TiffOptions unreadable{.samples = 2, .photometric = PHOTOMETRIC_SEPARATED};
  const Loaded loaded = host_.Load(MakeTiff({unreadable, good}));
  ASSERT_EQ(loaded.result, glib::RCOK);
  ASSERT_EQ(loaded.PageCount(), 1U);
  EXPECT_NE(loaded.message, "");
  ExpectPicture(loaded.PageAt(0), good);
  EXPECT_EQ(host_.Load(MakeTiff({unreadable})).result, glib::NSUP);
}

// Numbers of the first directory; the files that the library writes have it behind the pixels.
void PatchEntry(Bytes& file, std::uint16_t tag, std::uint32_t value) {
  std::uint32_t at = 0;
  std::memcpy(&at, file.data() + 4, 4);
  std::uint16_t count = 0;
  std::memcpy(&count, file.data() + at, 2);
  for (std::uint32_t entry = at + 2; count != 0; entry += 12, --count) {
    std::uint16_t found = 0;
    std::memcpy(&found, file.data() + entry, 2);
    if (found != tag) continue;
    const std::uint16_t isLong = 4;
    std::memcpy(file.data() + entry + 2, &isLong, 2);
    std::memcpy(file.data() + entry + 8, &value, 4);
    return;
  }
  FAIL() << "no tag " << tag;
}

TEST_F(Qtif, KeepsTheRowsThatAreThere) {
  for (const int compression : {COMPRESSION_NONE, COMPRESSION_LZW}) {
    // The data's place is moved, so that they reach past the file's end or break off.
    const TiffOptions options{
        .samples = 3, .photometric = PHOTOMETRIC_RGB, .compression = compression, .rowsPerStrip = 100};
    Bytes file = MakeTiff({options});
    if (compression == COMPRESSION_NONE) {
      const auto end = static_cast<std::uint32_t>(file.size());
      file.insert(file.end(), file.begin() + 8, file.begin() + 8 + 37 * 3 * 10 + 5);
      PatchEntry(file, TIFFTAG_STRIPOFFSETS, end);
    } else {
      std::fill(file.begin() + 8 + 1500, file.begin() + 8 + 2500, std::uint8_t{0xFF});
    }
    const Loaded loaded = host_.Load(file);
    ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
    EXPECT_NE(loaded.message, "");
    const Page& page = loaded.PageAt(0);
    for (std::uint32_t x = 0; x < 37; ++x) {
      for (std::uint32_t y = 0; y < 10; ++y) ASSERT_EQ(PixelAt(page, x, y), ExpectedPixel(options, x, y)) << y;
      ASSERT_EQ(PixelAt(page, x, 28), 0xFF000000U);
    }
  }
}

TEST_F(Qtif, SurvivesDamage) {
  const TiffOptions cases[] = {{.width = 17, .height = 9},
                               {.width = 17,
                                .height = 9,
                                .samples = 3,
                                .photometric = PHOTOMETRIC_RGB,
                                .compression = COMPRESSION_LZW,
                                .tile = 16},
                               {.width = 17,
                                .height = 9,
                                .samples = 3,
                                .photometric = PHOTOMETRIC_YCBCR,
                                .compression = COMPRESSION_JPEG,
                                .rowsPerStrip = 16},
                               {.width = 17, .height = 9, .bits = 1, .compression = COMPRESSION_CCITTFAX4},
                               {.width = 17,
                                .height = 9,
                                .samples = 3,
                                .photometric = PHOTOMETRIC_YCBCR,
                                .compression = COMPRESSION_ADOBE_DEFLATE}};
  for (const TiffOptions& options : cases) {
    const Bytes file = MakeTiff({options, {.width = 3, .height = 3, .photometric = PHOTOMETRIC_PALETTE}});
    TryDamaged(file);
  }
}

TEST_F(Qtif, RefusesAbsurdSizes) {
  const struct {
    const char* name;
    std::uint32_t width, height;
    int compression;
  } cases[] = {
      {"no columns", 0, 10, COMPRESSION_LZW},
      {"no rows", 10, 0, COMPRESSION_LZW},
      {"a side too long", 70000, 1, COMPRESSION_LZW},
      {"too many pixels", 65535, 65535, COMPRESSION_LZW},
      {"largest numbers", 0xFFFFFFFF, 0xFFFFFFFF, COMPRESSION_LZW},
      {"more than the file can hold", 16000, 16000, COMPRESSION_NONE},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Bytes file = MakeTiff({{.compression = c.compression, .rowsPerStrip = 100}});
    PatchEntry(file, TIFFTAG_IMAGEWIDTH, c.width);
    PatchEntry(file, TIFFTAG_IMAGELENGTH, c.height);
    const Loaded loaded = host_.Load(file);
    // The library itself refuses some of them as damaged.
    EXPECT_TRUE(loaded.result == glib::NSUP || loaded.result == glib::IERR) << loaded.result;
    EXPECT_NE(loaded.message, "");
    EXPECT_EQ(loaded.PageCount(), 0U);
  }
  EXPECT_EQ(host_.Load("/nonexistent/file.tif").result, glib::IERR);
  EXPECT_EQ(host_.Load(Bytes{}).result, glib::IERR);
}

TEST_F(Qtif, EndsChainsThatLoop) {
  Bytes file = MakeTiff({{.width = 4, .height = 4}});
  std::uint32_t at = 0;
  std::memcpy(&at, file.data() + 4, 4);
  std::uint16_t count = 0;
  std::memcpy(&count, file.data() + at, 2);
  std::memcpy(file.data() + at + 2 + count * 12U, &at, 4);  // the next directory is this one
  const Loaded loaded = host_.Load(file);
  EXPECT_EQ(loaded.result, glib::RCOK);
  EXPECT_EQ(loaded.PageCount(), 1U);
}

TEST_F(Qtif, ReadsRealFiles) {
  if (!CheckCorpus("tiff", host_, kTiffId)) GTEST_SKIP();
}

}  // namespace
}  // namespace tests
