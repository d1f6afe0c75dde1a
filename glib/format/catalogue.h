#ifndef GLIB_FORMAT_CATALOGUE_H_
#define GLIB_FORMAT_CATALOGUE_H_

#include <span>

#include "gen/array_ptr.h"
#include "glib/module_api/format_desc.h"

namespace glib {

// All modules that a registry tries, in the order of loading. The rows of the catalogue follow it.
std::span<const char* const> ModuleNames();

// Appends every row that the program knows by itself, each waiting for its module.
void AppendCatalogue(gen::array_ptr<FilterFormatDesc>& formats);

}  // namespace glib

#endif  // GLIB_FORMAT_CATALOGUE_H_
