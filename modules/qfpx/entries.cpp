#include "modules/common/entries.h"

#include "glib/module_api/format_rows.h"
#include "modules/common/page_builder.h"
#include "modules/common/source.h"
#include "modules/qfpx/image_contents.h"
#include "modules/qfpx/storage.h"

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  return glib::RegisterRows("qfpx", create, formats);
}

ZEFA_ENTRY LoadImageData(const char* source, glib::ImageDataExchange* exchange, glib::BaseFormatDesc*) {
  const modules::Source file(source, *exchange);
  if (!file.Ok()) return modules::Fail(*exchange, glib::IERR, "The file can't be read");
  return qfpx::LoadFlashPix(qfpx::Storage(file.Bytes()), *exchange);
}

ZEFA_ENTRY GetFileInfo(const char* path, std::uint32_t id, glib::FileInfo** info) {
  const qfpx::Storage storage(path);
  if (!storage.HelperFound()) return glib::NSUP;
  qfpx::ImageContents contents;
  const auto stream = storage.ReadContents();
  const modules::Verdict verdict = qfpx::ReadImageContents(qfpx::PropertySet(stream), contents);
  if (verdict.result != glib::RCOK) return verdict.result;
  *info = modules::NewFileInfo(path, id, static_cast<std::int32_t>(contents.width),
                               static_cast<std::int32_t>(contents.height), static_cast<std::int32_t>(contents.Bits()),
                               1, 72.0, 72.0);
  return glib::RCOK;
}
