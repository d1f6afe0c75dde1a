#include "glib/pixel/word_rows.h"

#include <cstring>

namespace glib {
namespace {

constexpr std::uint32_t kOpaque = 0xFF000000U;

void ExpandTriples(const std::uint8_t* source, std::uint32_t* target, std::int32_t width) {
  std::int32_t x = 0;
  // Four bytes at a time, the fourth covered by alpha; the last pixel has no fourth byte to read.
  for (; x + 1 < width; ++x) {
    std::uint32_t word;
    std::memcpy(&word, source + 3 * x, sizeof(word));
    target[x] = word | kOpaque;
  }
  if (x < width) {
    const std::uint8_t* at = source + 3 * x;
    target[x] = at[0] | static_cast<std::uint32_t>(at[1]) << 8 | static_cast<std::uint32_t>(at[2]) << 16 | kOpaque;
  }
}

void ExpandIndices(const RasterView& raster, std::int32_t y, std::uint32_t* target) {
  const std::uint8_t* row = raster.Row(y);
  for (std::int32_t x = 0; x < raster.width; ++x) {
    std::uint32_t index = 0;
    switch (raster.bits) {
      case 8:
        index = row[x];
        break;
      case 4:
        index = x % 2 == 0 ? row[x / 2] >> 4 : row[x / 2] & 15U;
        break;
      default:
        index = row[x / 8] >> (7 - x % 8) & 1U;
    }
    target[x] = raster.palette[index];
  }
}

}  // namespace

WordRows::WordRows(const RasterView& source) : source_(source) {
  if (source.bits == 32) return;
  for (auto& row : rows_) row.resize(static_cast<std::size_t>(source.width));
}

const std::uint32_t* WordRows::Row(std::int32_t y) {
  if (source_.bits == 32) return reinterpret_cast<const std::uint32_t*>(source_.Row(y));
  for (int i = 0; i < 2; ++i) {
    if (held_[i] == y) {
      next_ = 1 - i;
      return rows_[i].data();
    }
  }
  std::uint32_t* target = rows_[next_].data();
  held_[next_] = y;
  next_ = 1 - next_;
  if (source_.bits == 24) {
    ExpandTriples(source_.Row(y), target, source_.width);
  } else {
    ExpandIndices(source_, y, target);
  }
  return target;
}

}  // namespace glib
