#include <algorithm>
#include <cmath>

#include "glib/model/layer.h"
#include "glib/pixel/scale.h"

namespace glib {
namespace {

// No side of an output is longer; a raster of longer ones would be made for nothing.
constexpr std::int32_t kMaxSide = 65535;

struct Size {
  std::int32_t width;
  std::int32_t height;
};

std::int32_t Cut(std::int64_t value) {
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, INT32_MIN, INT32_MAX));
}

// The layer's size fitted into the wanted one, at its own proportions.
Size FitInside(const Size& own, const Size& wanted) {
  double width = own.width;
  double height = own.height;
  const auto fitWidth = [&] {
    const double factor = wanted.width / width;
    width *= factor;
    height *= factor;
  };
  const auto fitHeight = [&] {
    const double factor = wanted.height / height;
    width *= factor;
    height *= factor;
  };
  if (width > height) {
    fitWidth();
    if (height > wanted.height) fitHeight();
  } else {
    fitHeight();
    if (width > wanted.width) fitWidth();
  }
  const auto whole = [](double side) { return side + 0.5 < 2.0 ? 1 : Cut(std::llround(std::trunc(side + 0.5))); };
  return {whole(width), whole(height)};
}

// The size to scale to. What is below 1 wasn't asked for.
Size SettledSize(const Size& own, Size wanted, bool keepAspect) {
  if (wanted.width < 1 && wanted.height < 1) {
    wanted = own;
  } else if (wanted.width < 1) {
    wanted.width = keepAspect ? Cut(std::int64_t{own.width} * wanted.height / own.height) : own.width;
  } else if (wanted.height < 1) {
    wanted.height = keepAspect ? Cut(std::int64_t{own.height} * wanted.width / own.width) : own.height;
  }
  return keepAspect ? FitInside(own, wanted) : wanted;
}

}  // namespace

bool Layer::ScaleLayer(std::int32_t width, std::int32_t height, std::int32_t smooth, bool keepAspect,
                       ProgressCallback callback, const ProgressInfo* progress) {
  if (raster.pixels == nullptr && raster.metafile == nullptr) return false;
  Size own{};
  GetSize(own.width, own.height);
  if (own.width == 0 || own.height == 0) return false;
  const Size size = SettledSize(own, {width, height}, keepAspect);
  if (size.width > kMaxSide || size.height > kMaxSide) return false;
  if (raster.metafile != nullptr) {  // drawn at its new size when pixels are asked for
    raster.width = size.width;
    raster.height = size.height;
    return true;
  }
  RasterScaler scaler;
  scaler.userValue = progress == nullptr ? 0 : progress->userValue;
  scaler.smooth = smooth;
  std::uint8_t* pixels = scaler.ScaleRaster(ViewOf(raster), size.width, size.height, callback);
  if (pixels == nullptr) return false;
  SetRaster(x, y, size.width, size.height, pixels, nullptr, smooth != 0 ? 32 : raster.bits);
  return true;
}

}  // namespace glib
