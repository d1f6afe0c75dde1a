// Complete, but brings no format.

#include "modules/common/entries.h"

ZEFA_ENTRY GetFilterInfo(glib::CreateFormatDescFunction, gen::array_ptr<glib::FilterFormatDesc>*) { return glib::RCOK; }

ZEFA_ENTRY LoadImageData(const char*, glib::ImageDataExchange*, glib::BaseFormatDesc*) { return glib::IERR; }

ZEFA_ENTRY GetFileInfo(const char*, std::uint32_t, glib::FileInfo**) { return glib::IERR; }
