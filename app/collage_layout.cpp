#include "app/collage_layout.h"

#include <algorithm>
#include <cstddef>

namespace app {
namespace {

constexpr std::int64_t kMaxSide = 0x7FFFFFFF;
constexpr std::int64_t kMaxPixels = 0xFFFFFFFF / 4;  // the bytes of a sheet fit 32 bits

// One axis of a layer in its cell, which begins at `start` and has room for `room` pixels. Gives how far the layer may
// reach, also if it keeps its size because the other axis leaves no canvas.
std::int64_t Place(std::int64_t start, std::int64_t room, std::int32_t size, std::int32_t& position,
                   std::int32_t& canvas) {
  const std::int64_t offset = (room - size) / 2;
  const std::int64_t near = std::max<std::int64_t>(start + offset, 0);
  const std::int64_t length = room - offset;
  const std::int64_t far = near + std::max<std::int64_t>(length, size);
  if (far > kMaxSide) return far;
  position = static_cast<std::int32_t>(near);
  canvas = static_cast<std::int32_t>(std::max<std::int64_t>(length, 0));
  return far;
}

}  // namespace

bool LayOutSheet(const CollageGrid& grid, std::vector<CollageCell>& cells) {
  if (cells.empty() || grid.columns <= 0) return false;
  // Sums and products of 32-bit numbers stay far inside 64 bits: each row adds less than 2^33.
  std::int64_t cellWidth = 0;
  for (const CollageCell& cell : cells) cellWidth = std::max<std::int64_t>(cellWidth, cell.width);
  cellWidth += grid.gapX;

  std::int64_t top = 0;
  std::int64_t sheetWidth = 0;
  std::int64_t sheetHeight = 0;
  for (std::size_t first = 0; first < cells.size();) {
    const std::size_t last = std::min(cells.size(), first + static_cast<std::size_t>(grid.columns));
    std::int64_t rowHeight = 0;
    for (std::size_t i = first; i < last; ++i) rowHeight = std::max<std::int64_t>(rowHeight, cells[i].height);
    rowHeight += grid.gapY;
    for (std::size_t i = first; i < last; ++i) {
      CollageCell& cell = cells[i];
      const auto column = static_cast<std::int64_t>(i - first);
      sheetWidth = std::max(sheetWidth, Place(column * cellWidth, cellWidth, cell.width, cell.x, cell.canvasWidth));
      sheetHeight = std::max(sheetHeight, Place(top, rowHeight, cell.height, cell.y, cell.canvasHeight));
      if (sheetWidth > kMaxSide || sheetHeight > kMaxSide || sheetWidth * sheetHeight > kMaxPixels) return false;
    }
    // From where the row's last image stands, not from the row's own top: the rows of a sheet step down by that.
    top = cells[last - 1].y + rowHeight;
    first = last;
  }
  return true;
}

}  // namespace app
