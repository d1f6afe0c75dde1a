#include "modules/common/entries.h"

#include "glib/module_api/format_rows.h"
#include "modules/common/header_bytes.h"
#include "modules/common/page_builder.h"
#include "modules/common/source.h"
#include "modules/qpsd/psd_file.h"
#include "modules/qpsd/psd_loader.h"

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  return glib::RegisterRows("qpsd", create, formats);
}

ZEFA_ENTRY LoadImageData(const char* source, glib::ImageDataExchange* exchange, glib::BaseFormatDesc*) {
  const modules::Source file(source, *exchange);
  if (!file.Ok()) return modules::Fail(*exchange, glib::IERR, "The file can't be read");
  return qpsd::LoadPsd(file.Bytes(), *exchange);
}

ZEFA_ENTRY GetFileInfo(const char* path, std::uint32_t id, glib::FileInfo** info) {
  std::uint32_t result = glib::IERR;
  qpsd::PsdFile psd;
  modules::ReadHeaderBytes(path, [&](std::span<const std::uint8_t> start) {
    psd = {};
    result = qpsd::ReadPsdFile(start, psd).result;
    return result != glib::RCOK || psd.whole;
  });
  if (result != glib::RCOK) return result;
  *info = modules::NewFileInfo(path, id, static_cast<std::int32_t>(psd.width), static_cast<std::int32_t>(psd.height),
                               static_cast<std::int32_t>(qpsd::MergedBits(psd)), 1, psd.dpiX, psd.dpiY);
  return glib::RCOK;
}
