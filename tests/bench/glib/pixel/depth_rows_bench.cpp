// Conversions of rows between depths; where there are two forms, the plain one stands first. Argument: pixels a row,
// within the first cache and beyond the last.

#include "glib/pixel/depth_rows.h"

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

namespace {

struct Rows {
  explicit Rows(std::size_t count) : bytes(4 * count), words(count), palette(256) {
    std::mt19937 random(1);
    for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random());
    for (auto& entry : palette) entry = static_cast<std::uint32_t>(random());
  }
  std::vector<std::uint8_t> bytes;
  std::vector<std::uint32_t> words;
  std::vector<std::uint32_t> palette;
};

using ToWords = void (*)(std::uint32_t*, const std::uint8_t*, std::size_t);
using ToBytes = void (*)(std::uint8_t*, const std::uint32_t*, std::size_t);
using Expand = void (*)(std::uint32_t*, const std::uint8_t*, const std::uint32_t*, std::size_t);

template <typename Work>
void Time(benchmark::State& state, Work work) {
  const auto count = static_cast<std::size_t>(state.range(0));
  Rows rows(count);
  for (auto _ : state) {
    work(rows, count);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void Widen(benchmark::State& state, ToWords kernel) {
  Time(state, [=](Rows& rows, std::size_t count) { kernel(rows.words.data(), rows.bytes.data(), count); });
}
void Narrow(benchmark::State& state, ToBytes kernel) {
  Time(state, [=](Rows& rows, std::size_t count) { kernel(rows.bytes.data(), rows.words.data(), count); });
}
void ExpandIndices(benchmark::State& state, Expand kernel) {
  Time(state, [=](Rows& rows, std::size_t count) {
    kernel(rows.words.data(), rows.bytes.data(), rows.palette.data(), count);
  });
}

void Sizes(benchmark::internal::Benchmark* bench) { bench->Arg(1 << 11)->Arg(12000000); }

BENCHMARK_CAPTURE(Widen, plain, glib::WidenRowPlain)->Apply(Sizes);
BENCHMARK_CAPTURE(Widen, fast, glib::WidenRow)->Apply(Sizes);
BENCHMARK_CAPTURE(Narrow, plain, glib::NarrowRowPlain)->Apply(Sizes);
BENCHMARK_CAPTURE(Narrow, fast, glib::NarrowRow)->Apply(Sizes);
BENCHMARK_CAPTURE(ExpandIndices, bits_plain, glib::ExpandBitsPlain)->Apply(Sizes);
BENCHMARK_CAPTURE(ExpandIndices, bits_table, glib::ExpandBits)->Apply(Sizes);
BENCHMARK_CAPTURE(ExpandIndices, nibbles, glib::ExpandNibbles)->Apply(Sizes);
BENCHMARK_CAPTURE(ExpandIndices, bytes, glib::ExpandBytes)->Apply(Sizes);

}  // namespace
