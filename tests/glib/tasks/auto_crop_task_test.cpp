#include "glib/tasks/auto_crop_task.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>

#include "tests/support/sample_film.h"

namespace {

// The word of one pixel, by the book.
std::uint32_t WordAt(const glib::RasterBlock& raster, std::int32_t x, std::int32_t y) {
  const std::size_t stride =
      raster.bits <= 8 && raster.rowsAligned == 0
          ? glib::PackedStride(static_cast<std::size_t>(raster.width), static_cast<std::size_t>(raster.bits))
          : glib::PaddedStride(static_cast<std::size_t>(raster.width), static_cast<std::size_t>(raster.bits));
  const std::uint8_t* row = raster.pixels + static_cast<std::size_t>(y) * stride;
  const auto byte = [row](std::int32_t i) { return static_cast<std::uint32_t>(row[i]); };
  switch (raster.bits) {
    case 32:
      return byte(4 * x) | byte(4 * x + 1) << 8 | byte(4 * x + 2) << 16 | byte(4 * x + 3) << 24;
    case 24:
      return byte(3 * x) | byte(3 * x + 1) << 8 | byte(3 * x + 2) << 16 | 0xFF000000U;
    case 8:
      return raster.palette[byte(x)];
    case 4:
      return raster.palette[x % 2 == 0 ? byte(x / 2) >> 4 : byte(x / 2) & 15U];
    default:
      return raster.palette[byte(x / 8) >> (7 - x % 8) & 1U];
  }
}

glib::Rectangle SlowBounds(const glib::RasterBlock& raster, std::uint32_t color) {
  glib::Rectangle bounds{raster.width, raster.height, 0, 0};
  for (std::int32_t y = 0; y < raster.height; ++y) {
    for (std::int32_t x = 0; x < raster.width; ++x) {
      if (WordAt(raster, x, y) == color) continue;
      bounds = {std::min(bounds.left, x), std::min(bounds.top, y), std::max(bounds.right, x + 1),
                std::max(bounds.bottom, y + 1)};
    }
  }
  return bounds;
}

void ExpectEqual(const glib::Rectangle& got, const glib::Rectangle& expected, const std::string& what) {
  EXPECT_EQ(got.left, expected.left) << what;
  EXPECT_EQ(got.top, expected.top) << what;
  EXPECT_EQ(got.right, expected.right) << what;
  EXPECT_EQ(got.bottom, expected.bottom) << what;
}

TEST(ContentBounds, AgreesWithTheSlowFormAtEveryDepth) {
  std::mt19937 random(7);
  for (const std::int32_t bits : {1, 4, 8, 24, 32}) {
    for (int round = 0; round < 60; ++round) {
      const std::int32_t width = 1 + static_cast<std::int32_t>(random() % 40);
      const std::int32_t height = 1 + static_cast<std::int32_t>(random() % 12);
      glib::Slide slide(glib::RGB32(0, 0, 0, 0));
      glib::Layer layer(&slide);
      // Sparse content; the bytes that pad a row are filled too and must not count.
      const unsigned density = round % 3 == 0 ? 2 : 60;
      test_support::SetRows(layer, width, height, bits, [&](std::uint8_t* row, std::int32_t) {
        const std::size_t stride = glib::PaddedStride(static_cast<std::size_t>(width), static_cast<std::size_t>(bits));
        for (std::size_t i = 0; i < stride; ++i) {
          row[i] = random() % density == 0 ? static_cast<std::uint8_t>(random()) : std::uint8_t{0};
        }
      });
      layer.raster.rowsAligned = bits <= 8 && round % 2 == 1 ? 0 : 1;
      for (std::uint32_t i = 0; i < 256; ++i) layer.raster.palette[i] = i == 5 ? 0xFF000000U : 0xFF000000U | i * 77U;
      const std::uint32_t color = bits == 32 ? 0 : 0xFF000000U;
      ExpectEqual(glib::ContentBounds(&layer, color), SlowBounds(layer.raster, color),
                  "bits " + std::to_string(bits) + " round " + std::to_string(round));
    }
  }
}

TEST(ContentBounds, ComparesAllFourBytes) {
  glib::Slide slide(glib::RGB32(0, 0, 0, 0));
  glib::Layer layer(&slide);
  test_support::SetRows(layer, 3, 2, 24,
                        [](std::uint8_t* row, std::int32_t) { std::fill(row, row + 9, std::uint8_t{255}); });
  ExpectEqual(glib::ContentBounds(&layer, 0x00FFFFFF), {0, 0, 3, 2}, "white without its fourth byte");
  ExpectEqual(glib::ContentBounds(&layer, 0xFFFFFFFF), {3, 2, 0, 0}, "white");
}

TEST(ContentBounds, AnswersWithoutARaster) {
  ExpectEqual(glib::ContentBounds(nullptr, 0), {0, 0, 0, 0}, "no layer");
  glib::Slide slide(glib::RGB32(0, 0, 0, 0));
  const glib::Layer layer(&slide);
  ExpectEqual(glib::ContentBounds(&layer, 0), {0, 0, 0, 0}, "no area");
}

TEST(AutoCropTask, CutsEveryLayerToItsContent) {
  constexpr std::uint32_t kBorder = 0xFFFFFFFF;
  test_support::SampleFilm sample;
  glib::Slide& slide = sample.AddSlide(20, 10, [](std::int32_t x, std::int32_t y) {
    return x >= 3 && x < 9 && y >= 2 && y < 7 ? test_support::PlaceWord(x, y) : kBorder;
  });
  sample.AddLayer(slide, 6, 6, [](std::int32_t x, std::int32_t y) { return x == 4 && y == 5 ? 0U : kBorder; });
  // All border: nothing can be cut to, so the raster stays.
  sample.AddSlide(5, 5, [](std::int32_t, std::int32_t) { return kBorder; });
  slide.stale = false;
  const glib::AutoCropParams params{kBorder};
  EXPECT_TRUE(glib::TaskAutoCrop(&sample.film, &params));
  EXPECT_EQ(sample.Layer(0).raster.width, 6);
  EXPECT_EQ(sample.Layer(0).raster.height, 5);
  EXPECT_EQ(sample.Pixel(0, 0, 0), test_support::PlaceWord(3, 2));
  EXPECT_EQ(sample.Layer(0).x, 0);
  EXPECT_EQ(sample.Layer(0).y, 0);
  EXPECT_EQ(sample.Layer(0, 1).raster.width, 1);
  EXPECT_EQ(sample.Layer(0, 1).raster.height, 1);
  EXPECT_EQ(sample.Pixel(0, 0, 0, 1), 0U);
  EXPECT_EQ(sample.Layer(1).raster.width, 5);
  EXPECT_EQ(sample.Layer(1).raster.height, 5);
  EXPECT_TRUE(slide.stale);
}

TEST(AutoCropTask, CutsALayerThatDoesNotStandAtTheCorner) {
  constexpr std::uint32_t kBorder = 0xFFFFFFFF;
  test_support::SampleFilm sample;
  glib::Slide& slide = sample.AddSlide(8, 9, [](std::int32_t x, std::int32_t y) {
    return x >= 1 && x < 4 && y >= 2 && y < 8 ? test_support::PlaceWord(x, y) : kBorder;
  });
  slide.GetLayer(0)->SetPosition(3, 4);
  // Content up to all four edges: nothing to cut.
  sample.AddSlide(5, 6).GetLayer(0)->SetPosition(2, 0);
  const glib::AutoCropParams params{kBorder};
  EXPECT_TRUE(glib::TaskAutoCrop(&sample.film, &params));
  EXPECT_EQ(sample.Layer(0).raster.width, 3);
  EXPECT_EQ(sample.Layer(0).raster.height, 6);
  EXPECT_EQ(sample.Pixel(0, 0, 0), test_support::PlaceWord(1, 2));
  EXPECT_EQ(sample.Pixel(0, 2, 5), test_support::PlaceWord(3, 7));
  EXPECT_EQ(sample.Layer(0).x, 0);
  EXPECT_EQ(sample.Layer(0).y, 0);
  EXPECT_EQ(sample.Layer(1).raster.width, 5);
  EXPECT_EQ(sample.Layer(1).raster.height, 6);
  EXPECT_EQ(sample.Layer(1).x, 0);
}

}  // namespace
