#ifndef GLIB_MODULE_API_FORMAT_DESC_H_
#define GLIB_MODULE_API_FORMAT_DESC_H_

#include <cstdint>

#include "gen/array_ptr.h"
#include "gen/basic_string.h"

namespace glib {

class BaseFormatDesc;
class FileInfo;
class ImageDataExchange;
struct FilterFormatDesc;

inline constexpr std::uint32_t kTextPattern = 0xFFFFFFFF;  // as a pattern length: NUL-terminated text

// Makes a row for the format table; the caller appends it. A null text leaves its field empty.
using CreateFormatDescFunction = FilterFormatDesc* (*)(std::uint32_t id, std::uint32_t signatureLength,
                                                       std::uint32_t patternLength, const char* pattern,
                                                       const char* extensions, const char* description,
                                                       const char* moduleName);

// The entries of a module, found by these names. All results are those of result_values.h.
//
// `source` is a path (text with backslashes) or, when the exchange gives a `sourceSize`, a block of memory.
using GetFilterInfoEntry = std::uint32_t (*)(CreateFormatDescFunction create,
                                             gen::array_ptr<FilterFormatDesc>* formats);
using LoadImageDataEntry = std::uint32_t (*)(const char* source, ImageDataExchange* exchange, BaseFormatDesc* loadWord);
using GetFileInfoEntry = std::uint32_t (*)(const char* path, std::uint32_t id, FileInfo** info);
using SaveImageDataEntry = std::uint32_t (*)(const char* path, ImageDataExchange* exchange, BaseFormatDesc* settings);
using LoadImageThumbnailEntry = std::uint32_t (*)(const char* path, ImageDataExchange* exchange);

// One row of the format table. Rows of one module stand next to each other.
struct FilterFormatDesc {
  FilterFormatDesc() = default;
  FilterFormatDesc(const FilterFormatDesc&) = delete;
  FilterFormatDesc& operator=(const FilterFormatDesc&) = delete;
  virtual ~FilterFormatDesc();  // releases `moduleHandle`

  std::uint32_t id = 0;
  std::uint32_t signatureLength = 0;  // bytes of a source that the pattern must account for
  std::uint32_t patternLength = 0;    // bytes of `pattern`, or kTextPattern
  gen::basic_string<char> pattern;
  gen::basic_string<char> extensions;  // lower case, without dots, separated by newlines
  gen::basic_string<char> description;
  gen::basic_string<char> moduleName;  // without folder and extension
  bool confirmByExtension = false;     // after a signature hit the file's extension decides
  bool readOnly = false;
  bool loadPending = false;      // the module has not been loaded yet
  void* moduleHandle = nullptr;  // on the first row of a module only
  LoadImageThumbnailEntry loadImageThumbnail = nullptr;
  GetFileInfoEntry getFileInfo = nullptr;
  LoadImageDataEntry loadImageData = nullptr;
  SaveImageDataEntry saveImageData = nullptr;
};

}  // namespace glib

#endif  // GLIB_MODULE_API_FORMAT_DESC_H_
