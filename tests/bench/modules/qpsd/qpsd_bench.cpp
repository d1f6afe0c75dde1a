#include <zlib.h>

#include <cstring>

#include "modules/common/entries.h"
#include "modules/common/inflate.h"
#include "modules/common/pack_bits.h"
#include "tests/bench/modules/load_bench.h"

// Three planes of 8 bits, against what their encoding costs alone: the copy, the runs or zlib, row by row.

namespace {

using Bytes = std::vector<std::uint8_t>;

enum Encoding : std::uint32_t { kRaw, kRuns, kZip };
constexpr std::size_t kHeaderBytes = 26 + 3 * 4;

void PutBig(Bytes& file, std::uint32_t value, int bytes) {
  while (bytes-- > 0) file.push_back(static_cast<std::uint8_t>(value >> 8 * bytes));
}

// Literals of up to 64 bytes and runs of 64, turn and turn about.
Bytes Pack(const Bytes& row) {
  Bytes packed;
  for (std::size_t i = 0; i < row.size(); i += 64) {
    const std::size_t count = std::min<std::size_t>(64, row.size() - i);
    const bool run = i / 64 % 2 == 0;
    packed.push_back(static_cast<std::uint8_t>(run ? 257 - count : count - 1));
    packed.insert(packed.end(), row.begin() + static_cast<std::ptrdiff_t>(i),
                  row.begin() + static_cast<std::ptrdiff_t>(run ? i + 1 : i + count));
  }
  return packed;
}

Bytes MakeFile(std::uint32_t encoding) {
  Bytes file{'8', 'B', 'P', 'S', 0, 1, 0, 0, 0, 0, 0, 0, 0, 3};
  PutBig(file, bench::kHeight, 4);
  PutBig(file, bench::kWidth, 4);
  PutBig(file, 8, 2);
  PutBig(file, 3, 2);
  file.resize(kHeaderBytes);
  PutBig(file, encoding, 2);
  Bytes data;
  for (std::uint32_t row = 0; row < 3 * bench::kHeight; ++row) {
    Bytes samples = bench::PictureRow(row, 1);
    if (encoding == kRuns) samples = Pack(samples);
    if (encoding == kRuns) PutBig(file, static_cast<std::uint32_t>(samples.size()), 2);
    data.insert(data.end(), samples.begin(), samples.end());
  }
  if (encoding == kZip) {
    Bytes packed(compressBound(data.size()));
    uLongf size = packed.size();
    compress2(packed.data(), &size, data.data(), data.size(), 3);
    data.assign(packed.begin(), packed.begin() + static_cast<std::ptrdiff_t>(size));
  }
  file.insert(file.end(), data.begin(), data.end());
  return file;
}

void Load(benchmark::State& state) {
  bench::Load(
      state, MakeFile(static_cast<std::uint32_t>(state.range(0))),
      [](const char* source, glib::ImageDataExchange* exchange) { return LoadImageData(source, exchange, nullptr); });
}
BENCHMARK(Load)->ArgName("encoding")->Arg(kRaw)->Arg(kRuns)->Arg(kZip)->Unit(benchmark::kMillisecond);

void Bare(benchmark::State& state) {
  const auto encoding = static_cast<std::uint32_t>(state.range(0));
  const Bytes file = MakeFile(encoding);
  const std::size_t lengths = encoding == kRuns ? std::size_t{2} * 3 * bench::kHeight : 0;
  const auto data = std::span(file).subspan(kHeaderBytes + 2 + lengths);
  bench::Bare(state, 24, [&](std::uint8_t* raster, std::size_t) {
    modules::ByteReader in(data);
    modules::Inflater zip(data);
    for (std::uint32_t row = 0; row < 3 * bench::kHeight; ++row, raster += bench::kWidth) {
      if (encoding == kRaw) in.Read(raster, bench::kWidth);
      if (encoding == kRuns) modules::UnpackBits(in, {raster, bench::kWidth});
      if (encoding == kZip) zip.Read(raster, bench::kWidth);
    }
  });
}
BENCHMARK(Bare)->ArgName("encoding")->Arg(kRaw)->Arg(kRuns)->Arg(kZip)->Unit(benchmark::kMillisecond);

}  // namespace
