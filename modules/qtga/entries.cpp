#include "modules/common/entries.h"

#include "glib/module_api/format_rows.h"
#include "modules/common/page_builder.h"
#include "modules/common/source.h"
#include "modules/qtga/tga.h"

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  return glib::RegisterRows("qtga", create, formats);
}

ZEFA_ENTRY LoadImageData(const char* source, glib::ImageDataExchange* exchange, glib::BaseFormatDesc*) {
  const modules::Source file(source, *exchange);
  if (!file.Ok()) return modules::Fail(*exchange, glib::IERR, "The file can't be read");
  return qtga::LoadTga(file.Bytes(), *exchange);
}

ZEFA_ENTRY GetFileInfo(const char* path, std::uint32_t id, glib::FileInfo** info) {
  const modules::Source start(path, qtga::kTgaHeaderBytes);
  if (!start.Ok()) return glib::IERR;
  qtga::TgaHeader header;
  const modules::Verdict verdict = qtga::ReadTgaHeader(start.Bytes(), header);
  if (verdict.result != glib::RCOK) return verdict.result;
  *info =
      modules::NewFileInfo(path, id, static_cast<std::int32_t>(header.width), static_cast<std::int32_t>(header.height),
                           static_cast<std::int32_t>(qtga::TgaPageBits(header)), 1, 72.0, 72.0);
  return glib::RCOK;
}
