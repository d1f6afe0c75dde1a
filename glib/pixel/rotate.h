#ifndef GLIB_PIXEL_ROTATE_H_
#define GLIB_PIXEL_ROTATE_H_

#include <cstdint>

#include "gen/basic_string.h"
#include "glib/raster/raster_block.h"
#include "glib/raster/rgb32.h"

namespace glib {

// Turns a 32-bit raster clockwise by any angle into a new raster that holds all of it. Right angles move pixels; others
// take the nearest source pixel or, with `interpolate`, mix four.
template <typename Pixel>
class RotateImage {
 public:
  virtual ~RotateImage() = default;

  // `source` has rows of `width` words. On success `target` is a new block from platform::AllocatePages that the caller
  // owns. Free corners get the word `background`. False: no source, no memory, a result too large for a raster, or a
  // stop answer; nothing is left behind then.
  bool Rotate(const Pixel* source, std::int32_t width, std::int32_t height, double angle, Pixel*& target,
              std::int32_t& newWidth, std::int32_t& newHeight, Pixel background);

  std::uint8_t interpolate = 0;
  ProgressCallback callback = nullptr;
  std::uintptr_t user = 0;
  gen::basic_string<char> label;  // of the stage around; goes before the report's own text
};

extern template class RotateImage<RGB32>;

}  // namespace glib

#endif  // GLIB_PIXEL_ROTATE_H_
