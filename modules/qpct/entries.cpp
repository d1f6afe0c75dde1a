#include "modules/common/entries.h"

#include "glib/module_api/format_rows.h"
#include "modules/common/page_builder.h"
#include "modules/common/source.h"
#include "modules/qpct/quickdraw.h"

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  return glib::RegisterRows("qpct", create, formats);
}

ZEFA_ENTRY LoadImageData(const char* source, glib::ImageDataExchange* exchange, glib::BaseFormatDesc*) {
  const modules::Source file(source, *exchange);
  if (!file.Ok()) return modules::Fail(*exchange, glib::IERR, "The file can't be read");
  return qpct::LoadPicture(file.Bytes(), *exchange);
}

ZEFA_ENTRY GetFileInfo(const char* path, std::uint32_t id, glib::FileInfo** info) {
  const modules::Source file(path);
  if (!file.Ok()) return glib::IERR;
  // Whether it is a raster shows at its end only.
  glib::ImageDataExchange pages;
  gen::basic_string<char> message;
  pages.message = &message;
  pages.AllocateRaster = glib::AllocateRaster;
  pages.FreeRaster = glib::FreeRaster;
  const std::uint32_t result = qpct::LoadPicture(file.Bytes(), pages);
  if (result != glib::RCOK) return result;
  const modules::Page& page = *pages.pages.At(0);
  *info = modules::NewFileInfo(path, id, page.width, page.height, page.bits, 1, page.dpiX, page.dpiY);
  return glib::RCOK;
}
