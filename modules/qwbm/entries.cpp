#include "modules/common/entries.h"

#include "glib/module_api/format_rows.h"
#include "modules/common/graphicsmagick.h"
#include "modules/common/page_builder.h"
#include "modules/common/source.h"
#include "modules/qwbm/otb.h"

namespace {

constexpr std::uint32_t kOtbId = 0x00000021;
constexpr modules::MagickOptions kWbmp{.coder = "WBMP"};

}  // namespace

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  return glib::RegisterRows("qwbm", create, formats);
}

ZEFA_ENTRY LoadImageData(const char* source, glib::ImageDataExchange* exchange, glib::BaseFormatDesc*) {
  const modules::Source file(source, *exchange);
  if (!file.Ok()) return modules::Fail(*exchange, glib::IERR, "The file can't be read");
  if (exchange->id == kOtbId) return qwbm::LoadOtb(file.Bytes(), *exchange);
  return modules::LoadWithMagick(file.Bytes(), kWbmp, *exchange);
}

ZEFA_ENTRY GetFileInfo(const char* path, std::uint32_t id, glib::FileInfo** info) {
  if (id != kOtbId) return modules::InfoWithMagick(path, id, kWbmp, info);
  const modules::Source start(path, qwbm::kOtbStart);
  if (!start.Ok()) return glib::IERR;
  qwbm::OtbHeader header;
  const modules::Verdict verdict = qwbm::ReadOtbHeader(start.Bytes(), header);
  if (verdict.result != glib::RCOK) return verdict.result;
  *info = modules::NewFileInfo(path, id, static_cast<std::int32_t>(header.width),
                               static_cast<std::int32_t>(header.height), 1, 1, 72.0, 72.0);
  return glib::RCOK;
}
