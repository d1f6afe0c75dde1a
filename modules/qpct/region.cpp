#include "modules/qpct/region.h"

#include <algorithm>

#include "modules/qpct/picture_header.h"

namespace qpct {
namespace {

constexpr std::size_t kBoxOnly = 10;  // bytes of a region that is a rectangle
constexpr std::size_t kMaxBoxes = 65536;
constexpr std::int16_t kEndMark = 0x7FFF;

// Columns at which a row changes between in and out: each that is listed comes or goes.
void Toggle(std::vector<std::int16_t>& columns, std::int16_t x) {
  const auto at = std::lower_bound(columns.begin(), columns.end(), x);
  if (at != columns.end() && *at == x) {
    columns.erase(at);
  } else {
    columns.insert(at, x);
  }
}

}  // namespace

std::vector<platform::Box> ReadRegion(modules::ByteReader& in) {
  const std::size_t size = in.BigWord();
  modules::ByteReader region(in.Take(size < 2 ? 0 : size - 2));
  const platform::Box around = ReadBox(region);
  if (size <= kBoxOnly) return {around};
  std::vector<platform::Box> boxes;
  std::vector<std::int16_t> columns;
  std::int16_t top = 0;
  while (region.Left() >= 2) {
    const std::int16_t y = region.SignedBigWord();
    for (std::size_t i = 0; i + 1 < columns.size(); i += 2) boxes.push_back({columns[i], top, columns[i + 1], y});
    if (boxes.size() > kMaxBoxes || columns.size() > 4096) return {around};
    if (y == kEndMark) break;
    top = y;
    while (region.Left() >= 2) {
      const std::int16_t x = region.SignedBigWord();
      if (x == kEndMark) break;
      Toggle(columns, x);
    }
  }
  if (boxes.empty()) return {around};
  return boxes;
}

}  // namespace qpct
