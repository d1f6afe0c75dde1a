#ifndef GLIB_MODULE_API_EXCHANGE_H_
#define GLIB_MODULE_API_EXCHANGE_H_

#include <cstdint>

#include "gen/array_ptr.h"
#include "gen/basic_string.h"
#include "glib/module_api/progress.h"
#include "glib/raster/raster_block.h"
#include "glib/raster/rgb32.h"

namespace glib {

class BaseFormatDesc;
class Film;
class Layer;
class Slide;

inline constexpr std::uint32_t kAnyFormat = 0xFFFFFFFF;     // as a format id: find out
inline constexpr std::uint32_t kSourceIsPath = 0xFFFFFFFF;  // as a source size

// A zeroed block for a raster with padded rows, or null: no memory, no pixels, or a size that doesn't fit 32 bits.
using AllocateRasterFunction = std::uint8_t* (*)(std::uint32_t width, std::uint32_t height, std::uint32_t bits);
using FreeRasterFunction = void (*)(void* block);

std::uint8_t* AllocateRaster(std::uint32_t width, std::uint32_t height, std::uint32_t bits);
void FreeRaster(void* block);  // null is ignored

// The one record that a module sees of a film. On a load the module appends pages; on a save the film has filled them.
class ImageDataExchange {
 public:
  // One image: the raster block, then where it belongs. Whoever adds a page makes it with `new`; the array deletes it.
  struct Page : RasterBlock {
    gen::basic_string<char> name;                // of the layer
    RGB32 background = RGB32(255, 255, 255, 0);  // of the slide
    std::uint8_t visible = 1;
    // -1: this page is a slide by itself, and its position is not used. Otherwise neighbouring pages with the same
    // number are layers of one slide. On a load the first page decides for all.
    std::int32_t slideNumber = -1;
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::uint32_t delay = 10;  // hundredths of a second
    std::uint32_t reserved = 0;
    double dpiX = 72.0;
    double dpiY = 72.0;
  };

  ImageDataExchange() = default;
  ImageDataExchange(const ImageDataExchange&) = delete;
  ImageDataExchange& operator=(const ImageDataExchange&) = delete;
  virtual ~ImageDataExchange();

  // Frees pixels and metafile of every page, whatever `owned` says; the pages stay, with `bits` -1.
  void ReleasePages();

  Film* film = nullptr;
  std::uint32_t id = kAnyFormat;
  AllocateRasterFunction AllocateRaster = nullptr;
  FreeRasterFunction FreeRaster = nullptr;
  ProgressCallback callback = nullptr;
  std::uintptr_t userValue = 0;
  gen::array_ptr<Page> pages;
  gen::basic_string<char>* message = nullptr;  // a module may leave a short cause of failure here; never null in a call
  RGB32 background = RGB32(255, 255, 255, 0);  // of the film
  std::uint8_t exchangeFlag = 0;
  std::uint8_t staticFlag = 0;
  std::uint8_t thumbnailFlag = 0;
  std::uint32_t sourceSize = kSourceIsPath;  // bytes of a memory source
  std::uint32_t thumbnailWidth = 0;
  std::uint32_t thumbnailHeight = 0;
};

}  // namespace glib

#endif  // GLIB_MODULE_API_EXCHANGE_H_
