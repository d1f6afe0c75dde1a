#include "glib/model/slide.h"

#include <algorithm>

#include "glib/format/depth_conversion.h"
#include "glib/model/compositing.h"
#include "glib/model/range.h"

namespace glib {
namespace {

constexpr double kScreenDpi = 72.0;
constexpr std::int32_t kOutside = -1;  // as the x of a layer that a crop leaves nothing of

std::int32_t Fitting(std::int64_t value) { return static_cast<std::int32_t>(std::min<std::int64_t>(value, INT32_MAX)); }

std::int32_t Scaled(std::int32_t value, std::int32_t by, std::int32_t of) {
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(std::int64_t{value} * by / of, INT32_MIN, INT32_MAX));
}

// The part of a layer inside a rectangle of the slide; false if they share none.
bool CommonPart(const Layer& layer, std::int64_t left, std::int64_t top, std::int64_t right, std::int64_t bottom,
                Rectangle& part) {
  std::int32_t width = 0;
  std::int32_t height = 0;
  layer.GetSize(width, height);
  left = std::max<std::int64_t>(left, layer.x);
  top = std::max<std::int64_t>(top, layer.y);
  right = std::min(right, std::int64_t{layer.x} + width);
  bottom = std::min(bottom, std::int64_t{layer.y} + height);
  if (left >= right || top >= bottom) return false;
  part = Rectangle{Fitting(left), Fitting(top), Fitting(right), Fitting(bottom)};
  return true;
}

}  // namespace

Slide::Slide(RGB32 backgroundColour) : background(backgroundColour) { flat = new Layer(this); }

Slide::~Slide() { delete flat; }

bool Slide::AddLayer(Layer* layer) {
  if (layer == nullptr) return false;
  layers.Append(layer);
  stale = true;
  return true;
}

Layer* Slide::GetLayer(std::uint32_t index) const { return index < layers.count ? layers.At(index) : nullptr; }

void Slide::GetExtent(std::int32_t& width, std::int32_t& height) const {
  std::int64_t right = 0;
  std::int64_t bottom = 0;
  for (std::uint32_t i = 0; i < layers.count; ++i) {
    const Layer* layer = layers.At(i);
    std::int32_t layerWidth = 0;
    std::int32_t layerHeight = 0;
    layer->GetSize(layerWidth, layerHeight);
    right = std::max(right, std::int64_t{layer->x} + layerWidth);
    bottom = std::max(bottom, std::int64_t{layer->y} + layerHeight);
  }
  width = Fitting(right);
  height = Fitting(bottom);
}

void Slide::GetDpi(double& outDpiY, double& outDpiX) const {
  outDpiY = dpiY;
  outDpiX = dpiX;
}

void Slide::SetBackground(RGB32 colour) {
  if (background == colour) return;
  background = colour;
  stale = true;
}

std::int32_t Slide::LayerBits(std::uint32_t layer) const {
  const Layer* found = GetLayer(layer);
  return found == nullptr ? -1 : found->raster.bits;
}

bool Slide::ConvertBits(std::int32_t bits, std::uint32_t layer, ProgressCallback callback, std::uintptr_t userValue) {
  Layer* found = GetLayer(layer);
  if (found == nullptr) return false;
  found->raster.callback = callback;
  found->raster.userValue = userValue;
  stale = true;
  return found->ConvertTo(bits);
}

bool Slide::PrepareLayers(ProgressCallback callback, std::uintptr_t userValue) {
  for (std::uint32_t i = 0; i < layers.count; ++i) {
    RasterBlock& raster = layers.At(i)->raster;
    raster.callback = callback;
    raster.userValue = userValue;
    if (!ToDepth32(raster, kScreenDpi, kScreenDpi)) return false;
  }
  return true;
}

void Slide::RefreshFlat() {
  if (!stale) return;
  FlattenLayers(*this, *flat, 0, kToTheLast);
  stale = false;
}

std::int32_t Slide::GetRaster(std::uint8_t*& pixels, std::uint32_t*& palette, MetafileHandle& metafile) {
  if (layers.count == 0) return -1;
  RasterBlock& only = layers.At(0)->raster;
  if (layers.count == 1 && only.bits != 32) {
    if (only.metafile != nullptr) {
      metafile = only.metafile;
    } else {
      pixels = only.pixels;
      palette = only.palette;
    }
    return only.bits;
  }
  RefreshFlat();
  pixels = flat->raster.pixels;
  palette = flat->raster.palette;
  return flat->raster.bits;
}

