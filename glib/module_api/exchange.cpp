#include "glib/module_api/exchange.h"

#include "platform/metafile/metafile.h"
#include "platform/pages.h"

namespace glib {

ImageDataExchange::~ImageDataExchange() = default;

void ImageDataExchange::ReleasePages() {
  for (std::uint32_t i = 0; i < pages.count; ++i) {
    Page* page = pages.At(i);
    const std::uint8_t owned = page->owned;
    page->owned = 1;
    page->Release();
    page->owned = owned;
  }
}

std::uint8_t* AllocateRaster(std::uint32_t width, std::uint32_t height, std::uint32_t bits) {
  const std::uint64_t stride = (std::uint64_t{width} * bits + 31) / 32 * 4;
  if (width == 0 || height == 0 || stride > 0xFFFFFFFFU) return nullptr;
  const std::uint64_t size = stride * height;
  if (size == 0 || size > 0xFFFFFFFFU) return nullptr;
  return static_cast<std::uint8_t*>(platform::AllocatePages(size));
}

void FreeRaster(void* block) { platform::FreePages(block); }

}  // namespace glib
