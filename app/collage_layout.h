#ifndef APP_COLLAGE_LAYOUT_H_
#define APP_COLLAGE_LAYOUT_H_

#include <cstdint>
#include <vector>

namespace app {

// The cells of a sheet: so many in a row, so many rows, and what is added to the largest width and to each row's
// largest height. Gaps may be negative.
struct CollageGrid {
  std::int32_t columns = 0;
  std::int32_t rows = 0;
  std::int32_t gapX = 0;
  std::int32_t gapY = 0;
};

// An image of a sheet, in pixels. The canvas is what the layer grows or shrinks to, so that it reaches the right and
// bottom edges of its cell; one of 0 or less is to be left out.
struct CollageCell {
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::int32_t x = 0;
  std::int32_t y = 0;
  std::int32_t canvasWidth = 0;
  std::int32_t canvasHeight = 0;
};

// Fills the cells row by row and centres each image in its cell; reads sizes, writes positions and canvases. False if
// there is no image, or if the sheet would be too large for a raster.
bool LayOutSheet(const CollageGrid& grid, std::vector<CollageCell>& cells);

}  // namespace app

#endif  // APP_COLLAGE_LAYOUT_H_
