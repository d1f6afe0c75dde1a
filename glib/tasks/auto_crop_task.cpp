#include "glib/tasks/auto_crop_task.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "glib/format/depth_conversion.h"
#include "glib/model/film.h"
#include "glib/model/film_body.h"

namespace glib {
namespace {

// Every row is looked at from both sides and no further than to its outermost content, on the right no further than to
// the bounds so far. `isContent(row, x)` tells about one pixel.
template <typename IsContent>
Rectangle BoundsOf(const RasterBlock& raster, IsContent isContent) {
  Rectangle bounds{raster.width, raster.height, 0, 0};
  const std::uint8_t* row = raster.pixels;
  const std::size_t stride = raster.Stride();
  for (std::int32_t y = 0; y < raster.height; ++y, row += stride) {
    std::int32_t left = 0;
    while (left < raster.width && !isContent(row, left)) ++left;
    if (left == raster.width) continue;
    std::int32_t right = raster.width;
    while (right > bounds.right && !isContent(row, right - 1)) --right;
    bounds.left = std::min(bounds.left, left);
    bounds.top = std::min(bounds.top, y);
    bounds.right = std::max(bounds.right, right);
    bounds.bottom = y + 1;
  }
  return bounds;
}

std::array<bool, 256> ContentEntries(const RasterBlock& raster, std::uint32_t color) {
  std::array<bool, 256> content{};
  for (std::size_t i = 0; i < content.size(); ++i) content[i] = raster.palette[i] != color;
  return content;
}

void CropToContent(Layer& layer, std::uint32_t color) {
  if (layer.raster.bits == 0 && !ToDepth32(layer.raster, 72.0, 72.0)) return;
  // The bounds count from the raster's own corner: a layer that stands elsewhere goes to the slide's corner first.
  layer.SetPosition(0, 0);
  layer.CropLayer(ContentBounds(&layer, color));
  layer.SetPosition(0, 0);
}

}  // namespace

Rectangle ContentBounds(const Layer* layer, std::uint32_t color) {
  if (layer == nullptr || layer->raster.width <= 0 || layer->raster.height <= 0) return {};
  const RasterBlock& raster = layer->raster;
  const std::array<bool, 256> entries = ContentEntries(raster, color);
  const auto at = [](std::int32_t x) { return static_cast<std::size_t>(x); };
  switch (raster.pixels == nullptr ? -1 : raster.bits) {
    case 32:
      return BoundsOf(raster, [color, at](const std::uint8_t* row, std::int32_t x) {
        std::uint32_t word;
        std::memcpy(&word, row + at(x) * 4, 4);
        return word != color;
      });
    case 24:
      return BoundsOf(raster, [color, at](const std::uint8_t* row, std::int32_t x) {
        const std::uint8_t* pixel = row + at(x) * 3;
        const std::uint32_t word = 0xFF000000U | static_cast<std::uint32_t>(pixel[2]) << 16 |
                                   static_cast<std::uint32_t>(pixel[1]) << 8 | pixel[0];
        return word != color;
      });
    case 8:
      return BoundsOf(raster, [&entries, at](const std::uint8_t* row, std::int32_t x) { return entries[row[at(x)]]; });
    case 4:
      return BoundsOf(raster, [&entries, at](const std::uint8_t* row, std::int32_t x) {
        return entries[(row[at(x / 2)] >> (x % 2 == 0 ? 4 : 0)) & 15];
      });
    case 1:
      return BoundsOf(raster, [&entries, at](const std::uint8_t* row, std::int32_t x) {
        return entries[(row[at(x / 8)] >> (7 - x % 8)) & 1];
      });
    default:  // no pixels, which count as zeros
      return color == 0 ? Rectangle{raster.width, raster.height, 0, 0} : Rectangle{0, 0, raster.width, raster.height};
  }
}

bool TaskAutoCrop(Film* film, const void* params) {
  const std::uint32_t color = static_cast<const AutoCropParams*>(params)->color;
  for (std::uint32_t s = 0; s < film->Count(); ++s) {
    Slide* slide = film->body().GetSlide(s);
    for (std::uint32_t l = 0; l < slide->layers.count; ++l) CropToContent(*slide->GetLayer(l), color);
    slide->stale = true;
  }
  return true;
}

}  // namespace glib
