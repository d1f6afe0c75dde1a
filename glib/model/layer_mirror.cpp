#include "glib/model/layer.h"
#include "glib/pixel/mirror.h"

namespace glib {

bool Layer::MirrorLayer(bool horizontal, bool vertical) {
  return EnsureRasterIfMetafile() && MirrorRaster(raster.pixels, raster.bits, raster.rowsAligned != 0, raster.width,
                                                  raster.height, horizontal, vertical);
}

}  // namespace glib
