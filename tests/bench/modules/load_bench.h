#ifndef TESTS_BENCH_MODULES_LOAD_BENCH_H_
#define TESTS_BENCH_MODULES_LOAD_BENCH_H_

#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "glib/module_api/exchange.h"
#include "glib/module_api/result_values.h"

namespace bench {

inline constexpr std::uint32_t kWidth = 4000;
inline constexpr std::uint32_t kHeight = 3000;

// A row of a picture with slopes, edges and some noise, `channels` bytes a pixel.
inline std::vector<std::uint8_t> PictureRow(std::uint32_t y, std::uint32_t channels) {
  std::vector<std::uint8_t> row(kWidth * channels);
  std::uint32_t noise = y * 2654435761U + 1;
  for (std::uint32_t i = 0; i < row.size(); ++i) {
    const std::uint32_t x = i / channels;
    noise = noise * 1664525U + 1013904223U;
    const std::uint32_t slope = (x + y * (i % channels + 1)) / 40 + (x / 500 + y / 300) % 2 * 60;
    row[i] = static_cast<std::uint8_t>(slope % 180 + (noise >> 29));
  }
  return row;
}

// Times `load`, an entry of a module, on a file in memory.
template <typename LoadEntry>
void Load(benchmark::State& state, const std::vector<std::uint8_t>& file, LoadEntry load) {
  gen::basic_string<char> message;
  for (auto _ : state) {
    glib::ImageDataExchange exchange;
    exchange.message = &message;
    exchange.AllocateRaster = glib::AllocateRaster;
    exchange.FreeRaster = glib::FreeRaster;
    exchange.sourceSize = static_cast<std::uint32_t>(file.size());
    if (load(reinterpret_cast<const char*>(file.data()), &exchange) != glib::RCOK) state.SkipWithError("not read");
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * kWidth * kHeight);
}

// Times `decode`, which fills a raster by the library alone: `decode(raster, stride)`.
template <typename Decode>
void Bare(benchmark::State& state, std::uint32_t bits, Decode decode) {
  for (auto _ : state) {
    std::uint8_t* raster = glib::AllocateRaster(kWidth, kHeight, bits);
    decode(raster, glib::PaddedStride(kWidth, bits));
    benchmark::DoNotOptimize(raster);
    glib::FreeRaster(raster);
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * kWidth * kHeight);
}

}  // namespace bench

#endif  // TESTS_BENCH_MODULES_LOAD_BENCH_H_
