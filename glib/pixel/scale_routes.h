#ifndef GLIB_PIXEL_SCALE_ROUTES_H_
#define GLIB_PIXEL_SCALE_ROUTES_H_

#include <cstdint>

#include "glib/pixel/raster_view.h"
#include "glib/pixel/row_reports.h"

namespace glib {

// Where a route writes: rows of `stride` bytes, zero at the start.
struct ScaleTarget {
  std::uint8_t* pixels;
  std::int32_t width;
  std::int32_t height;
  std::size_t stride;

  std::uint8_t* Row(std::int32_t y) const { return pixels + static_cast<std::size_t>(y) * stride; }
  std::uint32_t* Words(std::int32_t y) const { return reinterpret_cast<std::uint32_t*>(Row(y)); }
};

// The routes of RasterScaler. Sizes are at least 1; a stop answer ends a route where it is.

// One source pixel for each target pixel, at the source's depth. Rows count as padded to 4 bytes.
void ScaleNearest(const RasterView& source, const ScaleTarget& target, RowReports& reports);

// 32 bits to 32 bits, the target wider and higher: bilinear, in integers with positions of 15 fractional bits and
// weights of 8 bits, cut at every stage. A neighbour outside the source counts as 0.
void EnlargeFixed(const RasterView& source, const ScaleTarget& target, RowReports& reports);

// 32 bits to 32 bits, any other size: the mean of up to four bilinear samples at the corners of a target pixel's
// footprint, in the same arithmetic.
void ReduceFixed(const RasterView& source, const ScaleTarget& target, RowReports& reports);

// Any depth to 32 bits, the target wider and higher: bilinear, in double precision over ratios and fractions of single
// precision. A neighbour outside the source counts as 0.
void EnlargeFloat(const RasterView& source, const ScaleTarget& target, RowReports& reports);

// Any depth to 32 bits, any other size: the mean of bilinear samples over the whole box of a target pixel.
void ReduceBox(const RasterView& source, const ScaleTarget& target, RowReports& reports);

}  // namespace glib

#endif  // GLIB_PIXEL_SCALE_ROUTES_H_
