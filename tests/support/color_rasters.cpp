#include "tests/support/color_rasters.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "platform/pages.h"

namespace color_rasters {
namespace {

class Random {
 public:
  explicit Random(std::uint32_t seed) : state_(seed * 2654435761U + 88172645U) {}

  std::uint32_t operator()() {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 17;
    state_ ^= state_ << 5;
    return state_ * 2654435761U >> 4 ^ state_;
  }
  std::uint32_t Below(std::uint32_t n) { return (*this)() % n; }

 private:
  std::uint32_t state_;
};

std::uint32_t EdgeValue(Random& random) {
  const std::int32_t boundary = static_cast<std::int32_t>(random.Below(33)) * 8;
  return static_cast<std::uint32_t>(std::clamp(boundary + static_cast<std::int32_t>(random.Below(3)) - 1, 0, 255));
}

std::uint32_t RandomColor(const Recipe& recipe, Random& random) {
  if (recipe.texture != Texture::kEdges) return random();
  return EdgeValue(random) | EdgeValue(random) << 8 | EdgeValue(random) << 16 | random() << 24;
}

// One channel of a made-up scene: areas of different light with soft borders, a fine pattern and grain.
class Scene {
 public:
  Scene(const Recipe& recipe, Random& random) : random_(random) {
    for (int channel = 0; channel < 3; ++channel) {
      columns_[channel].resize(static_cast<std::size_t>(recipe.width));
      for (std::int32_t x = 0; x < recipe.width; ++x) {
        const double at = 6.28 * x / recipe.width;
        columns_[channel][static_cast<std::size_t>(x)] =
            static_cast<std::int32_t>(60 * std::sin(at * (1.5 + channel * 0.2)) + 25 * std::sin(at * 17 + channel));
      }
    }
    height_ = recipe.height;
  }

  void BeginRow(std::int32_t y) {
    const double at = 6.28 * y / height_;
    for (int channel = 0; channel < 3; ++channel) {
      row_[channel] = static_cast<std::int32_t>(120 + 70 * std::sin(at * (0.8 + 0.3 * channel) + channel) +
                                                20 * std::sin(at * 23 + 2 * channel));
    }
  }

  std::uint32_t Pixel(std::int32_t x) {
    const std::uint32_t grain = random_();
    std::uint32_t word = grain & 0xFF000000;
    for (unsigned channel = 0; channel < 3; ++channel) {
      const std::int32_t noise = static_cast<std::int32_t>(grain >> 4 * channel & 15) - 8;
      const std::int32_t value = row_[channel] + columns_[channel][static_cast<std::size_t>(x)] + noise;
      word |= static_cast<std::uint32_t>(std::clamp(value, 0, 255)) << 8 * channel;
    }
    return word;
  }

 private:
  Random& random_;
  std::vector<std::int32_t> columns_[3];
  std::int32_t row_[3] = {};
  std::int32_t height_ = 1;
};

}  // namespace

void Make(const Recipe& recipe, glib::RasterBlock& block) {
  Random random(recipe.seed);
  block.bits = recipe.bits;
  block.width = recipe.width;
  block.height = recipe.height;
  block.rowsAligned = recipe.aligned ? 1 : 0;
  const std::size_t stride = block.Stride();
  const auto height = static_cast<std::size_t>(recipe.height);
  block.pixels = static_cast<std::uint8_t*>(platform::AllocatePages(stride * height));
  for (std::uint32_t& entry : block.palette) entry = RandomColor(recipe, random);
  std::vector<std::uint32_t> few(recipe.colors);
  for (std::uint32_t& color : few) color = RandomColor(recipe, random);

  if (recipe.bits <= 8) {
    const std::uint32_t most = 1U << recipe.bits;
    for (std::size_t i = 0; i < stride * height; ++i) {
      const std::uint32_t index = random.Below(std::min(recipe.colors, most));
      const std::uint32_t second = random.Below(std::min(recipe.colors, most));
      block.pixels[i] = static_cast<std::uint8_t>(recipe.bits == 8 ? index : index << 4 | second);
    }
    return;
  }
  Scene scene(recipe, random);
  const std::size_t pixelBytes = static_cast<std::size_t>(recipe.bits) / 8;
  std::uint32_t word = 0;
  for (std::int32_t y = 0; y < recipe.height; ++y) {
    std::uint8_t* row = block.pixels + stride * static_cast<std::size_t>(y);
    scene.BeginRow(y);
    for (std::int32_t x = 0; x < recipe.width; ++x) {
      if (recipe.texture == Texture::kPhoto) {
        word = scene.Pixel(x);
      } else if (recipe.texture != Texture::kFew) {
        word = RandomColor(recipe, random);
      } else if (x == 0 || random.Below(3) == 0) {
        word = few[random.Below(recipe.colors)];
      }
      for (std::size_t byte = 0; byte < pixelBytes; ++byte) {
        row[static_cast<std::size_t>(x) * pixelBytes + byte] = static_cast<std::uint8_t>(word >> 8 * byte);
      }
    }
    for (std::size_t byte = static_cast<std::size_t>(recipe.width) * pixelBytes; byte < stride; ++byte) {
      row[byte] = static_cast<std::uint8_t>(random());
    }
  }
}

}  // namespace color_rasters
