#include "glib/model/compositing.h"

#include <algorithm>
#include <cstring>

#include "glib/format/metafile_pages.h"
#include "glib/model/blend_modes.h"
#include "glib/model/layer.h"
#include "glib/model/over_rows.h"
#include "glib/model/range.h"
#include "glib/model/slide.h"
#include "platform/pages.h"

namespace glib {
namespace {

// The plain mode of one of the two routines.
struct PlainMode {
  BlendRow row;
  // The same on a target that is `color` all over and hasn't been written.
  void (*rowOnColor)(std::uint32_t* target, const std::uint32_t* source, std::uint32_t color, std::size_t count);
};

void OverRowOnColor(std::uint32_t* target, const std::uint32_t* source, std::uint32_t color, std::size_t count) {
  if (color >> 24 == 0) {
    // Nothing of a transparent target shows through.
    std::memcpy(target, source, 4 * count);
    return;
  }
  std::fill_n(target, count, color);
  OverRow(target, source, count);
}

constexpr PlainMode kMix = {MixRow, MixRowOnColor};
constexpr PlainMode kOver = {OverRow, OverRowOnColor};

// 32-bit pixels, placed in the target.
struct Image {
  const std::uint8_t* pixels = nullptr;
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::int32_t x = 0;
  std::int32_t y = 0;
};

// The target and how far it is: its pixels are written by the first image or, where none comes, by the background.
class Canvas {
 public:
  Canvas(const Layer& target, std::uint32_t background)
      : pixels_(reinterpret_cast<std::uint32_t*>(target.raster.pixels)),
        width_(target.raster.width),
        height_(target.raster.height),
        background_(background) {}

  // `mode` null: draws nothing.
  void Draw(const Image& image, BlendRow mode) {
    Finish();
    const Part part = PartOf(image);
    if (part.count == 0 || mode == nullptr) return;
    for (std::int32_t row = part.top; row < part.bottom; ++row)
      mode(Row(row) + part.left, part.Source(row), part.count);
  }

  void DrawPlain(const Image& image, const PlainMode& mode) {
    if (written_) return Draw(image, mode.row);
    written_ = true;
    const Part part = PartOf(image);
    for (std::int32_t row = 0; row < height_; ++row) {
      std::uint32_t* target = Row(row);
      if (part.count == 0 || row < part.top || row >= part.bottom) {
        std::fill_n(target, width_, background_);
        continue;
      }
      const std::size_t right = part.left + part.count;
      std::fill_n(target, part.left, background_);
      mode.rowOnColor(target + part.left, part.Source(row), background_, part.count);
      std::fill_n(target + right, static_cast<std::size_t>(width_) - right, background_);
    }
  }

  // Writes the background where no image has been drawn.
  void Finish() {
    if (!written_)
      std::fill_n(pixels_, static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_), background_);
    written_ = true;
  }

 private:
  // What of an image lies inside the target. A `count` of 0: nothing.
  struct Part {
    std::size_t left = 0;
    std::size_t count = 0;
    std::int32_t top = 0;
    std::int32_t bottom = 0;
    const std::uint32_t* first = nullptr;  // source of row `top`
    std::size_t stride = 0;                // in pixels

    const std::uint32_t* Source(std::int32_t row) const { return first + stride * static_cast<std::size_t>(row - top); }
  };

  Part PartOf(const Image& image) const {
    const auto clip = [](std::int64_t at, std::int32_t size) { return std::clamp<std::int64_t>(at, 0, size); };
    const std::int64_t left = clip(image.x, width_);
    const std::int64_t right = clip(std::int64_t{image.x} + image.width, width_);
    const std::int64_t top = clip(image.y, height_);
    const std::int64_t bottom = clip(std::int64_t{image.y} + image.height, height_);
    Part part;
    if (left >= right || top >= bottom) return part;
    part.left = static_cast<std::size_t>(left);
    part.count = static_cast<std::size_t>(right - left);
    part.top = static_cast<std::int32_t>(top);
    part.bottom = static_cast<std::int32_t>(bottom);
    part.stride = static_cast<std::size_t>(image.width);
    part.first = reinterpret_cast<const std::uint32_t*>(image.pixels) +
                 static_cast<std::size_t>(top - image.y) * part.stride + static_cast<std::size_t>(left - image.x);
    return part;
  }

