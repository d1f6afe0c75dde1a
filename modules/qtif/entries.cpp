#include "modules/common/entries.h"

#include "glib/module_api/format_rows.h"
#include "modules/common/helper.h"
#include "modules/helpers/tiff_reader/entries.h"

namespace {

constexpr char kHelper[] = "tiff_reader";

}  // namespace

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  return glib::RegisterRows("qtif", create, formats);
}

ZEFA_ENTRY LoadImageData(const char* source, glib::ImageDataExchange* exchange, glib::BaseFormatDesc*) {
  auto* read = modules::HelperFunction<decltype(ReadTiff)>(kHelper, "ReadTiff");
  return read == nullptr ? modules::MissingHelper(*exchange, kHelper) : read(source, exchange);
}

ZEFA_ENTRY GetFileInfo(const char* path, std::uint32_t id, glib::FileInfo** info) {
  auto* read = modules::HelperFunction<decltype(ReadTiffInfo)>(kHelper, "ReadTiffInfo");
  return read == nullptr ? glib::NSUP : read(path, id, info);
}
