#include "glib/tasks/transparency_task.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "tests/support/sample_film.h"

namespace {

// The record with its colours behind it.
class Record {
 public:
  explicit Record(const std::vector<std::uint32_t>& colors) : words_(colors.size() + 1) {
    auto* params = new (words_.data()) glib::TransparencyParams{static_cast<std::int32_t>(colors.size())};
    std::copy(colors.begin(), colors.end(), params->Colors());
  }
  const void* get() const { return words_.data(); }

 private:
  std::vector<std::uint32_t> words_;
};

TEST(ClearAlphaOfColors, LooksAtColoursOnly) {
  std::mt19937 random(1);
  const std::vector<std::uint32_t> colors{0x000000, 0x0000FF, 0xFFFFFF};
  for (std::size_t width = 0; width < 70; ++width) {
    std::vector<std::uint32_t> row(width);
    for (std::uint32_t& word : row) {
      word = (random() & 1) != 0 ? colors[random() % colors.size()] | (random() & 0xFF000000U)
                                 : static_cast<std::uint32_t>(random());
    }
    std::vector<std::uint32_t> expected = row;
    for (std::uint32_t& word : expected) {
      for (const std::uint32_t color : colors) {
        if ((word & 0xFFFFFFU) == color) word = color;
      }
    }
    glib::ClearAlphaOfColors(row.data(), row.size(), colors.data(), colors.size());
    EXPECT_EQ(row, expected) << width;
  }
}

TEST(TransparencyTask, MakesColoursTransparentWithRedLowestInTheWord) {
  test_support::SampleFilm sample;
  const std::uint32_t words[] = {0xFFFF0000, 0xFF0000FF, 0x80FF0000, 0xFF00FF00, 0x00FF0000};
  sample.AddSlide(5, 1, [&words](std::int32_t x, std::int32_t) { return words[x]; });
  sample.AddSlide(1, 1, [](std::int32_t, std::int32_t) { return 0xFF00FF00U; });
  EXPECT_TRUE(glib::TaskTransparency(&sample.film, Record({0x000000FF, 0xAA00FF00}).get()));
  // Red, partly red and green go; their colours stay.
  const std::uint32_t expected[] = {0x00FF0000, 0xFF0000FF, 0x00FF0000, 0x0000FF00, 0x00FF0000};
  for (std::int32_t x = 0; x < 5; ++x) EXPECT_EQ(sample.Pixel(0, x, 0), expected[x]) << x;
  EXPECT_EQ(sample.Pixel(1, 0, 0), 0x0000FF00U);
  EXPECT_TRUE(sample.film.body().GetSlide(0)->stale);
}

TEST(TransparencyTask, DeepensAndMergesFirst) {
  test_support::SampleFilm sample;
  glib::Slide& indexed = sample.AddSlide(1, 1);
  glib::Layer& layer = *indexed.GetLayer(0);
  test_support::SetRows(layer, 3, 2, 8, [](std::uint8_t* row, std::int32_t y) {
    for (int x = 0; x < 3; ++x) row[x] = static_cast<std::uint8_t>(x + y);
  });
  layer.raster.palette[1] = 0xFF123456;
  glib::Slide& stacked = sample.AddSlide(2, 2, [](std::int32_t, std::int32_t) { return 0xFF563412U; });
  sample.AddLayer(stacked, 1, 1, [](std::int32_t, std::int32_t) { return 0xFF123456U; });
  EXPECT_TRUE(glib::TaskTransparency(&sample.film, Record({0x563412}).get()));
  EXPECT_EQ(sample.Layer(0).raster.bits, 32);
  EXPECT_EQ(sample.Pixel(0, 1, 0), 0x00123456U);
  EXPECT_EQ(sample.Pixel(0, 0, 1), 0x00123456U);
  EXPECT_NE(sample.Pixel(0, 0, 0), 0x00123456U);
  EXPECT_EQ(sample.film.LayerCount(1), 1);
  EXPECT_EQ(sample.Pixel(1, 0, 0), 0x00123456U);
  EXPECT_EQ(sample.Pixel(1, 1, 1), 0xFF563412U);
}

TEST(TransparencyTask, IsDoneOnAnEmptyFilm) {
  test_support::SampleFilm sample;
  EXPECT_TRUE(glib::TaskTransparency(&sample.film, Record({0}).get()));
}

}  // namespace
