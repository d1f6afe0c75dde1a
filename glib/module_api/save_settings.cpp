#include "glib/module_api/save_settings.h"

namespace glib {

// The destructors stand here so that host and modules share one set of type information for dynamic casts.
BaseFormatDesc::~BaseFormatDesc() = default;
GIFSave::~GIFSave() = default;
PNGSave::~PNGSave() = default;
FileInfo::~FileInfo() = default;

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
static_assert(offsetof(BaseFormatDesc, id) == 8 && offsetof(BaseFormatDesc, width) == 12 &&
              offsetof(BaseFormatDesc, height) == 16 && offsetof(BaseFormatDesc, depth) == 20 &&
              offsetof(BaseFormatDesc, pages) == 24 && offsetof(BaseFormatDesc, size) == 28 &&
              offsetof(BaseFormatDesc, dpiX) == 32 && offsetof(BaseFormatDesc, dpiY) == 40 &&
              offsetof(BaseFormatDesc, firstSlide) == 48 && offsetof(BaseFormatDesc, slideCount) == 52 &&
              offsetof(BaseFormatDesc, dither) == 56 && offsetof(BaseFormatDesc, grayscale) == 57 &&
              offsetof(BaseFormatDesc, reservedFlag) == 58 && offsetof(BaseFormatDesc, quantize) == 60);
static_assert(offsetof(GIFSave, paletteItems) == 64 && offsetof(GIFSave, transparentIndex) == 68 &&
              offsetof(GIFSave, interlace) == 72 && offsetof(GIFSave, reservedGifFlag) == 73 &&
              offsetof(GIFSave, nfi) == 74 && offsetof(PNGSave, transparentIndex) == 64);
#pragma GCC diagnostic pop

}  // namespace glib
