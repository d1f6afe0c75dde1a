// The LZW coder of the GIF module and its two rivals, on the same index planes. `bytes_per_second` counts pixels;
// compare the lines of one picture with each other, times by themselves mean nothing.

#include <benchmark/benchmark.h>
#include <cgif.h>
#include <gif_lib.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "modules/qgif/block_output.h"
#include "modules/qgif/gif_structure.h"
#include "modules/qgif/lzw_decoder.h"
#include "modules/qgif/lzw_encoder.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kWidth = 2000;
constexpr std::uint32_t kHeight = 1500;
constexpr std::size_t kPixels = std::size_t{kWidth} * kHeight;

enum Picture { kPhoto, kDithered, kDrawing, kSixteen, kTwo };

struct Plane {
  Bytes pixels;
  std::uint32_t highest = 255;
};

// Smooth light with grain stands for a photograph: neighbours are close, yet seldom equal.
Plane MakePhoto(std::uint32_t colours, double grain) {
  std::mt19937 random(1);
  std::normal_distribution<double> noise(0, grain);
  Plane plane{Bytes(kPixels), colours - 1};
  for (std::uint32_t y = 0; y < kHeight; ++y) {
    for (std::uint32_t x = 0; x < kWidth; ++x) {
      const double light = std::sin(x * 0.004) * 0.3 + std::sin(y * 0.006 + x * 0.001) * 0.2 + 0.5;
      const double level = (light * 0.98 + 0.01) * colours + noise(random);
      plane.pixels[std::size_t{y} * kWidth + x] =
          static_cast<std::uint8_t>(std::clamp(level, 0.0, static_cast<double>(colours - 1)));
    }
  }
  return plane;
}

// Flat areas with rules, boxes and what looks like text.
Plane MakeDrawing() {
  std::mt19937 random(2);
  Plane plane{Bytes(kPixels, 255), 255};
  const auto box = [&](std::uint32_t left, std::uint32_t top, std::uint32_t w, std::uint32_t h, std::uint8_t colour) {
    for (std::uint32_t y = top; y < std::min(top + h, kHeight); ++y) {
      for (std::uint32_t x = left; x < std::min(left + w, kWidth); ++x)
        plane.pixels[std::size_t{y} * kWidth + x] = colour;
    }
  };
  const auto below = [&](std::uint32_t n) { return static_cast<std::uint32_t>(random() % n); };
  for (int i = 0; i < 200; ++i) {
    box(below(kWidth), below(kHeight), 20 + below(300), 10 + below(200), static_cast<std::uint8_t>(below(256)));
  }
  for (int i = 0; i < 20000; ++i) {
    box(below(kWidth / 8) * 8, below(kHeight / 16) * 16, 2 + below(5), 1 + below(8),
        static_cast<std::uint8_t>(below(4)));
  }
  return plane;
}

const Plane& PlaneOf(int picture) {
  static const Plane planes[] = {MakePhoto(256, 1.0), MakePhoto(256, 3.0), MakeDrawing(), MakePhoto(16, 0.5),
                                 MakePhoto(2, 0.4)};
  return planes[picture];
}

struct CountingSink : qgif::ByteSink {
  bool Take(std::span<const std::uint8_t> bytes) override {
    if (kept != nullptr) kept->insert(kept->end(), bytes.begin(), bytes.end());
    size += bytes.size();
    return true;
  }
  std::size_t size = 0;
  Bytes* kept = nullptr;
};

void Report(benchmark::State& state, std::size_t fileSize) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(kPixels));
  state.counters["file"] = static_cast<double>(fileSize);
}

void EncodeOurs(benchmark::State& state) {
  const Plane& plane = PlaneOf(static_cast<int>(state.range(0)));
  std::size_t size = 0;
  for (auto _ : state) {
    CountingSink sink;
    qgif::BlockOutput output(sink);
    qgif::LzwEncoder encoder;
    encoder.Encode({plane.pixels.data(), kWidth, kWidth, kHeight, false}, qgif::CodeSizeFor(plane.highest),
                   qgif::ClearTable::kWhenBehind, output);
    output.Flush();
    size = sink.size;
  }
  Report(state, size);
}

int CountGiflib(GifFileType* gif, const GifByteType*, int count) {
  *static_cast<std::size_t*>(gif->UserData) += static_cast<std::size_t>(count);
  return count;
}

void EncodeGiflib(benchmark::State& state) {
  const Plane& plane = PlaneOf(static_cast<int>(state.range(0)));
  const int colours = 1 << qgif::CodeSizeFor(plane.highest);
  Bytes pixels = plane.pixels;
  std::size_t size = 0;
  for (auto _ : state) {
    size = 0;
    int error = 0;
    GifFileType* gif = EGifOpen(&size, CountGiflib, &error);
    ColorMapObject* map = GifMakeMapObject(colours, nullptr);
    EGifPutScreenDesc(gif, kWidth, kHeight, 8, 0, map);
    EGifPutImageDesc(gif, 0, 0, kWidth, kHeight, false, nullptr);
    for (std::uint32_t y = 0; y < kHeight; ++y) {
      EGifPutLine(gif, pixels.data() + std::size_t{y} * kWidth, static_cast<int>(kWidth));
    }
    GifFreeMapObject(map);
    EGifCloseFile(gif, &error);
  }
  Report(state, size);
}

