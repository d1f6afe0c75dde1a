#include "modules/common/icc_profile.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <vector>

#include "modules/common/color_conversion.h"
#include "tests/support/icc_profiles.h"

namespace tests {
namespace {

using modules::IccSpace;
using modules::Samples;

TEST(IccProfile, TellsWhichSamplesItIsFor) {
  const struct {
    IccBytes profile;
    IccSpace space;
  } kCases[] = {
      {RgbProfile(0, false), IccSpace::kRgb}, {GreyProfile(2.2), IccSpace::kGrey}, {InkProfile(), IccSpace::kCmyk}};
  for (const auto& c : kCases) {
    for (const IccSpace space : {IccSpace::kRgb, IccSpace::kGrey, IccSpace::kCmyk}) {
      EXPECT_EQ(IsIccProfileOf(c.profile, space), c.space == space);
    }
    IccBytes broken = c.profile;
    broken[36] = 'x';
    EXPECT_FALSE(IsIccProfileOf(broken, c.space));
    EXPECT_FALSE(IsIccProfileOf(std::span(c.profile).first(128), c.space));
    EXPECT_FALSE(IsIccProfileOf({}, c.space));
  }
}

TEST(IccProfile, KnowsSrgbHoweverItsCurveIsWritten) {
  EXPECT_TRUE(modules::IsSrgb(RgbProfile(0, false)));
  for (const std::uint32_t entries : {256U, 1024U, 4096U}) EXPECT_TRUE(modules::IsSrgb(SrgbTableProfile(entries)));
  EXPECT_FALSE(modules::IsSrgb(SrgbTableProfile(8)));  // too coarse
  EXPECT_FALSE(modules::IsSrgb(RgbProfile(0, true)));
  for (const double gamma : {1.0, 1.8, 2.2, 2.4}) EXPECT_FALSE(modules::IsSrgb(RgbProfile(gamma, false)));
  EXPECT_FALSE(modules::IsSrgb(GreyProfile(2.2)));
}

TEST(IccProfile, CutAndChangedBytesAreNoHarm) {
  for (const IccBytes& profile : {RgbProfile(0, false), SrgbTableProfile(16)}) {
    for (std::size_t size = 0; size < profile.size(); ++size) modules::IsSrgb(std::span(profile).first(size));
    IccBytes copy = profile;
    for (std::size_t i = 0; i < copy.size(); ++i) {
      copy[i] ^= 0xFF;
      modules::IsSrgb(copy);
      copy[i] = profile[i];
    }
  }
}

// As the curve of sRGB encodes an amount of light.
std::uint8_t Encoded(double light) {
  const double sample = light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
  return static_cast<std::uint8_t>(std::lround(sample * 255));
}

TEST(ColorConversion, LinearLightAndChangedPrimariesWorkedByHand) {
  // Few pixels and many go different ways.
  for (const std::uint64_t pixels : {256ULL, 1ULL << 20}) {
    const auto linear = modules::ConversionToSrgb(RgbProfile(1.0, false), {Samples::kColours}, pixels);
    const auto swapped = modules::ConversionToSrgb(RgbProfile(0, true), {Samples::kColours, true}, pixels);
    ASSERT_NE(linear, nullptr);
    ASSERT_NE(swapped, nullptr);
    for (int i = 0; i < 256; i += 5) {
      const auto sample = static_cast<std::uint8_t>(i);
      std::uint8_t grey[3] = {sample, sample, sample};
      linear->Convert(grey, grey, 1);
      for (const std::uint8_t byte : grey) EXPECT_NEAR(byte, Encoded(i / 255.0), 1) << i;
      std::uint8_t colour[4] = {sample, static_cast<std::uint8_t>(255 - i), 99, 7};
      swapped->Convert(colour, colour, 1);
      EXPECT_NEAR(colour[0], 99, 1);
      EXPECT_NEAR(colour[1], 255 - i, 1);
      EXPECT_NEAR(colour[2], i, 1);
      EXPECT_EQ(colour[3], 7);
    }
  }
}

TEST(ColorConversion, InksEqualThePlainWay) {
  const IccBytes profile = InkProfile();
  const IccReference reference(profile);
  // The table of the fast way has its points elsewhere than the profile's: it is less exact where colours are cut off.
  for (const bool exact : {true, false}) {
    for (const bool inverted : {false, true}) {
      const Samples samples = inverted ? Samples::kInvertedInks : Samples::kInks;
      const auto conversion = modules::ConversionToSrgb(profile, {samples, true}, exact ? 256 : 1U << 20);
      ASSERT_NE(conversion, nullptr);
      int sum = 0;
      for (std::uint32_t i = 0; i < 4096; ++i) {
        const std::uint8_t inks[4] = {static_cast<std::uint8_t>(i % 8 * 36), static_cast<std::uint8_t>(i / 8 % 8 * 36),
                                      static_cast<std::uint8_t>(i / 64 % 8 * 36),
                                      static_cast<std::uint8_t>(i / 512 * 36)};
        std::uint8_t from[4];
        for (int k = 0; k < 4; ++k) from[k] = static_cast<std::uint8_t>(inverted ? 255 - inks[k] : inks[k]);
        std::uint8_t to[4] = {0, 0, 0, 7};
        conversion->Convert(from, to, 1);
        EXPECT_EQ(to[3], 7);
        const std::uint32_t expected = reference.OfInks(inks);
        for (int k = 0; k < 3; ++k) {
          const int difference = std::abs(to[k] - static_cast<int>(expected >> 8 * k & 255));
          EXPECT_LE(difference, exact ? 1 : 12) << i;
          sum += difference;
        }
      }
      EXPECT_LT(sum / (3.0 * 4096), 0.6);
    }
  }
}

TEST(ColorConversion, NothingIsDoneWithoutNeed) {
  EXPECT_EQ(modules::ConversionToSrgb(RgbProfile(0, false), {Samples::kColours}, 1), nullptr);
  EXPECT_EQ(modules::ConversionToSrgb(RgbProfile(1.8, false), {Samples::kGrey}, 1), nullptr);
  EXPECT_EQ(modules::ConversionToSrgb(RgbProfile(1.8, false), {Samples::kInks}, 1), nullptr);
  EXPECT_EQ(modules::ConversionToSrgb(GreyProfile(1.8), {Samples::kColours}, 1), nullptr);
  EXPECT_EQ(modules::ConversionToSrgb({}, {Samples::kColours}, 1), nullptr);
  const IccBytes profile = RgbProfile(1.8, false);
  EXPECT_EQ(modules::ConversionToSrgb(std::span(profile).first(200), {Samples::kColours}, 1), nullptr);
}

TEST(ColorConversion, BrokenProfilesAreNoHarm) {
  for (const IccBytes& profile : {RgbProfile(1.8, false), InkProfile()}) {
    const Samples samples = profile[16] == 'C' ? Samples::kInks : Samples::kColours;
    IccBytes copy = profile;
    for (std::size_t i = 0; i < 400 && i < copy.size(); ++i) {
      copy[i] ^= 0x81;
      const std::uint8_t from[4] = {1, 2, 3, 4};
      std::uint8_t to[4];
      if (const auto conversion = modules::ConversionToSrgb(copy, {samples}, 1)) conversion->Convert(from, to, 1);
      copy[i] = profile[i];
    }
  }
}

}  // namespace
}  // namespace tests
