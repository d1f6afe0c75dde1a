// Scaling and rotation of a 12-Mpixel raster, beside a plain copy of as many bytes as they read and write.

#include <benchmark/benchmark.h>

#include <cstring>
#include <random>

#include "glib/pixel/rotate.h"
#include "glib/pixel/scale.h"
#include "platform/pages.h"

namespace {

constexpr std::int32_t kWidth = 4000;
constexpr std::int32_t kHeight = 3000;

// In a block as layers have it: its pages are large ones where the system gives them.
const std::uint8_t* Words() {
  static const std::uint8_t* pixels = [] {
    constexpr std::size_t kBytes = std::size_t{4} * kWidth * kHeight;
    auto* block = static_cast<std::uint8_t*>(platform::AllocatePages(kBytes));
    std::mt19937 random(1);
    std::uint8_t value = 0;
    for (std::size_t i = 0; i < kBytes; ++i) block[i] = value = static_cast<std::uint8_t>(value + random() % 9 - 4);
    return block;
  }();
  return pixels;
}

void Copy(benchmark::State& state) {
  const auto bytes = static_cast<std::size_t>(state.range(0));
  auto* from = static_cast<std::uint8_t*>(platform::AllocatePages(bytes));
  auto* to = static_cast<std::uint8_t*>(platform::AllocatePages(bytes));
  std::memset(from, 1, bytes);
  for (auto _ : state) {
    std::memcpy(to, from, bytes);
    benchmark::DoNotOptimize(to);
  }
  platform::FreePages(from);
  platform::FreePages(to);
}
// Half of what is read and written together: a copy reads and writes each of its bytes.
BENCHMARK(Copy)->Arg(48'000'000)->Arg(120'000'000)->Unit(benchmark::kMillisecond);

void Scale(benchmark::State& state, std::int32_t bits, std::int32_t width, std::int32_t height, bool smooth) {
  const glib::RasterView source{Words(), kWidth, kHeight, bits, nullptr, true};
  glib::RasterScaler scaler;
  scaler.smooth = smooth ? 1 : 0;
  for (auto _ : state) {
    auto* block = scaler.ScaleRaster(source, width, height, nullptr);
    benchmark::DoNotOptimize(block);
    platform::FreePages(block);
  }
}
BENCHMARK_CAPTURE(Scale, nearest32_x2, 32, 8000, 6000, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Scale, nearest32_to_3999, 32, 3999, 2999, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Scale, nearest24_to_3999, 24, 3999, 2999, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Scale, smooth32_to_800, 32, 800, 600, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Scale, smooth24_to_800, 24, 800, 600, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Scale, smooth24_to_777, 24, 777, 583, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Scale, smooth32_to_3333, 32, 3333, 2500, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Scale, smooth24_to_3333, 24, 3333, 2500, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Scale, smooth32_x2, 32, 8000, 6000, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Scale, smooth24_x2, 24, 8000, 6000, true)->Unit(benchmark::kMillisecond);

void Rotate(benchmark::State& state, double angle, bool interpolate) {
  glib::RotateImage<glib::RGB32> image;
  image.interpolate = interpolate ? 1 : 0;
  for (auto _ : state) {
    glib::RGB32* target = nullptr;
    std::int32_t width = 0;
    std::int32_t height = 0;
    image.Rotate(reinterpret_cast<const glib::RGB32*>(Words()), kWidth, kHeight, angle, target, width, height,
                 glib::RGB32(255, 255, 255, 0));
    benchmark::DoNotOptimize(target);
    platform::FreePages(target);
  }
}
BENCHMARK_CAPTURE(Rotate, right90, 90.0, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Rotate, right180, 180.0, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Rotate, right270, 270.0, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Rotate, nearest30, 30.0, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Rotate, mixed30, 30.0, true)->Unit(benchmark::kMillisecond);

}  // namespace
