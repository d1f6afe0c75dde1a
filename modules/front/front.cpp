#include <cstdint>

#include "glib/module_api/format_rows.h"
#include "modules/common/entries.h"
#include "platform/library.h"

// What every run opens of a module: its rows, and entries that hand over to the reader of the same name among the
// helpers, which is opened when the first file of its kind is met. Nothing here needs the C++ library, so that opening
// is cheap.

namespace {

// Its address tells where this module lies.
const char kThisModule = 0;

// To open a reader again only counts a reference; none is given back, so that it stays.
template <typename Entry>
Entry* Find(const char* entry, Entry*) {
  void* const reader = platform::LoadHelper(&kThisModule, ZEFA_MODULE_NAME);
  return reader == nullptr ? nullptr : reinterpret_cast<Entry*>(platform::ModuleEntry(reader, entry));
}

}  // namespace

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  return glib::RegisterRows(ZEFA_MODULE_NAME, create, formats);
}

ZEFA_ENTRY LoadImageData(const char* source, glib::ImageDataExchange* exchange, glib::BaseFormatDesc* loadWord) {
  const auto load = Find("LoadImageData", &LoadImageData);
  return load == nullptr ? glib::NSUP : load(source, exchange, loadWord);
}

ZEFA_ENTRY GetFileInfo(const char* path, std::uint32_t id, glib::FileInfo** info) {
  const auto get = Find("GetFileInfo", &GetFileInfo);
  return get == nullptr ? glib::NSUP : get(path, id, info);
}

#ifdef ZEFA_MODULE_THUMBNAIL
ZEFA_ENTRY LoadImageThumbnail(const char* path, glib::ImageDataExchange* exchange) {
  const auto load = Find("LoadImageThumbnail", &LoadImageThumbnail);
  return load == nullptr ? glib::NSUP : load(path, exchange);
}
#endif