  std::uint32_t* Row(std::int32_t row) const {
    return pixels_ + static_cast<std::size_t>(row) * static_cast<std::size_t>(width_);
  }

  std::uint32_t* pixels_;
  std::int32_t width_;
  std::int32_t height_;
  std::uint32_t background_;
  bool written_ = false;
};

// Gives the target 32-bit pixels of this size at 0, 0, which are not set.
bool PrepareTarget(Layer& target, std::int64_t width, std::int64_t height) {
  if (width > INT32_MAX || height > INT32_MAX) {
    target.Clear();
    return false;
  }
  const auto newWidth = static_cast<std::int32_t>(width);
  const auto newHeight = static_cast<std::int32_t>(height);
  const RasterBlock& raster = target.raster;
  if (raster.pixels != nullptr && raster.bits == 32 && raster.width == newWidth && raster.height == newHeight) {
    target.SetPosition(0, 0);
    return true;
  }
  target.Clear();
  const std::size_t bytes = PaddedBytes(newWidth, newHeight, 32);
  auto* pixels = static_cast<std::uint8_t*>(platform::AllocateUninitialisedPages(bytes));
  if (pixels == nullptr) return false;
  target.SetPixels(0, 0, newWidth, newHeight, pixels);
  return true;
}

// The layer's pixels at 32 bits; a metafile is drawn into `rendered`, which then holds them. No pixels: nothing to
// draw. False: the layer has pixels that can't be converted.
bool ImageOf(Layer& layer, platform::OwnedPages& rendered, Image& image) {
  RasterBlock& raster = layer.raster;
  image = Image{nullptr, raster.width, raster.height, layer.x, layer.y};
  if (raster.pixels != nullptr) {
    if (!layer.EnsureRaster()) return false;
    image.pixels = raster.pixels;
    image.width = raster.width;
    image.height = raster.height;
  } else if (raster.metafile != nullptr) {
    rendered.reset(RenderMetafile32(raster.metafile, layer.slide->dpiY, layer.slide->dpiX, image.width, image.height));
    image.pixels = rendered.get();
  }
  return true;
}

bool Composite(Slide& slide, Layer& target, std::uint32_t first, std::uint32_t count, const PlainMode& plain) {
  std::uint32_t end = 0;
  if (!RangeEnd(first, count, slide.layers.count, end)) return false;
  std::int64_t width = 0;
  std::int64_t height = 0;
  for (std::uint32_t i = first; i < end; ++i) {
    const Layer* layer = slide.layers.At(i);
    std::int32_t layerWidth = 0;
    std::int32_t layerHeight = 0;
    layer->GetSize(layerWidth, layerHeight);
    width = std::max(width, std::int64_t{layer->x} + layerWidth);
    height = std::max(height, std::int64_t{layer->y} + layerHeight);
  }
  if (!PrepareTarget(target, width, height)) return false;

  Canvas canvas(target, ToPixel(slide.background));
  bool done = true;
  for (std::uint32_t i = first; i < end && done; ++i) {
    Layer* layer = slide.layers.At(i);
    if (layer->visible == 0) continue;
    platform::OwnedPages rendered;
    Image image;
    done = ImageOf(*layer, rendered, image);
    if (!done || image.pixels == nullptr) continue;
    if (i == first || layer->blendMode == static_cast<std::int32_t>(BlendMode::kPlain)) {
      canvas.DrawPlain(image, plain);
    } else {
      canvas.Draw(image, BlendRowOf(layer->blendMode));
    }
  }
  canvas.Finish();
  return done;
}

}  // namespace

bool FlattenLayers(Slide& slide, Layer& target, std::uint32_t first, std::uint32_t count) {
  return Composite(slide, target, first, count, kMix);
}

bool MergeIntoLayer(Slide& slide, Layer& target, std::uint32_t first, std::uint32_t count) {
  return Composite(slide, target, first, count, kOver);
}

}  // namespace glib
