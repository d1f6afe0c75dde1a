#include <bit>

#include "glib/model/layer.h"
#include "glib/model/slide.h"
#include "glib/pixel/rotate.h"
#include "glib/raster/rgb32.h"

namespace glib {

bool Layer::RotateLayer(double angle, std::uint8_t interpolate, ProgressCallback callback,
                        const ProgressInfo* progress) {
  if (!EnsureRaster()) return false;
  RotateImage<RGB32> image;
  image.interpolate = interpolate;
  image.callback = callback;
  if (progress != nullptr) {
    image.user = progress->userValue;
    image.label = progress->text;
  }
  RGB32* target = nullptr;
  std::int32_t width = 0;
  std::int32_t height = 0;
  if (image.Rotate(reinterpret_cast<const RGB32*>(raster.pixels), raster.width, raster.height, angle, target, width,
                   height, std::bit_cast<RGB32>(ToPixel(slide->background)))) {
    SetPixels(x, y, width, height, reinterpret_cast<std::uint8_t*>(target));
  }
  return true;
}

}  // namespace glib
