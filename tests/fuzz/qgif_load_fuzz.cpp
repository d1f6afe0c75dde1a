// Loads whatever bytes come as a GIF, and writes the pages again with settings that the bytes choose.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include "glib/module_api/save_settings.h"
#include "modules/qgif/reader.h"
#include "modules/qgif/writer.h"
#include "tests/fuzz/fuzz_exchange.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::span<const std::uint8_t> bytes(data, size);
  fuzz::Exchange exchange;
  const std::uint32_t result = qgif::LoadGif(bytes, exchange);
  exchange.Check(result);

  glib::FileInfo* info = nullptr;
  qgif::ReadGifInfo("", bytes, glib::kGifFormatId, &info);
  const std::unique_ptr<glib::FileInfo> owner(info);
  if (result != glib::RCOK) return 0;
  if (info == nullptr) std::abort();

  glib::GIFSave settings;
  const std::uint32_t choice = data[size - 1];
  settings.nfi = choice % 2 != 0;
  settings.interlace = choice / 2 % 2 != 0;
  settings.dither = choice / 4 % 2 != 0;
  settings.paletteItems = choice / 8 % 2 != 0 ? 256 : static_cast<std::int32_t>(choice);
  if (qgif::SaveGif("/dev/null", exchange, settings) != glib::RCOK) std::abort();
  return 0;
}
