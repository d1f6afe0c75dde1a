#include "glib/format/catalogue.h"

#include "glib/format/registry.h"
#include "glib/module_api/format_rows.h"

namespace glib {
namespace {

constexpr const char* kModuleNames[] = {"qbmp", "qflm", "qgif", "qjpg", "qani", "qpcx", "qppm", "qtif", "qpng",
                                        "qmng", "qfpx", "qpcd", "qpsd", "qpsp", "qwmf", "qjp2", "qeps", "qwpg",
                                        "qtga", "qimg", "qswf", "qwbm", "qpct", "qdxf", "qhpg"};

}  // namespace

std::span<const char* const> ModuleNames() { return kModuleNames; }

void AppendCatalogue(gen::array_ptr<FilterFormatDesc>& formats) {
  for (const FormatRow& row : FormatRows()) AppendRow(row, CreateFormatDesc, formats)->loadPending = true;
}

}  // namespace glib
