#include "modules/common/entries.h"

#include "glib/module_api/format_rows.h"
#include "modules/common/header_bytes.h"
#include "modules/common/page_builder.h"
#include "modules/common/source.h"
#include "modules/qjp2/jp2.h"

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  return glib::RegisterRows("qjp2", create, formats);
}

ZEFA_ENTRY LoadImageData(const char* source, glib::ImageDataExchange* exchange, glib::BaseFormatDesc*) {
  const modules::Source file(source, *exchange);
  if (!file.Ok()) return modules::Fail(*exchange, glib::IERR, "The file can't be read");
  return qjp2::LoadJp2(file.Bytes(), false, *exchange);
}

ZEFA_ENTRY LoadImageThumbnail(const char* path, glib::ImageDataExchange* exchange) {
  const modules::Source file(path);
  if (!file.Ok()) return modules::Fail(*exchange, glib::IERR, "The file can't be read");
  return qjp2::LoadJp2(file.Bytes(), true, *exchange);
}

ZEFA_ENTRY GetFileInfo(const char* path, std::uint32_t id, glib::FileInfo** info) {
  qjp2::Jp2Info found;
  modules::Verdict verdict{glib::IERR, "The file can't be read"};
  modules::ReadHeaderBytes(path, [&](std::span<const std::uint8_t> bytes) {
    verdict = qjp2::ReadJp2Info(bytes, found);
    return verdict.result != glib::IERR;
  });
  if (verdict.result != glib::RCOK) return verdict.result;
  *info =
      modules::NewFileInfo(path, id, static_cast<std::int32_t>(found.width), static_cast<std::int32_t>(found.height),
                           static_cast<std::int32_t>(found.bits), 1, found.dpiX, found.dpiY);
  return glib::RCOK;
}
