// What the registry costs a run without its modules: it is built once a film, and asked once a file.

#include "glib/format/registry.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <string_view>

namespace {

void BuildFromCatalogue(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(glib::FilterManager("no-such-folder", true).formats.count);
}
BENCHMARK(BuildFromCatalogue);

void FindBySignature(benchmark::State& state, std::string_view begin) {
  const glib::FilterManager registry("no-such-folder", true);
  std::uint8_t window[glib::FilterManager::kSignatureWindow] = {};
  std::memcpy(window, begin.data(), begin.size());
  if (registry.FindBySignature(window) == nullptr) state.SkipWithError("nothing found");
  for (auto _ : state) benchmark::DoNotOptimize(registry.FindBySignature(window));
}
BENCHMARK_CAPTURE(FindBySignature, Bitmap, "BM");
BENCHMARK_CAPTURE(FindBySignature, Jpeg, "\xFF\xD8\xFF");
BENCHMARK_CAPTURE(FindBySignature, UnknownBytes, "unknown");

}  // namespace
