#ifndef GLIB_COLOR_COLOR_CELLS_H_
#define GLIB_COLOR_COLOR_CELLS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace glib {

// The colour cube in cells, as a colour tree of depth 5 divides it: a value c belongs to part (max(c, 1) - 1) / 8 of
// its channel, since a value on a boundary goes to the lower half at every level. Part 0 thus holds the nine values 0
// to 8, part k the eight values from 8k + 1.
//
// Cells are numbered in the tree's own order, three bits a level, the highest level first, so that every node of a tree
// of depth 5 or less is a run of consecutive cells.
inline constexpr std::uint32_t kCellLevels = 5;
inline constexpr std::uint32_t kCellCount = 1U << 3 * kCellLevels;

// Part of its channel that a value belongs to.
constexpr std::uint32_t CellPart(std::uint32_t value) { return (value == 0 ? 0 : value - 1) >> (8 - kCellLevels); }

// What a part adds to the number of its cell, for channel 0; two more shifts by 1 serve the others.
constexpr std::uint32_t CellDigits(std::uint32_t part) {
  std::uint32_t digits = 0;
  for (std::uint32_t bit = 0; bit < kCellLevels; ++bit) digits |= (part >> bit & 1) << 3 * bit;
  return digits;
}

// The other way round: the part in a channel that a cell stands for.
constexpr std::uint32_t PartOfCell(std::uint32_t cell, std::uint32_t channel) {
  std::uint32_t part = 0;
  for (std::uint32_t bit = 0; bit < kCellLevels; ++bit) part |= (cell >> (3 * bit + channel) & 1) << bit;
  return part;
}

// Pixels of a part of the cube and the sums of their channels.
struct ColorSums {
  std::uint32_t count = 0;
  std::array<std::uint64_t, 3> sums = {};
};

// Counts pixels into cells.
class ColorCells {
 public:
  // False: no memory.
  bool Allocate();

  // Consecutive pixels of 3 or 4 bytes, the channels in the first three.
  void Add(const std::uint8_t* pixels, std::size_t count, std::uint32_t pixelBytes);

  ColorSums Sums(std::uint32_t cell) const;
  std::uint32_t Count(std::uint32_t cell) const;

 private:
  template <std::size_t kBytes>
  void AddPixels(const std::uint8_t* pixels, std::size_t count);
  void Flush(std::uint64_t& packed, std::uint32_t cell);

  // Pixels on even and on odd places count apart: areas of one colour would otherwise wait for their own last addition.
  std::unique_ptr<std::uint64_t[]> packed_[2];
  std::unique_ptr<ColorSums[]> totals_;
};

}  // namespace glib

#endif  // GLIB_COLOR_COLOR_CELLS_H_
