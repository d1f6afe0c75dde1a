#include "modules/qpct/pixel_map.h"

#include <algorithm>
#include <cstring>

#include "modules/qpct/picture_header.h"

namespace qpct {
namespace {

constexpr std::uint32_t kPackedFrom = 8;        // shorter rows are never packed
constexpr std::uint32_t kLongCountsFrom = 251;  // bytes of a row whose packed size takes a word
constexpr std::uint32_t kPixMapFlag = 0x8000;

enum Packing : std::uint32_t { kDefaultPacking = 0, kNotPacked = 1, kWithoutPad = 2, kByPixels = 3, kByComponents = 4 };

std::uint32_t Opaque(std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
  return 0xFF000000 | red << 16 | green << 8 | blue;
}

void ReadColorTable(modules::ByteReader& in, PixelMap& map) {
  constexpr std::uint32_t kInOrder = 0x8000;
  in.Skip(4);
  const bool inOrder = (in.BigWord() & kInOrder) != 0;
  const std::uint32_t count = in.BigWord() + std::uint32_t{1};
  map.paletteEntries = 0;
  for (std::uint32_t i = 0; i < count && !in.Failed(); ++i) {
    const std::uint32_t value = in.BigWord();
    const std::uint32_t red = in.BigWord() >> 8;
    const std::uint32_t green = in.BigWord() >> 8;
    const std::uint32_t blue = in.BigWord() >> 8;
    const std::uint32_t index = inOrder ? i : value;
    if (index > 255) continue;
    map.palette[index] = Opaque(red, green, blue);
    map.paletteEntries = std::max(map.paletteEntries, index + 1);
  }
}

// Runs of pieces of `unit` bytes: a count below 128 is followed by one more piece than that as they are, one above by a
// piece that is repeated.
void Unpack(modules::ByteReader in, std::uint32_t unit, std::uint8_t* row, std::size_t size) {
  std::size_t done = 0;
  while (done < size && !in.AtEnd()) {
    const std::uint32_t count = in.Byte();
    if (count < 128) {
      done += in.Read(row + done, std::min<std::size_t>((count + 1) * unit, size - done));
    } else if (count > 128) {
      std::uint8_t piece[2] = {};
      if (in.Read(piece, unit) != unit) return;
      for (std::uint32_t i = 0; i < (257 - count) * unit && done < size; ++i) row[done++] = piece[i % unit];
    }
  }
}

// Two bits a pixel into four.
void WidenRow(const std::uint8_t* from, std::uint32_t width, std::uint8_t* to) {
  for (std::uint32_t x = 0; x < width; ++x) {
    const std::uint32_t value = from[x / 4] >> (6 - x % 4 * 2) & 3U;
    to[x / 2] = static_cast<std::uint8_t>(to[x / 2] | value << (x % 2 == 0 ? 4 : 0));
  }
}

void Row16(const std::uint8_t* from, std::uint32_t width, std::uint8_t* to) {
  const auto wide = [](std::uint32_t value) {
    value &= 31U;
    return static_cast<std::uint8_t>(value << 3 | value >> 2);
  };
  for (std::uint32_t x = 0; x < width; ++x, from += 2, to += 3) {
    const auto pixel = static_cast<std::uint32_t>(from[0] << 8 | from[1]);
    to[0] = wide(pixel);
    to[1] = wide(pixel >> 5);
    to[2] = wide(pixel >> 10);
  }
}

// Red, green and blue stand `step` bytes apart, those of the next pixel `next` bytes further.
void Row32(const std::uint8_t* red, std::size_t step, std::size_t next, std::uint32_t width, std::uint8_t* to) {
  for (std::uint32_t x = 0; x < width; ++x, red += next, to += 3) {
    to[0] = red[2 * step];
    to[1] = red[step];
    to[2] = red[0];
  }
}

std::uint32_t PackingOf(const PixelMap& map, bool packed) {
  if (!packed || map.rowBytes < kPackedFrom || map.packing == kNotPacked) return kNotPacked;
  if (!map.direct) return kDefaultPacking;
  if (map.packing == kWithoutPad && map.pixelBits == 32) return kWithoutPad;
  return map.pixelBits == 16 ? kByPixels : kByComponents;
}

// Bytes of a row as they stand unpacked.
std::size_t StoredRow(const PixelMap& map, std::uint32_t packing) {
  if (packing == kWithoutPad) return std::size_t{3} * map.Width();
  if (packing == kByComponents) return std::size_t{map.components} * map.Width();
  return map.rowBytes;
}

void ConvertRow(const PixelMap& map, std::uint32_t packing, const std::uint8_t* row, modules::Picture& picture,
                std::uint32_t y) {
  const std::uint32_t width = map.Width();
  std::uint8_t* to = picture.Row(y);
  if (map.pixelBits == 2) return WidenRow(row, width, to);
  if (map.pixelBits <= 8) {
    std::memcpy(to, row, (std::size_t{width} * map.pixelBits + 7) / 8);
  } else if (map.pixelBits == 16) {
    Row16(row, width, to);
  } else if (packing == kByComponents) {
    Row32(row + (map.components == 4 ? width : 0), width, 1, width, to);
  } else if (packing == kWithoutPad) {
    Row32(row, 1, 3, width, to);
  } else {
    Row32(row + 1, 1, 4, width, to);
  }
}

}  // namespace

bool ReadPixelMap(modules::ByteReader& in, bool direct, PixelMap& map) {
  map.direct = direct;
  if (direct) in.Skip(4);
  const std::uint32_t rowBytes = in.BigWord();
  map.oldBitmap = !direct && (rowBytes & kPixMapFlag) == 0;
  map.rowBytes = rowBytes & 0x7FFF;
  map.bounds = ReadBox(in);
  if (!map.oldBitmap) {
    in.Skip(2);
    map.packing = in.BigWord();
    in.Skip(4 + 4 + 4 + 2);
    map.pixelBits = in.BigWord();
    map.components = in.BigWord();
    in.Skip(2 + 4 + 4 + 4);
    if (!direct) ReadColorTable(in, map);
  }
  if (in.Failed() || map.bounds.right <= map.bounds.left || map.bounds.bottom <= map.bounds.top) return false;
  const std::uint32_t bits = map.pixelBits;
  const bool known = direct ? bits == 16 || bits == 32 : bits == 1 || bits == 2 || bits == 4 || bits == 8;
  if (!known || (direct && bits == 32 && map.components != 3 && map.components != 4)) return false;
  return modules::SizeAllowed(map.Width(), map.Height()) && map.rowBytes >= (std::size_t{map.Width()} * bits + 7) / 8;
}

bool ReadPixels(modules::ByteReader& in, const PixelMap& map, bool packed, modules::Picture& picture,
                std::uint32_t& rows) {
  const std::uint32_t packing = PackingOf(map, packed);
  rows = 0;
  // A row is at least its count.
  if (map.Height() > in.Left() + 1 && !modules::SizeBelievable(map.Width(), map.Height(), in.Left())) return false;
  if (!picture.Allocate(map.Width(), map.Height(), map.direct ? 24 : map.pixelBits == 2 ? 4 : map.pixelBits)) {
    return false;
  }
  std::copy(std::begin(map.palette), std::end(map.palette), picture.palette);
  picture.paletteEntries = std::min(map.paletteEntries, std::uint32_t{1} << std::min(picture.bits, 8U));
  const bool plain = packing == kNotPacked || packing == kWithoutPad;
  std::vector<std::uint8_t> row(StoredRow(map, packing));
  for (std::uint32_t y = 0; y < map.Height() && !in.AtEnd(); ++y) {
    std::fill(row.begin(), row.end(), std::uint8_t{0});
    if (plain) {
      if (in.Read(row.data(), row.size()) < row.size()) break;
    } else {
      const std::size_t size = map.rowBytes >= kLongCountsFrom ? in.BigWord() : in.Byte();
      const bool whole = size <= in.Left();
      Unpack(modules::ByteReader(in.Take(size)), packing == kByPixels ? 2 : 1, row.data(), row.size());
      if (!whole) break;
    }
    ConvertRow(map, packing, row.data(), picture, y);
    ++rows;
  }
  return rows != 0;
}

}  // namespace qpct
