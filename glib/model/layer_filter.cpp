#include "glib/model/layer.h"
#include "glib/pixel/filter.h"

namespace glib {

bool Layer::FilterLayer(std::uint32_t filter, ProgressCallback callback, const ProgressInfo* progress) {
  if (!EnsureRaster()) return false;
  RasterFilter work;
  work.callback = callback;
  if (progress != nullptr) {
    work.userValue = progress->userValue;
    work.stage = progress->text;
  }
  // A stop ends a piece of work where it is; the layer keeps what was done.
  std::uint8_t* pixels = raster.pixels;
  switch (filter) {
    case 0:
      work.ConvolveRaster(pixels, raster.width, raster.height, FilterKernel::kBlur);
      return true;
    case 1:
      work.ConvolveRaster(pixels, raster.width, raster.height, FilterKernel::kSharpen);
      return true;
    case 2:
      work.ConvolveRaster(pixels, raster.width, raster.height, FilterKernel::kEmboss);
      return true;
    case 3:  // despeckle and sharpen
      work.RankRaster(pixels, raster.width, raster.height, 4);
      work.ConvolveRaster(pixels, raster.width, raster.height, FilterKernel::kSharpen);
      return true;
    case 4:  // median
      work.RankRaster(pixels, raster.width, raster.height, 4);
      return true;
    case 5:  // lighten
      work.RankRaster(pixels, raster.width, raster.height, 8);
      return true;
    case 6:  // darken
      work.RankRaster(pixels, raster.width, raster.height, 0);
      return true;
    default:
      return false;
  }
}

}  // namespace glib
