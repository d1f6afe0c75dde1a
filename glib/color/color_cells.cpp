#include "glib/color/color_cells.h"

#include <new>

namespace glib {
namespace {

// A packed word: the cell in bits 0 to 14 (clear in the store), three sums of 13 bits of how far values stand above
// the multiple of 8 below their part, and a count of 10 bits on top. One table read a channel gives its share of all.
constexpr std::uint32_t kSumBits = 13;
constexpr std::uint32_t kCellMask = kCellCount - 1;
constexpr std::uint32_t kCountShift = 3 * kCellLevels + 3 * kSumBits;
constexpr std::uint64_t kSumMask = (std::uint64_t{1} << kSumBits) - 1;
// A word is emptied when the top bit of its count is set.
constexpr std::uint64_t kFull = std::uint64_t{1} << 63;
static_assert(kCountShift + 10 == 64 && (8U << 9) <= kSumMask, "512 values of at most 8 above their base fit a sum");

using PackTable = std::array<std::array<std::uint64_t, 256>, 3>;

constexpr PackTable MakePackTable() {
  PackTable table{};
  for (std::uint32_t channel = 0; channel < 3; ++channel) {
    for (std::uint32_t value = 0; value < 256; ++value) {
      const std::uint32_t part = CellPart(value);
      const std::uint64_t above = value - 8 * part;
      table[channel][value] = CellDigits(part) << channel | above << (3 * kCellLevels + channel * kSumBits);
      if (channel == 2) table[channel][value] |= std::uint64_t{1} << kCountShift;
    }
  }
  return table;
}

constexpr PackTable kPack = MakePackTable();

void AddPacked(ColorSums& sums, std::uint64_t packed, std::uint32_t cell) {
  const std::uint64_t count = packed >> kCountShift;
  sums.count += static_cast<std::uint32_t>(count);
  for (std::uint32_t channel = 0; channel < 3; ++channel) {
    sums.sums[channel] +=
        (packed >> (3 * kCellLevels + channel * kSumBits) & kSumMask) + count * 8 * PartOfCell(cell, channel);
  }
}

}  // namespace

bool ColorCells::Allocate() {
  for (auto& packed : packed_) packed.reset(new (std::nothrow) std::uint64_t[kCellCount]());
  totals_.reset(new (std::nothrow) ColorSums[kCellCount]);
  return packed_[0] != nullptr && packed_[1] != nullptr && totals_ != nullptr;
}

void ColorCells::Flush(std::uint64_t& packed, std::uint32_t cell) {
  AddPacked(totals_[cell], packed, cell);
  packed = 0;
}

template <std::size_t kBytes>
void ColorCells::AddPixels(const std::uint8_t* pixels, std::size_t count) {
  const auto add = [this](std::uint64_t* store, const std::uint8_t* pixel) {
    const std::uint64_t word = kPack[0][pixel[0]] + kPack[1][pixel[1]] + kPack[2][pixel[2]];
    const std::uint64_t cell = word & kCellMask;
    const std::uint64_t sum = store[cell] + (word - cell);
    store[cell] = sum;
    if ((sum & kFull) != 0) Flush(store[cell], static_cast<std::uint32_t>(cell));
  };
  std::uint64_t* even = packed_[0].get();
  std::uint64_t* odd = packed_[1].get();
  for (std::size_t i = 0; i < count / 2; ++i, pixels += 2 * kBytes) {
    add(even, pixels);
    add(odd, pixels + kBytes);
  }
  if (count % 2 != 0) add(even, pixels);
}

void ColorCells::Add(const std::uint8_t* pixels, std::size_t count, std::uint32_t pixelBytes) {
  if (pixelBytes == 3) {
    AddPixels<3>(pixels, count);
  } else {
    AddPixels<4>(pixels, count);
  }
}

std::uint32_t ColorCells::Count(std::uint32_t cell) const {
  return totals_[cell].count +
         static_cast<std::uint32_t>((packed_[0][cell] >> kCountShift) + (packed_[1][cell] >> kCountShift));
}

ColorSums ColorCells::Sums(std::uint32_t cell) const {
  ColorSums sums = totals_[cell];
  AddPacked(sums, packed_[0][cell], cell);
  AddPacked(sums, packed_[1][cell], cell);
  return sums;
}

}  // namespace glib
