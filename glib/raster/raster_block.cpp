#include "glib/raster/raster_block.h"

#include "platform/metafile/metafile.h"
#include "platform/pages.h"

namespace glib {

void RasterBlock::Release() {
  if (owned != 0) {
    platform::FreePages(pixels);
    platform::DeleteEnhMetaFile(metafile);
  }
  pixels = nullptr;
  metafile = nullptr;
  bits = -1;
}

void RasterBlock::SetMetafile(MetafileHandle handle, std::int32_t newWidth, std::int32_t newHeight, bool copy) {
  Release();
  width = newWidth;
  height = newHeight;
  bits = 0;
  metafile = copy ? platform::CopyEnhMetaFile(handle) : handle;
}

}  // namespace glib
