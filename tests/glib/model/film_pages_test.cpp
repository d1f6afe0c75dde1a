#include "glib/model/film_pages.h"

#include <gtest/gtest.h>

#include <vector>

#include "glib/model/film.h"
#include "tests/support/layers.h"

namespace {

using glib::BaseFormatDesc;
using glib::Layer;
using glib::RGB32;
using glib::Slide;
using test_support::AddLayer;
using test_support::AddLayer32;
using test_support::Words;
using Page = glib::ImageDataExchange::Page;
using WordList = std::vector<std::uint32_t>;

constexpr std::uint32_t kPlainId = 0x00000004;
constexpr std::uint32_t kLayersId = 0x40000001;
constexpr std::uint32_t kMetafileId = 0x80000001;

// The pages of a slide for a format.
struct Pages {
  Pages(Slide& slide, std::uint32_t id) : desc(id) { glib::AddPages(slide, desc, 3, exchange, composites); }
  const Page& operator[](std::uint32_t i) { return *exchange.pages.At(i); }
  std::uint32_t count() const { return exchange.pages.count; }

  BaseFormatDesc desc;
  glib::ImageDataExchange exchange;
  gen::array_ptr<Layer> composites;
};

TEST(FilmPages, ASingleIndexedLayerGoesAsItIs) {
  Slide slide(RGB32(1, 2, 3, 0));
  slide.delay = 44;
  slide.dpiX = 100.0;
  slide.dpiY = 200.0;
  Layer* layer = AddLayer(slide, 8, 1, 1, {1, 0, 0, 0});
  layer->name = "a name";
  layer->visible = 0;
  layer->raster.palette[1] = 0xFF123456;
  layer->raster.grayscale = 1;
  layer->raster.ditherOnReduce = 0;
  layer->raster.treeDepth = 5;
  layer->raster.paletteEntries = 9;
  Pages pages(slide, glib::kGifFormatId);
  ASSERT_EQ(pages.count(), 1U);
  const Page& page = pages[0];
  EXPECT_EQ(page.pixels, layer->raster.pixels);
  EXPECT_EQ(page.owned, 0);
  EXPECT_EQ(page.bits, 8);
  EXPECT_EQ(page.palette[1], 0xFF123456U);
  EXPECT_STREQ(page.name.c_str(), "a name");
  EXPECT_EQ(page.visible, 0);
  EXPECT_EQ(page.grayscale, 1);
  EXPECT_EQ(page.ditherOnReduce, 0);
  EXPECT_EQ(page.treeDepth, 5U);
  EXPECT_EQ(page.paletteEntries, 256U);
  EXPECT_EQ(page.slideNumber, 3);
  EXPECT_EQ(page.delay, 44U);
  EXPECT_EQ(page.background, RGB32(1, 2, 3, 0));
  EXPECT_EQ(page.dpiX, 100.0);
  EXPECT_EQ(page.dpiY, 200.0);
  EXPECT_EQ(slide.flat->raster.bits, -1) << "no flat layer is made";
}

TEST(FilmPages, ResolutionOfTheSettingsGoesFirst) {
  Slide slide(RGB32(0, 0, 0, 0));
  slide.dpiY = 96.0;
  AddLayer(slide, 8, 1, 1, {1, 0, 0, 0});
  BaseFormatDesc desc(kPlainId);
  desc.dpiX = 300.0;
  glib::ImageDataExchange exchange;
  gen::array_ptr<Layer> composites;
  glib::AddPages(slide, desc, 0, exchange, composites);
  EXPECT_EQ(exchange.pages.At(0)->dpiX, 300.0);
  EXPECT_EQ(exchange.pages.At(0)->dpiY, 96.0);
}

TEST(FilmPages, ASingle32BitLayerGoesThroughTheFlatLayer) {
  Slide slide(RGB32(0, 0, 0, 0));
  Layer* layer = AddLayer32(slide, 0, 0, 1, 1, 0x80FFFFFF);
  Pages pages(slide, kPlainId);
  ASSERT_EQ(pages.count(), 1U);
  EXPECT_EQ(pages[0].pixels, slide.flat->raster.pixels);
  EXPECT_EQ(Words(slide.flat->raster), WordList{0x807F7F7F});
  EXPECT_EQ(Words(layer->raster), WordList{0x80FFFFFF});
  EXPECT_EQ(pages.composites.count, 0U);
}

TEST(FilmPages, ADisplacedLayerIsComposed) {
  Slide slide(RGB32(200, 100, 0, 0));
  AddLayer32(slide, 1, 0, 1, 1, 0x80FF8000);
  // With alpha: the background, then 200 + (55 * 128 >> 8) = 227, 100 + (28 * 128 >> 8) = 114, 0.
  Pages alpha(slide, glib::kGifFormatId);
  ASSERT_EQ(alpha.count(), 1U);
  EXPECT_EQ(Words(alpha[0]), (WordList{0x00C86400, 0x80E37200}));
  EXPECT_EQ(alpha[0].x, 0);
  // Without: laid on the background, a transparent pixel of the background's colour: c * 0 - 0 + b.
  // 255 * 128 / 255 - 128 + 200 = 200, 128 * 128 / 255 - 128 + 100 = 36, 0 - 128 + 0 limited.
  Pages plain(slide, kPlainId);
  ASSERT_EQ(plain.count(), 1U);
  EXPECT_EQ(Words(plain[0]), (WordList{0x00C86400, 0x80C82400}));
  EXPECT_EQ(plain[0].pixels, plain.composites.At(0)->raster.pixels);
  EXPECT_EQ(slide.flat->raster.bits, -1);
}

TEST(FilmPages, OnePixelDownIsDisplacedToo) {
  Slide slide(RGB32(0, 0, 0, 0));
  AddLayer(slide, 8, 1, 1, {1, 0, 0, 0})->SetPosition(0, 1);
  Pages pages(slide, kPlainId);
  ASSERT_EQ(pages.count(), 1U);
  EXPECT_EQ(pages[0].bits, 32);
  EXPECT_EQ(pages[0].height, 2);
}

TEST(FilmPages, AWhiteBackgroundIsExact) {
  Slide slide(RGB32(255, 255, 255, 0));
  AddLayer32(slide, 0, 0, 1, 1, 0xFF000000);
  AddLayer32(slide, 0, 0, 1, 1, 0x00FFFFFF);
  Pages pages(slide, kPlainId);
  EXPECT_EQ(Words(pages[0]), WordList{0xFF000000});
}

TEST(FilmPages, LayersForAFormatThatHoldsThem) {
  Slide slide(RGB32(0, 0, 0, 0));
  Layer* low = AddLayer32(slide, 0, 0, 1, 1, 1);
  Layer* high = AddLayer(slide, 8, 1, 1, {1, 0, 0, 0});
  high->SetPosition(5, 6);
  Pages pages(slide, kLayersId);
  ASSERT_EQ(pages.count(), 2U);
  EXPECT_EQ(pages[0].pixels, low->raster.pixels);
  EXPECT_EQ(pages[1].pixels, high->raster.pixels);
  EXPECT_EQ(pages[1].bits, 8);
  EXPECT_EQ(pages[1].x, 5);
  EXPECT_EQ(pages[1].y, 6);
  EXPECT_EQ(pages[0].slideNumber, 3);
  EXPECT_EQ(pages[1].slideNumber, 3);
}

TEST(FilmPages, AMetafileGoesToAFormatThatHoldsIt) {
  Slide slide(RGB32(0, 0, 0, 0));
  auto* layer = new Layer(&slide);
  layer->raster.SetMetafile(test_support::NewMetafile(100, 100), 2, 1, false);
  slide.AddLayer(layer);
  Pages pages(slide, kMetafileId);
  ASSERT_EQ(pages.count(), 1U);
  EXPECT_EQ(pages[0].bits, 0);
  EXPECT_EQ(pages[0].metafile, layer->raster.metafile);
  Pages drawn(slide, kPlainId);
  ASSERT_EQ(drawn.count(), 1U);
  EXPECT_EQ(drawn[0].pixels, slide.flat->raster.pixels);
  EXPECT_EQ(drawn[0].metafile, nullptr);
}

TEST(FilmPages, ASlideWithoutLayersHasNoPage) {
  Slide slide(RGB32(0, 0, 0, 0));
  for (const std::uint32_t id : {kPlainId, kLayersId, glib::kGifFormatId}) EXPECT_EQ(Pages(slide, id).count(), 0U);
}

// Adds a page with one byte of pixels.
Page* AddPage(glib::ImageDataExchange& exchange, std::int32_t slideNumber, std::uint8_t pixel) {
  auto* page = new Page;
  exchange.pages.Append(page);
  page->bits = 8;
  page->width = 1;
  page->height = 1;
  page->pixels = test_support::NewPages({pixel, 0, 0, 0});
  page->slideNumber = slideNumber;
  return page;
}

TEST(FilmPages, PagesBecomeSlidesByThemselves) {
  glib::Film film(nullptr, true);
  glib::ImageDataExchange exchange;
  Page* first = AddPage(exchange, -1, 1);
  first->delay = 7;
  first->dpiX = 10.0;
  first->dpiY = 20.0;
  first->x = 5;
  first->visible = 0;
  first->owned = 0;
  first->name = "ignored";
  first->background = RGB32(9, 9, 9, 9);
  first->palette[1] = 0x12345678;
  const std::uint8_t* pixels = first->pixels;
  AddPage(exchange, 4, 2);
  AddPage(exchange, 4, 3);
  glib::AddSlides(film.body(), exchange, "path");
  ASSERT_EQ(film.Count(), 3U) << "only the first page's number decides";
  const Slide& slide = *film.body().slides.At(0);
  EXPECT_STREQ(slide.name.c_str(), "path");
  EXPECT_EQ(slide.delay, 7U);
  EXPECT_EQ(slide.dpiX, 10.0);
  EXPECT_EQ(slide.dpiY, 20.0);
  EXPECT_EQ(slide.background, RGB32(255, 255, 255, 0));
  const Layer& layer = *slide.GetLayer(0);
  EXPECT_STREQ(layer.name.c_str(), "Layer 1");
  EXPECT_EQ(layer.x, 0);
  EXPECT_EQ(layer.visible, 1);
  EXPECT_EQ(layer.raster.pixels, pixels);
  EXPECT_EQ(layer.raster.owned, 1);
  EXPECT_EQ(layer.raster.palette[1], 0x12345678U);
  EXPECT_EQ(first->pixels, nullptr) << "without a copy";
}

TEST(FilmPages, NeighboursWithOneNumberBecomeLayers) {
  glib::Film film(nullptr, true);
  glib::ImageDataExchange exchange;
  Page* first = AddPage(exchange, 0, 1);
  first->delay = 7;
  first->background = RGB32(1, 1, 1, 0);
  Page* second = AddPage(exchange, 0, 2);
  second->name = "second";
  second->delay = 8;
  second->x = 3;
  second->y = 4;
  second->visible = 0;
  second->background = RGB32(2, 2, 2, 0);
  AddPage(exchange, 1, 3);
  AddPage(exchange, 0, 4);  // no neighbour of the first two
  glib::AddSlides(film.body(), exchange, "path");
  ASSERT_EQ(film.Count(), 3U);
  const Slide& slide = *film.body().slides.At(0);
  ASSERT_EQ(slide.layers.count, 2U);
  EXPECT_EQ(slide.delay, 7U) << "from the first page";
  EXPECT_EQ(slide.background, RGB32(2, 2, 2, 0)) << "from the last page";
  EXPECT_STREQ(slide.GetLayer(0)->name.c_str(), "Layer 1");
  EXPECT_STREQ(slide.GetLayer(1)->name.c_str(), "second");
  EXPECT_EQ(slide.GetLayer(1)->x, 3);
  EXPECT_EQ(slide.GetLayer(1)->y, 4);
  EXPECT_EQ(slide.GetLayer(1)->visible, 0);
  EXPECT_EQ(film.LayerCount(1), 1);
  EXPECT_STREQ(film.body().slides.At(2)->GetLayer(0)->name.c_str(), "Layer 1");
}

TEST(FilmPages, ThumbnailsKeepTheirOwnership) {
  glib::Film film(nullptr, true);
  glib::ImageDataExchange exchange;
  std::uint8_t lent[4] = {};
  auto* page = new Page;
  exchange.pages.Append(page);
  page->bits = 8;
  page->width = 1;
  page->height = 1;
  page->owned = 0;
  page->pixels = lent;
  page->slideNumber = 2;
  glib::AddThumbnailSlides(film.body(), exchange, "path");
  ASSERT_EQ(film.Count(), 1U);
  const Layer& layer = *film.body().slides.At(0)->GetLayer(0);
  EXPECT_TRUE(layer.name.IsEmpty());
  EXPECT_EQ(layer.raster.owned, 0);
  EXPECT_EQ(layer.raster.pixels, lent);
}

}  // namespace
