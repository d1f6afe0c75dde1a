#include "glib/color/cell_map.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>

#include "glib/color/color_tree.h"

// Highway compiles this file once for each instruction set.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "glib/color/cell_map.cpp"
#include "hwy/foreach_target.h"
// After it.
#include "hwy/highway.h"

#ifndef GLIB_COLOR_CELL_MAP_SHARED_
#define GLIB_COLOR_CELL_MAP_SHARED_

namespace glib {

// Squared distances of up to kMost entries from the 8 values of each channel of a box, shifted up by 8 bits; those of
// channel 0 with the entry's index in the room that this leaves. A sum of the three is thus least for the first nearest
// entry, and says which one it is.
struct BoxDistances {
  static constexpr std::uint32_t kMost = 16;
  std::uint32_t count = 0;
  std::uint32_t squares[3][kMost][8];
};

}  // namespace glib

#endif  // GLIB_COLOR_CELL_MAP_SHARED_

HWY_BEFORE_NAMESPACE();
namespace glib {
namespace HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

// Indices of the 512 colours of a box, channel 0 running fastest.
void FillTable(const BoxDistances& distances, std::uint8_t* table) {
  const hn::CappedTag<std::uint32_t, 8> words;
  const hn::Rebind<std::uint8_t, decltype(words)> bytes;
  const auto low = hn::Set(words, 255);
  for (std::size_t z = 0; z < 8; ++z) {
    for (std::size_t y = 0; y < 8; ++y, table += 8) {
      for (std::size_t x = 0; x < 8; x += hn::Lanes(words)) {
        auto best = hn::Set(words, 0xFFFFFFFF);
        for (std::size_t i = 0; i < distances.count; ++i) {
          const auto apart = hn::Set(words, distances.squares[1][i][y] + distances.squares[2][i][z]);
          best = hn::Min(best, hn::Add(apart, hn::LoadU(words, distances.squares[0][i] + x)));
        }
        const auto index = hn::BitCast(hn::RebindToSigned<decltype(words)>(), hn::And(best, low));
        hn::StoreU(hn::DemoteTo(bytes, index), bytes, table + x);
      }
    }
  }
}

}  // namespace
}  // namespace HWY_NAMESPACE
}  // namespace glib
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace glib {

HWY_EXPORT(FillTable);

namespace {

constexpr std::uint32_t kBoxValues = 8;
constexpr std::uint32_t kTableSize = kBoxValues * kBoxValues * kBoxValues;

// Value 0 stands in a box of its own, so that all others have 8 values: it takes the last place of a row of boxes that
// begins at -7. No box reaches over the boundary of a cell.
constexpr std::uint32_t kBoxesPerChannel = 33;
constexpr std::uint32_t kBoxCount = kBoxesPerChannel * kBoxesPerChannel * kBoxesPerChannel;
constexpr std::uint32_t kBoxBits = 16;
static_assert(kBoxCount <= 1U << kBoxBits);

// Making a table costs about what so many pixels cost without one.
constexpr std::uint32_t kTableFrom = 24;

// What a box holds. The rest of the word is the place of its table, or the place of its index in the identity table
// that all other tables follow, or, for a search, the first entry and from bit 8 the last one.
constexpr std::uint32_t kIsTable = 0x80000000;
constexpr std::uint32_t kIsSearch = 0x40000000;
constexpr std::uint32_t kPlaceMask = kIsSearch - 1;
constexpr std::uint32_t kIdentitySize = 256;
static_assert(kIdentitySize + kBoxCount * kTableSize <= kPlaceMask);

// Per channel and value: the box in the low bits, the place within its table above.
using PlaceTable = std::array<std::array<std::uint32_t, 256>, 3>;

constexpr PlaceTable MakePlaceTable() {
  PlaceTable table{};
  std::uint32_t boxStep = 1;
  std::uint32_t placeStep = 1;
  for (auto& channel : table) {
    for (std::uint32_t value = 0; value < 256; ++value) {
      const std::uint32_t place = value + kBoxValues - 1;
      channel[value] = place / kBoxValues * boxStep | place % kBoxValues * placeStep << kBoxBits;
    }
    boxStep *= kBoxesPerChannel;
    placeStep *= kBoxValues;
  }
  return table;
}

constexpr PlaceTable kPlaces = MakePlaceTable();

std::int32_t Square(std::int32_t value) { return value * value; }

std::int32_t ChannelOf(std::uint32_t word, std::uint32_t channel) {
  return static_cast<std::int32_t>(word >> 8 * channel & 255);
}

// Calls `visit(box, low)`, `low` being the least value of each channel, for the boxes of a cell: one, and more where it
// holds the value 0.
template <typename Visit>
void ForBoxes(std::uint32_t cell, Visit visit) {
  const std::array<std::uint32_t, 3> parts = {PartOfCell(cell, 0), PartOfCell(cell, 1), PartOfCell(cell, 2)};
  for (std::uint32_t zeros = 0; zeros < 8; ++zeros) {
    std::uint32_t box = 0;
    std::array<std::int32_t, 3> low{};
    bool exists = true;
    for (std::uint32_t channel = 3; channel-- > 0;) {
      const bool zero = (zeros >> channel & 1) != 0;
      exists = exists && (!zero || parts[channel] == 0);
      const std::uint32_t place = zero ? 0 : parts[channel] + 1;
      box = box * kBoxesPerChannel + place;
      low[channel] = static_cast<std::int32_t>(place * kBoxValues) - 7;
    }
    if (exists) visit(box, low.data());
  }
}

// Leaves those of `count` entries that can be nearest to a colour of the box: their least distance from it is not above
// the least of all greatest distances. In rising order. `picked` has room for BoxDistances::kMost; a greater result
// means that there are more.
std::uint32_t PickCandidates(const std::uint32_t* palette, std::uint32_t first, std::uint32_t count,
                             const std::int32_t* low, std::uint8_t* picked) {
  std::int32_t least[256];
  std::int32_t bound = 0x7FFFFFFF;
  for (std::uint32_t i = 0; i < count; ++i) {
    std::int32_t near = 0;
    std::int32_t far = 0;
    for (std::uint32_t channel = 0; channel < 3; ++channel) {
      const std::int32_t above = ChannelOf(palette[first + i], channel) - low[channel];
      const std::int32_t below = static_cast<std::int32_t>(kBoxValues) - 1 - above;
      near += Square(std::min(0, std::min(above, below)));
      far += Square(std::max(above, below));
    }
    least[i] = near;
    bound = std::min(bound, far);
  }
  std::uint32_t number = 0;
  for (std::uint32_t i = 0; i < count; ++i) {
    if (least[i] > bound) continue;
    if (number < BoxDistances::kMost) picked[number] = static_cast<std::uint8_t>(first + i);
    ++number;
  }
  return number;
}

}  // namespace

bool CellMap::Build(const ColorCells& cells) {
  boxes_.reset(new (std::nothrow) std::uint32_t[kBoxCount]);
  if (boxes_ == nullptr) return false;
  const auto needsTable = [](std::uint32_t pixels, const ColorTreeNode* top) {
    return top->colorCount > 1 && pixels >= kTableFrom;
  };
  std::size_t tableCount = 0;
  for (std::uint32_t cell = 0; cell < kCellCount; ++cell) {
    const std::uint32_t pixels = cells.Count(cell);
    if (pixels == 0) continue;
    const ColorTreeNode* top = tree_.DescendToCell(cell)->parent;
    const bool table = needsTable(pixels, top);
    const std::uint32_t last = top->firstColor + top->colorCount - 1;
    ForBoxes(cell, [&](std::uint32_t box, const std::int32_t*) {
      boxes_[box] = top->colorCount == 1 ? last : kIsSearch | last << 8 | top->firstColor;
      tableCount += table ? 1 : 0;
    });
  }
  // Most of the last pages stay untouched where boxes turn out to need no table.
  tables_.reset(new (std::nothrow) std::uint8_t[kIdentitySize + tableCount * kTableSize]);
  if (tables_ == nullptr) return false;
  for (std::uint32_t i = 0; i < kIdentitySize; ++i) tables_[i] = static_cast<std::uint8_t>(i);
  std::uint32_t place = kIdentitySize;
  for (std::uint32_t cell = 0; cell < kCellCount; ++cell) {
    const std::uint32_t pixels = cells.Count(cell);
    if (pixels == 0) continue;
    const ColorTreeNode* top = tree_.DescendToCell(cell)->parent;
    if (!needsTable(pixels, top)) continue;
    ForBoxes(cell, [&](std::uint32_t box, const std::int32_t* low) {
      FillBox(box, low, top->firstColor, top->colorCount, place);
      if ((boxes_[box] & kIsTable) != 0) place += kTableSize;
    });
  }
  return true;
}

void CellMap::FillBox(std::uint32_t box, const std::int32_t* low, std::uint32_t first, std::uint32_t count,
                      std::uint32_t tablePlace) {
  std::uint8_t picked[BoxDistances::kMost];
  const std::uint32_t number = PickCandidates(tree_.palette, first, count, low, picked);
  if (number == 1) boxes_[box] = picked[0];
  if (number == 1 || number > BoxDistances::kMost) return;
  BoxDistances distances;
  distances.count = number;
  for (std::uint32_t i = 0; i < number; ++i) {
    for (std::uint32_t channel = 0; channel < 3; ++channel) {
      const std::int32_t start = low[channel] - ChannelOf(tree_.palette[picked[i]], channel);
      for (std::uint32_t x = 0; x < kBoxValues; ++x) {
        const auto square = static_cast<std::uint32_t>(Square(start + static_cast<std::int32_t>(x)));
        distances.squares[channel][i][x] = square << 8 | (channel == 0 ? picked[i] : 0U);
      }
    }
  }
  std::uint8_t* table = tables_.get() + tablePlace;
  HWY_DYNAMIC_DISPATCH(FillTable)(distances, table);
  const bool same = std::memcmp(table, table + 1, kTableSize - 1) == 0;
  boxes_[box] = same ? table[0] : kIsTable | tablePlace;
}

template <std::size_t kBytes>
void CellMap::MapPixels(const std::uint8_t* pixels, std::uint32_t width, std::uint8_t* dest) const {
  const std::uint32_t* boxes = boxes_.get();
  const std::uint8_t* tables = tables_.get();
  for (std::uint32_t x = 0; x < width; ++x, pixels += kBytes) {
    const std::uint32_t place = kPlaces[0][pixels[0]] + kPlaces[1][pixels[1]] + kPlaces[2][pixels[2]];
    const std::uint32_t entry = boxes[place & ((1U << kBoxBits) - 1)];
    if ((entry & kIsSearch) != 0) [[unlikely]] {
      const std::uint32_t first = entry & 255;
      const std::uint32_t last = entry >> 8 & 255;
      dest[x] = static_cast<std::uint8_t>(tree_.NearestOf(first, last - first + 1, pixels[0], pixels[1], pixels[2]));
      continue;
    }
    const std::uint32_t isTable = 0 - (entry >> 31);
    dest[x] = tables[(entry & kPlaceMask) + (place >> kBoxBits & isTable)];
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

#endif  // HWY_ONCE
