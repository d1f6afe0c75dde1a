#include <tiffio.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "modules/helpers/tiff_reader/entries.h"
#include "modules/helpers/tiff_reader/tiff_file.h"
#include "tests/bench/modules/load_bench.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

// RGB by default; with `bits` 16 each sample is a byte twice.
Bytes MakeFile(int compression, std::uint32_t samples, std::uint32_t bits) {
  std::FILE* stream = std::tmpfile();
  TIFF* tiff = TIFFFdOpen(dup(fileno(stream)), "bench", "w");
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, bench::kWidth);
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, bench::kHeight);
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, bits);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, samples);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, samples == 1 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, compression);
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 16);
  for (std::uint32_t y = 0; y < bench::kHeight; ++y) {
    Bytes row = bench::PictureRow(y, samples * bits / 8);
    TIFFWriteScanline(tiff, row.data(), y);
  }
  TIFFClose(tiff);
  Bytes file(static_cast<std::size_t>(lseek(fileno(stream), 0, SEEK_END)));
  std::rewind(stream);
  if (std::fread(file.data(), 1, file.size(), stream) != file.size()) std::abort();
  std::fclose(stream);
  return file;
}

void Load(benchmark::State& state) {
  const Bytes file = MakeFile(static_cast<int>(state.range(0)), static_cast<std::uint32_t>(state.range(1)),
                              static_cast<std::uint32_t>(state.range(2)));
  bench::Load(state, file, ReadTiff);
}

// Strips into one buffer, without making pixels of them.
void Bare(benchmark::State& state) {
  const auto samples = static_cast<std::uint32_t>(state.range(1));
  const auto sampleBits = static_cast<std::uint32_t>(state.range(2));
  const Bytes bytes = MakeFile(static_cast<int>(state.range(0)), samples, sampleBits);
  bench::Bare(state, samples * sampleBits, [&](std::uint8_t* raster, std::size_t stride) {
    modules::TiffFile file(bytes);
    for (std::uint32_t strip = 0; strip < TIFFNumberOfStrips(file.Get()); ++strip) {
      TIFFReadEncodedStrip(file.Get(), strip, raster + strip * stride * 16, -1);
    }
  });
}

void Cases(benchmark::internal::Benchmark* bench) {
  bench->ArgNames({"compression", "samples", "bits"})->Unit(benchmark::kMillisecond);
  for (const int compression : {COMPRESSION_NONE, COMPRESSION_LZW, COMPRESSION_ADOBE_DEFLATE}) {
    bench->Args({compression, 1, 8})->Args({compression, 3, 8});
  }
  bench->Args({COMPRESSION_NONE, 3, 16})->Args({COMPRESSION_LZW, 3, 16});
}
BENCHMARK(Load)->Apply(Cases);
BENCHMARK(Bare)->Apply(Cases);

}  // namespace
