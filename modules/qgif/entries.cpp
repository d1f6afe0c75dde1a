#include "modules/common/entries.h"

#include "modules/common/page_builder.h"
#include "modules/common/source.h"
#include "modules/qgif/reader.h"

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  formats->Append(
      create(glib::kGifFormatId, 6, glib::kTextPattern, "GIF8{7,9}a", "gif", "|GIF - Compuserve GIF|*.gif", "qgif"));
  return glib::RCOK;
}

ZEFA_ENTRY LoadImageData(const char* source, glib::ImageDataExchange* exchange, glib::BaseFormatDesc* /*loadWord*/) {
  const modules::Source file(source, *exchange);
  if (!file.Ok()) return modules::Fail(*exchange, glib::IERR, "The file can't be read");
  return qgif::LoadGif(file.Bytes(), *exchange);
}

ZEFA_ENTRY GetFileInfo(const char* path, std::uint32_t id, glib::FileInfo** info) {
  const modules::Source file(path);
  return file.Ok() ? qgif::ReadGifInfo(path, file.Bytes(), id, info) : glib::IERR;
}
