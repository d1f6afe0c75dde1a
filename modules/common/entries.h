#ifndef MODULES_COMMON_ENTRIES_H_
#define MODULES_COMMON_ENTRIES_H_

#include "glib/module_api/exchange.h"
#include "glib/module_api/format_desc.h"
#include "glib/module_api/result_values.h"
#include "glib/module_api/save_settings.h"

// The entries of a module stand in its entries.cpp, each defined as `ZEFA_ENTRY LoadImageData(...)`. All else in a
// module is hidden, and a module holds no state between calls.
#define ZEFA_ENTRY extern "C" __attribute__((visibility("default"))) std::uint32_t

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats);
ZEFA_ENTRY LoadImageData(const char* source, glib::ImageDataExchange* exchange, glib::BaseFormatDesc* loadWord);
ZEFA_ENTRY GetFileInfo(const char* path, std::uint32_t id, glib::FileInfo** info);
ZEFA_ENTRY SaveImageData(const char* path, glib::ImageDataExchange* exchange, glib::BaseFormatDesc* settings);
ZEFA_ENTRY LoadImageThumbnail(const char* path, glib::ImageDataExchange* exchange);

#endif  // MODULES_COMMON_ENTRIES_H_
