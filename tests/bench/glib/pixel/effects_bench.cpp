// Filters and colour effects on a 12-Mpixel raster, beside a plain copy of it.

#include <benchmark/benchmark.h>

#include <cstring>
#include <numeric>
#include <random>

#include "glib/pixel/color_effect.h"
#include "glib/pixel/filter.h"
#include "platform/pages.h"

namespace {

constexpr std::int32_t kWidth = 4000;
constexpr std::int32_t kHeight = 3000;
constexpr std::size_t kCount = std::size_t{kWidth} * kHeight;

// Work in place would soon leave a flat picture; every run begins with the same one.
std::uint32_t* Pixels() {
  static std::uint32_t* source = [] {
    auto* block = static_cast<std::uint32_t*>(platform::AllocatePages(kCount * 4));
    std::mt19937 random(1);
    auto* bytes = reinterpret_cast<std::uint8_t*>(block);
    for (std::size_t i = 0; i < kCount * 4; ++i) {
      const int before = i < 4 ? 128 : bytes[i - 4];
      bytes[i] = static_cast<std::uint8_t>(before + static_cast<int>(random() % 9) - 4);
    }
    return block;
  }();
  static auto* work = static_cast<std::uint32_t*>(platform::AllocatePages(kCount * 4));
  std::memcpy(work, source, kCount * 4);
  return work;
}

void Copy(benchmark::State& state) {
  std::uint32_t* from = Pixels();
  auto* to = static_cast<std::uint32_t*>(platform::AllocatePages(kCount * 4));
  for (auto _ : state) {
    std::memcpy(to, from, kCount * 4);
    benchmark::DoNotOptimize(to);
  }
  platform::FreePages(to);
}
BENCHMARK(Copy)->Unit(benchmark::kMillisecond);

template <typename Work>
void Run(benchmark::State& state, Work work) {
  std::uint32_t* pixels = Pixels();
  for (auto _ : state) {
    work(pixels);
    benchmark::DoNotOptimize(pixels);
  }
}

void Convolve(benchmark::State& state, glib::FilterKernel kernel) {
  Run(state, [&](std::uint32_t* pixels) {
    glib::RasterFilter().ConvolveRaster(reinterpret_cast<std::uint8_t*>(pixels), kWidth, kHeight, kernel);
  });
}
BENCHMARK_CAPTURE(Convolve, blur, glib::FilterKernel::kBlur)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Convolve, sharpen, glib::FilterKernel::kSharpen)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Convolve, emboss, glib::FilterKernel::kEmboss)->Unit(benchmark::kMillisecond);

void Rank(benchmark::State& state, std::uint32_t rank) {
  Run(state, [&](std::uint32_t* pixels) {
    glib::RasterFilter().RankRaster(reinterpret_cast<std::uint8_t*>(pixels), kWidth, kHeight, rank);
  });
}
BENCHMARK_CAPTURE(Rank, darken, 0)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Rank, median, 4)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Rank, lighten, 8)->Unit(benchmark::kMillisecond);

// The work of gamma and of squeezed contrast.
void Tables(benchmark::State& state) {
  glib::ChannelTable table;
  std::iota(table.begin(), table.end(), std::uint8_t{0});
  Run(state, [&](std::uint32_t* pixels) { glib::ApplyTables(pixels, kCount, table, table, table); });
}
BENCHMARK(Tables)->Unit(benchmark::kMillisecond);

// That of stretched contrast, and of levels with Range before it.
void Ramps(benchmark::State& state) {
  const glib::ChannelRamp same[3] = {{0, 0x10000}, {0, 0x10000}, {0, 0x10000}};
  Run(state, [&](std::uint32_t* pixels) { glib::ApplyRamps(pixels, kCount, same); });
}
BENCHMARK(Ramps)->Unit(benchmark::kMillisecond);

void Shift(benchmark::State& state) {
  Run(state, [](std::uint32_t* pixels) { glib::ShiftChannels(pixels, kCount, 1, -1, 1); });
}
BENCHMARK(Shift)->Unit(benchmark::kMillisecond);

void Invert(benchmark::State& state) {
  Run(state, [](std::uint32_t* pixels) { glib::InvertChannels(pixels, kCount); });
}
BENCHMARK(Invert)->Unit(benchmark::kMillisecond);

void Gray(benchmark::State& state) {
  Run(state, [](std::uint32_t* pixels) { glib::WeightedGray(pixels, kCount); });
}
BENCHMARK(Gray)->Unit(benchmark::kMillisecond);

void Range(benchmark::State& state) {
  Run(state, [](std::uint32_t* pixels) { benchmark::DoNotOptimize(glib::RangeOf(pixels, kCount)); });
}
BENCHMARK(Range)->Unit(benchmark::kMillisecond);

void Mosaic(benchmark::State& state) {
  Run(state, [](std::uint32_t* pixels) { glib::Mosaic(pixels, kWidth, kHeight, 16, 16); });
}
BENCHMARK(Mosaic)->Unit(benchmark::kMillisecond);

}  // namespace
