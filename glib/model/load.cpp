#include <algorithm>
#include <memory>
#include <utility>

#include "glib/model/film.h"
#include "glib/model/film_body.h"
#include "glib/model/film_pages.h"
#include "glib/model/module_call.h"
#include "glib/module_api/exchange.h"
#include "glib/module_api/result_values.h"

namespace glib {
namespace {

using Page = ImageDataExchange::Page;

constexpr std::int32_t kSlideByItself = -1;
constexpr std::uint32_t kAtTheEnd = 0xFFFFFFFF;

void TakeRaster(RasterBlock& raster, Page& page) {
  raster.Release();
  raster.bits = page.bits;
  raster.width = page.width;
  raster.height = page.height;
  raster.owned = page.owned;
  std::copy_n(page.palette, 256, raster.palette);
  if (page.pixels == nullptr && page.metafile == nullptr) return;
  raster.pixels = std::exchange(page.pixels, nullptr);
  raster.metafile = std::exchange(page.metafile, nullptr);
  raster.owned = 1;
}

std::unique_ptr<Slide> NewSlide(const FilmBody& body, const Page& page, const char* name) {
  auto slide = std::make_unique<Slide>(body.background);
  slide->delay = page.delay;
  slide->dpiX = page.dpiX;
  slide->dpiY = page.dpiY;
  slide->name = name;
  return slide;
}

void AddSingleSlide(FilmBody& body, Page& page, const char* name, const char* layerName) {
  std::unique_ptr<Slide> slide = NewSlide(body, page, name);
  auto layer = std::make_unique<Layer>(slide.get());
  layer->name = layerName;
  TakeRaster(layer->raster, page);
  slide->AddLayer(layer.release());
  body.AddSlide(slide.release());
}

// One slide of the pages from `first` that have its number. Gives the index behind the last.
std::uint32_t AddLayeredSlide(FilmBody& body, const gen::array_ptr<Page>& pages, std::uint32_t first,
                              const char* name) {
  const std::int32_t number = pages.At(first)->slideNumber;
  std::unique_ptr<Slide> slide = NewSlide(body, *pages.At(first), name);
  std::uint32_t i = first;
  for (; i < pages.count && pages.At(i)->slideNumber == number; ++i) {
    Page& page = *pages.At(i);
    auto layer = std::make_unique<Layer>(slide.get());
    if (page.name.IsEmpty()) {
      gen::Format(layer->name, "Layer %d", static_cast<int>(i - first + 1));
    } else {
      layer->name = page.name;
    }
    layer->SetPosition(page.x, page.y);
    TakeRaster(layer->raster, page);
    layer->visible = page.visible;
    slide->SetBackground(page.background);
    slide->AddLayer(layer.release());
  }
  body.AddSlide(slide.release());
  return i;
}

void SetUpExchange(FilmBody& body, std::uint32_t size, std::uint32_t id, ImageDataExchange& exchange) {
  exchange.film = body.owner;
  exchange.id = id;
  exchange.callback = body.callback;
  exchange.userValue = body.userValue;
  exchange.message = &body.message;
  exchange.background = body.background;
  exchange.exchangeFlag = body.exchangeFlag;
  exchange.sourceSize = size;
}

// A block of memory has no name.
const char* SlideName(const void* source, std::uint32_t size) {
  return size == kSourceIsPath && source != nullptr ? static_cast<const char*>(source) : "";
}

}  // namespace

void AddSlides(FilmBody& body, ImageDataExchange& exchange, const char* name) {
  const bool layered = exchange.pages.At(0)->slideNumber != kSlideByItself;
  for (std::uint32_t i = 0; i < exchange.pages.count;) {
    if (layered) {
      i = AddLayeredSlide(body, exchange.pages, i, name);
    } else {
      AddSingleSlide(body, *exchange.pages.At(i++), name, "Layer 1");
    }
  }
}

void AddThumbnailSlides(FilmBody& body, ImageDataExchange& exchange, const char* name) {
  for (std::uint32_t i = 0; i < exchange.pages.count; ++i) {
    Page& page = *exchange.pages.At(i);
    const std::uint8_t owned = page.owned;
    AddSingleSlide(body, page, name, "");
    body.slides.At(body.slides.count - 1)->layers.At(0)->raster.owned = owned;
  }
}

std::uint32_t FilmBody::LoadFile(const void* source, std::uint32_t size, std::uint32_t id, BaseFormatDesc* loadWord,
                                 bool replace, std::uint32_t position) {
  if (replace) {
    owner->Clear();
  } else if (position != kAtTheEnd && position >= slides.count) {
    return BADA;
  }
  const std::uint32_t oldCount = slides.count;
  const ModuleCall call(*this);
  ImageDataExchange exchange;
  SetUpExchange(*this, size, id, exchange);
  std::uint32_t result = LoadImage(source, exchange, loadWord);
  // A module that succeeds without a page has nothing to hand over.
  if (result == RCOK && exchange.pages.count == 0) result = IERR;
  if (result != RCOK) {
    exchange.ReleasePages();
    return result;
  }
  AddSlides(*this, exchange, SlideName(source, size));
  if (!replace && position != kAtTheEnd) {
    for (std::uint32_t k = oldCount; k < slides.count; ++k) std::swap(slides.At(k), slides.At(position++));
  }
  return RCOK;
}

std::uint32_t FilmBody::LoadThumbnailFile(const void* source, std::uint32_t size, std::uint32_t id, std::uint8_t flag,
                                          std::uint32_t width, std::uint32_t height) {
  const ModuleCall call(*this);
  ImageDataExchange exchange;
  SetUpExchange(*this, size, id, exchange);
  exchange.thumbnailFlag = flag;
  exchange.thumbnailWidth = width;
  exchange.thumbnailHeight = height;
  const auto* path = static_cast<const char*>(source);
  const std::uint32_t result = LoadThumbnail(path, exchange);
  if (result != RCOK) {
    exchange.ReleasePages();
    return result;
  }
  AddThumbnailSlides(*this, exchange, path == nullptr ? "" : path);
  return RCOK;
}

}  // namespace glib
