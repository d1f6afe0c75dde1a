#include "glib/tasks/palette_task.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "glib/model/film.h"
#include "glib/model/film_body.h"
#include "glib/module_api/save_settings.h"
#include "glib/tasks/apply_palette.h"
#include "tests/support/color_rasters.h"
#include "tests/support/plain_dither.h"
#include "tests/support/plain_quantizer.h"
#include "tests/support/sample_film.h"
#include "tests/support/temporary_folder.h"

namespace {

using color_rasters::Recipe;
using color_rasters::Texture;

std::vector<std::uint32_t> SpreadPalette() {
  std::vector<std::uint32_t> palette(256);
  for (std::uint32_t i = 0; i < 256; ++i) palette[i] = 0xFF000000 | (i * 2654435761U >> 8);
  return palette;
}

// A slide whose one layer is the raster of a recipe. Every third pixel of a 32-bit one is transparent, one in three has
// alpha 1.
glib::RasterBlock& AddSlide(test_support::SampleFilm& sample, const Recipe& recipe) {
  auto* slide = new glib::Slide(glib::RGB32(255, 255, 255, 0));
  auto* layer = new glib::Layer(slide);
  Make(recipe, layer->raster);
  if (recipe.bits == 32) {
    for (std::int32_t i = 0; i < recipe.width * recipe.height; ++i) {
      layer->raster.pixels[4 * i + 3] = static_cast<std::uint8_t>(i % 3 == 0 ? 0 : i % 3 == 1 ? 1 : 255);
    }
  }
  slide->AddLayer(layer);
  sample.film.body().AddSlide(slide);
  return layer->raster;
}

std::vector<std::uint8_t> Indices(const glib::RasterBlock& raster) {
  std::vector<std::uint8_t> indices;
  for (std::int32_t y = 0; y < raster.height; ++y) {
    const std::uint8_t* row = raster.pixels + raster.Stride() * static_cast<std::size_t>(y);
    indices.insert(indices.end(), row, row + raster.width);
  }
  return indices;
}

// Reduced to `reduceTo` colours of its own with the slow forms, which are then mapped to the given ones.
std::vector<std::uint8_t> SlowlyMapped(const Recipe& recipe, std::uint32_t reduceTo,
                                       const std::vector<std::uint32_t>& palette, std::uint32_t count) {
  glib::RasterBlock raster;
  Make(recipe, raster);
  if (recipe.bits > 8) plain::Quantize(raster, reduceTo, true);
  std::vector<std::uint8_t> indices = Indices(raster);
  for (std::uint8_t& index : indices) {
    index =
        static_cast<std::uint8_t>(plain::NearestEntry(plain::ChannelsOf(raster.palette[index]), palette.data(), count));
  }
  return indices;
}

std::vector<std::uint8_t> SlowlyDiffused(const Recipe& recipe, const std::vector<std::uint32_t>& palette,
                                         std::uint32_t count) {
  glib::RasterBlock raster;
  Make(recipe, raster);
  const auto width = static_cast<std::uint32_t>(raster.width);
  return plain::DitherToPalette(width, static_cast<std::uint32_t>(raster.height), width, palette.data(), count,
                                [&raster](std::uint32_t x, std::uint32_t y) {
                                  const std::uint8_t* row = raster.pixels + raster.Stride() * y;
                                  if (raster.bits == 8) return plain::ChannelsOf(raster.palette[row[x]]);
                                  const std::uint8_t* pixel = row + x * static_cast<std::uint32_t>(raster.bits) / 8;
                                  return plain::Channels{pixel[0], pixel[1], pixel[2]};
                                });
}

TEST(ApplyPalette, MapsAndDiffusesSlidesWithoutAlpha) {
  const std::vector<std::uint32_t> palette = SpreadPalette();
  for (const std::int32_t bits : {24, 8}) {
    for (const std::uint32_t count : {1U, 16U, 255U, 256U, 300U}) {
      for (const bool diffuse : {false, true}) {
        const std::uint32_t used = std::min(count, 256U);
        const Recipe recipe = {bits, 87, 93, Texture::kPhoto, 200, count, bits != 8};
        test_support::SampleFilm sample;
        glib::RasterBlock& raster = AddSlide(sample, recipe);
        std::int32_t transparent = 7;
        ASSERT_TRUE(glib::ApplyPalette(sample.film, palette.data(), count, diffuse, transparent));
        EXPECT_EQ(-1, transparent);
        EXPECT_EQ(8, raster.bits);
        EXPECT_EQ(1, raster.rowsAligned);
        EXPECT_TRUE(std::equal(palette.begin(), palette.end(), raster.palette));
        const auto expected =
            diffuse ? SlowlyDiffused(recipe, palette, used) : SlowlyMapped(recipe, used, palette, used);
        EXPECT_EQ(expected, Indices(raster)) << bits << " bits, count " << count << " diffuse " << diffuse;
      }
    }
  }
}

// With fewer than 256 entries index 255 is free anyway and the palette stays as it is.
TEST(ApplyPalette, SmallPaletteLeavesRoomForTransparency) {
  const std::vector<std::uint32_t> palette = SpreadPalette();
  for (const bool diffuse : {false, true}) {
    const Recipe recipe = {32, 60, 50, Texture::kPhoto, 0, 4};
    test_support::SampleFilm sample;
    glib::RasterBlock& raster = AddSlide(sample, recipe);
    std::int32_t transparent = 7;
    ASSERT_TRUE(glib::ApplyPalette(sample.film, palette.data(), 32, diffuse, transparent));
    EXPECT_EQ(255, transparent);
    EXPECT_TRUE(std::equal(palette.begin(), palette.end(), raster.palette));
    auto expected = diffuse ? SlowlyDiffused(recipe, palette, 32) : SlowlyMapped(recipe, 32, palette, 32);
    for (std::size_t i = 0; i < expected.size(); i += 3) expected[i] = 255;
    EXPECT_EQ(expected, Indices(raster));
  }
}

TEST(ApplyPalette, FullPaletteMovesItsLastColour) {
  std::vector<std::uint32_t> palette = SpreadPalette();
  palette[100] = 0xFFABCDEF;  // the first two choices for the key colour are taken
  palette[20] = 0xFFABCDF0;
  for (const bool diffuse : {false, true}) {
    const Recipe recipe = {32, 60, 50, Texture::kPhoto, 0, 4};
    test_support::SampleFilm sample;
    glib::RasterBlock& raster = AddSlide(sample, recipe);
    std::int32_t transparent = 7;
    ASSERT_TRUE(glib::ApplyPalette(sample.film, palette.data(), 256, diffuse, transparent));
    EXPECT_LE(raster.paletteEntries, 255U);
    auto expected = diffuse ? SlowlyDiffused(recipe, palette, 256) : SlowlyMapped(recipe, 255, palette, 256);
    std::uint32_t unused = 0;
    while (std::find(expected.begin(), expected.end(), unused) != expected.end()) ++unused;
    ASSERT_LT(unused, 255U);
    for (std::size_t i = 0; i < expected.size(); ++i) {
      if (i % 3 == 0) {
        expected[i] = 255;
      } else if (expected[i] == 255) {
        expected[i] = static_cast<std::uint8_t>(unused);
      }
    }
    EXPECT_EQ(expected, Indices(raster));
    palette[unused] = palette[255];
    palette[255] = 0x00ABCDF1;
    EXPECT_TRUE(std::equal(palette.begin(), palette.end(), raster.palette));
    palette = SpreadPalette();
    palette[100] = 0xFFABCDEF;
    palette[20] = 0xFFABCDF0;
  }
}

// A slide that uses all entries has no free place: its last colour keeps its index, and reads as transparent.
TEST(ApplyPalette, AllEntriesInUse) {
  const std::vector<std::uint32_t> palette = SpreadPalette();
  test_support::SampleFilm sample;
  // Rows of one colour each. Two columns, the first and the last, take no errors and pass none on.
  sample.AddSlide(2, 256, [&palette](std::int32_t, std::int32_t y) { return palette[static_cast<std::size_t>(y)]; });
  std::int32_t transparent = 7;
  ASSERT_TRUE(glib::ApplyPalette(sample.film, palette.data(), 256, true, transparent));
  const std::vector<std::uint8_t> indices = Indices(sample.Layer(0).raster);
  for (std::size_t y = 0; y < 256; ++y) EXPECT_EQ(y, indices[2 * y]);
  EXPECT_TRUE(std::equal(palette.begin(), palette.end(), sample.Layer(0).raster.palette));
}

// Slides before the first one with alpha don't know of it; those behind it keep clear of index 255.
TEST(ApplyPalette, MixedDepths) {
  const std::vector<std::uint32_t> palette = SpreadPalette();
  for (const bool diffuse : {false, true}) {
    test_support::SampleFilm sample;
    const Recipe recipe = {24, 60, 50, Texture::kNoise, 0, 4};
    const Recipe withAlpha = {32, 20, 50, Texture::kPhoto, 0, 4};
    const glib::RasterBlock& first = AddSlide(sample, recipe);
    AddSlide(sample, withAlpha);
    const glib::RasterBlock& third = AddSlide(sample, recipe);
    const glib::RasterBlock& fourth = AddSlide(sample, {8, 60, 50, Texture::kNoise, 20, 4});
    std::int32_t transparent = 7;
    ASSERT_TRUE(glib::ApplyPalette(sample.film, palette.data(), 200, diffuse, transparent));
    EXPECT_EQ(255, transparent);
    EXPECT_EQ(Indices(first), Indices(third));
    for (const glib::RasterBlock* raster : {&first, &third, &fourth}) {
      const auto indices = Indices(*raster);
      EXPECT_LT(*std::max_element(indices.begin(), indices.end()), 200);
    }
  }
}

TEST(ApplyPalette, JoinsLayersFirst) {
  test_support::SampleFilm sample;
  glib::Slide& slide = sample.AddSlide(8, 6, [](std::int32_t, std::int32_t) { return 0xFF000000U; });
  sample.AddLayer(slide, 2, 2, [](std::int32_t, std::int32_t) { return 0xFFFFFFFFU; });
  const std::uint32_t palette[256] = {0xFFFFFFFF, 0xFF000000};
  std::int32_t transparent = 7;
  ASSERT_TRUE(glib::ApplyPalette(sample.film, palette, 2, true, transparent));
  EXPECT_EQ(1, sample.film.LayerCount(0));
  const auto indices = Indices(sample.Layer(0).raster);
  EXPECT_EQ(0, indices[0]);
  EXPECT_EQ(1, indices[47]);
  EXPECT_TRUE(slide.stale);
}

TEST(ApplyPalette, ASlideWithoutPixelsEndsIt) {
  test_support::SampleFilm sample;
  AddSlide(sample, {24, 4, 4, Texture::kNoise});
  auto* slide = new glib::Slide(glib::RGB32(0, 0, 0, 0));
  slide->AddLayer(new glib::Layer(slide));
  sample.film.body().AddSlide(slide);
  const glib::RasterBlock& third = AddSlide(sample, {24, 4, 4, Texture::kNoise});
  const std::vector<std::uint32_t> palette = SpreadPalette();
  for (const bool diffuse : {false, true}) {
    std::int32_t transparent = 7;
    EXPECT_FALSE(glib::ApplyPalette(sample.film, palette.data(), 256, diffuse, transparent));
  }
  EXPECT_EQ(8, sample.Layer(0).raster.bits);
  EXPECT_EQ(24, third.bits);
}

class PaletteTask : public testing::Test {
 protected:
  // Black and white as a RIFF palette.
  std::string WritePalette(const std::string& name) {
    return folder_.Write(name, std::string("RIFF\0\0\0\0PAL data\0\0\0\0\0\3\2\0\0\0\0\0\xFF\xFF\xFF\0", 32));
  }
  bool Run(const std::string& file, std::int32_t mode, glib::BaseFormatDesc* format) {
    const glib::PaletteParams params = {file.c_str(), mode, format};
    return glib::TaskPalette(&sample_.film, &params);
  }

