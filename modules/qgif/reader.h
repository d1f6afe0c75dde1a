#ifndef MODULES_QGIF_READER_H_
#define MODULES_QGIF_READER_H_

#include <cstdint>
#include <span>

#include "glib/module_api/exchange.h"
#include "glib/module_api/save_settings.h"

namespace qgif {

// All frames of a GIF, laid out to whole pages.
std::uint32_t LoadGif(std::span<const std::uint8_t> bytes, glib::ImageDataExchange& exchange);

// Size, depth and number of frames, without decoding any. The caller deletes `*info`, which is set on RCOK only.
std::uint32_t ReadGifInfo(const char* path, std::span<const std::uint8_t> bytes, std::uint32_t id,
                          glib::FileInfo** info);

}  // namespace qgif

#endif  // MODULES_QGIF_READER_H_
