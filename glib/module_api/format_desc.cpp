#include "glib/module_api/format_desc.h"

#include "platform/library.h"

namespace glib {

FilterFormatDesc::~FilterFormatDesc() { platform::FreeModule(moduleHandle); }

}  // namespace glib
