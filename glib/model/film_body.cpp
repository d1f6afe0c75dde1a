#include "glib/model/film_body.h"

namespace glib {

bool FilmBody::AddSlide(Slide* slide) {
  if (slide == nullptr) return false;
  slides.Append(slide);
  return true;
}

Slide* FilmBody::GetSlide(std::uint32_t index) const { return index < slides.count ? slides.At(index) : nullptr; }

}  // namespace glib
