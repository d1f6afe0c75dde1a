#ifndef GLIB_MODULE_API_FORMAT_ROWS_H_
#define GLIB_MODULE_API_FORMAT_ROWS_H_

#include <cstdint>
#include <span>

#include "gen/array_ptr.h"
#include "glib/module_api/format_desc.h"

namespace glib {

// What is fixed about one format, whether its module is there or not. The fields are those of FilterFormatDesc.
struct FormatRow {
  struct Pattern {
    const char* bytes;
    std::uint32_t length;  // kTextPattern for text
  };

  std::uint32_t id;
  std::uint32_t signatureLength;
  Pattern pattern;
  const char* extensions;
  const char* description;
  const char* moduleName;  // null: no module reads this format
  bool confirmByExtension;
};

// Every format that the program knows by itself, in the order of testing. The rows of a module stand together.
std::span<const FormatRow> FormatRows();

// Makes the row with `create` and appends it.
FilterFormatDesc* AppendRow(const FormatRow& row, CreateFormatDescFunction create,
                            gen::array_ptr<FilterFormatDesc>& formats);

// All that a module's GetFilterInfo has to do: appends the rows that stand under `moduleName`. Gives RCOK.
std::uint32_t RegisterRows(const char* moduleName, CreateFormatDescFunction create,
                           gen::array_ptr<FilterFormatDesc>* formats);

}  // namespace glib

#endif  // GLIB_MODULE_API_FORMAT_ROWS_H_
