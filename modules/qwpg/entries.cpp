#include "modules/common/entries.h"

#include "glib/module_api/format_rows.h"
#include "modules/common/page_builder.h"
#include "modules/common/source.h"
#include "modules/vector/child_drawing.h"

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  return glib::RegisterRows("qwpg", create, formats);
}

ZEFA_ENTRY LoadImageData(const char* source, glib::ImageDataExchange* exchange, glib::BaseFormatDesc*) {
  const modules::Source file(source, *exchange);
  if (!file.Ok()) return modules::Fail(*exchange, glib::IERR, "The file can't be read");
  return modules::LoadChildDrawing(file.Bytes(), "wpg_reader", "RecordWpg", *exchange);
}

ZEFA_ENTRY GetFileInfo(const char* path, std::uint32_t id, glib::FileInfo** info) {
  const modules::Source start(path, 1);
  if (!start.Ok()) return glib::IERR;
  *info = modules::NewFileInfo(path, id, -1, -1, 0, 1, 72.0, 72.0);
  return glib::RCOK;
}
