#include "modules/common/entries.h"

#include "glib/module_api/format_rows.h"
#include "modules/common/page_builder.h"
#include "modules/common/source.h"
#include "modules/qwbm/bitmap.h"

namespace {

qwbm::ReadHeaderFunction& HeaderOf(std::uint32_t id) {
  constexpr std::uint32_t kOtbId = 0x00000021;
  return id == kOtbId ? qwbm::ReadOtbHeader : qwbm::ReadWbmpHeader;
}

}  // namespace

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  return glib::RegisterRows("qwbm", create, formats);
}

ZEFA_ENTRY LoadImageData(const char* source, glib::ImageDataExchange* exchange, glib::BaseFormatDesc*) {
  const modules::Source file(source, *exchange);
  if (!file.Ok()) return modules::Fail(*exchange, glib::IERR, "The file can't be read");
  return qwbm::LoadBitmap(file.Bytes(), HeaderOf(exchange->id), *exchange);
}

ZEFA_ENTRY GetFileInfo(const char* path, std::uint32_t id, glib::FileInfo** info) {
  const modules::Source start(path, qwbm::kBitmapStart);
  if (!start.Ok()) return glib::IERR;
  qwbm::BitmapHeader header;
  const modules::Verdict verdict = HeaderOf(id)(start.Bytes(), header);
  if (verdict.result != glib::RCOK) return verdict.result;
  *info = modules::NewFileInfo(path, id, static_cast<std::int32_t>(header.width),
                               static_cast<std::int32_t>(header.height), 1, 1, 72.0, 72.0);
  return glib::RCOK;
}
