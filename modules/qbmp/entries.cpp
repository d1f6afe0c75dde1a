#include "modules/common/entries.h"

#include "glib/module_api/format_rows.h"
#include "modules/common/page_builder.h"
#include "modules/common/source.h"
#include "modules/qbmp/bmp.h"
#include "modules/qbmp/clp.h"

namespace {

constexpr std::uint32_t kClpId = 0x1000001F;

std::uint32_t InfoOfDib(std::span<const std::uint8_t> dib, const char* path, std::uint32_t id, glib::FileInfo** info) {
  modules::DibHeader header;
  const modules::Verdict verdict = modules::ReadDibHeader(dib, modules::DibForm::kPicture, header);
  if (verdict.result != glib::RCOK) return verdict.result;
  *info =
      modules::NewFileInfo(path, id, static_cast<std::int32_t>(header.width), static_cast<std::int32_t>(header.height),
                           static_cast<std::int32_t>(modules::DibPageBits(header)), 1, header.dpiX, header.dpiY);
  return glib::RCOK;
}

std::uint32_t InfoOfClip(const char* path, std::uint32_t id, glib::FileInfo** info) {
  const modules::Source file(path);
  if (!file.Ok()) return glib::IERR;
  const auto clip = qbmp::FindClip(file.Bytes());
  if (!clip || clip->kind == qbmp::ClipKind::kMetafilePicture) return glib::NSUP;
  if (clip->kind != qbmp::ClipKind::kEnhancedMetafile) return InfoOfDib(clip->data, path, id, info);
  *info = modules::NewFileInfo(path, id, -1, -1, 0, 1, 72.0, 72.0);
  return glib::RCOK;
}

}  // namespace

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  return glib::RegisterRows("qbmp", create, formats);
}

ZEFA_ENTRY LoadImageData(const char* source, glib::ImageDataExchange* exchange, glib::BaseFormatDesc*) {
  const modules::Source file(source, *exchange);
  if (!file.Ok()) return modules::Fail(*exchange, glib::IERR, "The file can't be read");
  if (exchange->id == kClpId) return qbmp::LoadClp(file.Bytes(), *exchange);
  return qbmp::LoadBmp(file.Bytes(), *exchange);
}

ZEFA_ENTRY GetFileInfo(const char* path, std::uint32_t id, glib::FileInfo** info) {
  if (id == kClpId) return InfoOfClip(path, id, info);
  const modules::Source start(path, qbmp::kBmpHeaderBytes);
  if (!start.Ok()) return glib::IERR;
  return InfoOfDib(qbmp::OpenBmp(start.Bytes()).dib, path, id, info);
}
