#include <cstdio>
#include <cstdlib>

#include <jpeglib.h>

#include "modules/common/entries.h"
#include "tests/bench/modules/load_bench.h"

namespace {

std::vector<std::uint8_t> MakeFile(bool gray, bool progressive, std::uint8_t orientation) {
  jpeg_compress_struct cinfo{};
  jpeg_error_mgr errors{};
  cinfo.err = jpeg_std_error(&errors);
  jpeg_create_compress(&cinfo);
  unsigned char* memory = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&cinfo, &memory, &size);
  cinfo.image_width = bench::kWidth;
  cinfo.image_height = bench::kHeight;
  cinfo.input_components = gray ? 1 : 3;
  cinfo.in_color_space = gray ? JCS_GRAYSCALE : JCS_RGB;
  jpeg_set_defaults(&cinfo);
  jpeg_set_quality(&cinfo, 85, TRUE);
  if (progressive) jpeg_simple_progression(&cinfo);
  jpeg_start_compress(&cinfo, TRUE);
  const std::uint8_t notes[] = {'E',  'x', 'i', 'f', 0, 0, 'I', 'I', 42,          0, 8, 0, 0, 0, 1, 0,
                                0x12, 1,   3,   0,   1, 0, 0,   0,   orientation, 0, 0, 0, 0, 0, 0, 0};
  if (orientation != 1) jpeg_write_marker(&cinfo, JPEG_APP0 + 1, notes, sizeof(notes));
  for (std::uint32_t y = 0; y < bench::kHeight; ++y) {
    auto row = bench::PictureRow(y, gray ? 1 : 3);
    JSAMPROW rows = row.data();
    jpeg_write_scanlines(&cinfo, &rows, 1);
  }
  jpeg_finish_compress(&cinfo);
  jpeg_destroy_compress(&cinfo);
  std::vector<std::uint8_t> file(memory, memory + size);
  std::free(memory);
  return file;
}

void Load(benchmark::State& state) {
  const auto file = MakeFile(state.range(0) != 0, state.range(1) != 0, static_cast<std::uint8_t>(state.range(2)));
  bench::Load(state, file, [](const char* source, glib::ImageDataExchange* exchange) {
    return LoadImageData(source, exchange, nullptr);
  });
}
BENCHMARK(Load)
    ->ArgNames({"gray", "progressive", "orientation"})
    ->Args({0, 0, 1})
    ->Args({0, 0, 3})
    ->Args({0, 0, 6})
    ->Args({1, 0, 1})
    ->Args({1, 0, 6})
    ->Args({0, 1, 1})
    ->Unit(benchmark::kMillisecond);

void Bare(benchmark::State& state) {
  const bool gray = state.range(0) != 0;
  const auto file = MakeFile(gray, state.range(1) != 0, 1);
  bench::Bare(state, gray ? 8 : 24, [&](std::uint8_t* raster, std::size_t stride) {
    jpeg_decompress_struct cinfo{};
    jpeg_error_mgr errors{};
    cinfo.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&cinfo);
    jpeg_mem_src(&cinfo, file.data(), file.size());
    jpeg_read_header(&cinfo, TRUE);
    jpeg_start_decompress(&cinfo);
    while (cinfo.output_scanline < cinfo.output_height) {
      JSAMPROW row = raster + cinfo.output_scanline * stride;
      jpeg_read_scanlines(&cinfo, &row, 1);
    }
    jpeg_finish_decompress(&cinfo);
    jpeg_destroy_decompress(&cinfo);
  });
}
BENCHMARK(Bare)
    ->ArgNames({"gray", "progressive"})
    ->Args({0, 0})
    ->Args({1, 0})
    ->Args({0, 1})
    ->Unit(benchmark::kMillisecond);

}  // namespace
