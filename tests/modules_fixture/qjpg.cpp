// Lacks GetFileInfo, which no module may.

#include "glib/module_api/format_rows.h"
#include "modules/common/entries.h"

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  return glib::RegisterRows("qjpg", create, formats);
}

ZEFA_ENTRY LoadImageData(const char*, glib::ImageDataExchange*, glib::BaseFormatDesc*) { return glib::RCOK; }
