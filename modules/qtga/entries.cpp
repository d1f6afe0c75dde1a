#include "modules/common/entries.h"

#include "glib/module_api/format_rows.h"
#include "modules/common/graphicsmagick.h"
#include "modules/common/page_builder.h"
#include "modules/common/source.h"

namespace {

constexpr modules::MagickOptions kTarga{.coder = "TGA"};

}  // namespace

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  return glib::RegisterRows("qtga", create, formats);
}

ZEFA_ENTRY LoadImageData(const char* source, glib::ImageDataExchange* exchange, glib::BaseFormatDesc*) {
  const modules::Source file(source, *exchange);
  if (!file.Ok()) return modules::Fail(*exchange, glib::IERR, "The file can't be read");
  return modules::LoadWithMagick(file.Bytes(), kTarga, *exchange);
}

ZEFA_ENTRY GetFileInfo(const char* path, std::uint32_t id, glib::FileInfo** info) {
  return modules::InfoWithMagick(path, id, kTarga, info);
}
