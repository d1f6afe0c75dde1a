#ifndef GLIB_MODEL_FILM_BODY_H_
#define GLIB_MODEL_FILM_BODY_H_

#include <cstdint>

#include "gen/array_ptr.h"
#include "gen/basic_string.h"
#include "glib/format/registry.h"
#include "glib/model/slide.h"
#include "glib/module_api/progress.h"
#include "glib/raster/rgb32.h"

namespace glib {

class Film;

// What a film holds. It is the film's own format registry as well, so that no two films share anything.
class FilmBody : public FilterManager {
 public:
  FilmBody(const char* moduleFolder, bool useCatalogue, Film* film)
      : FilterManager(moduleFolder, useCatalogue), owner(film) {}

  bool AddSlide(Slide* slide);                 // takes it over; false for null
  Slide* GetSlide(std::uint32_t index) const;  // null past the end

  // `size` is kSourceIsPath and `source` a path, or a memory block of `size` bytes. `position` is 0xFFFFFFFF for the
  // end.
  std::uint32_t LoadFile(const void* source, std::uint32_t size, std::uint32_t id, BaseFormatDesc* loadWord,
                         bool replace, std::uint32_t position);
  std::uint32_t LoadThumbnailFile(const void* source, std::uint32_t size, std::uint32_t id, std::uint8_t flag,
                                  std::uint32_t width, std::uint32_t height);
  std::uint32_t Save(const char* path, BaseFormatDesc* desc);

  gen::array_ptr<Slide> slides;
  gen::basic_string<char> message;  // left by a module
  std::uint32_t current = 0;
  RGB32 background = RGB32(255, 255, 255, 0);
  std::uint8_t exchangeFlag = 0;
  ProgressCallback callback = nullptr;
  std::uintptr_t userValue = 0;
  Film* owner;
};

}  // namespace glib

#endif  // GLIB_MODEL_FILM_BODY_H_
