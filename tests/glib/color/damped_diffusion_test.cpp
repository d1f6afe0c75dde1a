// Rows in flight against one pixel after the other.

#include "glib/color/damped_diffusion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "tests/support/instruction_sets.h"
#include "tests/support/slow_colors.h"

namespace {

using Bytes = std::vector<std::uint8_t>;
using Words = std::vector<std::uint32_t>;

constexpr std::int32_t kStrength = 150;

struct Scene {
  std::size_t width;
  std::size_t height;
  Words pixels;
  Bytes held;
  Words colors;
};

std::uint32_t RandomWord(std::mt19937& random) { return static_cast<std::uint32_t>(random()) | 0xFF000000U; }

Scene RandomScene(std::mt19937& random, std::size_t width, std::size_t height, std::size_t colorCount) {
  Scene scene{width, height, {}, {}, {}};
  for (std::size_t i = 0; i < width * height; ++i) {
    // Extremes, so that values are clamped, beside shades.
    std::uint32_t word = random() % 3 != 0 ? RandomWord(random) : random() % 2 == 0 ? 0xFFFFFFFFU : 0xFF000000U;
    if (random() % 12 == 0) word &= 0xFFFFFFU;
    scene.pixels.push_back(word);
    scene.held.push_back(random() % 10 == 0 ? 1 : 0);
  }
  for (std::size_t i = 0; i < colorCount; ++i) scene.colors.push_back(RandomWord(random));
  return scene;
}

Bytes Slow(const Scene& scene) {
  Bytes indices(scene.pixels.size(), 99);
  test_support::SlowDiffuse(glib::ColorSpace(glib::ColorMeasure::kBalanced), scene.colors, 1, kStrength, scene.pixels,
                            scene.width, scene.held, indices);
  return indices;
}

Bytes InBands(const Scene& scene, bool plain, std::vector<glib::EntryDrift>* drifts = nullptr) {
  Words words = scene.pixels;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (words[i] >> 24 == 0) words[i] = glib::kNoColor;
    if (scene.held[i] != 0) words[i] = glib::kHeldPixel;
  }
  glib::CandidateLists lists(scene.colors, 1, glib::ColorMeasure::kBalanced);
  glib::DampedDiffusion diffusion(lists, scene.colors, 1, kStrength, scene.width);
  if (drifts != nullptr) diffusion.CollectDrifts(*drifts);
  Bytes indices(words.size(), 99);
  for (std::size_t y = 0; y < scene.height; y += 4) {
    const std::size_t rows = std::min<std::size_t>(4, scene.height - y);
    const std::size_t start = y * scene.width;
    if (plain) {
      diffusion.DiffuseBandPlain(words.data() + start, rows, indices.data() + start);
    } else {
      diffusion.DiffuseBand(words.data() + start, rows, indices.data() + start);
    }
  }
  return indices;
}

TEST(DampedDiffusion, EqualsOnePixelAfterTheOther) {
  test_support::ForEachInstructionSet([](const char* name) {
    SCOPED_TRACE(name);
    std::mt19937 random(21);
    for (const std::size_t width : {1, 2, 3, 4, 5, 6, 7, 8, 9, 13, 40}) {
      for (const std::size_t height : {1, 2, 3, 4, 5, 7, 8, 21}) {
        const Scene scene = RandomScene(random, width, height, 1 + random() % 60);
        const Bytes slow = Slow(scene);
        ASSERT_EQ(InBands(scene, false), slow) << width << " x " << height;
        ASSERT_EQ(InBands(scene, true), slow) << width << " x " << height;
      }
    }
  });
}

TEST(DampedDiffusion, CollectsTheSameDriftsInFlight) {
  std::mt19937 random(2);
  const Scene scene = RandomScene(random, 50, 23, 12);
  std::vector<glib::EntryDrift> plain(256);
  std::vector<glib::EntryDrift> inFlight(256);
  EXPECT_EQ(InBands(scene, true, &plain), InBands(scene, false, &inFlight));
  std::int64_t count = 0;
  for (std::size_t i = 0; i < 256; ++i) {
    EXPECT_EQ(plain[i].sum, inFlight[i].sum) << i;
    EXPECT_EQ(plain[i].count, inFlight[i].count) << i;
    count += plain[i].count;
  }
  const auto withColor = [&](std::size_t i) { return scene.held[i] == 0 && scene.pixels[i] >> 24 != 0; };
  std::int64_t expected = 0;
  for (std::size_t i = 0; i < scene.pixels.size(); ++i) expected += withColor(i) ? 1 : 0;
  EXPECT_EQ(count, expected);
}

// Black and white for a grey: with all of the error passed on the mean is kept, with part of it nearly.
TEST(DampedDiffusion, MixesEntries) {
  const Scene scene{64, 64, Words(64 * 64, 0xFF808080U), Bytes(64 * 64), {0xFF000000U, 0xFFFFFFFFU}};
  const Bytes indices = InBands(scene, false);
  const auto white = std::count(indices.begin(), indices.end(), 2);
  EXPECT_NEAR(static_cast<double>(white), 64 * 64 / 2, 64 * 64 / 20);
}

TEST(DampedDiffusion, StrengthFallsSmoothlyWithTheColors) {
  for (std::size_t count = 2; count <= 256; ++count) {
    const std::int32_t step = glib::DiffusionStrength(count - 1) - glib::DiffusionStrength(count);
    EXPECT_GE(step, 0) << count;
    EXPECT_LE(step, 8) << count;
  }
  EXPECT_EQ(glib::DiffusionStrength(256), 128);
}

}  // namespace
