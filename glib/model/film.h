#ifndef GLIB_MODEL_FILM_H_
#define GLIB_MODEL_FILM_H_

#include <cstdint>

#include "gen/basic_string.h"
#include "glib/model/layer.h"
#include "glib/module_api/progress.h"
#include "glib/module_api/save_settings.h"
#include "glib/raster/rgb32.h"

namespace glib {

class FilmBody;

// The document: an ordered list of slides, loaded and saved through the format modules.
//
// A slide range is `first` and `count`; it fails when `first` is at or past the end, a `count` of kAllSlides means all
// that follow, and the end is cut to what there is. A single `slide` of kCurrentSlide means the current one unless told
// otherwise. Results of the virtual operations are those of result_values.h.
class Film {
 public:
  static constexpr std::uint32_t kAll = 0xFFFFFFFF;
  static constexpr std::uint32_t kCurrentSlide = 0xFFFFFFFF;
  static constexpr std::uint32_t kWholeFilm = 0xFFFFFFFF;  // as a slide of GetSize, Width, Height, GetBackground

  // `folder` holds the modules; null or empty: found beside the program. With `useCatalogue` a module is loaded at its
  // first use, else all are loaded here.
  Film(const char* folder, bool useCatalogue);
  Film(const Film&) = delete;
  Film& operator=(const Film&) = delete;
  virtual ~Film();

  virtual std::uint32_t Load(const char* path, BaseFormatDesc* loadWord);
  virtual std::uint32_t Append(const char* path, BaseFormatDesc* loadWord);
  virtual std::uint32_t Insert(const char* path, BaseFormatDesc* loadWord, std::uint32_t position);
  virtual std::uint32_t LoadMemory(const void* block, std::uint32_t size, std::uint32_t id, BaseFormatDesc* loadWord);
  virtual std::uint32_t AppendMemory(const void* block, std::uint32_t size, std::uint32_t id, BaseFormatDesc* loadWord);
  virtual std::uint32_t InsertMemory(const void* block, std::uint32_t size, std::uint32_t id, BaseFormatDesc* loadWord,
                                     std::uint32_t position);
  virtual std::uint32_t LoadThumbnail(const char* path, std::uint8_t flag, std::uint32_t width, std::uint32_t height);
  virtual std::uint32_t LoadThumbnailEx(const char* path, std::uint32_t size, std::uint32_t id, std::uint8_t flag,
                                        std::uint32_t width, std::uint32_t height);
  // On RCOK the caller owns `info`.
  virtual std::uint32_t GetInfo(const char* path, FileInfo*& info);
  // A `slideCount` of kAllSlides in `desc` is replaced by the number of slides.
  virtual std::uint32_t Save(const char* path, BaseFormatDesc* desc);
  virtual void Clear();

  bool IsEmpty() const;
  std::uint32_t Count() const;
  void GetSize(std::int32_t& width, std::int32_t& height, std::uint32_t slide) const;
  std::uint32_t Width(std::uint32_t slide) const;
  std::uint32_t Height(std::uint32_t slide) const;
  void SetCallback(ProgressCallback callback, std::uintptr_t userValue);
  void GetCallback(ProgressCallback& callback, std::uintptr_t& userValue) const;
  void SetBackground(RGB32 colour, std::uint32_t first, std::uint32_t count);
  RGB32 GetBackground(std::uint32_t slide) const;
  bool SetDelay(std::uint32_t delay, std::uint32_t first, std::uint32_t count);
  std::int32_t LayerCount(std::uint32_t slide) const;
  bool MergeLayers(std::uint32_t slide, std::uint32_t firstLayer, std::uint32_t count);
  std::int32_t LayerBits(std::uint32_t slide, std::uint32_t layer) const;
  bool ConvertBits(std::int32_t bits, std::uint32_t slide, std::uint32_t layer);
  std::int32_t GetRaster(std::uint32_t slide, std::uint8_t*& pixels, std::uint32_t*& palette, MetafileHandle& metafile);

  bool Crop(const Rectangle& rectangle, std::uint32_t first, std::uint32_t count);
  bool Crop(std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height, std::uint32_t first,
            std::uint32_t count);
  bool Stretch(std::int32_t width, std::int32_t height, std::int32_t smooth, bool proportional, std::uint32_t first,
               std::uint32_t count);
  bool Mirror(bool horizontal, bool vertical, std::uint32_t first, std::uint32_t count);
  bool Rotate(double angle, bool interpolate, std::uint32_t first, std::uint32_t count);
  bool Filter(std::uint32_t filter, std::uint32_t first, std::uint32_t count);
  bool ColorEffect(std::uint32_t effect, const double* arguments, std::uint32_t first, std::uint32_t count);

  // What drivers and tasks that work on slides directly need.
  FilmBody& body() { return *body_; }
  const FilmBody& body() const { return *body_; }

 private:
  FilmBody* body_;
};

}  // namespace glib

#endif  // GLIB_MODEL_FILM_H_