int CountCgif(void* context, const std::uint8_t*, const std::size_t count) {
  *static_cast<std::size_t*>(context) += count;
  return 0;
}

void EncodeCgif(benchmark::State& state) {
  const Plane& plane = PlaneOf(static_cast<int>(state.range(0)));
  Bytes pixels = plane.pixels;
  Bytes table(768);
  for (std::size_t i = 0; i < table.size(); ++i) table[i] = static_cast<std::uint8_t>(i / 3);
  std::size_t size = 0;
  for (auto _ : state) {
    size = 0;
    CGIF_Config config{};
    config.width = kWidth;
    config.height = kHeight;
    config.pGlobalPalette = table.data();
    config.numGlobalPaletteEntries = static_cast<std::uint16_t>(plane.highest + 1);
    config.pWriteFn = CountCgif;
    config.pContext = &size;
    CGIF* gif = cgif_newgif(&config);
    CGIF_FrameConfig frame{};
    frame.pImageData = pixels.data();
    cgif_addframe(gif, &frame);
    cgif_close(gif);
  }
  Report(state, size);
}

// A whole file, as both decoders get it.
const Bytes& FileOf(int picture) {
  static Bytes files[5];
  Bytes& file = files[picture];
  if (!file.empty()) return file;
  const Plane& plane = PlaneOf(picture);
  CountingSink sink;
  sink.kept = &file;
  qgif::BlockOutput output(sink);
  output.Bytes(Bytes{'G', 'I', 'F', '8', '9', 'a'});
  output.Word(kWidth);
  output.Word(kHeight);
  output.Bytes(Bytes{0xF7, 0, 0});
  for (int i = 0; i < 768; ++i) output.Byte(static_cast<std::uint32_t>(i / 3));
  output.Bytes(Bytes{0x2C, 0, 0, 0, 0});
  output.Word(kWidth);
  output.Word(kHeight);
  output.Byte(0);
  qgif::LzwEncoder encoder;
  encoder.Encode({plane.pixels.data(), kWidth, kWidth, kHeight, false}, qgif::CodeSizeFor(plane.highest),
                 qgif::ClearTable::kWhenBehind, output);
  output.Byte(0x3B);
  output.Flush();
  return file;
}

void DecodeOurs(benchmark::State& state) {
  const int picture = static_cast<int>(state.range(0));
  const Bytes& file = FileOf(picture);
  Bytes pixels(kPixels);
  for (auto _ : state) {
    qgif::StructureWalk walk(file);
    qgif::FrameHeader frame;
    walk.Next(frame);
    Bytes codes;
    qgif::GatherCodes(file, frame.dataPosition, codes);
    const std::size_t count =
        qgif::DecodeLzw({codes.data(), codes.size() - qgif::kCodePadding}, frame.codeSize, pixels.data(), kPixels);
    benchmark::DoNotOptimize(count);
  }
  if (pixels != PlaneOf(picture).pixels) state.SkipWithError("other pixels");
  Report(state, file.size());
}

struct Input {
  const Bytes* file;
  std::size_t position;
};

int ReadGiflib(GifFileType* gif, GifByteType* target, int count) {
  auto* input = static_cast<Input*>(gif->UserData);
  const std::size_t size = std::min(static_cast<std::size_t>(count), input->file->size() - input->position);
  std::memcpy(target, input->file->data() + input->position, size);
  input->position += size;
  return static_cast<int>(size);
}

void DecodeGiflib(benchmark::State& state) {
  const int picture = static_cast<int>(state.range(0));
  const Bytes& file = FileOf(picture);
  Bytes pixels(kPixels);
  for (auto _ : state) {
    Input input{&file, 0};
    int error = 0;
    GifFileType* gif = DGifOpen(&input, ReadGiflib, &error);
    GifRecordType record{};
    while (DGifGetRecordType(gif, &record) == GIF_OK && record != IMAGE_DESC_RECORD_TYPE) {
    }
    DGifGetImageDesc(gif);
    for (std::uint32_t y = 0; y < kHeight; ++y) {
      DGifGetLine(gif, pixels.data() + std::size_t{y} * kWidth, static_cast<int>(kWidth));
    }
    DGifCloseFile(gif, &error);
  }
  if (pixels != PlaneOf(picture).pixels) state.SkipWithError("other pixels");
  Report(state, file.size());
}

void Pictures(benchmark::internal::Benchmark* bench) {
  bench->ArgName("picture")->DenseRange(kPhoto, kTwo)->Unit(benchmark::kMillisecond);
}
BENCHMARK(EncodeOurs)->Apply(Pictures);
BENCHMARK(EncodeCgif)->Apply(Pictures);
BENCHMARK(EncodeGiflib)->Apply(Pictures);
BENCHMARK(DecodeOurs)->Apply(Pictures);
BENCHMARK(DecodeGiflib)->Apply(Pictures);

}  // namespace
