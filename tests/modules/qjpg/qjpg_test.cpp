#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "glib/module_api/result_values.h"
#include "tests/modules/qjpg/jpeg_files.h"
#include "tests/support/corpus.h"
#include "tests/support/damage.h"
#include "tests/support/icc_profiles.h"
#include "tests/support/module_host.h"
#include "tests/support/temporary_folder.h"

namespace tests {
namespace {

using Page = glib::ImageDataExchange::Page;

constexpr std::uint32_t kJpegId = 0x00000004;

class Qjpg : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host_.Ok()); }

  // Gives the path.
  std::string Write(const Bytes& bytes) const {
    return folder_.Write("file", {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  }
  void TryDamaged(const Bytes& file) const {
    tests::TryDamaged(file, [&](std::span<const std::uint8_t> bytes) { return host_.Load(bytes); });
  }

  ModuleHost host_{"qjpg"};
  test_support::TemporaryFolder folder_;
};

struct Case {
  std::string name;
  JpegOptions options;
};

const Case kCases[] = {
    {"gray", {.stored = JCS_GRAYSCALE, .sampling = 1}},
    {"full chroma", {.sampling = 1}},
    {"half chroma", {}},
    {"one pixel", {.width = 1, .height = 1}},
    {"one row", {.width = 70, .height = 1}},
    {"one column", {.width = 1, .height = 70}},
    {"whole blocks", {.width = 64, .height = 48}},
    {"progressive", {.progressive = true}},
    {"progressive gray", {.stored = JCS_GRAYSCALE, .sampling = 1, .progressive = true}},
    {"arithmetic", {.arithmetic = true}},
    {"restarts", {.restartRows = 1}},
    {"RGB", {.stored = JCS_RGB, .sampling = 1}},
};

// Stored position of the pixel that an upright page shows at x, y; width and height are the stored ones.
std::pair<std::uint32_t, std::uint32_t> StoredPosition(std::uint32_t orientation, std::uint32_t x, std::uint32_t y,
                                                       std::uint32_t width, std::uint32_t height) {
  const std::uint32_t right = width - 1;
  const std::uint32_t bottom = height - 1;
  switch (orientation) {
    case 2:
      return {right - x, y};
    case 3:
      return {right - x, bottom - y};
    case 4:
      return {x, bottom - y};
    case 5:
      return {y, x};
    case 6:
      return {y, bottom - x};
    case 7:
      return {right - y, bottom - x};
    case 8:
      return {right - y, x};
    default:
      return {x, y};
  }
}

void ExpectPicture(const Page& page, const PlainPicture& plain, std::uint32_t orientation = 1) {
  const bool exchanged = orientation >= 5;
  ASSERT_EQ(page.width, static_cast<std::int32_t>(exchanged ? plain.height : plain.width));
  ASSERT_EQ(page.height, static_cast<std::int32_t>(exchanged ? plain.width : plain.height));
  ASSERT_EQ(page.bits, plain.channels == 1 ? 8 : 24);
  for (std::uint32_t y = 0; y < static_cast<std::uint32_t>(page.height); ++y) {
    for (std::uint32_t x = 0; x < static_cast<std::uint32_t>(page.width); ++x) {
      const auto [storedX, storedY] = StoredPosition(orientation, x, y, plain.width, plain.height);
      const std::uint8_t* samples = plain.At(storedX, storedY);
      const std::uint32_t last = plain.channels == 1 ? 0 : 2;
      const std::uint32_t expected = 0xFF000000U | static_cast<std::uint32_t>(samples[0]) << 16 |
                                     static_cast<std::uint32_t>(samples[last / 2]) << 8 | samples[last];
      ASSERT_EQ(PixelAt(page, x, y), expected) << "at " << x << ", " << y;
    }
  }
}

TEST_F(Qjpg, RegistersItsRow) { EXPECT_EQ(host_.Ids(), std::vector<std::uint32_t>{kJpegId}); }

TEST_F(Qjpg, GivesThePixelsOfThePlainDecoder) {
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.name);
    const Bytes file = MakeJpeg(c.options);
    const Loaded loaded = host_.Load(file);
    ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
    EXPECT_EQ(loaded.message, "");
    ASSERT_EQ(loaded.PageCount(), 1U);
    ExpectPicture(loaded.PageAt(0), DecodePlainly(file));
    EXPECT_EQ(loaded.PageAt(0).grayscale, c.options.stored == JCS_GRAYSCALE ? 1 : 0);
    EXPECT_EQ(loaded.PageAt(0).slideNumber, -1);
  }
}

