// The plain ways to lay rows, each beside its form of one pixel after the other; the ratio of the two is what counts.
// Argument: pixels a row, within the first cache and beyond the last.

#include "glib/model/over_rows.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <vector>

namespace {

using Row = std::vector<std::uint32_t>;
using Kernel = void (*)(std::uint32_t*, const std::uint32_t*, std::size_t);

Row RandomRow(std::size_t count, unsigned seed) {
  std::mt19937 random(seed);
  Row row(count);
  for (auto& word : row) word = static_cast<std::uint32_t>(random());
  return row;
}

void Run(benchmark::State& state, Kernel kernel, Kernel plain) {
  const auto count = static_cast<std::size_t>(state.range(0));
  const Row source = RandomRow(count, 1);
  Row target = RandomRow(count, 2);
  Row expected = target;
  kernel(target.data(), source.data(), count);
  plain(expected.data(), source.data(), count);
  if (target != expected) state.SkipWithError("differs from the plain form");
  for (auto _ : state) {
    kernel(target.data(), source.data(), count);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void MixOnColor(std::uint32_t* target, const std::uint32_t* source, std::size_t count) {
  glib::MixRowOnColor(target, source, 0x00C86400, count);
}
void MixOnColorPlain(std::uint32_t* target, const std::uint32_t* source, std::size_t count) {
  glib::MixRowOnColorPlain(target, source, 0x00C86400, count);
}
void Lay(std::uint32_t* target, const std::uint32_t* source, std::size_t count) {
  std::copy_n(source, count, target);
  glib::LayOnBackground(target, 0x00C86400, count);
}
void LayPlain(std::uint32_t* target, const std::uint32_t* source, std::size_t count) {
  std::copy_n(source, count, target);
  glib::LayOnBackgroundPlain(target, 0x00C86400, count);
}

void Rows(benchmark::internal::Benchmark* bench) { bench->Arg(1 << 11)->Arg(12000000); }

BENCHMARK_CAPTURE(Run, mix_plain, glib::MixRowPlain, glib::MixRowPlain)->Apply(Rows);
BENCHMARK_CAPTURE(Run, mix, glib::MixRow, glib::MixRowPlain)->Apply(Rows);
BENCHMARK_CAPTURE(Run, mix_on_color_plain, MixOnColorPlain, MixOnColorPlain)->Apply(Rows);
BENCHMARK_CAPTURE(Run, mix_on_color, MixOnColor, MixOnColorPlain)->Apply(Rows);
BENCHMARK_CAPTURE(Run, over_plain, glib::OverRowPlain, glib::OverRowPlain)->Apply(Rows);
BENCHMARK_CAPTURE(Run, over, glib::OverRow, glib::OverRowPlain)->Apply(Rows);
BENCHMARK_CAPTURE(Run, lay_plain, LayPlain, LayPlain)->Apply(Rows);
BENCHMARK_CAPTURE(Run, lay, Lay, LayPlain)->Apply(Rows);

}  // namespace
