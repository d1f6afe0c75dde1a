#ifndef MODULES_QGIF_WRITER_H_
#define MODULES_QGIF_WRITER_H_

#include <cstdint>

#include "glib/module_api/exchange.h"
#include "glib/module_api/save_settings.h"

namespace qgif {

// Writes the pages of the exchange as the frames of a GIF; several of them repeat for ever. Positions of pages are not
// used: each page is what is seen at its time. After a failure there is no file where there was none before, and the
// exchange's message tells the cause.
std::uint32_t SaveGif(const char* path, const glib::ImageDataExchange& exchange, const glib::BaseFormatDesc& settings);

}  // namespace qgif

#endif  // MODULES_QGIF_WRITER_H_
