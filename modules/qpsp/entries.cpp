#include "modules/common/entries.h"

#include "glib/module_api/format_rows.h"
#include "modules/common/header_bytes.h"
#include "modules/common/page_builder.h"
#include "modules/common/source.h"
#include "modules/qpsp/psp_file.h"
#include "modules/qpsp/psp_loader.h"

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  return glib::RegisterRows("qpsp", create, formats);
}

ZEFA_ENTRY LoadImageData(const char* source, glib::ImageDataExchange* exchange, glib::BaseFormatDesc*) {
  const modules::Source file(source, *exchange);
  if (!file.Ok()) return modules::Fail(*exchange, glib::IERR, "The file can't be read");
  return qpsp::LoadPsp(file.Bytes(), *exchange);
}

// The attributes are the first block of a file.
ZEFA_ENTRY GetFileInfo(const char* path, std::uint32_t id, glib::FileInfo** info) {
  std::uint32_t result = glib::IERR;
  modules::ReadHeaderBytes(path, [&](std::span<const std::uint8_t> start) {
    qpsp::PspFile psp;
    result = qpsp::ReadPspFile(start, psp).result;
    if (result == glib::RCOK) result = qpsp::CheckKind(psp.kind).result;
    if (result == glib::RCOK) {
      *info =
          modules::NewFileInfo(path, id, static_cast<std::int32_t>(psp.width), static_cast<std::int32_t>(psp.height),
                               static_cast<std::int32_t>(qpsp::OpaqueBits(psp.kind)), 1, psp.dpiX, psp.dpiX);
    }
    return true;
  });
  return result;
}
