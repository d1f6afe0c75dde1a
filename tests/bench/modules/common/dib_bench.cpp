#include "modules/common/dib.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "glib/module_api/exchange.h"
#include "glib/module_api/result_values.h"

namespace {

constexpr std::int32_t kWidth = 4000;
constexpr std::int32_t kHeight = 3000;

void Put(std::vector<std::uint8_t>& bytes, std::size_t at, std::uint32_t value) {
  std::memcpy(bytes.data() + at, &value, sizeof(value));
}

std::vector<std::uint8_t> Bitmap(std::uint32_t bits, std::uint32_t compression) {
  const std::size_t behindHeader = compression != 0 ? 12 : bits == 8 ? 1024 : 0;
  std::vector<std::uint8_t> dib(40 + behindHeader + glib::PaddedStride(kWidth, bits) * kHeight);
  for (std::size_t i = 40 + behindHeader; i < dib.size(); ++i) dib[i] = static_cast<std::uint8_t>(i * 2654435761U >> 7);
  Put(dib, 0, 40);
  Put(dib, 4, kWidth);
  Put(dib, 8, kHeight);
  Put(dib, 12, 1U | bits << 16);
  Put(dib, 16, compression);
  if (compression != 0) {
    Put(dib, 40, 0xF800);
    Put(dib, 44, 0x07E0);
    Put(dib, 48, 0x001F);
  }
  return dib;
}

void Load(benchmark::State& state) {
  const auto dib = Bitmap(static_cast<std::uint32_t>(state.range(0)), static_cast<std::uint32_t>(state.range(1)));
  gen::basic_string<char> message;
  for (auto _ : state) {
    glib::ImageDataExchange exchange;
    exchange.message = &message;
    exchange.AllocateRaster = glib::AllocateRaster;
    exchange.FreeRaster = glib::FreeRaster;
    if (modules::LoadDib(dib, 0, exchange) != glib::RCOK) state.SkipWithError("not read");
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(dib.size()));
}
BENCHMARK(Load)->ArgNames({"bits", "compression"})->Args({8, 0})->Args({24, 0})->Args({32, 0})->Args({16, 3});

// What no load of the same bytes can beat by much: one copy into a raster of the host.
void Copy(benchmark::State& state) {
  const auto dib = Bitmap(static_cast<std::uint32_t>(state.range(0)), 0);
  for (auto _ : state) {
    std::uint8_t* raster = glib::AllocateRaster(kWidth, kHeight + 1, static_cast<std::uint32_t>(state.range(0)));
    std::memcpy(raster, dib.data(), glib::PaddedStride(kWidth, static_cast<std::size_t>(state.range(0))) * kHeight);
    benchmark::DoNotOptimize(raster);
    glib::FreeRaster(raster);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(dib.size()));
}
BENCHMARK(Copy)->ArgName("bits")->Arg(8)->Arg(24)->Arg(32);

}  // namespace