TEST_F(Qjpg, TurnsInksIntoColours) {
  for (const J_COLOR_SPACE stored : {JCS_CMYK, JCS_YCCK}) {
    for (const bool adobe : {true, false}) {
      if (stored == JCS_YCCK && !adobe) continue;  // nothing else tells these two from each other
      const Bytes file = MakeJpeg({.stored = stored, .sampling = 1, .adobeMarker = adobe});
      const PlainPicture plain = DecodePlainly(file);
      ASSERT_EQ(plain.channels, 4U);
      const Loaded loaded = host_.Load(file);
      ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
      const Page& page = loaded.PageAt(0);
      ASSERT_EQ(page.bits, 24);
      for (std::uint32_t y = 0; y < plain.height; ++y) {
        for (std::uint32_t x = 0; x < plain.width; ++x) {
          const std::uint8_t* inks = plain.At(x, y);
          std::uint32_t expected = 0xFF;
          for (int i = 0; i < 3; ++i) {
            const double ink = adobe ? inks[i] : 255 - inks[i];
            const double black = adobe ? inks[3] : 255 - inks[3];
            expected = expected << 8 | static_cast<std::uint32_t>(ink * black / 255.0 + 0.5);
          }
          ASSERT_EQ(PixelAt(page, x, y), expected) << "at " << x << ", " << y << (adobe ? ", inverted" : "");
        }
      }
    }
  }
}

TEST_F(Qjpg, ColoursOfAProfileBecomeSrgb) {
  for (const bool large : {false, true}) {
    JpegOptions options{.sampling = 1};
    if (large) options.width = options.height = 150;
    const Loaded plain = host_.Load(MakeJpeg(options));
    for (const IccBytes& profile : {RgbProfile(1.0, false), RgbProfile(0, true)}) {
      options.profile = profile;
      ExpectConverted(plain, host_.Load(MakeJpeg(options)), profile);
    }
    for (const IccBytes& profile : {RgbProfile(0, false), SrgbTableProfile(1024), GreyProfile(1.0), InkProfile()}) {
      options.profile = profile;
      ExpectUnchanged(plain, host_.Load(MakeJpeg(options)));
    }
    options.profile = RgbProfile(1.0, false);
    options.profile[36] = 0;
    ExpectUnchanged(plain, host_.Load(MakeJpeg(options)));
  }
  JpegOptions grey{.stored = JCS_GRAYSCALE, .sampling = 1};
  const Loaded plain = host_.Load(MakeJpeg(grey));
  grey.profile = GreyProfile(1.0);
  ExpectConverted(plain, host_.Load(MakeJpeg(grey)), grey.profile);
}

TEST_F(Qjpg, InksOfAProfileBecomeSrgb) {
  const IccBytes profile = InkProfile();
  const IccReference reference(profile);
  for (const J_COLOR_SPACE stored : {JCS_CMYK, JCS_YCCK}) {
    for (const bool adobe : {true, false}) {
      if (stored == JCS_YCCK && !adobe) continue;
      const Bytes file = MakeJpeg({.stored = stored, .sampling = 1, .adobeMarker = adobe, .profile = profile});
      const PlainPicture plain = DecodePlainly(file);
      const Loaded loaded = host_.Load(file);
      ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
      for (std::uint32_t y = 0; y < plain.height; ++y) {
        for (std::uint32_t x = 0; x < plain.width; ++x) {
          std::uint8_t inks[4];
          for (int i = 0; i < 4; ++i) inks[i] = static_cast<std::uint8_t>(plain.At(x, y)[i] ^ (adobe ? 255 : 0));
          const std::uint32_t pixel = PixelAt(loaded.PageAt(0), x, y);
          ASSERT_TRUE(OneStepApart(pixel, reference.OfInks(inks))) << std::hex << pixel << " at " << x << ", " << y;
        }
      }
    }
  }
}

TEST_F(Qjpg, StandsUpright) {
  for (const bool big : {false, true}) {
    for (std::uint32_t orientation = 1; orientation <= 8; ++orientation) {
      for (const J_COLOR_SPACE stored : {JCS_GRAYSCALE, JCS_YCbCr}) {
        SCOPED_TRACE("orientation " + std::to_string(orientation));
        // More rows than wait at a time for their turn.
        const Bytes file = MakeJpeg({.width = 83,
                                     .height = 141,
                                     .stored = stored,
                                     .sampling = 1,
                                     .densityUnit = 1,
                                     .exif = MakeExif(big, {{0x0112, 3, 1, orientation}})});
        const Loaded loaded = host_.Load(file);
        ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
        ExpectPicture(loaded.PageAt(0), DecodePlainly(file), orientation);
        EXPECT_EQ(loaded.PageAt(0).dpiX, orientation >= 5 ? 150.0 : 300.0);
        EXPECT_EQ(loaded.PageAt(0).dpiY, orientation >= 5 ? 300.0 : 150.0);
      }
    }
  }
}

