#ifndef GLIB_PIXEL_ROTATE_ROWS_H_
#define GLIB_PIXEL_ROTATE_ROWS_H_

#include <cstdint>

namespace glib {

// Kernels of rotation. Rasters are words without padding; source and target don't overlap.

// Rows `first` up to `end` of a source of `width` x `height` to their places in the target, turned clockwise by 90, 180
// or 270 degrees. They work in square blocks, so that neither side jumps through memory.
void TurnRowsRight(const std::uint32_t* source, std::int32_t width, std::int32_t height, std::int32_t first,
                   std::int32_t end, std::uint32_t* target);
void TurnRowsOver(const std::uint32_t* source, std::int32_t width, std::int32_t height, std::int32_t first,
                  std::int32_t end, std::uint32_t* target);
void TurnRowsLeft(const std::uint32_t* source, std::int32_t width, std::int32_t height, std::int32_t first,
                  std::int32_t end, std::uint32_t* target);

// How a target pixel finds its source: both grids are turned about their own centres.
struct TurnedGrid {
  std::int32_t width = 0;  // of the source
  std::int32_t height = 0;
  std::int32_t centreX = 0;
  std::int32_t centreY = 0;
  std::int32_t targetWidth = 0;
  std::int32_t targetCentreX = 0;
  std::int32_t targetCentreY = 0;
  double cosine = 1.0;
  double sine = 0.0;
};

// Target rows `first` up to `end`. A pixel whose source lies outside gets `background`. Positions are cut towards zero:
// before the centre is added in the nearest form, after it in the mixed one.
void TurnRowsNearest(const std::uint32_t* source, const TurnedGrid& grid, std::int32_t first, std::int32_t end,
                     std::uint32_t background, std::uint32_t* target);
void TurnRowsMixed(const std::uint32_t* source, const TurnedGrid& grid, std::int32_t first, std::int32_t end,
                   std::uint32_t background, std::uint32_t* target);

}  // namespace glib

#endif  // GLIB_PIXEL_ROTATE_ROWS_H_
