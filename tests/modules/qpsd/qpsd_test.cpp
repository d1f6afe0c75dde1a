#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "glib/module_api/result_values.h"
#include "tests/support/byte_writer.h"
#include "tests/support/corpus.h"
#include "tests/support/damage.h"
#include "tests/support/icc_profiles.h"
#include "tests/support/module_host.h"
#include "tests/support/psd_writer.h"
#include "tests/support/temporary_folder.h"

namespace tests {
namespace {

constexpr std::uint32_t kPsdId = 0x00000019;

enum Mode : std::uint32_t { kBitmap, kGrey, kIndexed, kRgb, kCmyk, kInks = 7, kDuotone, kLab };

using Bytes = std::vector<std::uint8_t>;

std::string_view AsText(const Bytes& bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

// A sample of 8 bits, with runs in the rows; plane 0 is the highest.
std::uint32_t Sample(std::uint32_t plane, std::uint32_t x, std::uint32_t y) {
  return (200 - 50 * plane + x / 4 * 7 + y * 3) & 255U;
}

// The same, widened to a depth so that it comes back.
std::uint32_t Widened(std::uint32_t sample, std::uint32_t depth) {
  if (depth == 16) return sample * 257;
  if (depth != 32) return sample;
  const double value = sample / 255.0;
  const double light = value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
  return std::bit_cast<std::uint32_t>(static_cast<float>(light));
}

std::uint32_t Word(std::uint32_t red, std::uint32_t green, std::uint32_t blue, std::uint32_t alpha = 255) {
  return alpha << 24 | red << 16 | green << 8 | blue;
}

class Qpsd : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(host_.Ok()); }

  Loaded Load(const PsdSpec& spec) const { return host_.Load(MakePsd(spec), kPsdId); }

