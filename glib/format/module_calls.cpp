// The operations of the registry that call into modules.

#include "glib/format/registry.h"
#include "glib/module_api/exchange.h"
#include "glib/module_api/result_values.h"
#include "glib/module_api/save_settings.h"

namespace glib {
namespace {

void GiveRasterFunctions(ImageDataExchange& exchange) {
  exchange.AllocateRaster = AllocateRaster;
  exchange.FreeRaster = FreeRaster;
}

}  // namespace

std::uint32_t FilterManager::LoadImage(const void* source, ImageDataExchange& exchange, BaseFormatDesc* loadWord) {
  const auto* text = static_cast<const char*>(source);
  FilterFormatDesc* desc = BindFormat(
      exchange.sourceSize == kSourceIsPath ? DetectFile(text) : DetectBuffer(source, exchange.sourceSize, exchange.id));
  if (desc == nullptr) return NSUP;
  exchange.id = desc->id;
  GiveRasterFunctions(exchange);
  return desc->loadImageData(text, &exchange, loadWord);
}

std::uint32_t FilterManager::LoadThumbnail(const char* path, ImageDataExchange& exchange) {
  FilterFormatDesc* desc = BindFormat(DetectFile(path));
  if (desc == nullptr) return NSUP;
  if (desc->loadImageThumbnail == nullptr) return TMIS;
  exchange.id = desc->id;
  GiveRasterFunctions(exchange);
  return desc->loadImageThumbnail(path, &exchange);
}

std::uint32_t FilterManager::GetImageInfo(const char* path, FileInfo*& info) {
  FilterFormatDesc* desc = BindFormat(DetectFile(path));
  return desc == nullptr ? NSUP : desc->getFileInfo(path, desc->id, &info);
}

std::uint32_t FilterManager::SaveImage(const char* path, ImageDataExchange& exchange, BaseFormatDesc* settings) {
  FilterFormatDesc* desc = BindFormat(FindById(settings->id));
  if (desc == nullptr || desc->saveImageData == nullptr) return NSUP;
  GiveRasterFunctions(exchange);
  return desc->saveImageData(path, &exchange, settings);
}

}  // namespace glib
