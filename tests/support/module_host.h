#ifndef TESTS_SUPPORT_MODULE_HOST_H_
#define TESTS_SUPPORT_MODULE_HOST_H_

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "glib/module_api/exchange.h"
#include "glib/module_api/format_desc.h"
#include "glib/module_api/save_settings.h"

namespace tests {

// What came of one load. The pages live as long as this.
struct Loaded {
  std::uint32_t result = 0;
  std::string message;
  std::unique_ptr<glib::ImageDataExchange> exchange;

  std::uint32_t PageCount() const { return exchange->pages.count; }
  const glib::ImageDataExchange::Page& PageAt(std::uint32_t index) const { return *exchange->pages.At(index); }
};

// An exchange as the host hands it to a load: no pages, allocation and a message set.
Loaded EmptyExchange();

// A built module, called as the host calls it.
class ModuleHost {
 public:
  // Opens a module of the build folder by its name ("qbmp").
  explicit ModuleHost(const std::string& name);
  ~ModuleHost();
  ModuleHost(const ModuleHost&) = delete;
  ModuleHost& operator=(const ModuleHost&) = delete;

  // Whether the module is there with the entries that each must have. No other function may be called if not.
  bool Ok() const { return load_ != nullptr && info_ != nullptr && register_ != nullptr; }
  bool HasEntry(const char* name) const;

  Loaded Load(const std::string& path, std::uint32_t id = glib::kAnyFormat) const;
  Loaded Load(std::span<const std::uint8_t> bytes, std::uint32_t id = glib::kAnyFormat,
              glib::BaseFormatDesc* loadWord = nullptr) const;

  // Only for a module that HasEntry("LoadImageThumbnail").
  Loaded LoadThumbnail(const std::string& path, std::uint32_t width, std::uint32_t height) const;

  // Null when the module gives none.
  std::unique_ptr<glib::FileInfo> Info(const std::string& path, std::uint32_t id,
                                       std::uint32_t* result = nullptr) const;

  std::uint32_t Save(const std::string& path, glib::ImageDataExchange& exchange, glib::BaseFormatDesc& settings) const;

  // The ids of the rows that the module registers, in order.
  std::vector<std::uint32_t> Ids() const;

 private:
  void* module_;
  glib::GetFilterInfoEntry register_;
  glib::LoadImageDataEntry load_;
  glib::GetFileInfoEntry info_;
};

// The colour of a pixel as a 32-bit raster would hold it: through the palette for indexed pages, opaque for 24 bits.
std::uint32_t PixelAt(const glib::ImageDataExchange::Page& page, std::uint32_t x, std::uint32_t y);

// The palette index of a pixel of a page with at most 8 bits.
std::uint32_t IndexAt(const glib::ImageDataExchange::Page& page, std::uint32_t x, std::uint32_t y);

}  // namespace tests

#endif  // TESTS_SUPPORT_MODULE_HOST_H_
