#include "modules/common/entries.h"

#include "glib/module_api/format_rows.h"
#include "modules/common/header_bytes.h"
#include "modules/common/page_builder.h"
#include "modules/common/png_page.h"
#include "modules/common/source.h"

using modules::Fail;
using modules::PngReader;

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  return glib::RegisterRows("qpng", create, formats);
}

ZEFA_ENTRY LoadImageData(const char* path, glib::ImageDataExchange* exchange, glib::BaseFormatDesc*) {
  const modules::Source source(path, *exchange);
  if (!source.Ok()) return Fail(*exchange, glib::IERR, "The file can't be read");
  PngReader reader(source.Bytes());
  if (!reader.ReadHeader(true)) return Fail(*exchange, glib::IERR, reader.Cause());
  return modules::AddPngPage(reader, *exchange);
}

ZEFA_ENTRY GetFileInfo(const char* path, std::uint32_t id, glib::FileInfo** info) {
  std::uint32_t result = glib::IERR;
  modules::ReadHeaderBytes(path, [&](std::span<const std::uint8_t> bytes) {
    PngReader reader(bytes);
    if (!reader.ReadHeader(false)) return !reader.EndsEarly();
    *info = modules::NewFileInfo(path, id, static_cast<std::int32_t>(reader.Width()),
                                 static_cast<std::int32_t>(reader.Height()), static_cast<std::int32_t>(reader.Bits()),
                                 1, reader.DpiX(), reader.DpiY());
    result = glib::RCOK;
    return true;
  });
  return result;
}