  ModuleHost host_{"qpsd"};
};

PsdSpec Picture(std::uint32_t mode, std::uint32_t channels, std::uint32_t depth = 8) {
  PsdSpec spec{.channels = channels, .width = 19, .height = 5, .depth = depth, .mode = mode};
  spec.value = [=](std::uint32_t plane, std::uint32_t x, std::uint32_t y) {
    return depth == 1 ? (x / 3 + y) % 2 : Widened(Sample(plane, x, y), depth);
  };
  return spec;
}

TEST_F(Qpsd, RegistersItsRowAndOnlyReads) {
  EXPECT_EQ(host_.Ids(), std::vector<std::uint32_t>{kPsdId});
  EXPECT_FALSE(host_.HasEntry("SaveImageData"));
}

TEST_F(Qpsd, ReadsModesDepthsAndCompressions) {
  struct Case {
    const char* name;
    std::uint32_t mode, channels;
    std::int32_t bits;
    std::function<std::uint32_t(std::uint32_t x, std::uint32_t y)> pixel;
  };
  const auto sample = [](std::uint32_t plane) {
    return [plane](std::uint32_t x, std::uint32_t y) { return Sample(plane, x, y); };
  };
  const auto s0 = sample(0);
  const auto s1 = sample(1);
  const auto s2 = sample(2);
  const auto s3 = sample(3);
  const auto inks = [=](std::uint32_t x, std::uint32_t y) {
    const auto mixed = [&](std::uint32_t ink) { return (ink * s3(x, y) + 127) / 255; };
    return Word(mixed(s0(x, y)), mixed(s1(x, y)), mixed(s2(x, y)));
  };
  const auto grey = [=](std::uint32_t x, std::uint32_t y) { return Word(s0(x, y), s0(x, y), s0(x, y)); };
  const auto colour = [=](std::uint32_t x, std::uint32_t y) { return Word(s0(x, y), s1(x, y), s2(x, y)); };
  const std::vector<Case> cases = {
      {"grey", kGrey, 1, 8, grey},
      {"duotone", kDuotone, 1, 8, grey},
      {"one ink", kInks, 1, 8, grey},
      {"colours", kRgb, 3, 24, colour},
      {"three inks", kInks, 3, 24, colour},
      {"four inks", kCmyk, 4, 24, inks},
      {"many inks", kInks, 5, 24, inks},
      {"grey and alpha", kGrey, 2, 32,
       [=](std::uint32_t x, std::uint32_t y) { return Word(s0(x, y), s0(x, y), s0(x, y), s1(x, y)); }},
      {"colours and alpha", kRgb, 4, 32,
       [=](std::uint32_t x, std::uint32_t y) { return Word(s0(x, y), s1(x, y), s2(x, y), s3(x, y)); }},
  };
  for (const Case& one : cases) {
    for (const std::uint32_t depth : {8U, 16U, 32U}) {
      for (const std::uint32_t compression : {0U, 1U, 2U, 3U}) {
        SCOPED_TRACE(std::string(one.name) + " depth " + std::to_string(depth) + " compression " +
                     std::to_string(compression));
        PsdSpec spec = Picture(one.mode, one.channels, depth);
        spec.compression = compression;
        // The light of inks and alpha isn't linear; only colours are tried with floats.
        if (depth == 32 && one.mode != kRgb && one.mode != kGrey) continue;
        if (depth == 32 && one.bits == 32) continue;
        const Loaded loaded = Load(spec);
        ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
        ASSERT_EQ(loaded.PageCount(), 1U);
        const auto& page = loaded.PageAt(0);
        EXPECT_EQ(page.bits, one.bits);
        EXPECT_EQ(page.slideNumber, -1);
        EXPECT_EQ(page.grayscale, one.bits == 8 ? 1 : 0);
        for (std::uint32_t y = 0; y < spec.height; ++y) {
          for (std::uint32_t x = 0; x < spec.width; ++x)
            ASSERT_EQ(PixelAt(page, x, y), one.pixel(x, y)) << x << ' ' << y;
        }
      }
    }
  }
}

TEST_F(Qpsd, SamplesOfSixteenBitsAreRounded) {
  PsdSpec spec = Picture(kGrey, 1, 16);
  spec.value = [](std::uint32_t, std::uint32_t x, std::uint32_t) { return x * 3640; };
  const Loaded loaded = Load(spec);
  ASSERT_EQ(loaded.result, glib::RCOK);
  for (std::uint32_t x = 0; x < spec.width; ++x) {
    EXPECT_EQ(IndexAt(loaded.PageAt(0), x, 0), static_cast<std::uint32_t>(x * 3640 / 257.0 + 0.5));
  }
}

TEST_F(Qpsd, BitmapsStayBitmapsAndPalettesPalettes) {
  for (const std::uint32_t compression : {0U, 1U}) {
    PsdSpec spec = Picture(kBitmap, 1, 1);
    spec.compression = compression;
    const Loaded loaded = Load(spec);
    ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
    EXPECT_EQ(loaded.PageAt(0).bits, 1);
    EXPECT_EQ(PixelAt(loaded.PageAt(0), 2, 0), 0xFFFFFFFFU);
    EXPECT_EQ(PixelAt(loaded.PageAt(0), 3, 0), 0xFF000000U);
    EXPECT_EQ(PixelAt(loaded.PageAt(0), 18, 1), 0xFF000000U);
  }
  PsdSpec spec = Picture(kIndexed, 1);
  for (std::uint32_t i = 0; i < 768; ++i) spec.palette.push_back(static_cast<std::uint8_t>(i / 256 * 64 + i % 64));
  spec.resources = {{0x0416, {0, 250}}, {0x0417, {0, 201}}};
  const Loaded loaded = Load(spec);
  ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
  const auto& page = loaded.PageAt(0);
  EXPECT_EQ(page.bits, 8);
  EXPECT_EQ(page.paletteEntries, 250U);
  EXPECT_EQ(IndexAt(page, 5, 0), Sample(0, 5, 0));
  EXPECT_EQ(page.palette[200], Word(8, 72, 136));
  EXPECT_EQ(page.palette[201], Word(9, 73, 137, 0));
}

TEST_F(Qpsd, ColoursOfAProfileBecomeSrgb) {
  struct Case {
    std::uint32_t mode, channels, depth;
  };
  for (const Case& c : {Case{kGrey, 1, 8}, Case{kGrey, 2, 8}, Case{kGrey, 1, 16}, Case{kIndexed, 1, 8},
                        Case{kRgb, 3, 8}, Case{kRgb, 4, 8}, Case{kRgb, 3, 16}}) {
    SCOPED_TRACE("mode " + std::to_string(c.mode) + ", channels " + std::to_string(c.channels));
    PsdSpec spec = Picture(c.mode, c.channels, c.depth);
    if (c.mode == kIndexed) {
      for (std::uint32_t i = 0; i < 768; ++i) spec.palette.push_back(static_cast<std::uint8_t>(i * 7 + i / 256));
    }
    const Loaded plain = Load(spec);
    const IccBytes profile = c.mode == kGrey ? GreyProfile(1.0) : RgbProfile(1.0, true);
    spec.resources = {{0x040F, profile}};
    ExpectConverted(plain, Load(spec), profile);
    spec.resources = {{0x040F, c.mode == kGrey ? RgbProfile(1.0, true) : RgbProfile(0, false)}};
    ExpectUnchanged(plain, Load(spec));
  }
  // Of floats the light is known.
  PsdSpec floats = Picture(kRgb, 3, 32);
  const Loaded plain = Load(floats);
  floats.resources = {{0x040F, RgbProfile(1.0, false)}};
  ExpectUnchanged(plain, Load(floats));
}

TEST_F(Qpsd, InksOfAProfileBecomeSrgb) {
  const IccBytes profile = InkProfile();
  const IccReference reference(profile);
  for (const bool layered : {false, true}) {
    for (const std::uint32_t channels : {4U, 5U}) {
      PsdSpec spec = Picture(kCmyk, channels);
      spec.resources = {{0x040F, profile}};
      if (layered) {
        spec.resources.push_back({0x0421, {0, 0, 0, 1, 0}});
        spec.layers = {{.width = spec.width, .height = spec.height, .planes = {0, 1, 2, 3}, .value = Sample}};
        if (channels == 5) spec.layers[0].planes.push_back(-1);
      }
      const Loaded loaded = Load(spec);
      ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
      const auto& page = loaded.PageAt(0);
      ASSERT_EQ(page.bits, channels == 5 || layered ? 32 : 24);
      for (std::uint32_t y = 0; y < spec.height; ++y) {
        for (std::uint32_t x = 0; x < spec.width; ++x) {
          std::uint8_t inks[4];
          for (std::uint32_t i = 0; i < 4; ++i) inks[i] = static_cast<std::uint8_t>(255 - Sample(i, x, y));
          std::uint32_t expected = reference.OfInks(inks);
          if (channels == 5) expected = (expected & 0xFFFFFFU) | Sample(4, x, y) << 24;
          ASSERT_TRUE(OneStepApart(PixelAt(page, x, y), expected))
              << x << ' ' << y << std::hex << ' ' << PixelAt(page, x, y) << " for " << expected;
        }
      }
    }
  }
}

TEST_F(Qpsd, LabBecomesColours) {
  struct Case {
    std::uint32_t lab[3];
    std::uint32_t colour;
  };
  // Lightness in 255 steps, the other two around 128; of the corners of the colour cube and of greys.
  const Case kCases[] = {{{0, 128, 128}, Word(0, 0, 0)},         {{255, 128, 128}, Word(255, 255, 255)},
                         {{138, 128, 128}, Word(129, 129, 129)}, {{138, 209, 198}, Word(255, 0, 0)},
                         {{224, 49, 209}, Word(0, 255, 0)},      {{75, 196, 16}, Word(0, 0, 255)}};
  for (const Case& one : kCases) {
    PsdSpec spec = Picture(kLab, 3);
    spec.value = [&](std::uint32_t plane, std::uint32_t, std::uint32_t) { return one.lab[plane]; };
    const Loaded loaded = Load(spec);
    ASSERT_EQ(loaded.result, glib::RCOK);
    const std::uint32_t pixel = PixelAt(loaded.PageAt(0), 18, 4);
    for (const std::uint32_t shift : {0U, 8U, 16U}) {
      EXPECT_NEAR(pixel >> shift & 255U, one.colour >> shift & 255U, 12) << std::hex << pixel << ' ' << one.colour;
    }
  }
}

TEST_F(Qpsd, AlphaIsWhatTheFileCallsTransparency) {
  PsdSpec spec = Picture(kRgb, 4);
  spec.resources = {{0x03EE, {5, 'A', 'l', 'p', 'h', 'a'}}};  // a channel that somebody saved
  EXPECT_EQ(Load(spec).PageAt(0).bits, 24);
  spec.channels = 5;
  spec.resources.clear();
  EXPECT_EQ(Load(spec).PageAt(0).bits, 24);
  spec.transparentMerged = true;
  spec.layers = {{.width = 1, .height = 1, .planes = {0}, .value = Sample}};
  EXPECT_EQ(Load(spec).PageAt(0).bits, 32);
  // Where nothing is opaque, nobody meant it.
  spec.value = [](std::uint32_t plane, std::uint32_t, std::uint32_t) { return plane == 3 ? 0U : 7U; };
  EXPECT_EQ(PixelAt(Load(spec).PageAt(0), 0, 0), Word(7, 7, 7));
  // Half of a colour on half of white.
  spec.value = [](std::uint32_t plane, std::uint32_t x, std::uint32_t) {
    return plane == 3 ? (x == 0 ? 51U : 255U) : 204 + 17 * plane;
  };
  const Loaded mixed = Load(spec);
  EXPECT_EQ(PixelAt(mixed.PageAt(0), 0, 0), Word(0, 85, 170, 51));
  EXPECT_EQ(PixelAt(mixed.PageAt(0), 1, 0), Word(204, 221, 238));
}

Bytes NoMerged() { return {0, 0, 0, 1, 0}; }

TEST_F(Qpsd, LayersAreReadWhereThereIsNoMergedPicture) {
  const auto planes = [](std::uint32_t plane, std::uint32_t x, std::uint32_t y) {
    return plane == 0 ? 100 + x : 10 * plane + y;  // alpha first
  };
  PsdSpec spec = Picture(kRgb, 3);
  spec.resources = {{0x0421, NoMerged()}, {0x03ED, {0, 144, 0, 0, 0, 1, 0, 1, 0, 200, 0, 0, 0, 1, 0, 1}}};
  for (const std::uint32_t compression : {0U, 1U, 2U, 3U}) {
    for (const char* block : {static_cast<const char*>(nullptr), "Lr16"}) {
      spec.layerBlock = block;
      spec.layers = {
          {.width = 4, .height = 3, .planes = {0, 1, 2}, .value = planes, .compression = compression, .name = "below"},
          {.left = -2,
           .top = 5,
           .width = 2,
           .height = 2,
           .planes = {-1, 0, 1, 2},
           .value = planes,
           .compression = compression,
           .opacity = 51,
           .flags = 2,
           .name = "above"},
          {.left = 3, .width = 0, .height = 7, .name = "empty"}};
      const Loaded loaded = Load(spec);
      ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
      EXPECT_EQ(loaded.message, "");
      ASSERT_EQ(loaded.PageCount(), 2U);
      const auto& below = loaded.PageAt(0);
      EXPECT_STREQ(below.name.c_str(), "below");
      EXPECT_EQ(below.slideNumber, 0);
      EXPECT_EQ(below.bits, 32);
      EXPECT_EQ(below.visible, 1);
      EXPECT_EQ(below.dpiX, 144.0);
      EXPECT_EQ(below.dpiY, 200.0);
      EXPECT_EQ(PixelAt(below, 3, 2), Word(103, 12, 22));
      const auto& above = loaded.PageAt(1);
      EXPECT_STREQ(above.name.c_str(), "above");
      EXPECT_EQ(above.slideNumber, 0);
      EXPECT_EQ(above.x, -2);
      EXPECT_EQ(above.y, 5);
      EXPECT_EQ(above.visible, 0);
      EXPECT_EQ(PixelAt(above, 1, 0), Word(10, 20, 30, 20));
      EXPECT_EQ(PixelAt(above, 1, 1), Word(11, 21, 31, 20));
    }
  }
  spec.resources.clear();
  EXPECT_EQ(Load(spec).PageAt(0).slideNumber, -1);
}

TEST_F(Qpsd, GroupsHideAndFadeTheirLayers) {
  const auto white = [](std::uint32_t, std::uint32_t, std::uint32_t) { return 255U; };
  const PsdLayerSpec layer{.width = 1, .height = 1, .planes = {-1, 0, 1, 2}, .value = white};
  const PsdLayerSpec end{.name = "</Layer group>", .divider = 3};
  PsdSpec spec = Picture(kRgb, 3);
  spec.resources = {{0x0421, NoMerged()}};
  spec.layers = {layer, end, layer, end, layer, {.opacity = 51, .divider = 2}, layer, {.flags = 2, .divider = 1},
                 layer};
  const Loaded loaded = Load(spec);
  ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
  ASSERT_EQ(loaded.PageCount(), 5U);
  constexpr std::uint8_t kVisible[] = {1, 0, 0, 0, 1};
  constexpr std::uint32_t kAlpha[] = {255, 255, 51, 255, 255};
  for (std::uint32_t i = 0; i < 5; ++i) {
    EXPECT_EQ(loaded.PageAt(i).visible, kVisible[i]) << i;
    EXPECT_EQ(PixelAt(loaded.PageAt(i), 0, 0) >> 24, kAlpha[i]) << i;
  }
}

TEST_F(Qpsd, MasksFadeTheirLayer) {
  const auto box = [](std::uint32_t top, std::uint32_t left, std::uint32_t bottom, std::uint32_t right,
                      std::uint32_t outside, std::uint32_t flags) {
    return ByteWriter()
        .BigLong(top)
        .BigLong(left)
        .BigLong(bottom)
        .BigLong(right)
        .Byte(outside)
        .Byte(flags)
        .Zeros(2)
        .bytes;
  };
  PsdSpec spec = Picture(kRgb, 3);
  spec.resources = {{0x0421, NoMerged()}};
  PsdLayerSpec layer{.left = 1, .top = 1, .width = 3, .height = 3, .planes = {0, 1, 2}, .value = Sample};
  layer.maskPlane = {0, 0, 10, 20, 30, 40};
  struct Case {
    Bytes mask;
    std::uint32_t alpha[9];
  };
  const Case kCases[] = {
      {box(2, 2, 4, 4, 7, 0), {7, 7, 7, 7, 10, 20, 7, 30, 40}},
      {box(0, 0, 2, 2, 255, 0), {40, 255, 255, 255, 255, 255, 255, 255, 255}},
      {box(2, 2, 4, 4, 7, 2), {255, 255, 255, 255, 255, 255, 255, 255, 255}},
      {box(50, 50, 52, 52, 0, 0), {0, 0, 0, 0, 0, 0, 0, 0, 0}},
  };
  for (const Case& one : kCases) {
    layer.mask = one.mask;
    spec.layers = {layer};
    const Loaded loaded = Load(spec);
    ASSERT_EQ(loaded.result, glib::RCOK) << loaded.message;
    for (std::uint32_t i = 0; i < 9; ++i) EXPECT_EQ(PixelAt(loaded.PageAt(0), i % 3, i / 3) >> 24, one.alpha[i]) << i;
  }
}

TEST_F(Qpsd, TellsOfAFileFromItsHeaderAlone) {
  PsdSpec spec = Picture(kGrey, 2, 16);
  spec.resources = {{0x0FFF, Bytes(100000)}, {0x03ED, {1, 0, 0, 0, 0, 1, 0, 1, 0, 72, 0x80, 0, 0, 1, 0, 1}}};
  spec.transparentMerged = true;
  const Bytes psd = MakePsd(spec);
  const test_support::TemporaryFolder folder;
  const auto info = host_.Info(folder.Write("a.psd", AsText(psd)), kPsdId);
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->width, 19);
  EXPECT_EQ(info->height, 5);
  EXPECT_EQ(info->bits(), 32);
  EXPECT_EQ(info->dpiX, 256.0);
  EXPECT_EQ(info->dpiY, 72.5);
  EXPECT_EQ(info->size, static_cast<std::int32_t>(psd.size()));
}

