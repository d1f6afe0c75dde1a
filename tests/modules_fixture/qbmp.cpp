// Loads only: no SaveImageData and no LoadImageThumbnail.

#include "glib/module_api/format_rows.h"
#include "modules/common/entries.h"
#include "tests/modules_fixture/script.h"

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  return glib::RegisterRows("qbmp", create, formats);
}

ZEFA_ENTRY LoadImageData(const char* source, glib::ImageDataExchange* exchange, glib::BaseFormatDesc* loadWord) {
  return modules_fixture::Load(source, *exchange, loadWord);
}

ZEFA_ENTRY GetFileInfo(const char* path, std::uint32_t id, glib::FileInfo** info) {
  return modules_fixture::Info(path, id, *info);
}
