#ifndef MODULES_HELPERS_GRAPHICSMAGICK_PAGES_H_
#define MODULES_HELPERS_GRAPHICSMAGICK_PAGES_H_

#include <magick/api.h>

#include "modules/common/graphicsmagick.h"

namespace magick {

// Bits of the page that a picture becomes. `pixelsKnown` false: its pixels may not be asked, only its header.
std::uint32_t PageBits(const Image& image, const modules::MagickOptions& options, bool pixelsKnown);

// Resolution in dots per inch.
double DpiOf(double resolution, ResolutionType units);

// Appends a picture as a page. False, with a message and without the page, if it is over a limit or can't be read.
bool AppendPage(Image& image, const modules::MagickOptions& options, glib::ImageDataExchange& exchange);

}  // namespace magick

#endif  // MODULES_HELPERS_GRAPHICSMAGICK_PAGES_H_