TEST_F(Qpsd, RefusesWhatItCanNotHold) {
  const auto result = [&](auto change) {
    PsdSpec spec = Picture(kRgb, 3);
    change(spec);
    const Loaded loaded = Load(spec);
    CheckOutcome(loaded);
    return loaded.result;
  };
  EXPECT_EQ(result([](PsdSpec& spec) { spec.version = 2; }), glib::NSUP);
  EXPECT_EQ(result([](PsdSpec& spec) { spec.mode = 5; }), glib::NSUP);
  EXPECT_EQ(result([](PsdSpec& spec) { spec.depth = 4; }), glib::NSUP);
  EXPECT_EQ(result([](PsdSpec& spec) { spec.channels = 57; }), glib::IERR);
  EXPECT_EQ(result([](PsdSpec& spec) { spec.channels = 2; }), glib::IERR);
  EXPECT_EQ(result([](PsdSpec& spec) { spec.compression = 4; }), glib::NSUP);
  EXPECT_EQ(result([](PsdSpec& spec) { spec.value = nullptr; }), glib::IERR);
  EXPECT_EQ(result([](PsdSpec& spec) { spec.width = 0; }), glib::IERR);
  Bytes huge = MakePsd(Picture(kRgb, 3));
  for (const std::uint32_t compression : {0U, 1U, 2U, 3U}) {
    PsdSpec spec = Picture(kRgb, 3);
    spec.compression = compression;
    huge = MakePsd(spec);
    huge[16] = huge[20] = 0x80;  // sides of 32768 and more
    EXPECT_EQ(host_.Load(huge, kPsdId).result, glib::NSUP);
    huge[16] = huge[20] = 0x30;  // within the limits, but far more than the data
    EXPECT_EQ(host_.Load(huge, kPsdId).result, glib::IERR);
  }
  PsdSpec layers{.channels = 3, .width = 4, .height = 4};
  layers.resources = {{0x0421, NoMerged()}};
  layers.layers.assign(20, {.width = 5000, .height = 5000, .planes = {0}});
  EXPECT_EQ(result([&](PsdSpec& spec) { spec = layers; }), glib::NSUP);
}

