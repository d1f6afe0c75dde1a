#include "modules/common/entries.h"

#include <algorithm>

#include "glib/module_api/format_rows.h"
#include "modules/common/graphicsmagick.h"
#include "modules/common/page_builder.h"
#include "modules/common/source.h"

namespace {

// Of the sizes in the file the library gives the base one, 768 x 512.
constexpr modules::MagickOptions kPhotoCd{.coder = "PCD"};

constexpr std::uint32_t kBaseWidth = 768;
constexpr std::uint32_t kBaseHeight = 512;

}  // namespace

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  return glib::RegisterRows("qpcd", create, formats);
}

ZEFA_ENTRY LoadImageData(const char* source, glib::ImageDataExchange* exchange, glib::BaseFormatDesc*) {
  const modules::Source file(source, *exchange);
  if (!file.Ok()) return modules::Fail(*exchange, glib::IERR, "The file can't be read");
  return modules::LoadWithMagick(file.Bytes(), kPhotoCd, *exchange);
}

// The file also has the base size halved and quartered.
ZEFA_ENTRY LoadImageThumbnail(const char* path, glib::ImageDataExchange* exchange) {
  const modules::Source file(path);
  if (!file.Ok()) return modules::Fail(*exchange, glib::IERR, "The file can't be read");
  modules::MagickOptions options = kPhotoCd;
  if (exchange->thumbnailWidth != 0 || exchange->thumbnailHeight != 0) {
    options.wantedWidth = std::clamp(exchange->thumbnailWidth, 1U, kBaseWidth);
    options.wantedHeight = std::clamp(exchange->thumbnailHeight, 1U, kBaseHeight);
  }
  return modules::LoadWithMagick(file.Bytes(), options, *exchange);
}

ZEFA_ENTRY GetFileInfo(const char* path, std::uint32_t id, glib::FileInfo** info) {
  return modules::InfoWithMagick(path, id, kPhotoCd, info);
}
