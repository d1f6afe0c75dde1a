#include "modules/common/entries.h"

#include "glib/module_api/format_rows.h"
#include "modules/common/page_builder.h"

// The format of films has a row of its own in the table, which names no module; this one stands in the list of modules,
// adds no row and reads nothing.

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  return glib::RegisterRows("qflm", create, formats);
}

ZEFA_ENTRY LoadImageData(const char*, glib::ImageDataExchange* exchange, glib::BaseFormatDesc*) {
  return modules::Fail(*exchange, glib::NSUP, "Films can't be read");
}

ZEFA_ENTRY GetFileInfo(const char*, std::uint32_t, glib::FileInfo**) { return glib::NSUP; }
