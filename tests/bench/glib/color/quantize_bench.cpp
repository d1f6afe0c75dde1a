// Colour reduction of a picture of 12 million pixels, with the plain form's time for the same work in `plain_ratio`
// (how many times faster the product is) and `plain_Mpx`. Each case checks once that both give the same.

#include "glib/color/quantize.h"

#include <benchmark/benchmark.h>

#include <cstring>

#include "tests/bench/processor_seconds.h"
#include "tests/support/color_rasters.h"
#include "tests/support/plain_quantizer.h"

namespace {

constexpr std::int32_t kWidth = 4000;
constexpr std::int32_t kHeight = 3000;
constexpr double kPixels = double{kWidth} * kHeight;

void MakePicture(std::int32_t bits, bool dither, glib::RasterBlock& block) {
  color_rasters::Make({bits, kWidth, kHeight, color_rasters::Texture::kPhoto}, block);
  block.ditherOnReduce = dither ? 1 : 0;
}

// Arguments: bits, colours, dither.
void BM_Quantize(benchmark::State& state) {
  const auto bits = static_cast<std::int32_t>(state.range(0));
  const auto colors = static_cast<std::uint32_t>(state.range(1));
  const bool dither = state.range(2) != 0;
  glib::RasterBlock plainResult;
  MakePicture(bits, dither, plainResult);
  const double plainSeconds = ProcessorSeconds([&] { plain::Quantize(plainResult, colors, true); });
  double seconds = 0;
  for (auto _ : state) {
    glib::RasterBlock block;
    MakePicture(bits, dither, block);
    const double once = ProcessorSeconds([&] { glib::Quantize(block, colors, true); });
    state.SetIterationTime(once);
    seconds += once;
    if (std::memcmp(block.palette, plainResult.palette, sizeof(block.palette)) != 0 ||
        std::memcmp(block.pixels, plainResult.pixels, std::size_t{kWidth} * kHeight) != 0) {
      state.SkipWithError("differs from the plain form");
      return;
    }
  }
  const auto iterations = static_cast<double>(state.iterations());
  state.counters["Mpx"] = kPixels * iterations / seconds / 1e6;
  state.counters["plain_Mpx"] = kPixels / plainSeconds / 1e6;
  state.counters["plain_ratio"] = plainSeconds * iterations / seconds;
}
BENCHMARK(BM_Quantize)
    ->ArgNames({"bits", "colors", "dither"})
    ->Args({24, 256, 0})
    ->Args({32, 256, 0})
    ->Args({24, 16, 0})
    ->Args({24, 256, 1})
    ->Args({32, 256, 1})
    ->Args({24, 16, 1})
    ->UseManualTime()
    ->Iterations(5)
    ->Unit(benchmark::kMillisecond);

}  // namespace
