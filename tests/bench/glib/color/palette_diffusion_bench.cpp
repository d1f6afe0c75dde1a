// Diffusion of a picture of 12 million pixels against a given palette, with the plain form's time in `plain_ratio` and
// `plain_Mpx`. The plain form is timed on the upper part alone, where both must give the same.

#include "glib/color/palette_diffusion.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "tests/bench/processor_seconds.h"
#include "tests/support/color_rasters.h"
#include "tests/support/plain_dither.h"

namespace {

constexpr std::uint32_t kWidth = 4000;
constexpr std::uint32_t kHeight = 3000;
constexpr std::uint32_t kPlainHeight = 300;

// 0: colours all over the cube; 1: 6 steps of each channel and greys; 2: colours of a small part of the cube, so that
// errors pile up beyond a byte.
void MakePalette(std::int64_t kind, std::uint32_t* palette) {
  std::uint32_t state = 12345;
  for (std::uint32_t i = 0; i < 256; ++i) {
    state = state * 1664525 + 1013904223;
    const std::uint32_t step = i < 216 ? (i % 6 * 51) | (i / 6 % 6 * 51) << 8 | (i / 36 * 51) << 16 : i * 0x010101;
    palette[i] = 0xFF000000 | (kind == 1 ? step : kind == 0 ? state >> 8 : 0x404040 + (state >> 8 & 0x7F7F7F));
  }
}

// Argument: the palette.
void BM_DitherRgb32(benchmark::State& state) {
  glib::RasterBlock picture;
  color_rasters::Make({32, kWidth, kHeight, color_rasters::Texture::kPhoto}, picture);
  std::vector<std::uint8_t> dest(std::size_t{kWidth} * kHeight);
  glib::DitherTarget target{dest.data(), {}, 256, true};
  MakePalette(state.range(0), target.palette);
  const auto pixel = [&picture](std::uint32_t x, std::uint32_t y) {
    const std::uint8_t* p = picture.pixels + (std::size_t{kWidth} * y + x) * 4;
    return plain::Channels{p[0], p[1], p[2]};
  };
  std::vector<std::uint8_t> plainDest;
  const double plainSeconds = ProcessorSeconds(
      [&] { plainDest = plain::DitherToPalette(kWidth, kPlainHeight, kWidth, target.palette, 256, pixel); });
  double seconds = 0;
  for (auto _ : state) {
    const double once = ProcessorSeconds([&] { target.DitherRgb32(picture.pixels, kWidth, kHeight, nullptr, 0); });
    state.SetIterationTime(once);
    seconds += once;
  }
  if (std::memcmp(dest.data(), plainDest.data(), plainDest.size()) != 0) {
    state.SkipWithError("differs from the plain form");
    return;
  }
  const double pixelsPerSecond = double{kWidth} * kHeight * static_cast<double>(state.iterations()) / seconds;
  const double plainPixelsPerSecond = double{kWidth} * kPlainHeight / plainSeconds;
  state.counters["Mpx"] = pixelsPerSecond / 1e6;
  state.counters["plain_Mpx"] = plainPixelsPerSecond / 1e6;
  state.counters["plain_ratio"] = pixelsPerSecond / plainPixelsPerSecond;
}
BENCHMARK(BM_DitherRgb32)
    ->ArgName("palette")
    ->Arg(0)
    ->Arg(1)
    ->Arg(2)
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);

}  // namespace
