#include <png.h>

#include <cstring>

#include "modules/common/entries.h"
#include "tests/bench/modules/load_bench.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes MakeFile(int type) {
  Bytes file;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_set_write_fn(
      png, &file,
      [](png_structp writer, png_bytep data, std::size_t size) {
        auto* bytes = static_cast<Bytes*>(png_get_io_ptr(writer));
        bytes->insert(bytes->end(), data, data + size);
      },
      nullptr);
  png_set_IHDR(png, info, bench::kWidth, bench::kHeight, 8, type, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
               PNG_FILTER_TYPE_DEFAULT);
  png_set_compression_level(png, 3);
  png_color colours[256];
  for (int i = 0; i < 256; ++i) {
    const auto level = static_cast<png_byte>(i);
    colours[i] = {level, level, level};
  }
  if (type == PNG_COLOR_TYPE_PALETTE) png_set_PLTE(png, info, colours, 256);
  png_write_info(png, info);
  for (std::uint32_t y = 0; y < bench::kHeight; ++y) {
    png_write_row(png, bench::PictureRow(y, png_get_channels(png, info)).data());
  }
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
  return file;
}

void Load(benchmark::State& state) {
  const Bytes file = MakeFile(static_cast<int>(state.range(0)));
  bench::Load(state, file, [](const char* source, glib::ImageDataExchange* exchange) {
    return LoadImageData(source, exchange, nullptr);
  });
}
BENCHMARK(Load)
    ->ArgName("type")
    ->Arg(PNG_COLOR_TYPE_PALETTE)
    ->Arg(PNG_COLOR_TYPE_RGB)
    ->Arg(PNG_COLOR_TYPE_RGB_ALPHA)
    ->Unit(benchmark::kMillisecond);

struct Cursor {
  const std::uint8_t* next;
};

void Bare(benchmark::State& state) {
  const int type = static_cast<int>(state.range(0));
  const Bytes file = MakeFile(type);
  const std::uint32_t bits = type == PNG_COLOR_TYPE_PALETTE ? 8 : type == PNG_COLOR_TYPE_RGB ? 24 : 32;
  bench::Bare(state, bits, [&](std::uint8_t* raster, std::size_t stride) {
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    Cursor cursor{file.data()};
    png_set_read_fn(png, &cursor, [](png_structp reader, png_bytep target, std::size_t count) {
      auto* from = static_cast<Cursor*>(png_get_io_ptr(reader));
      std::memcpy(target, from->next, count);
      from->next += count;
    });
    png_read_info(png, info);
    for (std::uint32_t y = 0; y < bench::kHeight; ++y) png_read_row(png, raster + y * stride, nullptr);
    png_destroy_read_struct(&png, &info, nullptr);
  });
}
BENCHMARK(Bare)
    ->ArgName("type")
    ->Arg(PNG_COLOR_TYPE_PALETTE)
    ->Arg(PNG_COLOR_TYPE_RGB)
    ->Arg(PNG_COLOR_TYPE_RGB_ALPHA)
    ->Unit(benchmark::kMillisecond);

}  // namespace
