// One 32-bit layer of 12 million pixels made a flat image, beside a plain copy of its bytes: the work should cost no
// more memory traffic than the copy.

#include "glib/model/compositing.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "glib/model/range.h"
#include "glib/model/slide.h"

namespace {

constexpr std::int32_t kWidth = 4000;
constexpr std::int32_t kHeight = 3000;

struct Scene {
  explicit Scene(std::int32_t layerCount) : slide(glib::RGB32(255, 255, 255, 0)), target(&slide) {
    for (std::int32_t i = 0; i < layerCount; ++i) {
      auto* layer = new glib::Layer(&slide);
      layer->Create(0, 0, kWidth, kHeight);
      slide.AddLayer(layer);
    }
  }
  glib::Slide slide;
  glib::Layer target;
};

void Copy(benchmark::State& state) {
  Scene scene(1);
  scene.target.Create(0, 0, kWidth, kHeight);
  for (auto _ : state) {
    std::memcpy(scene.target.raster.pixels, scene.slide.GetLayer(0)->raster.pixels, std::size_t{4} * kWidth * kHeight);
    benchmark::ClobberMemory();
  }
}

using Composite = bool (*)(glib::Slide&, glib::Layer&, std::uint32_t, std::uint32_t);

void Layers(benchmark::State& state, Composite composite) {
  Scene scene(static_cast<std::int32_t>(state.range(0)));
  for (auto _ : state) {
    if (!composite(scene.slide, scene.target, 0, glib::kToTheLast)) state.SkipWithError("no memory");
    benchmark::ClobberMemory();
  }
}

BENCHMARK(Copy);
BENCHMARK_CAPTURE(Layers, flatten, glib::FlattenLayers)->Arg(1)->Arg(2);
BENCHMARK_CAPTURE(Layers, merge, glib::MergeIntoLayer)->Arg(1)->Arg(2);

}  // namespace
