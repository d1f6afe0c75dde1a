#ifndef GLIB_PIXEL_WORD_ROWS_H_
#define GLIB_PIXEL_WORD_ROWS_H_

#include <cstdint>
#include <vector>

#include "glib/pixel/raster_view.h"

namespace glib {

// Rows of a raster of any depth as 32-bit words, for kernels that look at two neighbouring rows at a time. 24-bit
// pixels are opaque, indexed ones are their palette entries. Rows that aren't words already are converted once while a
// kernel walks downwards; the last two that were asked for stay.
class WordRows {
 public:
  explicit WordRows(const RasterView& source);

  // `y` is a row of the raster. The row stays valid until two others have been asked for.
  const std::uint32_t* Row(std::int32_t y);

 private:
  RasterView source_;
  std::vector<std::uint32_t> rows_[2];
  std::int32_t held_[2] = {-1, -1};
  int next_ = 0;
};

}  // namespace glib

#endif  // GLIB_PIXEL_WORD_ROWS_H_
