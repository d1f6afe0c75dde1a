#include "modules/common/entries.h"

#include "glib/module_api/format_rows.h"
#include "modules/common/graphicsmagick.h"
#include "modules/common/page_builder.h"
#include "modules/common/source.h"
#include "modules/qmng/loops.h"

namespace {

constexpr std::uint32_t kJngId = 0x3000001E;

// Where the header of a JNG has its kind of colour.
constexpr std::size_t kJngColourAt = 24;
constexpr std::uint8_t kJngGrey = 8;

modules::MagickOptions OptionsFor(std::uint32_t id, std::span<const std::uint8_t> file) {
  if (id != kJngId) return {.coder = "MNG"};
  return {.coder = "JNG", .greyIsIndexed = file.size() > kJngColourAt && file[kJngColourAt] == kJngGrey};
}

}  // namespace

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction create, gen::array_ptr<glib::FilterFormatDesc>* formats) {
  return glib::RegisterRows("qmng", create, formats);
}

ZEFA_ENTRY LoadImageData(const char* source, glib::ImageDataExchange* exchange, glib::BaseFormatDesc*) {
  const modules::Source file(source, *exchange);
  if (!file.Ok()) return modules::Fail(*exchange, glib::IERR, "The file can't be read");
  const auto options = OptionsFor(exchange->id, file.Bytes());
  const auto unrolled = qmng::UnrollEndlessLoops(file.Bytes());
  return modules::LoadWithMagick(unrolled.empty() ? file.Bytes() : unrolled, options, *exchange);
}

ZEFA_ENTRY GetFileInfo(const char* path, std::uint32_t id, glib::FileInfo** info) {
  const modules::Source start(path, kJngColourAt + 1);
  return modules::InfoWithMagick(path, id, OptionsFor(id, start.Bytes()), info);
}
