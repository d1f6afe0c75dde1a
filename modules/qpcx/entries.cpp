#include "modules/common/entries.h"

#include "glib/module_api/format_rows.h"
#include "modules/common/graphicsmagick.h"
#include "modules/common/page_builder.h"
#include "modules/common/source.h"
#include "modules/qpcx/ega_palette.h"

namespace {

constexpr std::uint32_t kDcxId = 0x10000009;

modules::MagickOptions OptionsFor(std::uint32_t id) { return {.coder = id == kDcxId ? "DCX" : "PCX"}; }

}  // namespace

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  return glib::RegisterRows("qpcx", create, formats);
}

ZEFA_ENTRY LoadImageData(const char* source, glib::ImageDataExchange* exchange, glib::BaseFormatDesc*) {
  const modules::Source file(source, *exchange);
  if (!file.Ok()) return modules::Fail(*exchange, glib::IERR, "The file can't be read");
  const std::uint32_t result = modules::LoadWithMagick(file.Bytes(), OptionsFor(exchange->id), *exchange);
  for (std::uint32_t i = 0; i < exchange->pages.count; ++i) qpcx::FillMissingPalette(*exchange->pages.At(i));
  return result;
}

ZEFA_ENTRY GetFileInfo(const char* path, std::uint32_t id, glib::FileInfo** info) {
  return modules::InfoWithMagick(path, id, OptionsFor(id), info);
}
