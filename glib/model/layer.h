#ifndef GLIB_MODEL_LAYER_H_
#define GLIB_MODEL_LAYER_H_

#include <algorithm>
#include <cstdint>

#include "gen/basic_string.h"
#include "glib/module_api/progress.h"
#include "glib/raster/raster_block.h"

namespace glib {

class Slide;

// Right and bottom edges are not included.
struct Rectangle {
  std::int32_t left = 0;
  std::int32_t top = 0;
  std::int32_t right = 0;
  std::int32_t bottom = 0;

  std::int32_t Width() const { return Distance(left, right); }
  std::int32_t Height() const { return Distance(top, bottom); }

 private:
  // At most what the type holds, where the edges lie further apart.
  static std::int32_t Distance(std::int32_t from, std::int32_t to) {
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(std::int64_t{to} - from, INT32_MIN, INT32_MAX));
  }
};

// One image in the stack of a slide. The operations give false when they can't be done or memory is out; the layer is
// whole then, unless told otherwise.
class Layer {
 public:
  explicit Layer(Slide* owner) : slide(owner) {}
  Layer(const Layer&) = delete;
  Layer& operator=(const Layer&) = delete;
  virtual ~Layer();

  // Empties the layer and makes it visible.
  void Clear();
  // A new 32-bit block, every pixel the slide's background. False leaves the layer empty.
  bool Create(std::int32_t newX, std::int32_t newY, std::int32_t width, std::int32_t height);
  // Takes over a 32-bit block, which must come from platform::AllocatePages, without a copy.
  void SetPixels(std::int32_t newX, std::int32_t newY, std::int32_t width, std::int32_t height, std::uint8_t* pixels);
  // The same at any depth. The 256 entries of `palette` are copied with their alpha set to 255; null keeps the palette.
  // Other `bits` than 1, 4, 8, 24, 32 leave an empty layer at the new position.
  void SetRaster(std::int32_t newX, std::int32_t newY, std::int32_t width, std::int32_t height, std::uint8_t* pixels,
                 const std::uint32_t* palette, std::int32_t bits);
  // The raster's size; that of the frame, at the slide's resolution, in a direction in which a metafile has no size of
  // its own.
  void GetSize(std::int32_t& width, std::int32_t& height) const;
  // Negative values become 0.
  void SetPosition(std::int32_t newX, std::int32_t newY);

  // Cuts the raster to the part of it inside a rectangle of the slide, and moves the layer there. False also when there
  // is nothing to cut.
  bool CropLayer(const Rectangle& rectangle);
  bool CropLayer(std::int32_t newX, std::int32_t newY, std::int32_t width, std::int32_t height);
  // Changes the size without scaling; the old image stays at the top left.
  bool ResizeCanvas(std::int32_t width, std::int32_t height);

  // `progress` may be null in all of these; its user value and text go into the reports. Scaling refuses sides of more
  // than 65535 pixels, which no output has.
  bool ScaleLayer(std::int32_t width, std::int32_t height, std::int32_t smooth, bool keepAspect,
                  ProgressCallback callback, const ProgressInfo* progress);
  bool RotateLayer(double angle, std::uint8_t interpolate, ProgressCallback callback, const ProgressInfo* progress);
  bool MirrorLayer(bool horizontal, bool vertical);
  bool FilterLayer(std::uint32_t filter, ProgressCallback callback, const ProgressInfo* progress);
  // `arguments` holds as many numbers as the effect reads.
  bool ColorEffectLayer(std::uint32_t effect, const double* arguments);

  bool EnsureRaster();                // to 32 bits
  bool EnsureRasterIfMetafile();      // a metafile to 32 bits; a raster keeps its depth
  bool ConvertTo(std::int32_t bits);  // 0 (metafile), 1, 4, 8, 24, 32

  // A copy for another slide; without pixels if there is no memory for them. The caller owns it.
  Layer* Clone(Slide* owner) const;

  gen::basic_string<char> name;
  gen::basic_string<char> comment;
  std::uint8_t visible = 1;
  RasterBlock raster;
  Slide* slide;  // not owned
  std::uint32_t reserved = 0;
  std::int32_t x = 0;  // top left corner in the slide; 0 or above
  std::int32_t y = 0;
  std::int32_t blendMode = 0;
};

}  // namespace glib

#endif  // GLIB_MODEL_LAYER_H_
