#ifndef GLIB_FORMAT_REGISTRY_H_
#define GLIB_FORMAT_REGISTRY_H_

#include <cstddef>
#include <cstdint>

#include "gen/array_ptr.h"
#include "gen/basic_string.h"
#include "glib/module_api/format_desc.h"

namespace glib {

FilterFormatDesc* CreateFormatDesc(std::uint32_t id, std::uint32_t signatureLength, std::uint32_t patternLength,
                                   const char* pattern, const char* extensions, const char* description,
                                   const char* moduleName);

// The table of all formats: which format a file has, which module reads or writes it, and the way to that module.
class FilterManager {
 public:
  // One file extension, without its dot, of one format.
  struct ExtItem : gen::basic_string<char> {
    FilterFormatDesc* format = nullptr;  // not owned
  };

  // An empty or null `folder` leaves the place of the modules to the platform. With `useCatalogue` the rows come from
  // the built-in catalogue and modules are loaded when needed; otherwise all modules are loaded now and bring their
  // rows.
  FilterManager(const char* folder, bool useCatalogue);
  FilterManager(const FilterManager&) = delete;
  FilterManager& operator=(const FilterManager&) = delete;
  ~FilterManager();

  bool AddModule(const char* name);
  // Makes sure that the row's module is loaded; null if it can't be.
  FilterFormatDesc* BindFormat(FilterFormatDesc* desc);
  void RebuildExtensionList();
  // `buffer` holds at least kSignatureWindow bytes.
  FilterFormatDesc* FindBySignature(const std::uint8_t* buffer) const;
  FilterFormatDesc* FindByExtension(const char* path) const;
  FilterFormatDesc* DetectFile(const char* path) const;
  FilterFormatDesc* DetectBuffer(const void* buffer, std::uint32_t size, std::uint32_t formatId) const;

  // Results are those of result_values.h. `source` is a path, or a block when the exchange gives its size.
  std::uint32_t LoadImage(const void* source, ImageDataExchange& exchange, BaseFormatDesc* loadWord);
  std::uint32_t LoadThumbnail(const char* path, ImageDataExchange& exchange);
  std::uint32_t GetImageInfo(const char* path, FileInfo*& info);
  std::uint32_t SaveImage(const char* path, ImageDataExchange& exchange, BaseFormatDesc* settings);

  static constexpr std::size_t kSignatureWindow = 4096;

  gen::array_ptr<ExtItem> extensions;
  gen::array_ptr<FilterFormatDesc> formats;  // in the order of signature testing
  gen::basic_string<char> folder;            // without a trailing backslash
};

}  // namespace glib

#endif  // GLIB_FORMAT_REGISTRY_H_
