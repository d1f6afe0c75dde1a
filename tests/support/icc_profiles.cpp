#include "tests/support/icc_profiles.h"

#include <gtest/gtest.h>
#include <lcms2.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "glib/module_api/result_values.h"

namespace tests {
namespace {

constexpr cmsCIExyY kDaylight{0.3127, 0.3290, 1.0};

// The profile is closed.
IccBytes Saved(cmsHPROFILE profile) {
  cmsUInt32Number size = 0;
  cmsSaveProfileToMem(profile, nullptr, &size);
  IccBytes bytes(size);
  cmsSaveProfileToMem(profile, bytes.data(), &size);
  cmsCloseProfile(profile);
  return bytes;
}

cmsToneCurve* Curve(double gamma) {
  const cmsFloat64Number srgb[] = {2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
  return gamma == 0 ? cmsBuildParametricToneCurve(nullptr, 4, srgb) : cmsBuildGamma(nullptr, gamma);
}

// The curve is freed.
IccBytes RgbWith(cmsToneCurve* curve, bool swapped) {
  cmsCIExyYTRIPLE primaries{{0.64, 0.33, 1}, {0.30, 0.60, 1}, {0.15, 0.06, 1}};
  if (swapped) std::swap(primaries.Red, primaries.Blue);
  cmsToneCurve* curves[] = {curve, curve, curve};
  const cmsHPROFILE profile = cmsCreateRGBProfile(&kDaylight, &primaries, curves);
  cmsFreeToneCurve(curve);
  return Saved(profile);
}

// Lab from four inks, all in 16 bits.
cmsInt32Number PressSample(const cmsUInt16Number* in, cmsUInt16Number* out, void*) {
  const auto paper = [&](int ink) { return 1.0 - in[ink] / 65535.0; };
  const double light = paper(3) * (0.2 * paper(0) + 0.3 * paper(1) + 0.5 * paper(2));
  const cmsCIELab lab{100.0 * std::sqrt(light), 60.0 * paper(3) * (paper(0) - paper(1)),
                      60.0 * paper(3) * (paper(1) - paper(2))};
  cmsFloat2LabEncoded(out, &lab);
  return TRUE;
}

std::uint32_t WordOf(const double (&colour)[3]) {
  std::uint32_t word = 0;
  for (const double share : colour) {
    word = word << 8 | static_cast<std::uint32_t>(std::lround(std::clamp(share, 0.0, 1.0) * 255));
  }
  return word;
}

// `same(before, after)` judges each pair of pixels.
template <typename Same>
void ComparePixels(const Loaded& plain, const Loaded& other, Same same) {
  ASSERT_EQ(plain.result, glib::RCOK) << plain.message;
  ASSERT_EQ(other.result, glib::RCOK) << other.message;
  EXPECT_EQ(other.message, "");
  ASSERT_EQ(other.PageCount(), plain.PageCount());
  for (std::uint32_t i = 0; i < plain.PageCount(); ++i) {
    const auto& before = plain.PageAt(i);
    const auto& after = other.PageAt(i);
    ASSERT_EQ(after.width, before.width);
    ASSERT_EQ(after.height, before.height);
    EXPECT_EQ(after.bits, before.bits);
    EXPECT_EQ(after.grayscale, before.grayscale);
    EXPECT_EQ(after.paletteEntries, before.paletteEntries);
    for (std::uint32_t y = 0; y < static_cast<std::uint32_t>(before.height); ++y) {
      for (std::uint32_t x = 0; x < static_cast<std::uint32_t>(before.width); ++x) {
        const std::uint32_t from = PixelAt(before, x, y);
        const std::uint32_t to = PixelAt(after, x, y);
        ASSERT_TRUE(same(from, to)) << "at " << x << ", " << y << std::hex << ": " << from << " became " << to;
      }
    }
  }
}

}  // namespace

IccBytes RgbProfile(double gamma, bool swapped) { return RgbWith(Curve(gamma), swapped); }

IccBytes SrgbTableProfile(std::uint32_t entries) {
  std::vector<cmsUInt16Number> table(entries);
  cmsToneCurve* exact = Curve(0);
  for (std::uint32_t i = 0; i < entries; ++i) {
    const auto sample = static_cast<float>(i) / static_cast<float>(entries - 1);
    table[i] = static_cast<cmsUInt16Number>(std::lround(cmsEvalToneCurveFloat(exact, sample) * 65535));
  }
  cmsFreeToneCurve(exact);
  return RgbWith(cmsBuildTabulatedToneCurve16(nullptr, entries, table.data()), false);
}

IccBytes GreyProfile(double gamma) {
  cmsToneCurve* curve = Curve(gamma);
  const cmsHPROFILE profile = cmsCreateGrayProfile(cmsD50_xyY(), curve);
  cmsFreeToneCurve(curve);
  return Saved(profile);
}

IccBytes InkProfile() {
  const cmsHPROFILE profile = cmsCreateProfilePlaceholder(nullptr);
  cmsSetProfileVersion(profile, 4.3);
  cmsSetDeviceClass(profile, cmsSigOutputClass);
  cmsSetColorSpace(profile, cmsSigCmykData);
  cmsSetPCS(profile, cmsSigLabData);
  cmsPipeline* pipeline = cmsPipelineAlloc(nullptr, 4, 3);
  cmsStage* table = cmsStageAllocCLut16bit(nullptr, 5, 4, 3, nullptr);
  cmsStageSampleCLut16bit(table, PressSample, nullptr, 0);
  cmsPipelineInsertStage(pipeline, cmsAT_BEGIN, cmsStageAllocToneCurves(nullptr, 4, nullptr));
  cmsPipelineInsertStage(pipeline, cmsAT_END, table);
  cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocToneCurves(nullptr, 3, nullptr));
  cmsWriteTag(profile, cmsSigAToB0Tag, pipeline);
  cmsPipelineFree(pipeline);
  return Saved(profile);
}

struct IccReference::Transform {
  cmsHTRANSFORM handle;
};

IccReference::IccReference(std::span<const std::uint8_t> bytes) : transform_(new Transform) {
  const cmsHPROFILE from = cmsOpenProfileFromMem(bytes.data(), static_cast<cmsUInt32Number>(bytes.size()));
  const cmsHPROFILE to = cmsCreate_sRGBProfile();
  const auto space = cmsGetColorSpace(from);
  const cmsUInt32Number format = space == cmsSigGrayData  ? TYPE_GRAY_DBL
                                 : space == cmsSigRgbData ? TYPE_RGB_DBL
                                                          : TYPE_CMYK_DBL;
  transform_->handle = cmsCreateTransform(from, format, to, TYPE_RGB_DBL, INTENT_RELATIVE_COLORIMETRIC,
                                          cmsFLAGS_BLACKPOINTCOMPENSATION | cmsFLAGS_NOOPTIMIZE | cmsFLAGS_NOCACHE);
  cmsCloseProfile(from);
  cmsCloseProfile(to);
}

IccReference::~IccReference() { cmsDeleteTransform(transform_->handle); }

std::uint32_t IccReference::Converted(std::uint32_t pixel) const {
  const double samples[3] = {(pixel >> 16 & 255) / 255.0, (pixel >> 8 & 255) / 255.0, (pixel & 255) / 255.0};
  double colour[3];
  cmsDoTransform(transform_->handle, samples, colour, 1);
  return (pixel & 0xFF000000U) | WordOf(colour);
}

std::uint32_t IccReference::OfInks(const std::uint8_t (&inks)[4]) const {
  double percent[4];
  for (int i = 0; i < 4; ++i) percent[i] = inks[i] / 2.55;
  double colour[3];
  cmsDoTransform(transform_->handle, percent, colour, 1);
  return 0xFF000000U | WordOf(colour);
}

bool OneStepApart(std::uint32_t left, std::uint32_t right) {
  for (int shift = 0; shift < 32; shift += 8) {
    if (std::abs(static_cast<int>(left >> shift & 255) - static_cast<int>(right >> shift & 255)) > 1) return false;
  }
  return true;
}

void ExpectConverted(const Loaded& plain, const Loaded& converted, std::span<const std::uint8_t> profile) {
  const IccReference reference(profile);
  ComparePixels(plain, converted,
                [&](std::uint32_t from, std::uint32_t to) { return OneStepApart(reference.Converted(from), to); });
}

void ExpectUnchanged(const Loaded& plain, const Loaded& other) {
  ComparePixels(plain, other, [](std::uint32_t from, std::uint32_t to) { return from == to; });
}

}  // namespace tests
