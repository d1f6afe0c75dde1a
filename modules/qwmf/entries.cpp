#include "modules/common/entries.h"

#include "glib/module_api/format_rows.h"
#include "modules/common/byte_reader.h"
#include "modules/common/page_builder.h"
#include "modules/common/source.h"
#include "modules/qwmf/emf.h"
#include "modules/qwmf/wmf.h"

namespace {

// A name says little: files of the three kinds go by each other's.
bool IsEmf(std::span<const std::uint8_t> file) {
  constexpr std::size_t kSignatureAt = 40;
  modules::ByteReader in(file);
  return in.Long() == 1 && in.Seek(kSignatureAt) && in.Long() == 0x464D4520;
}

}  // namespace

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  return glib::RegisterRows("qwmf", create, formats);
}

ZEFA_ENTRY LoadImageData(const char* source, glib::ImageDataExchange* exchange, glib::BaseFormatDesc*) {
  const modules::Source file(source, *exchange);
  if (!file.Ok()) return modules::Fail(*exchange, glib::IERR, "The file can't be read");
  if (IsEmf(file.Bytes())) return qwmf::LoadEmf(file.Bytes(), *exchange);
  return qwmf::LoadWmf(file.Bytes(), *exchange);
}

ZEFA_ENTRY GetFileInfo(const char* path, std::uint32_t id, glib::FileInfo** info) {
  constexpr std::size_t kHeadBytes = 128;
  const modules::Source start(path, kHeadBytes);
  if (!start.Ok()) return glib::IERR;
  if (!IsEmf(start.Bytes()) && !qwmf::OpenWmf(start.Bytes())) return glib::IERR;
  *info = modules::NewFileInfo(path, id, -1, -1, 0, 1, 72.0, 72.0);
  return glib::RCOK;
}
