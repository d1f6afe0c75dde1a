// Reads pictures as PPM, reduces them and scores results, for bench/palette_quality:
//   palette_quality reduce in.ppm out.ppm colors none|dither [level]     reduces as the GIF writer does
//   palette_quality score original.ppm result.ppm                        prints PSNR, PSNR after blur, colours in use

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iostream>
#include <set>
#include <string>
#include <vector>

#include "glib/color/adaptive_palette.h"
#include "glib/color/palette_mapper.h"

namespace {

struct Picture {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::uint8_t> rgb;
};

bool ReadPpm(const char* path, Picture& picture) {
  std::ifstream file(path, std::ios::binary);
  std::string magic;
  std::uint32_t maximum = 0;
  file >> magic >> picture.width >> picture.height >> maximum;
  file.get();
  if (!file || magic != "P6" || maximum != 255) return false;
  picture.rgb.resize(std::size_t{picture.width} * picture.height * 3);
  file.read(reinterpret_cast<char*>(picture.rgb.data()), static_cast<std::streamsize>(picture.rgb.size()));
  return static_cast<bool>(file);
}

bool WritePpm(const char* path, const Picture& picture) {
  std::ofstream file(path, std::ios::binary);
  file << "P6\n" << picture.width << ' ' << picture.height << "\n255\n";
  file.write(reinterpret_cast<const char*>(picture.rgb.data()), static_cast<std::streamsize>(picture.rgb.size()));
  return static_cast<bool>(file);
}

void Reduce(Picture& picture, std::size_t colors, bool dither, int quantize) {
  std::vector<std::uint32_t> words(picture.rgb.size() / 3);
  for (std::size_t i = 0; i < words.size(); ++i) {
    words[i] = glib::kOpaqueAlpha | std::uint32_t{picture.rgb[i * 3]} << 16 |
               std::uint32_t{picture.rgb[i * 3 + 1]} << 8 | picture.rgb[i * 3 + 2];
  }
  const glib::ColorPage page{reinterpret_cast<const std::uint8_t*>(words.data()),
                             std::size_t{picture.width} * 4,
                             picture.width,
                             picture.height,
                             32,
                             nullptr};
  const glib::PaletteLevel level = glib::PaletteLevelOf(quantize);
  const glib::AdaptivePalette palette = glib::BuildAdaptivePalette(std::span(&page, 1), {colors, level, false, dither});
  glib::PaletteMapper mapper(palette.colors, {0, level, false, dither && !palette.exact});
  std::vector<std::uint8_t> indices(words.size());
  mapper.Map(page, nullptr, indices.data());
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::uint32_t color = palette.colors[indices[i]];
    for (std::size_t k = 0; k < 3; ++k) picture.rgb[i * 3 + k] = static_cast<std::uint8_t>(color >> (16 - 8 * k));
  }
}

using Plane = std::vector<float>;

Plane PlaneOf(const Picture& picture, std::size_t channel) {
  Plane plane(picture.rgb.size() / 3);
  for (std::size_t i = 0; i < plane.size(); ++i) plane[i] = picture.rgb[i * 3 + channel];
  return plane;
}

// Gaussian of 1.5 pixels; edges repeat.
Plane Blur(const Plane& plane, std::size_t width, std::size_t height) {
  constexpr int kRadius = 5;
  float kernel[2 * kRadius + 1];
  float total = 0;
  for (int i = -kRadius; i <= kRadius; ++i) {
    kernel[i + kRadius] = std::exp(-static_cast<float>(i * i) / (2 * 1.5F * 1.5F));
    total += kernel[i + kRadius];
  }
  const auto pass = [&](const Plane& in, std::size_t count, std::size_t stride, std::size_t lines, std::size_t next) {
    Plane out(in.size());
    for (std::size_t line = 0; line < lines; ++line) {
      for (std::size_t i = 0; i < count; ++i) {
        float sum = 0;
        for (int k = -kRadius; k <= kRadius; ++k) {
          const auto at =
              std::clamp<std::ptrdiff_t>(static_cast<std::ptrdiff_t>(i) + k, 0, static_cast<std::ptrdiff_t>(count) - 1);
          sum += kernel[k + kRadius] * in[line * next + static_cast<std::size_t>(at) * stride];
        }
        out[line * next + i * stride] = sum / total;
      }
    }
    return out;
  };
  return pass(pass(plane, width, 1, height, width), height, width, width, 1);
}

double SquaredError(const Plane& a, const Plane& b) {
  double sum = 0;
  for (std::size_t i = 0; i < a.size(); ++i) sum += static_cast<double>((a[i] - b[i]) * (a[i] - b[i]));
  return sum / static_cast<double>(a.size());
}

double Psnr(double meanSquaredError) { return 10 * std::log10(255.0 * 255.0 / std::max(meanSquaredError, 1e-9)); }

void Score(const Picture& original, const Picture& result) {
  double plain = 0;
  double blurred = 0;
  for (std::size_t k = 0; k < 3; ++k) {
    const Plane a = PlaneOf(original, k);
    const Plane b = PlaneOf(result, k);
    plain += SquaredError(a, b) / 3;
    blurred += SquaredError(Blur(a, original.width, original.height), Blur(b, original.width, original.height)) / 3;
  }
  std::set<std::uint32_t> colors;
  for (std::size_t i = 0; i < result.rgb.size(); i += 3) {
    colors.insert(std::uint32_t{result.rgb[i]} << 16 | std::uint32_t{result.rgb[i + 1]} << 8 | result.rgb[i + 2]);
  }
  std::printf("%.4f %.4f %zu\n", Psnr(plain), Psnr(blurred), colors.size());
}

}  // namespace

int main(int count, char** words) {
  Picture picture;
  if (count >= 6 && std::strcmp(words[1], "reduce") == 0 && ReadPpm(words[2], picture)) {
    Reduce(picture, std::strtoul(words[4], nullptr, 10), std::strcmp(words[5], "dither") == 0,
           count > 6 ? std::atoi(words[6]) : 0);
    return WritePpm(words[3], picture) ? 0 : 1;
  }
  Picture result;
  if (count == 4 && std::strcmp(words[1], "score") == 0 && ReadPpm(words[2], picture) && ReadPpm(words[3], result) &&
      picture.rgb.size() == result.rgb.size()) {
    Score(picture, result);
    return 0;
  }
  std::cerr << "usage: palette_quality reduce in.ppm out.ppm colors none|dither [level]\n"
               "       palette_quality score original.ppm result.ppm\n";
  return 1;
}
