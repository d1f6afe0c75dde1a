#include "glib/model/film.h"

#include <algorithm>

#include "glib/model/film_body.h"
#include "glib/model/module_call.h"
#include "glib/model/operations_frame.h"
#include "glib/model/range.h"
#include "glib/module_api/exchange.h"

namespace glib {
namespace {

constexpr std::uint32_t kAtTheEnd = 0xFFFFFFFF;  // as a position

// The slide that an operation on one slide means; null if it doesn't exist.
Slide* SlideOf(const FilmBody& body, std::uint32_t slide) {
  return body.GetSlide(slide == Film::kCurrentSlide ? body.current : slide);
}

}  // namespace

Film::Film(const char* folder, bool useCatalogue) : body_(new FilmBody(folder, useCatalogue, this)) {
  SetBackground(RGB32(255, 255, 255, 0), 0, kAll);
}

Film::~Film() { delete body_; }

std::uint32_t Film::Load(const char* path, BaseFormatDesc* loadWord) {
  return body_->LoadFile(path, kSourceIsPath, kAnyFormat, loadWord, true, kAtTheEnd);
}

std::uint32_t Film::Append(const char* path, BaseFormatDesc* loadWord) {
  return body_->LoadFile(path, kSourceIsPath, kAnyFormat, loadWord, false, kAtTheEnd);
}

std::uint32_t Film::Insert(const char* path, BaseFormatDesc* loadWord, std::uint32_t position) {
  return body_->LoadFile(path, kSourceIsPath, kAnyFormat, loadWord, false, position);
}

std::uint32_t Film::LoadMemory(const void* block, std::uint32_t size, std::uint32_t id, BaseFormatDesc* loadWord) {
  return body_->LoadFile(block, size, id, loadWord, true, kAtTheEnd);
}

std::uint32_t Film::AppendMemory(const void* block, std::uint32_t size, std::uint32_t id, BaseFormatDesc* loadWord) {
  return body_->LoadFile(block, size, id, loadWord, false, kAtTheEnd);
}

std::uint32_t Film::InsertMemory(const void* block, std::uint32_t size, std::uint32_t id, BaseFormatDesc* loadWord,
                                 std::uint32_t position) {
  return body_->LoadFile(block, size, id, loadWord, false, position);
}

std::uint32_t Film::LoadThumbnail(const char* path, std::uint8_t flag, std::uint32_t width, std::uint32_t height) {
  return body_->LoadThumbnailFile(path, kSourceIsPath, kAnyFormat, flag, width, height);
}

std::uint32_t Film::LoadThumbnailEx(const char* path, std::uint32_t size, std::uint32_t id, std::uint8_t flag,
                                    std::uint32_t width, std::uint32_t height) {
  return body_->LoadThumbnailFile(path, size, id, flag, width, height);
}

std::uint32_t Film::GetInfo(const char* path, FileInfo*& info) {
  const ModuleCall call(*body_);
  return body_->GetImageInfo(path, info);
}

std::uint32_t Film::Save(const char* path, BaseFormatDesc* desc) { return body_->Save(path, desc); }

void Film::Clear() {
  body_->message = "";
  body_->slides.Clear();
  body_->current = 0;
}

bool Film::IsEmpty() const { return body_->slides.count == 0; }

std::uint32_t Film::Count() const { return body_->slides.count; }

void Film::GetSize(std::int32_t& width, std::int32_t& height, std::uint32_t slide) const {
  width = 0;
  height = 0;
  if (slide != kWholeFilm) {
    if (const Slide* found = body_->GetSlide(slide)) found->GetExtent(width, height);
    return;
  }
  for (std::uint32_t i = 0; i < body_->slides.count; ++i) {
    std::int32_t slideWidth = 0;
    std::int32_t slideHeight = 0;
    body_->slides.At(i)->GetExtent(slideWidth, slideHeight);
    width = std::max(width, slideWidth);
    height = std::max(height, slideHeight);
  }
}

std::uint32_t Film::Width(std::uint32_t slide) const {
  std::int32_t width = 0;
  std::int32_t height = 0;
  GetSize(width, height, slide);
  return static_cast<std::uint32_t>(width);
}

std::uint32_t Film::Height(std::uint32_t slide) const {
  std::int32_t width = 0;
  std::int32_t height = 0;
  GetSize(width, height, slide);
  return static_cast<std::uint32_t>(height);
}

void Film::SetCallback(ProgressCallback callback, std::uintptr_t userValue) {
  body_->callback = callback;
  body_->userValue = userValue;
}

void Film::GetCallback(ProgressCallback& callback, std::uintptr_t& userValue) const {
  callback = body_->callback;
  userValue = body_->userValue;
}

void Film::SetBackground(RGB32 colour, std::uint32_t first, std::uint32_t count) {
  body_->background = colour;
  std::uint32_t end = 0;
  if (!RangeEnd(first, count, body_->slides.count, end)) return;
  for (std::uint32_t i = first; i < end; ++i) body_->slides.At(i)->SetBackground(colour);
}

RGB32 Film::GetBackground(std::uint32_t slide) const {
  const Slide* found = body_->GetSlide(slide);
  return found == nullptr ? body_->background : found->GetBackground();
}

bool Film::SetDelay(std::uint32_t delay, std::uint32_t first, std::uint32_t count) {
  std::uint32_t end = 0;
  if (!RangeEnd(first, count, body_->slides.count, end)) return false;
  for (std::uint32_t i = first; i < end; ++i) body_->slides.At(i)->delay = delay;
  return true;
}

std::int32_t Film::LayerCount(std::uint32_t slide) const {
  const Slide* found = SlideOf(*body_, slide);
  return found == nullptr ? -1 : static_cast<std::int32_t>(found->layers.count);
}

bool Film::MergeLayers(std::uint32_t slide, std::uint32_t firstLayer, std::uint32_t count) {
  Slide* found = SlideOf(*body_, slide);
  return found != nullptr && found->MergeLayers(firstLayer, count);
}

std::int32_t Film::LayerBits(std::uint32_t slide, std::uint32_t layer) const {
  const Slide* found = SlideOf(*body_, slide);
  return found == nullptr ? -1 : found->LayerBits(layer);
}

bool Film::ConvertBits(std::int32_t bits, std::uint32_t slide, std::uint32_t layer) {
  Slide* found = SlideOf(*body_, slide);
  return found != nullptr && found->ConvertBits(bits, layer, body_->callback, body_->userValue);
}

std::int32_t Film::GetRaster(std::uint32_t slide, std::uint8_t*& pixels, std::uint32_t*& palette,
                             MetafileHandle& metafile) {
  Slide* found = SlideOf(*body_, slide);
  return found == nullptr ? -1 : found->GetRaster(pixels, palette, metafile);
}

bool Film::Crop(const Rectangle& rectangle, std::uint32_t first, std::uint32_t count) {
  return Crop(rectangle.left, rectangle.top, rectangle.Width(), rectangle.Height(), first, count);
}

bool Film::Crop(std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height, std::uint32_t first,
                std::uint32_t count) {
  if (width == 0 || height == 0) return false;
  std::int32_t filmWidth = 0;
  std::int32_t filmHeight = 0;
  GetSize(filmWidth, filmHeight, kWholeFilm);
  if (width >= filmWidth && height >= filmHeight) return false;
  return WalkSlides(*this, "crop...", first, count, [&](Slide& slide, ProgressCallback, const ProgressInfo*) {
    slide.Crop(x, y, width, height);
    return true;
  });
}

bool Film::Stretch(std::int32_t width, std::int32_t height, std::int32_t smooth, bool proportional, std::uint32_t first,
                   std::uint32_t count) {
  return WalkSlides(*this, "stretch...", first, count,
                    [&](Slide& slide, ProgressCallback callback, const ProgressInfo* progress) {
                      return slide.Stretch(width, height, smooth, proportional, callback, progress);
                    });
}

bool Film::Mirror(bool horizontal, bool vertical, std::uint32_t first, std::uint32_t count) {
  if (!horizontal && !vertical) return false;
  return WalkSlides(*this, "mirror...", first, count, [&](Slide& slide, ProgressCallback, const ProgressInfo*) {
    slide.Mirror(horizontal, vertical);
    return true;
  });
}

bool Film::Rotate(double angle, bool interpolate, std::uint32_t first, std::uint32_t count) {
  return WalkSlidesOrRows(*this, "rotate...", first, count,
                          [&](Slide& slide, ProgressCallback callback, const ProgressInfo* progress) {
                            return slide.Rotate(angle, interpolate ? 1 : 0, callback, progress);
                          });
}

bool Film::Filter(std::uint32_t filter, std::uint32_t first, std::uint32_t count) {
  return WalkSlidesOrRows(*this, "filter...", first, count,
                          [&](Slide& slide, ProgressCallback callback, const ProgressInfo* progress) {
                            return slide.Filter(filter, callback, progress);
                          });
}

bool Film::ColorEffect(std::uint32_t effect, const double* arguments, std::uint32_t first, std::uint32_t count) {
  return WalkSlides(*this, "color's effect...", first, count, [&](Slide& slide, ProgressCallback, const ProgressInfo*) {
    slide.ColorEffect(effect, arguments);
    return true;
  });
}

}  // namespace glib
