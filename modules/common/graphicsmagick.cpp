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

std::uint32_t PingWithMagick(std::span<const std::uint8_t> file, const MagickOptions& options, MagickSummary& found) {
  auto* ping = HelperFunction<decltype(MagickPing)>(kHelper, "MagickPing");
  return ping == nullptr ? glib::NSUP : ping(file.data(), file.size(), &options, &found);
}

glib::FileInfo* InfoOf(const char* path, std::uint32_t id, const MagickSummary& found, std::int32_t pages) {
  return NewFileInfo(path, id, static_cast<std::int32_t>(found.width), static_cast<std::int32_t>(found.height),
                     static_cast<std::int32_t>(found.bits), pages, found.dpiX, found.dpiY);
}

std::uint32_t InfoWithMagick(const char* path, std::uint32_t id, const MagickOptions& options, glib::FileInfo** info) {
  const Source file(path);
  if (!file.Ok()) return glib::IERR;
  MagickSummary found;
  const std::uint32_t result = PingWithMagick(file.Bytes(), options, found);
  if (result == glib::RCOK) *info = InfoOf(path, id, found, static_cast<std::int32_t>(found.pages));
  return result;
}

}  // namespace modules
