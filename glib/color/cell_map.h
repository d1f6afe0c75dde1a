#ifndef GLIB_COLOR_CELL_MAP_H_
#define GLIB_COLOR_CELL_MAP_H_

#include <cstddef>
#include <cstdint>
#include <memory>

#include "glib/color/color_cells.h"

namespace glib {

class ColorTree;

// Maps pixels to the entries of a reduced colour tree of up to kCellLevels levels, with the same result as
// ColorTree::FindColor. Within one cell of the tree that search always looks at the same entries. So each box of 8
// values a channel holds an index where one entry wins throughout, or a table of the indices of all its colours, or,
// where it has too few pixels for a table to pay, the entries to look through.
class CellMap {
 public:
  // The tree and its palette must outlive the map.
  explicit CellMap(const ColorTree& tree) : tree_(tree) {}

  // `cells` are those that the tree was made of; only colours of cells with pixels can be mapped. False: no memory.
  bool Build(const ColorCells& cells);

  void MapRow(const std::uint8_t* pixels, std::uint32_t width, std::uint8_t* dest) const;

 private:
  void FillBox(std::uint32_t box, const std::int32_t* low, std::uint32_t first, std::uint32_t count,
               std::uint32_t tablePlace);
  template <std::size_t kBytes>
  void MapPixels(const std::uint8_t* pixels, std::uint32_t width, std::uint8_t* dest) const;

  const ColorTree& tree_;
  std::unique_ptr<std::uint32_t[]> boxes_;
  std::unique_ptr<std::uint8_t[]> tables_;
};

}  // namespace glib

#endif  // GLIB_COLOR_CELL_MAP_H_
