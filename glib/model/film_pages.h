#ifndef GLIB_MODEL_FILM_PAGES_H_
#define GLIB_MODEL_FILM_PAGES_H_

#include <cstdint>

#include "gen/array_ptr.h"
#include "glib/model/film_body.h"
#include "glib/module_api/exchange.h"
#include "glib/module_api/save_settings.h"

namespace glib {

// Between the slides of a film and the flat list of pages that a module sees.

// Appends slides made of the pages, which give up their pixels to them. `name` becomes the name of the slides. The
// exchange must hold a page; the first one decides whether all are slides by themselves.
void AddSlides(FilmBody& body, ImageDataExchange& exchange, const char* name);

// Appends a slide for each page, whatever its slide number; the pages may be none.
void AddThumbnailSlides(FilmBody& body, ImageDataExchange& exchange, const char* name);

// Appends the pages of a slide to the exchange as the format of `desc` can hold them; a slide without layers has none.
// Pages share the pixels of the slide's layers, of its flat layer, or of a layer that is added to `composites`.
void AddPages(Slide& slide, const BaseFormatDesc& desc, std::int32_t slideNumber, ImageDataExchange& exchange,
              gen::array_ptr<Layer>& composites);

}  // namespace glib

#endif  // GLIB_MODEL_FILM_PAGES_H_
