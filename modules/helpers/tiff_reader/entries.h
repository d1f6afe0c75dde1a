#ifndef MODULES_HELPERS_TIFF_READER_ENTRIES_H_
#define MODULES_HELPERS_TIFF_READER_ENTRIES_H_

#include <cstdint>

#include "glib/module_api/exchange.h"
#include "glib/module_api/save_settings.h"
#include "modules/common/helper.h"

// What a module's LoadImageData and GetFileInfo do for TIFF files.
ZEFA_HELPER_ENTRY(std::uint32_t) ReadTiff(const char* source, glib::ImageDataExchange* exchange);
ZEFA_HELPER_ENTRY(std::uint32_t) ReadTiffInfo(const char* path, std::uint32_t id, glib::FileInfo** info);

#endif  // MODULES_HELPERS_TIFF_READER_ENTRIES_H_
