#include "glib/pixel/word_rows.h"

#include <cstddef>

#include "glib/pixel/depth_rows.h"

namespace glib {

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
  const auto count = static_cast<std::size_t>(source_.width);
  switch (source_.bits) {
    case 24:
      WidenRow(target, source_.Row(y), count);
      break;
    case 8:
      ExpandBytes(target, source_.Row(y), source_.palette, count);
      break;
    case 4:
      ExpandNibbles(target, source_.Row(y), source_.palette, count);
      break;
    default:
      ExpandBits(target, source_.Row(y), source_.palette, count);
  }
  return target;
}

}  // namespace glib
