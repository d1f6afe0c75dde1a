#ifndef GLIB_MODEL_SLIDE_H_
#define GLIB_MODEL_SLIDE_H_

#include <cstdint>

#include "gen/array_ptr.h"
#include "gen/basic_string.h"
#include "glib/model/layer.h"
#include "glib/raster/rgb32.h"

namespace glib {

// One page of a film: a stack of layers, the lowest first, with a cached image of what the stack looks like.
//
// A layer range is `first` and `count`; it fails when `first` is at or past the end, a `count` of 0xFFFFFFFF means all
// that follow, and the end is cut to what there is.
class Slide {
 public:
  explicit Slide(RGB32 backgroundColour);
  Slide(const Slide&) = delete;
  Slide& operator=(const Slide&) = delete;
  virtual ~Slide();

  bool AddLayer(Layer* layer);                 // takes it over; false for null
  Layer* GetLayer(std::uint32_t index) const;  // null past the end
  // The largest right edge and, apart from it, the largest bottom edge of all layers.
  void GetExtent(std::int32_t& width, std::int32_t& height) const;
  void GetDpi(double& outDpiY, double& outDpiX) const;
  RGB32 GetBackground() const { return background; }
  void SetBackground(RGB32 colour);
  std::int32_t LayerBits(std::uint32_t layer) const;  // -1 past the end
  bool ConvertBits(std::int32_t bits, std::uint32_t layer, ProgressCallback callback, std::uintptr_t userValue);
  bool PrepareLayers(ProgressCallback callback, std::uintptr_t userValue);  // all to 32 bits
  void RefreshFlat();

  // The slide as an image: the only layer's own pixels if it isn't 32 bits deep, else those of `flat`. Gives its bits,
  // or -1 without layers. Outputs that don't apply stay as they were.
  std::int32_t GetRaster(std::uint8_t*& pixels, std::uint32_t*& palette, MetafileHandle& metafile);

  bool Crop(std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height);
  bool Stretch(std::int32_t width, std::int32_t height, std::int32_t smooth, bool proportional,
               ProgressCallback callback, const ProgressInfo* progress);
  bool Mirror(bool horizontal, bool vertical);
  bool Rotate(double angle, std::uint8_t interpolate, ProgressCallback callback, const ProgressInfo* progress);
  bool Filter(std::uint32_t filter, ProgressCallback callback, const ProgressInfo* progress);
  void ColorEffect(std::uint32_t effect, const double* arguments);
  bool MergeLayers(std::uint32_t first, std::uint32_t count);

  gen::basic_string<char> name;  // path of the source
  gen::basic_string<char> comment;
  gen::array_ptr<Layer> layers;
  Layer* flat = nullptr;  // owned; valid while `stale` is false
  double dpiX = 72.0;
  double dpiY = 72.0;
  RGB32 background;
  std::uint32_t delay = 10;  // hundredths of a second
  bool stale = true;
};

}  // namespace glib

#endif  // GLIB_MODEL_SLIDE_H_
