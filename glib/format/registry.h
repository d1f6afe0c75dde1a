#ifndef GLIB_FORMAT_REGISTRY_H_
#define GLIB_FORMAT_REGISTRY_H_

#include <cstddef>
#include <cstdint>

#include "gen/array_ptr.h"
#include "gen/basic_string.h"
#include "glib/module_api/format_desc.h"

namespace glib {

// A new row that belongs to no table yet: the function that modules get. `patternLength` is kTextPattern for text; a
// null text leaves its field empty.
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

  // An empty or null `moduleFolder` leaves the place of the modules to the platform. With `useCatalogue` the rows come
  // from the built-in catalogue and modules are loaded when needed; otherwise all modules are loaded now and bring
  // their rows.
  FilterManager(const char* moduleFolder, bool useCatalogue);
  FilterManager(const FilterManager&) = delete;
  FilterManager& operator=(const FilterManager&) = delete;
  ~FilterManager();

  // Loads a module and lets it append its rows; false if it can't be loaded or lacks an entry, which is said on
  // standard error. The extension list is not rebuilt.
  bool AddModule(const char* name);
  // Makes sure that the row's module is loaded, for all rows of that module; null if it can't be. Null gives null.
  FilterFormatDesc* BindFormat(FilterFormatDesc* desc);
  // To be called after any change of rows.
  void RebuildExtensionList();

  // The first row that answers, or null. `buffer` holds at least kSignatureWindow bytes.
  FilterFormatDesc* FindBySignature(const std::uint8_t* buffer) const;
  FilterFormatDesc* FindByExtension(const char* path) const;
  FilterFormatDesc* FindById(std::uint32_t id) const;

  // The row of a file, by what it begins with and, where that proves nothing, by its name. Null also for what is no
  // regular file or can't be opened.
  FilterFormatDesc* DetectFile(const char* path) const;
  // The row of a block: the one with `formatId`, or for kAnyFormat the one that the block begins with. The block may be
  // null if an id is given.
  FilterFormatDesc* DetectBuffer(const void* buffer, std::uint32_t size, std::uint32_t formatId) const;

  // Calls of modules. Results are those of result_values.h or the module's own: NSUP if no module answers for the
  // source or the settings, TMIS if the format has no thumbnails. `source` is a path, or a block when the exchange
  // gives its size. What pages a failed load leaves in the exchange are the caller's.
  std::uint32_t LoadImage(const void* source, ImageDataExchange& exchange, BaseFormatDesc* loadWord);
  std::uint32_t LoadThumbnail(const char* path, ImageDataExchange& exchange);
  std::uint32_t GetImageInfo(const char* path, FileInfo*& info);
  std::uint32_t SaveImage(const char* path, ImageDataExchange& exchange, BaseFormatDesc* settings);

  static constexpr std::size_t kSignatureWindow = 4096;  // bytes

  gen::array_ptr<ExtItem> extensions;
  gen::array_ptr<FilterFormatDesc> formats;  // in the order of signature testing
  gen::basic_string<char> folder;            // without a trailing backslash
};

}  // namespace glib

#endif  // GLIB_FORMAT_REGISTRY_H_
