#include <lcms2.h>

#include "modules/helpers/color_management/entries.h"
#include "tests/bench/modules/load_bench.h"

// Rows of a picture from a profile to sRGB, against the library alone with its own tables.

namespace {

using Bytes = std::vector<std::uint8_t>;
using modules::Samples;

// A display of other primaries than sRGB, with one curve for all three.
Bytes DisplayProfile() {
  const cmsCIExyY white{0.3127, 0.3290, 1.0};
  const cmsCIExyYTRIPLE primaries{{0.64, 0.33, 1}, {0.21, 0.71, 1}, {0.15, 0.06, 1}};
  cmsToneCurve* curve = cmsBuildGamma(nullptr, 2.2);
  cmsToneCurve* curves[] = {curve, curve, curve};
  const cmsHPROFILE profile = cmsCreateRGBProfile(&white, &primaries, curves);
  cmsFreeToneCurve(curve);
  cmsUInt32Number size = 0;
  cmsSaveProfileToMem(profile, nullptr, &size);
  Bytes bytes(size);
  cmsSaveProfileToMem(profile, bytes.data(), &size);
  cmsCloseProfile(profile);
  return bytes;
}

template <typename Convert>
void Run(benchmark::State& state, Convert convert) {
  Bytes row = bench::PictureRow(1, 3);
  Bytes target(row.size());
  for (auto _ : state) {
    convert(row.data(), target.data());
    benchmark::DoNotOptimize(target.data());
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * bench::kWidth);
}

void Own(benchmark::State& state) {
  const Bytes profile = DisplayProfile();
  const modules::SampleForm form{Samples::kColours};
  const std::unique_ptr<modules::ColorConversion> conversion(
      OpenConversion(profile.data(), profile.size(), &form, std::uint64_t{bench::kWidth} * bench::kHeight));
  Run(state, [&](const std::uint8_t* from, std::uint8_t* to) { conversion->Convert(from, to, bench::kWidth); });
}
BENCHMARK(Own);

void Library(benchmark::State& state) {
  const Bytes profile = DisplayProfile();
  const cmsHPROFILE from = cmsOpenProfileFromMem(profile.data(), static_cast<cmsUInt32Number>(profile.size()));
  const cmsHPROFILE to = cmsCreate_sRGBProfile();
  const cmsHTRANSFORM transform =
      cmsCreateTransform(from, TYPE_BGR_8, to, TYPE_BGR_8, INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOCACHE);
  Run(state, [&](const std::uint8_t* source, std::uint8_t* target) {
    cmsDoTransform(transform, source, target, bench::kWidth);
  });
  cmsDeleteTransform(transform);
  cmsCloseProfile(from);
  cmsCloseProfile(to);
}
BENCHMARK(Library);

void Open(benchmark::State& state) {
  const Bytes profile = DisplayProfile();
  const modules::SampleForm form{Samples::kColours};
  for (auto _ : state) delete OpenConversion(profile.data(), profile.size(), &form, 1);
}
BENCHMARK(Open);

}  // namespace
