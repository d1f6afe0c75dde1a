// Loads whatever bytes come as a GIF, and writes the pages again with settings that the bytes choose.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "glib/module_api/exchange.h"
#include "glib/module_api/result_values.h"
#include "glib/module_api/save_settings.h"
#include "modules/qgif/reader.h"
#include "modules/qgif/writer.h"

namespace {

// Raster memory stays small, so that a run never ends for lack of it.
std::uint8_t* AllocateLittle(std::uint32_t width, std::uint32_t height, std::uint32_t bits) {
  return std::uint64_t{width} * height > (1U << 20) ? nullptr : glib::AllocateRaster(width, height, bits);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::span<const std::uint8_t> bytes(data, size);
  glib::ImageDataExchange exchange;
  gen::basic_string<char> message;
  exchange.AllocateRaster = AllocateLittle;
  exchange.FreeRaster = glib::FreeRaster;
  exchange.message = &message;
  const std::uint32_t result = qgif::LoadGif(bytes, exchange);

  glib::FileInfo* info = nullptr;
  qgif::ReadGifInfo("", bytes, glib::kGifFormatId, &info);
  const std::unique_ptr<glib::FileInfo> owner(info);
  if (result != glib::RCOK) return 0;
  if (info == nullptr) __builtin_trap();

  glib::GIFSave settings;
  const std::uint32_t choice = size == 0 ? 0 : data[size - 1];
  settings.nfi = choice % 2 != 0;
  settings.interlace = choice / 2 % 2 != 0;
  settings.dither = choice / 4 % 2 != 0;
  settings.paletteItems = choice / 8 % 2 != 0 ? 256 : static_cast<std::int32_t>(choice);
  if (qgif::SaveGif("/dev/null", exchange, settings) != glib::RCOK) __builtin_trap();
  return 0;
}