TEST_F(Qpsd, ACutFileGivesWhatThereIs) {
  const Bytes psd = MakePsd(Picture(kRgb, 3));
  const Loaded loaded = host_.Load(std::span(psd).first(psd.size() - 19 * 5 - 1), kPsdId);
  ASSERT_EQ(loaded.result, glib::RCOK);
  EXPECT_NE(loaded.message, "");
  EXPECT_EQ(PixelAt(loaded.PageAt(0), 18, 3), Word(Sample(0, 18, 3), Sample(1, 18, 3), 0));
}

TEST_F(Qpsd, DamagedFilesEndCleanly) {
  const auto load = [&](std::span<const std::uint8_t> bytes) { return host_.Load(bytes, kPsdId); };
  for (const std::uint32_t compression : {0U, 1U, 2U, 3U}) {
    PsdSpec spec = Picture(kRgb, 4, 16);
    spec.compression = compression;
    spec.transparentMerged = true;
    spec.resources = {{0x0421, NoMerged()}, {0x03ED, Bytes(16, 1)}};
    PsdLayerSpec layer{.width = 3, .height = 2, .planes = {-1, 0, 1, 2}, .value = Sample, .compression = compression};
    layer.mask = ByteWriter().BigLong(0).BigLong(0).BigLong(2).BigLong(3).Zeros(4).bytes;
    layer.maskPlane = {0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    spec.layers = {layer, {.divider = 3}, layer, {.divider = 1}};
    TryDamaged(MakePsd(spec), load);
    spec.resources.clear();
    TryDamaged(MakePsd(spec), load);
  }
}

TEST_F(Qpsd, RealFilesLookAsElsewhere) {
  if (!CheckCorpus("psd", host_, kPsdId)) GTEST_SKIP() << "no corpus";
}

}  // namespace
}  // namespace tests
