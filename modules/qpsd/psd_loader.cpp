#include "modules/qpsd/psd_loader.h"

#include "modules/qpsd/layers.h"
#include "modules/qpsd/merged_picture.h"
#include "modules/qpsd/psd_file.h"

namespace qpsd {

std::uint32_t LoadPsd(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange) {
  PsdFile psd;
  const modules::Verdict verdict = ReadPsdFile(file, psd);
  if (verdict.result != glib::RCOK) return modules::Fail(exchange, verdict);
  if (!psd.hasMerged && psd.layerCount != 0) {
    const std::uint32_t result = LoadLayers(psd, exchange);
    if (result == glib::RCOK || psd.merged.empty()) return result;
  }
  return LoadMerged(psd, exchange);
}

}  // namespace qpsd