  test_support::TemporaryFolder folder_;
  test_support::SampleFilm sample_;
};

TEST_F(PaletteTask, HandsTheTransparentIndexOn) {
  const std::string file = WritePalette("two.pal");
  for (const std::int32_t bits : {24, 32}) {
    for (const std::int32_t mode : {0, 1, 2, -1}) {
      sample_.film.Clear();
      const Recipe recipe = {bits, 9, 9, Texture::kPhoto, 0, 3};
      const glib::RasterBlock& raster = AddSlide(sample_, recipe);
      glib::GIFSave gif;
      gif.transparentIndex = 3;
      ASSERT_TRUE(Run(file, mode, &gif));
      EXPECT_EQ(bits == 32 ? 255 : -1, gif.transparentIndex);
      std::vector<std::uint32_t> palette(256, 0xFF000000);
      palette[1] = 0xFFFFFFFF;
      auto expected = mode == 1 ? SlowlyMapped(recipe, 2, palette, 2) : SlowlyDiffused(recipe, palette, 2);
      for (std::size_t i = 0; bits == 32 && i < expected.size(); i += 3) expected[i] = 255;
      EXPECT_EQ(expected, Indices(raster)) << "mode " << mode;
      EXPECT_TRUE(std::equal(palette.begin(), palette.end(), raster.palette));
    }
  }
  sample_.film.Clear();
  AddSlide(sample_, {32, 9, 9, Texture::kPhoto});
  glib::PNGSave png(1);
  EXPECT_TRUE(Run(file, 1, &png));
  EXPECT_EQ(255, png.transparentIndex);
}

TEST_F(PaletteTask, FindsTheFileInAnotherCase) {
  WritePalette("Sub/Two.PAL");
  AddSlide(sample_, {24, 9, 9, Texture::kPhoto});
  glib::GIFSave gif;
  EXPECT_TRUE(Run(folder_.Text("sub\\two.pal"), 1, &gif));
  EXPECT_EQ(8, sample_.Layer(0).raster.bits);
}

TEST_F(PaletteTask, WithoutAPaletteNothingChanges) {
  const glib::RasterBlock& raster = AddSlide(sample_, {32, 9, 9, Texture::kPhoto});
  glib::GIFSave gif;
  gif.transparentIndex = 3;
  folder_.MakeFolder("folder.act");
  EXPECT_FALSE(Run(folder_.Text("missing.pal"), 1, &gif));
  EXPECT_FALSE(Run(folder_.Text("folder.act"), 1, &gif));
  EXPECT_FALSE(Run(folder_.Write("broken.pal", "RIFF"), 2, &gif));
  EXPECT_EQ(32, raster.bits);
  EXPECT_EQ(3, gif.transparentIndex);
}

}  // namespace