bool Slide::Crop(std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) {
  if (width < 1 || height < 1) return false;
  std::int32_t extentWidth = 0;
  std::int32_t extentHeight = 0;
  GetExtent(extentWidth, extentHeight);
  if (width >= extentWidth && height >= extentHeight) return false;

  for (std::uint32_t i = 0; i < layers.count; ++i) {
    Layer* layer = layers.At(i);
    Rectangle part;
    if (CommonPart(*layer, x, y, std::int64_t{x} + width, std::int64_t{y} + height, part)) {
      layer->CropLayer(part);
    } else {
      layer->x = kOutside;
    }
  }
  std::int32_t minX = INT32_MAX;
  std::int32_t minY = INT32_MAX;
  for (std::uint32_t i = 0; i < layers.count;) {
    const Layer* layer = layers.At(i);
    if (layer->x == kOutside) {
      delete layers.Remove(i);
      continue;
    }
    minX = std::min(minX, layer->x);
    minY = std::min(minY, layer->y);
    ++i;
  }
  for (std::uint32_t i = 0; i < layers.count; ++i) {
    layers.At(i)->x -= minX;
    layers.At(i)->y -= minY;
  }
  stale = true;
  return true;
}

bool Slide::Stretch(std::int32_t width, std::int32_t height, std::int32_t smooth, bool proportional,
                    ProgressCallback callback, const ProgressInfo* progress) {
  std::int32_t extentWidth = 0;
  std::int32_t extentHeight = 0;
  GetExtent(extentWidth, extentHeight);
  stale = true;
  if (layers.count == 0) return true;
  if (extentWidth == 0 || extentHeight == 0) return false;
  for (std::uint32_t i = 0; i < layers.count; ++i) {
    Layer* layer = layers.At(i);
    std::int32_t layerWidth = 0;
    std::int32_t layerHeight = 0;
    layer->GetSize(layerWidth, layerHeight);
    if (!layer->ScaleLayer(Scaled(layerWidth, width, extentWidth), Scaled(layerHeight, height, extentHeight), smooth,
                           proportional, callback, progress)) {
      return false;
    }
    layer->SetPosition(Scaled(layer->x, width, extentWidth), Scaled(layer->y, height, extentHeight));
  }
  return true;
}

bool Slide::Mirror(bool horizontal, bool vertical) {
  for (std::uint32_t i = 0; i < layers.count; ++i) {
    if (!layers.At(i)->MirrorLayer(horizontal, vertical)) return false;
  }
  stale = true;
  return true;
}

bool Slide::Rotate(double angle, std::uint8_t interpolate, ProgressCallback callback, const ProgressInfo* progress) {
  if (!PrepareLayers(nullptr, 0)) return false;
  for (std::uint32_t i = 0; i < layers.count; ++i) {
    if (!layers.At(i)->RotateLayer(angle, interpolate, callback, progress)) return false;
  }
  stale = true;
  return true;
}

bool Slide::Filter(std::uint32_t filter, ProgressCallback callback, const ProgressInfo* progress) {
  if (!PrepareLayers(nullptr, 0)) return false;
  for (std::uint32_t i = 0; i < layers.count; ++i) {
    if (!layers.At(i)->FilterLayer(filter, callback, progress)) return false;
  }
  stale = true;
  return true;
}

void Slide::ColorEffect(std::uint32_t effect, const double* arguments) {
  if (!PrepareLayers(nullptr, 0)) return;
  for (std::uint32_t i = 0; i < layers.count; ++i) layers.At(i)->ColorEffectLayer(effect, arguments);
  stale = true;
}

bool Slide::MergeLayers(std::uint32_t first, std::uint32_t count) {
  std::uint32_t end = 0;
  if (!RangeEnd(first, count, layers.count, end)) return false;
  Layer merged(this);
  if (!MergeIntoLayer(*this, merged, first, count)) return false;
  layers.At(first)->SetPixels(0, 0, merged.raster.width, merged.raster.height, merged.raster.pixels);
  merged.raster.pixels = nullptr;
  for (std::uint32_t i = first + 1; i < end; ++i) delete layers.Remove(first + 1);
  stale = true;
  return true;
}

}  // namespace glib
