#include <algorithm>
#include <cstring>
#include <vector>

#include "glib/pixel/scale_routes.h"
#include "glib/pixel/stream_row.h"

namespace glib {
namespace {

// Source position of each target position. The ratio has single precision, its product double.
std::vector<std::uint32_t> Positions(std::int32_t source, std::int32_t target) {
  const float ratio = static_cast<float>(source) / static_cast<float>(target);
  std::vector<std::uint32_t> positions(static_cast<std::size_t>(target));
  for (std::int32_t i = 0; i < target; ++i) {
    const auto position = static_cast<std::int32_t>(static_cast<double>(i) * static_cast<double>(ratio));
    positions[static_cast<std::size_t>(i)] = static_cast<std::uint32_t>(std::min(position, source - 1));
  }
  return positions;
}

using Columns = std::vector<std::uint32_t>;

void PickWords(const std::uint8_t* source, std::uint8_t* target, const Columns& columns) {
  const auto* from = reinterpret_cast<const std::uint32_t*>(source);
  auto* to = reinterpret_cast<std::uint32_t*>(target);
  for (std::size_t x = 0; x < columns.size(); ++x) to[x] = from[columns[x]];
}

void PickTriples(const std::uint8_t* source, std::uint8_t* target, const Columns& columns) {
  for (const std::uint32_t column : columns) {
    std::memcpy(target, source + std::size_t{3} * column, 3);
    target += 3;
  }
}

void PickBytes(const std::uint8_t* source, std::uint8_t* target, const Columns& columns) {
  for (std::size_t x = 0; x < columns.size(); ++x) target[x] = source[columns[x]];
}

void PickHalves(const std::uint8_t* source, std::uint8_t* target, const Columns& columns) {
  for (std::size_t x = 0; x < columns.size(); ++x) {
    const std::uint32_t column = columns[x];
    const std::uint32_t index = column % 2 == 0 ? source[column / 2] >> 4 : source[column / 2] & 15U;
    target[x / 2] = static_cast<std::uint8_t>(x % 2 == 0 ? index << 4 : target[x / 2] | index);
  }
}

void PickBits(const std::uint8_t* source, std::uint8_t* target, const Columns& columns) {
  std::uint32_t byte = 0;
  for (std::size_t x = 0; x < columns.size(); ++x) {
    const std::uint32_t column = columns[x];
    byte |= (source[column / 8] >> (7 - column % 8) & 1U) << (7 - x % 8);
    if (x % 8 == 7 || x + 1 == columns.size()) {
      target[x / 8] = static_cast<std::uint8_t>(byte);
      byte = 0;
    }
  }
}

auto PickerFor(std::int32_t bits) {
  switch (bits) {
    case 32:
      return PickWords;
    case 24:
      return PickTriples;
    case 8:
      return PickBytes;
    case 4:
      return PickHalves;
    default:
      return PickBits;
  }
}

}  // namespace

void ScaleNearest(const RasterView& source, const ScaleTarget& target, RowReports& reports) {
  const Columns columns = Positions(source.width, target.width);
  const Columns rows = Positions(source.height, target.height);
  const std::size_t sourceStride =
      PaddedStride(static_cast<std::size_t>(source.width), static_cast<std::size_t>(source.bits));
  const auto pick = PickerFor(source.bits);
  // A large target goes out by way of one row that stays in the caches.
  const bool stream = target.stride * static_cast<std::size_t>(target.height) >= kStreamFrom;
  std::vector<std::uint32_t> row(stream ? target.stride / sizeof(std::uint32_t) : 0);
  for (std::int32_t y = 0; y < target.height; ++y) {
    if (reports.DueFirst(static_cast<std::uint32_t>(y)) && !reports.Send(y + 1)) return;
    const std::uint32_t sourceRow = rows[static_cast<std::size_t>(y)];
    const bool again = y > 0 && sourceRow == rows[static_cast<std::size_t>(y) - 1];
    const std::uint8_t* from = source.pixels + sourceRow * sourceStride;
    if (stream) {
      if (!again) pick(from, reinterpret_cast<std::uint8_t*>(row.data()), columns);
      StreamWords(row.data(), target.Words(y), row.size());
    } else if (again) {
      std::memcpy(target.Row(y), target.Row(y - 1), target.stride);
    } else {
      pick(from, target.Row(y), columns);
    }
  }
  if (stream) StreamEnd();
}

}  // namespace glib
