// Palette and mapping of made pictures that are as hard as photographs: smooth shades with noise.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "glib/color/adaptive_palette.h"
#include "glib/color/palette_mapper.h"

namespace {

struct Picture {
  std::uint32_t width;
  std::uint32_t height;
  std::vector<std::uint32_t> words;

  glib::ColorPage Page() const {
    return {reinterpret_cast<const std::uint8_t*>(words.data()), std::size_t{width} * 4, width, height, 32, nullptr};
  }
};

// PICTURE names a PPM file to use instead.
Picture MakePicture(std::uint32_t width, std::uint32_t height) {
  Picture picture{width, height, {}};
  picture.words.resize(std::size_t{width} * height);
  std::mt19937 random(1);
  const double scale = 768.0 / width;
  for (std::uint32_t y = 0; y < height; ++y) {
    for (std::uint32_t x = 0; x < width; ++x) {
      const double u = x * scale;
      const double v = y * scale;
      std::uint32_t word = glib::kOpaqueAlpha;
      const double light = 100 + 70 * std::sin(u / 90) * std::cos(v / 130);
      for (std::uint32_t k = 0; k < 3; ++k) {
        const double tint = 35 * std::sin((u + v) / 170 + k * 1.3) + 25 * std::cos((u - 2 * v) / 250 + k);
        const double noise = static_cast<double>(random() % 13) - 6;
        word |= static_cast<std::uint32_t>(std::fmin(std::fmax(light + tint + noise, 0), 255)) << (16 - 8 * k);
      }
      picture.words[std::size_t{y} * width + x] = word;
    }
  }
  return picture;
}

Picture TestPicture(const benchmark::State& state) {
  const char* path = std::getenv("PICTURE");
  if (path == nullptr) {
    return MakePicture(static_cast<std::uint32_t>(state.range(0)), static_cast<std::uint32_t>(state.range(0)) * 2 / 3);
  }
  std::ifstream file(path, std::ios::binary);
  std::string magic;
  std::uint32_t maximum = 0;
  Picture picture{0, 0, {}};
  file >> magic >> picture.width >> picture.height >> maximum;
  file.get();
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  picture.words.resize(bytes.size() / 3);
  const auto byte = [&](std::size_t i) { return static_cast<std::uint32_t>(static_cast<std::uint8_t>(bytes[i])); };
  for (std::size_t i = 0; i < picture.words.size(); ++i) {
    picture.words[i] = glib::kOpaqueAlpha | byte(i * 3) << 16 | byte(i * 3 + 1) << 8 | byte(i * 3 + 2);
  }
  return picture;
}

void SetRate(benchmark::State& state, const Picture& picture) {
  state.counters["Mpixel/s"] =
      benchmark::Counter(static_cast<double>(picture.words.size()) * static_cast<double>(state.iterations()) / 1e6,
                         benchmark::Counter::kIsRate);
}

void Build(benchmark::State& state, bool dither) {
  const Picture picture = TestPicture(state);
  const glib::ColorPage page = picture.Page();
  for (auto _ : state) {
    benchmark::DoNotOptimize(glib::BuildAdaptivePalette(
        std::span(&page, 1), {static_cast<std::size_t>(state.range(1)), glib::PaletteLevel::kDefault, false, dither}));
  }
  SetRate(state, picture);
}

void BuildAndMap(benchmark::State& state, bool dither) {
  const Picture picture = TestPicture(state);
  const glib::ColorPage page = picture.Page();
  std::vector<std::uint8_t> indices(picture.words.size());
  for (auto _ : state) {
    const auto palette = glib::BuildAdaptivePalette(
        std::span(&page, 1), {static_cast<std::size_t>(state.range(1)), glib::PaletteLevel::kDefault, false, dither});
    glib::PaletteMapper mapper(palette.colors, {0, glib::PaletteLevel::kDefault, false, dither});
    mapper.Map(page, nullptr, indices.data());
    benchmark::DoNotOptimize(indices.data());
  }
  SetRate(state, picture);
}

void Sizes(benchmark::internal::Benchmark* bench) {
  bench->Args({768, 256})->Args({768, 32})->Args({3000, 256})->Unit(benchmark::kMillisecond);
}

BENCHMARK_CAPTURE(Build, Plain, false)->Apply(Sizes);
BENCHMARK_CAPTURE(Build, Dither, true)->Apply(Sizes);
BENCHMARK_CAPTURE(BuildAndMap, Plain, false)->Apply(Sizes);
BENCHMARK_CAPTURE(BuildAndMap, Dither, true)->Apply(Sizes);

}  // namespace
