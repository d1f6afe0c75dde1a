#include "glib/color/cell_map.h"

#include <algorithm>
#include <array>
#include <new>

#include "glib/color/color_tree.h"

namespace glib {
namespace {

// A channel of a cell has up to nine values: 0 to 8 above the multiple of 8 below it.
constexpr std::uint32_t kValues = 9;
constexpr std::uint32_t kTableSize = kValues * kValues * kValues;

// Making a table costs about what this many pixels cost without one.
constexpr std::uint32_t kTableFrom = 400;

// What a cell holds. The rest of the word is the place of its table, the place of its index in the identity table that
// all other tables follow, or, for a search, the first entry and from bit 8 the last one.
constexpr std::uint32_t kIsTable = 0x80000000;
constexpr std::uint32_t kIsSearch = 0x40000000;
constexpr std::uint32_t kPlaceMask = kIsSearch - 1;
constexpr std::uint32_t kIdentitySize = 256;

// Per channel and value: the cell in the low bits, the place within its table above.
using PlaceTable = std::array<std::array<std::uint32_t, 256>, 3>;

constexpr PlaceTable MakePlaceTable() {
  PlaceTable table{};
  std::uint32_t step = 1;
  for (std::uint32_t channel = 0; channel < 3; ++channel, step *= kValues) {
    for (std::uint32_t value = 0; value < 256; ++value) {
      const std::uint32_t part = CellPart(value);
      table[channel][value] = CellDigits(part) << channel | (value - 8 * part) * step << 3 * kCellLevels;
    }
  }
  return table;
}

constexpr PlaceTable kPlaces = MakePlaceTable();

// The values of one cell in one channel.
struct ValueRange {
  std::uint32_t first;
  std::uint32_t last;
};

ValueRange RangeOf(std::uint32_t cell, std::uint32_t channel) {
  const std::uint32_t part = PartOfCell(cell, channel);
  return {8 * part + (part == 0 ? 0 : 1), 8 * part + 8};
}

std::uint32_t Square(std::uint32_t a, std::uint32_t b) { return (a - b) * (a - b); }

std::uint32_t ChannelOf(std::uint32_t word, std::uint32_t channel) { return word >> 8 * channel & 255; }

// Entries that can be nearest to a colour of the cell: those whose least distance from it is not above the least of all
// greatest distances. In rising order; gives their number.
std::uint32_t PickCandidates(std::uint32_t cell, const std::uint32_t* palette, std::uint32_t first, std::uint32_t count,
                             std::array<std::uint8_t, 256>& picked) {
  std::array<std::uint32_t, 256> least{};
  std::uint32_t bound = 0xFFFFFFFF;
  for (std::uint32_t i = 0; i < count; ++i) {
    std::uint32_t most = 0;
    for (std::uint32_t channel = 0; channel < 3; ++channel) {
      const ValueRange range = RangeOf(cell, channel);
      const std::uint32_t value = ChannelOf(palette[first + i], channel);
      least[i] += Square(value, std::clamp(value, range.first, range.last));
      most += std::max(Square(value, range.first), Square(value, range.last));
    }
    bound = std::min(bound, most);
  }
  std::uint32_t number = 0;
  for (std::uint32_t i = 0; i < count; ++i) {
    if (least[i] <= bound) picked[number++] = static_cast<std::uint8_t>(first + i);
  }
  return number;
}

// The index of each colour of the cell. Gives whether it is the same for all.
bool FillTable(std::uint32_t cell, const std::uint32_t* palette, const std::array<std::uint8_t, 256>& picked,
               std::uint32_t number, std::uint8_t* table) {
  const std::array<ValueRange, 3> ranges = {RangeOf(cell, 0), RangeOf(cell, 1), RangeOf(cell, 2)};
  const std::array<std::uint32_t, 3> base = {ranges[0].last - 8, ranges[1].last - 8, ranges[2].last - 8};
  std::uint32_t differences = 0;
  const std::uint32_t start =
      ((ranges[2].first - base[2]) * kValues + ranges[1].first - base[1]) * kValues + ranges[0].first - base[0];
  for (std::uint32_t c2 = ranges[2].first; c2 <= ranges[2].last; ++c2) {
    for (std::uint32_t c1 = ranges[1].first; c1 <= ranges[1].last; ++c1) {
      std::uint8_t* row = table + ((c2 - base[2]) * kValues + c1 - base[1]) * kValues;
      // Distance and place in the list in one word: the least word is the first nearest entry.
      std::array<std::uint32_t, kValues> best;
      best.fill(0xFFFFFFFF);
      for (std::uint32_t i = 0; i < number; ++i) {
        const std::uint32_t word = palette[picked[i]];
        const std::uint32_t apart = Square(c2, ChannelOf(word, 2)) + Square(c1, ChannelOf(word, 1));
        const std::uint32_t from = base[0] - ChannelOf(word, 0);
        for (std::uint32_t x = 0; x < kValues; ++x) {
          best[x] = std::min(best[x], (apart + (from + x) * (from + x)) << 8 | i);
        }
      }
      for (std::uint32_t x = ranges[0].first - base[0]; x < kValues; ++x) {
        row[x] = picked[best[x] & 255];
        differences |= row[x] ^ table[start];
      }
    }
  }
  return differences == 0;
}
static_assert(3 * 255 * 255 < 1 << 24, "a distance and an index share a word");

}  // namespace

bool CellMap::Build(const ColorCells& cells) {
  cells_.reset(new (std::nothrow) std::uint32_t[kCellCount]());
  if (cells_ == nullptr) return false;
  std::array<std::uint8_t, 256> picked{};
  std::uint32_t tableCount = 0;
  const auto rangeOf = [this](std::uint32_t cell) { return tree_.DescendToCell(cell)->parent; };
  for (std::uint32_t cell = 0; cell < kCellCount; ++cell) {
    const std::uint32_t pixels = cells.Sums(cell).count;
    if (pixels == 0) continue;
    const ColorTreeNode* top = rangeOf(cell);
    const bool searched = pixels < kTableFrom && top->colorCount > 1;
    const std::uint32_t number =
        searched ? 0 : PickCandidates(cell, tree_.palette, top->firstColor, top->colorCount, picked);
    if (searched) {
      cells_[cell] = kIsSearch | (top->firstColor + top->colorCount - 1) << 8 | top->firstColor;
    } else if (number == 1) {
      cells_[cell] = picked[0];
    } else {
      cells_[cell] = kIsTable | (kIdentitySize + tableCount++ * kTableSize);
    }
  }
  tables_.reset(new (std::nothrow) std::uint8_t[kIdentitySize + std::size_t{tableCount} * kTableSize]);
  if (tables_ == nullptr) return false;
  for (std::uint32_t i = 0; i < kIdentitySize; ++i) tables_[i] = static_cast<std::uint8_t>(i);
  for (std::uint32_t cell = 0; cell < kCellCount; ++cell) {
    if ((cells_[cell] & kIsTable) == 0) continue;
    const ColorTreeNode* top = rangeOf(cell);
    const std::uint32_t number = PickCandidates(cell, tree_.palette, top->firstColor, top->colorCount, picked);
    std::uint8_t* table = tables_.get() + (cells_[cell] & kPlaceMask);
    if (FillTable(cell, tree_.palette, picked, number, table)) cells_[cell] = table[kTableSize - 1];
  }
  return true;
}

template <std::size_t kBytes>
void CellMap::MapPixels(const std::uint8_t* pixels, std::uint32_t width, std::uint8_t* dest) const {
  const std::uint32_t* cells = cells_.get();
  const std::uint8_t* tables = tables_.get();
  for (std::uint32_t x = 0; x < width; ++x, pixels += kBytes) {
    const std::uint32_t place = kPlaces[0][pixels[0]] + kPlaces[1][pixels[1]] + kPlaces[2][pixels[2]];
    const std::uint32_t entry = cells[place & (kCellCount - 1)];
    if ((entry & kIsSearch) != 0) {
      const std::uint32_t first = entry & 255;
      const std::uint32_t last = entry >> 8 & 255;
      dest[x] = static_cast<std::uint8_t>(tree_.NearestOf(first, last - first + 1, pixels[0], pixels[1], pixels[2]));
      continue;
    }
    const std::uint32_t isTable = 0 - (entry >> 31);
    dest[x] = tables[(entry & kPlaceMask) + (place >> 3 * kCellLevels & isTable)];
  }
}

void CellMap::MapRow(const std::uint8_t* pixels, std::uint32_t width, std::uint8_t* dest) const {
  if (tree_.source.pixelBytes == 3) {
    MapPixels<3>(pixels, width, dest);
  } else {
    MapPixels<4>(pixels, width, dest);
  }
}

}  // namespace glib