TEST_F(Qjpg, TakesTheResolutionFromTheHeaderOrTheNotes) {
  const std::uint32_t behind = 8 + 2 + 4 + 3 * 12;
  const auto notes = [&](std::uint32_t unit) {
    return MakeExif(false, {{0x011A, 5, 1, behind}, {0x011B, 5, 1, behind + 8}, {0x0128, 3, 1, unit}},
                    {2400, 10, 1000, 4});
  };
  const struct {
    const char* name;
    int unit;
    Bytes exif;
    double x, y;
  } cases[] = {
      {"nothing", 0, {}, 72, 72},
      {"inches", 1, {}, 300, 150},
      {"centimetres", 2, {}, 762, 381},
      {"notes in inches", 0, notes(2), 240, 250},
      {"notes in centimetres", 0, notes(3), 609.6, 635},
      {"header before notes", 1, notes(2), 300, 150},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const Loaded loaded = host_.Load(MakeJpeg({.densityUnit = c.unit, .exif = c.exif}));
    ASSERT_EQ(loaded.result, glib::RCOK);
    EXPECT_DOUBLE_EQ(loaded.PageAt(0).dpiX, c.x);
    EXPECT_DOUBLE_EQ(loaded.PageAt(0).dpiY, c.y);
  }
}

TEST_F(Qjpg, IgnoresSenselessNotes) {
  Bytes count = MakeExif(false, {{0x0112, 3, 1, 1}});
  count[14] = count[15] = 0xFF;  // entries
  Bytes away = MakeExif(false, {{0x0112, 3, 1, 6}});
  away[13] = 0x80;  // position of the directory
  Bytes cut = MakeExif(false, {{0x0112, 3, 1, 6}});
  cut.resize(20);
  const Bytes cases[] = {
      count,
      away,
      cut,
      MakeExif(false, {{0x0112, 3, 1, 9}}),
      MakeExif(true, {{0x0112, 3, 1, 0}}),
      MakeExif(true, {{0x0112, 3, 0, 6}}),
      MakeExif(true, {{0x011A, 5, 1, 0xFFFFFFFF}, {0x011B, 5, 1, 8}}),
      {'E', 'x', 'i', 'f', 0, 0},
  };
  for (const Bytes& exif : cases) {
    const Bytes file = MakeJpeg({.exif = exif});
    const Loaded loaded = host_.Load(file);
    ASSERT_EQ(loaded.result, glib::RCOK);
    ExpectPicture(loaded.PageAt(0), DecodePlainly(file));
    EXPECT_EQ(loaded.PageAt(0).dpiX, 72.0);
  }
}

TEST_F(Qjpg, KeepsWhatACutFileHas) {
  const Bytes file = MakeJpeg({.width = 160, .height = 160, .sampling = 1});
  const PlainPicture plain = DecodePlainly(file);
  const Loaded loaded = host_.Load(std::span(file).first(file.size() * 3 / 4));
  ASSERT_EQ(loaded.result, glib::RCOK);
  EXPECT_NE(loaded.message, "");
  const Page& page = loaded.PageAt(0);
  ASSERT_EQ(page.height, 160);
  for (std::uint32_t y = 0; y < 80; ++y) {
    for (std::uint32_t x = 0; x < 160; ++x) {
      const std::uint8_t* samples = plain.At(x, y);
      ASSERT_EQ(PixelAt(page, x, y) & 0xFF, samples[2]) << "at " << x << ", " << y;
    }
  }
  EXPECT_EQ(PixelAt(page, 159, 159), 0xFF808080U);

  // Only the end marker is missing.
  const Loaded nearly = host_.Load(std::span(file).first(file.size() - 2));
  ASSERT_EQ(nearly.result, glib::RCOK);
  ExpectPicture(nearly.PageAt(0), plain);
}

TEST_F(Qjpg, RefusesAPictureWithoutRows) {
  for (const bool progressive : {false, true}) {
    const Bytes file = MakeJpeg({.width = 160, .height = 160, .progressive = progressive});
    const std::uint8_t scan[] = {0xFF, 0xDA};
    const auto at = std::search(file.begin(), file.end(), std::begin(scan), std::end(scan)) - file.begin();
    const Loaded loaded = host_.Load(std::span(file).first(static_cast<std::size_t>(at) + 20));
    EXPECT_EQ(loaded.result, glib::IERR);
    EXPECT_EQ(loaded.PageCount(), 0U);
  }
}

