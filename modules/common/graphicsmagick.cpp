#include "modules/common/graphicsmagick.h"

#include "glib/module_api/result_values.h"
#include "modules/common/helper.h"
#include "modules/common/page_builder.h"
#include "modules/common/source.h"

namespace modules {
namespace {

constexpr const char* kHelper = "graphicsmagick";

}  // namespace

std::uint32_t LoadWithMagick(std::span<const std::uint8_t> file, const MagickOptions& options,
                             glib::ImageDataExchange& exchange) {
  auto* read = HelperFunction<decltype(MagickRead)>(kHelper, "MagickRead");
  if (read == nullptr) return MissingHelper(exchange, kHelper);
  return read(file.data(), file.size(), &options, &exchange);
}

std::uint32_t InfoWithMagick(const char* path, std::uint32_t id, const MagickOptions& options, glib::FileInfo** info) {
  const Source file(path);
  if (!file.Ok()) return glib::IERR;
  auto* ping = HelperFunction<decltype(MagickPing)>(kHelper, "MagickPing");
  if (ping == nullptr) return glib::NSUP;
  MagickSummary found;
  const std::uint32_t result = ping(file.Bytes().data(), file.Bytes().size(), &options, &found);
  if (result != glib::RCOK) return result;
  *info = NewFileInfo(path, id, static_cast<std::int32_t>(found.width), static_cast<std::int32_t>(found.height),
                      static_cast<std::int32_t>(found.bits), static_cast<std::int32_t>(found.pages), found.dpiX,
                      found.dpiY);
  return glib::RCOK;
}

}  // namespace modules
