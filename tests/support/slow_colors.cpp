#include "tests/support/slow_colors.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <random>

namespace test_support {
namespace {

int Channel(std::uint32_t color, std::size_t k) { return static_cast<int>(color >> (16 - 8 * k) & 255U); }

}  // namespace

std::size_t SlowNearest(const glib::ColorSpace& space, const std::vector<std::uint32_t>& colors, std::uint32_t color) {
  std::size_t best = 0;
  long least = std::numeric_limits<long>::max();
  for (std::size_t i = 0; i < colors.size(); ++i) {
    long distance = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      const long way = space.Axis(k, static_cast<std::size_t>(Channel(color, k)) * 16) -
                       space.Axis(k, static_cast<std::size_t>(Channel(colors[i], k)) * 16);
      distance += way * way;
    }
    if (distance >= least) continue;
    least = distance;
    best = i;
  }
  return best;
}

void SlowDiffuse(const glib::ColorSpace& space, const std::vector<std::uint32_t>& colors, std::uint32_t firstIndex,
                 std::int32_t strength, const std::vector<std::uint32_t>& pixels, std::size_t width,
                 const std::vector<std::uint8_t>& held, std::vector<std::uint8_t>& indices) {
  // What each pixel has been given, in sixteenths of a sixteenth of a level.
  std::vector<std::array<int, 3>> given(pixels.size());
  for (std::size_t at = 0; at < pixels.size(); ++at) {
    if (!held.empty() && held[at] != 0) continue;
    if (pixels[at] >> 24 == 0) {
      indices[at] = 0;
      continue;
    }
    const std::size_t x = at % width;
    std::uint32_t wanted = 0xFF000000U;
    std::array<int, 3> fine;
    for (std::size_t k = 0; k < 3; ++k) {
      const double share = std::floor((given[at][k] + 8) / 16.0);
      fine[k] = std::clamp(Channel(pixels[at], k) * 16 + static_cast<int>(share), 0, 255 * 16);
      wanted |= static_cast<std::uint32_t>((fine[k] + 8) / 16) << (16 - 8 * k);
    }
    const std::size_t entry = SlowNearest(space, colors, wanted);
    indices[at] = static_cast<std::uint8_t>(entry + firstIndex);
    for (std::size_t k = 0; k < 3; ++k) {
      const int error = fine[k] - Channel(colors[entry], k) * 16;
      const int passedOn = static_cast<int>(std::floor((error * strength + 128) / 256.0));
      const auto give = [&](std::size_t to, int parts) {
        if (to < given.size()) given[to][k] += parts * passedOn;
      };
      if (x + 1 < width) give(at + 1, 7);
      if (x > 0) give(at + width - 1, 3);
      give(at + width, 5);
      if (x + 1 < width) give(at + width + 1, 1);
    }
  }
}

std::vector<std::uint32_t> ShadedPicture(std::uint32_t width, std::uint32_t height) {
  std::vector<std::uint32_t> words;
  std::mt19937 random(7);
  for (std::uint32_t y = 0; y < height; ++y) {
    for (std::uint32_t x = 0; x < width; ++x) {
      const double light = 110 + 70 * std::sin(x / 40.0) * std::cos(y / 55.0);
      std::uint32_t word = 0xFF000000U;
      for (std::uint32_t k = 0; k < 3; ++k) {
        const double tint = 40 * std::sin((x + y) / 70.0 + k * 1.3);
        const double noise = static_cast<double>(random() % 9) - 4;
        word |= static_cast<std::uint32_t>(std::clamp(light + tint + noise, 0.0, 255.0)) << (16 - 8 * k);
      }
      words.push_back(word);
    }
  }
  return words;
}

double Psnr(const std::vector<std::uint32_t>& pixels, const std::vector<std::uint32_t>& colors,
            const std::vector<std::uint8_t>& indices) {
  double sum = 0;
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    for (std::size_t k = 0; k < 3; ++k) {
      const double error = Channel(pixels[i], k) - Channel(colors[indices[i]], k);
      sum += error * error;
    }
  }
  return 10 * std::log10(255.0 * 255.0 * 3.0 * static_cast<double>(pixels.size()) / std::max(sum, 1e-6));
}

}  // namespace test_support