TEST_F(Qjpg, SurvivesDamage) {
  for (const bool progressive : {false, true}) {
    const Bytes file = MakeJpeg({.width = 24,
                                 .height = 20,
                                 .progressive = progressive,
                                 .exif = MakeExif(true, {{0x0112, 3, 1, 6}, {0x011A, 5, 1, 38}}, {1, 1})});
    TryDamaged(file);
  }
}

// Changes the frame header: its marker, then precision, height and width.
Bytes WithFrame(Bytes file, std::uint8_t marker, std::uint8_t precision, std::uint32_t height, std::uint32_t width) {
  const std::uint8_t frame[] = {0xFF, 0xC0};
  const auto at = std::search(file.begin(), file.end(), std::begin(frame), std::end(frame)) - file.begin();
  const std::uint8_t fields[] = {precision, static_cast<std::uint8_t>(height >> 8), static_cast<std::uint8_t>(height),
                                 static_cast<std::uint8_t>(width >> 8), static_cast<std::uint8_t>(width)};
  file[static_cast<std::size_t>(at) + 1] = marker;
  std::copy(std::begin(fields), std::end(fields), file.begin() + at + 4);
  return file;
}

TEST_F(Qjpg, RefusesWhatItDoesNotRead) {
  const Bytes file = MakeJpeg({});
  const struct {
    const char* name;
    Bytes bytes;
    std::uint32_t result;
  } cases[] = {
      {"12 bits", WithFrame(file, 0xC0, 12, 37, 45), glib::NSUP},
      {"lossless", WithFrame(file, 0xC3, 8, 37, 45), glib::NSUP},
      {"no rows", WithFrame(file, 0xC0, 8, 0, 45), glib::IERR},
      {"no columns", WithFrame(file, 0xC0, 8, 37, 0), glib::IERR},
      {"largest sides", WithFrame(file, 0xC0, 8, 65535, 65535), glib::NSUP},
      {"too many pixels", WithFrame(file, 0xC0, 8, 65000, 65000), glib::NSUP},
      {"too many scans", MakeJpeg({.width = 8, .height = 8, .stored = JCS_GRAYSCALE, .sampling = 1, .manyScans = true}),
       glib::IERR},
      {"no JPEG", {'B', 'M', 0, 0}, glib::IERR},
      {"nothing", {}, glib::IERR},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const Loaded loaded = host_.Load(c.bytes);
    EXPECT_EQ(loaded.result, c.result) << loaded.message;
    EXPECT_EQ(loaded.PageCount(), 0U);
    EXPECT_NE(loaded.message, "");
  }
  EXPECT_EQ(host_.Load("/nonexistent/file.jpg").result, glib::IERR);
}

TEST_F(Qjpg, TellsAboutAFile) {
  for (const std::size_t padding : {std::size_t{0}, std::size_t{200000}}) {
    const Bytes bytes = MakeJpeg({.densityUnit = 1, .exif = MakeExif(false, {{0x0112, 3, 1, 6}}), .padding = padding});
    const std::string path = Write(bytes);
    const auto info = host_.Info(path, kJpegId);
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->id, kJpegId);
    EXPECT_EQ(info->width, 37);
    EXPECT_EQ(info->height, 45);
    EXPECT_EQ(info->bits(), 24);
    EXPECT_EQ(info->pages, 1);
    EXPECT_EQ(info->size, static_cast<std::int32_t>(bytes.size()));
    EXPECT_EQ(info->dpiX, 150.0);
    EXPECT_EQ(info->dpiY, 300.0);
  }
  std::uint32_t result = 0;
  EXPECT_EQ(host_.Info("/nonexistent/file.jpg", kJpegId, &result), nullptr);
  EXPECT_EQ(result, glib::IERR);
}

TEST_F(Qjpg, MakesThumbnailsAtLeastAsLargeAsWanted) {
  const std::string path = Write(
      MakeJpeg({.width = 400, .height = 200, .exif = MakeExif(false, {{0x0112, 3, 1, 6}})}));  // upright 200 x 400
  const struct {
    std::uint32_t wantedWidth, wantedHeight;
    std::int32_t width, height;
  } cases[] = {{25, 50, 25, 50}, {26, 50, 50, 100}, {10, 101, 75, 150}, {1000, 1, 200, 400}, {0, 0, 200, 400}};
  for (const auto& c : cases) {
    const Loaded loaded = host_.LoadThumbnail(path, c.wantedWidth, c.wantedHeight);
    ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
    EXPECT_EQ(loaded.PageAt(0).width, c.width);
    EXPECT_EQ(loaded.PageAt(0).height, c.height);
  }
}

TEST_F(Qjpg, ReadsRealFiles) {
  if (!CheckCorpus("jpg", host_, kJpegId)) GTEST_SKIP();
}

}  // namespace
}  // namespace tests
