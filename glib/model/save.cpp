#include <algorithm>
#include <memory>

#include "glib/model/compositing.h"
#include "glib/model/film_body.h"
#include "glib/model/film_pages.h"
#include "glib/model/module_call.h"
#include "glib/model/over_rows.h"
#include "glib/model/range.h"
#include "glib/module_api/exchange.h"
#include "glib/module_api/result_values.h"

namespace glib {
namespace {

// What a format can hold stands in the top bits of its id.
constexpr std::uint32_t kHoldsMetafiles = 0x80000000;
constexpr std::uint32_t kHoldsLayers = 0x40000000;
constexpr std::uint32_t kHoldsAlpha = 0x20000000;

bool Holds(const BaseFormatDesc& desc, std::uint32_t what) { return (desc.id & what) != 0; }

void AddPage(const BaseFormatDesc& desc, const Layer& layer, const Slide& slide, std::int32_t slideNumber,
             ImageDataExchange& exchange) {
  const RasterBlock& raster = layer.raster;
  auto page = std::make_unique<ImageDataExchange::Page>();
  page->x = layer.x;
  page->y = layer.y;
  page->bits = raster.bits;
  page->width = raster.width;
  page->height = raster.height;
  page->owned = 0;
  page->pixels = raster.pixels;
  page->metafile = raster.metafile;
  std::copy_n(raster.palette, 256, page->palette);
  page->ditherOnReduce = raster.ditherOnReduce;
  page->grayscale = raster.grayscale;
  page->treeDepth = raster.treeDepth;
  page->name = layer.name;
  page->slideNumber = slideNumber;
  page->delay = slide.delay;
  page->visible = layer.visible;
  page->background = slide.background;
  page->dpiX = desc.dpiX != 0.0 ? desc.dpiX : slide.dpiX;
  page->dpiY = desc.dpiY != 0.0 ? desc.dpiY : slide.dpiY;
  exchange.pages.Append(page.release());
}

// The whole stack as one layer.
const Layer& Composed(Slide& slide, bool keepAlpha, gen::array_ptr<Layer>& composites) {
  composites.Append(new Layer(&slide));
  Layer& composed = *composites.At(composites.count - 1);
  if (keepAlpha) {
    FlattenLayers(slide, composed, 0, kToTheLast);
    return composed;
  }
  MergeIntoLayer(slide, composed, 0, kToTheLast);
  const RasterBlock& raster = composed.raster;
  if (raster.pixels != nullptr) {
    LayOnBackground(reinterpret_cast<std::uint32_t*>(raster.pixels), ToPixel(slide.background),
                    static_cast<std::size_t>(raster.width) * static_cast<std::size_t>(raster.height));
  }
  return composed;
}

}  // namespace

void AddPages(Slide& slide, const BaseFormatDesc& desc, std::int32_t slideNumber, ImageDataExchange& exchange,
              gen::array_ptr<Layer>& composites) {
  if (slide.layers.count == 0) return;
  if (Holds(desc, kHoldsLayers)) {
    for (std::uint32_t i = 0; i < slide.layers.count; ++i) {
      AddPage(desc, *slide.layers.At(i), slide, slideNumber, exchange);
    }
    return;
  }
  const Layer& lowest = *slide.layers.At(0);
  if (slide.layers.count > 1 || lowest.x != 0 || lowest.y != 0) {
    AddPage(desc, Composed(slide, Holds(desc, kHoldsAlpha), composites), slide, slideNumber, exchange);
    return;
  }
  const bool needsRendering = lowest.raster.metafile != nullptr && !Holds(desc, kHoldsMetafiles);
  if (lowest.raster.bits == 32 || needsRendering) {
    slide.RefreshFlat();
    AddPage(desc, *slide.flat, slide, slideNumber, exchange);
  } else {
    AddPage(desc, lowest, slide, slideNumber, exchange);
  }
}

std::uint32_t FilmBody::Save(const char* path, BaseFormatDesc* desc) {
  if (desc->firstSlide >= slides.count) return BADA;
  if (desc->slideCount == kAllSlides) desc->slideCount = slides.count;
  std::uint32_t end = 0;
  RangeEnd(desc->firstSlide, desc->slideCount, slides.count, end);

  const ModuleCall call(*this);
  ImageDataExchange exchange;
  exchange.film = owner;
  exchange.callback = callback;
  exchange.userValue = userValue;
  exchange.message = &message;
  gen::array_ptr<Layer> composites;
  for (std::uint32_t i = desc->firstSlide; i < end; ++i) {
    AddPages(*slides.At(i), *desc, static_cast<std::int32_t>(i - desc->firstSlide), exchange, composites);
  }
  if (exchange.pages.count == 0) return IERR;
  return SaveImage(path, exchange, desc);
}

}  // namespace glib
