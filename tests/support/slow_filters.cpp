#include "tests/support/slow_filters.h"

#include <algorithm>
#include <cstring>

#include "tests/support/random_raster.h"

namespace test_support {
namespace {

std::uint32_t Word(const Channels& channels) {
  std::uint32_t word;
  std::memcpy(&word, channels.value, sizeof(word));
  return word;
}

}  // namespace

std::vector<std::uint32_t> SlowConvolve(const glib::RasterView& source, const float* weights, double scale,
                                        double bias) {
  std::vector<std::uint32_t> result;
  for (int y = 0; y < source.height; ++y) {
    for (int x = 0; x < source.width; ++x) {
      Channels nine[9];
      for (int i = 0; i < 9; ++i) {
        const int nx = x + i % 3 - 1;
        const int ny = std::clamp(y + i / 3 - 1, 0, source.height - 1);
        nine[i] = nx < 0 || nx >= source.width ? PixelAt(source, x, y) : PixelAt(source, nx, ny);
      }
      Channels out;
      for (int c = 0; c < 3; ++c) {
        double sum = 0;
        for (int i = 0; i < 9; ++i) sum += nine[i].value[c] * static_cast<double>(weights[i]);
        const double value = sum * scale + bias + 0.5;
        out.value[c] = value < 0 ? 0 : value > 255 ? 255 : static_cast<std::uint8_t>(value);
      }
      int alpha = 0;
      for (const Channels& pixel : nine) alpha += pixel.value[3];
      out.value[3] = static_cast<std::uint8_t>(alpha / 9);
      result.push_back(Word(out));
    }
  }
  return result;
}

std::vector<std::uint32_t> SlowRank(const glib::RasterView& source, std::size_t rank) {
  std::vector<std::uint32_t> result;
  for (int y = 0; y < source.height; ++y) {
    for (int x = 0; x < source.width; ++x) {
      if (x == 0 || y == 0 || x == source.width - 1 || y == source.height - 1) {
        result.push_back(Word(PixelAt(source, x, y)));
        continue;
      }
      std::vector<int> keys;
      std::vector<std::uint32_t> pixels;
      for (int i = 0; i < 9; ++i) {
        const Channels pixel = PixelAt(source, x + i % 3 - 1, y + i / 3 - 1);
        keys.push_back((pixel.value[0] + pixel.value[1] + pixel.value[2]) / 3);
        pixels.push_back(Word(pixel));
      }
      std::vector<int> sorted = keys;
      std::sort(sorted.begin(), sorted.end());
      const auto first = std::find(keys.begin(), keys.end(), sorted[rank]);
      result.push_back(pixels[static_cast<std::size_t>(first - keys.begin())]);
    }
  }
  return result;
}

}  // namespace test_support
