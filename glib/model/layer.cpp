#include "glib/model/layer.h"

#include <algorithm>
#include <cstring>

#include "glib/color/quantize.h"
#include "glib/format/depth_conversion.h"
#include "glib/format/metafile_pages.h"
#include "glib/model/slide.h"
#include "platform/pages.h"

namespace glib {
namespace {

bool IsRasterDepth(std::int32_t bits) { return bits == 1 || bits == 4 || bits == 8 || bits == 24 || bits == 32; }

}  // namespace

Layer::~Layer() = default;

void Layer::Clear() {
  raster.Release();
  visible = 1;
}

bool Layer::Create(std::int32_t newX, std::int32_t newY, std::int32_t width, std::int32_t height) {
  Clear();
  const std::size_t bytes = PaddedBytes(width, height, 32);
  auto* pixels = static_cast<std::uint8_t*>(platform::AllocateUninitialisedPages(bytes));
  if (pixels == nullptr) return false;
  std::fill_n(reinterpret_cast<std::uint32_t*>(pixels), bytes / 4, ToPixel(slide->background));
  SetPixels(newX, newY, width, height, pixels);
  return true;
}

void Layer::SetPixels(std::int32_t newX, std::int32_t newY, std::int32_t width, std::int32_t height,
                      std::uint8_t* pixels) {
  SetRaster(newX, newY, width, height, pixels, nullptr, 32);
}

void Layer::SetRaster(std::int32_t newX, std::int32_t newY, std::int32_t width, std::int32_t height,
                      std::uint8_t* pixels, const std::uint32_t* palette, std::int32_t bits) {
  Clear();
  x = newX;
  y = newY;
  if (!IsRasterDepth(bits)) return;
  raster.width = width;
  raster.height = height;
  raster.bits = bits;
  raster.pixels = pixels;
  if (palette == nullptr) return;
  std::transform(palette, palette + 256, raster.palette, [](std::uint32_t entry) { return entry | 0xFF000000U; });
}

void Layer::SetPosition(std::int32_t newX, std::int32_t newY) {
  x = std::max(newX, 0);
  y = std::max(newY, 0);
}

void Layer::GetSize(std::int32_t& width, std::int32_t& height) const {
  width = raster.width;
  height = raster.height;
  if (raster.pixels != nullptr || raster.metafile == nullptr || (width >= 0 && height >= 0)) return;
  double yDpi = 0.0;
  double xDpi = 0.0;
  slide->GetDpi(yDpi, xDpi);
  MetafileSize(raster.metafile, yDpi, xDpi, width, height);
}

bool Layer::EnsureRaster() {
  double yDpi = 0.0;
  double xDpi = 0.0;
  slide->GetDpi(yDpi, xDpi);
  return ToDepth32(raster, yDpi, xDpi);
}

bool Layer::EnsureRasterIfMetafile() { return raster.metafile == nullptr ? raster.pixels != nullptr : EnsureRaster(); }

bool Layer::ConvertTo(std::int32_t bits) {
  const bool empty = raster.pixels == nullptr && raster.metafile == nullptr;
  double yDpi = 0.0;
  double xDpi = 0.0;
  slide->GetDpi(yDpi, xDpi);
  switch (bits) {
    case 0:
      return !empty && (raster.bits == 0 || WrapInMetafile(raster));
    case 1:
    case 4: {
      if (empty) return false;
      if (raster.bits == bits) return true;
      const std::uint32_t made = Quantize(raster, 1U << bits, true);
      if (made == kQuantizeFailed) return false;
      raster.paletteEntries = made;
      return true;
    }
    case 8:
      return ToDepth8(raster, true, yDpi, xDpi);
    case 24:
      return ToDepth24(raster, yDpi, xDpi, 0xFFFFFFFFU);
    case 32:
      return ToDepth32(raster, yDpi, xDpi);
    default:
      return false;
  }
}

Layer* Layer::Clone(Slide* owner) const {
  auto* copy = new Layer(owner);
  copy->name = name;
  copy->comment = comment;
  copy->visible = visible;
  copy->x = x;
  copy->y = y;
  copy->raster.bits = raster.bits;
  copy->raster.width = raster.width;
  copy->raster.height = raster.height;
  copy->raster.owned = raster.owned;
  std::copy_n(raster.palette, 256, copy->raster.palette);
  if (raster.pixels == nullptr) {
    if (raster.metafile != nullptr) {
      copy->raster.SetMetafile(raster.metafile, raster.width, raster.height, true);
    }
    return copy;
  }
  // The copy begins with the setting for padded rows, whatever the rows of this layer are.
  const std::size_t fromStride = raster.Stride();
  const std::size_t toStride = copy->raster.Stride();
  const std::size_t bytes = RasterBytes(raster.width, raster.height, toStride);
  copy->raster.pixels = static_cast<std::uint8_t*>(platform::AllocatePages(bytes));
  if (copy->raster.pixels == nullptr) return copy;
  for (std::size_t row = 0; row < static_cast<std::size_t>(raster.height); ++row) {
    std::memcpy(copy->raster.pixels + toStride * row, raster.pixels + fromStride * row, std::min(fromStride, toStride));
  }
  return copy;
}

}  // namespace glib
