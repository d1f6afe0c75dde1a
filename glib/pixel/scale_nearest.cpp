#include <algorithm>
#include <cstring>
#include <vector>

#include "glib/pixel/scale_routes.h"
#include "glib/pixel/stream_row.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "glib/pixel/scale_nearest.cpp"
#include "hwy/foreach_target.h"
//
#include "hwy/cache_control.h"
#include "hwy/highway.h"

#ifndef GLIB_PIXEL_SCALE_NEAREST_CPP_ONCE_
#define GLIB_PIXEL_SCALE_NEAREST_CPP_ONCE_
namespace glib {
namespace {

constexpr std::size_t kPickBytes = 16;           // a pick writes so many
constexpr std::size_t kWindow = 2 * kPickBytes;  // and takes them from so many

// Neighbouring target pixels from one window of a source row.
struct Pick {
  std::uint32_t window;             // where it begins, in bytes
  std::uint8_t places[kPickBytes];  // of each byte: 0 to 15 in the window's first half, 128 to 143 in its second
};

}  // namespace
}  // namespace glib
#endif  // GLIB_PIXEL_SCALE_NEAREST_CPP_ONCE_

HWY_BEFORE_NAMESPACE();
namespace glib {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// `count` picks to places `step` bytes apart; each writes 16 bytes, of which the next may write the last again.
#if HWY_TARGET == HWY_SCALAR

void PickWindows(const std::uint8_t* source, const Pick* picks, std::size_t count, std::size_t step,
                 std::uint8_t* target) {
  for (std::size_t i = 0; i < count; ++i, target += step) {
    const std::uint8_t* window = source + picks[i].window;
    for (std::size_t j = 0; j < kPickBytes; ++j) {
      const std::size_t place = picks[i].places[j];
      target[j] = window[place < 0x80 ? place : place - 0x80 + kPickBytes];
    }
  }
}

#else

void PickWindows(const std::uint8_t* source, const Pick* picks, std::size_t count, std::size_t step,
                 std::uint8_t* target) {
  const hn::FixedTag<std::uint8_t, kPickBytes> d;
  const auto other = hn::Set(d, std::uint8_t{0x80});
  constexpr std::size_t kAhead = 2048;  // reading waits for memory otherwise while a finished row goes out
  for (std::size_t i = 0; i < count; ++i, target += step) {
    const std::uint8_t* window = source + picks[i].window;
    hwy::Prefetch(window + kAhead);
    const auto places = hn::LoadU(d, picks[i].places);
    const auto first = hn::TableLookupBytesOr0(hn::LoadU(d, window), places);
    const auto second = hn::TableLookupBytesOr0(hn::LoadU(d, window + kPickBytes), hn::Xor(places, other));
    hn::StoreU(hn::Or(first, second), d, target);
  }
}

#endif

}  // namespace HWY_NAMESPACE
}  // namespace glib
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace glib {

HWY_EXPORT(PickWindows);

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

// Pixels of whole bytes, from target column `begin` on.
template <std::size_t kBytes>
void PickPixels(const std::uint8_t* source, std::uint8_t* target, const Columns& columns, std::size_t begin) {
  for (std::size_t x = begin; x < columns.size(); ++x) {
    std::memcpy(target + x * kBytes, source + columns[x] * kBytes, kBytes);
  }
}

void PickHalves(const std::uint8_t* source, std::uint8_t* target, const Columns& columns, std::size_t) {
  for (std::size_t x = 0; x < columns.size(); ++x) {
    const std::uint32_t column = columns[x];
    const std::uint32_t index = column % 2 == 0 ? source[column / 2] >> 4 : source[column / 2] & 15U;
    target[x / 2] = static_cast<std::uint8_t>(x % 2 == 0 ? index << 4 : target[x / 2] | index);
  }
}

void PickBits(const std::uint8_t* source, std::uint8_t* target, const Columns& columns, std::size_t) {
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
      return PickPixels<4>;
    case 24:
      return PickPixels<3>;
    case 8:
      return PickPixels<1>;
    case 4:
      return PickHalves;
    default:
      return PickBits;
  }
}

// The picks of a row, as long as none needs more of the source than a window, and none writes behind the target row.
std::vector<Pick> PicksOf(const Columns& columns, std::size_t sourceWidth, std::size_t pixelBytes) {
  std::vector<Pick> picks;
  const std::size_t pixels = kPickBytes / pixelBytes;
  const std::size_t sourceBytes = sourceWidth * pixelBytes;
  if (sourceBytes < kWindow) return picks;
  for (std::size_t x = 0; x * pixelBytes + kPickBytes <= columns.size() * pixelBytes; x += pixels) {
    const std::size_t window = std::min(columns[x] * pixelBytes, sourceBytes - kWindow);
    if ((columns[x + pixels - 1] + 1) * pixelBytes - window > kWindow) break;
    Pick pick{static_cast<std::uint32_t>(window), {}};
    for (std::size_t i = 0; i < pixels * pixelBytes; ++i) {
      const std::size_t place = columns[x + i / pixelBytes] * pixelBytes + i % pixelBytes - window;
      pick.places[i] = static_cast<std::uint8_t>(place < kPickBytes ? place : place - kPickBytes + 0x80);
    }
    picks.push_back(pick);
  }
  return picks;
}

}  // namespace

void ScaleNearest(const RasterView& source, const ScaleTarget& target, RowReports& reports) {
  const Columns columns = Positions(source.width, target.width);
  const Columns rows = Positions(source.height, target.height);
  const std::size_t sourceStride =
      PaddedStride(static_cast<std::size_t>(source.width), static_cast<std::size_t>(source.bits));
  const auto pickRest = PickerFor(source.bits);
  const std::size_t pixelBytes = static_cast<std::size_t>(source.bits) / 8;
  const std::size_t step = pixelBytes == 0 ? 0 : kPickBytes / pixelBytes;  // pixels
  const auto picks =
      pixelBytes == 0 ? std::vector<Pick>() : PicksOf(columns, static_cast<std::size_t>(source.width), pixelBytes);
  const auto pick = [&](const std::uint8_t* from, std::uint8_t* to) {
    HWY_DYNAMIC_DISPATCH(PickWindows)(from, picks.data(), picks.size(), step * pixelBytes, to);
    pickRest(from, to, columns, picks.size() * step);
  };
  // A large target goes out by way of one row that stays in the caches.
  const bool stream = target.stride * static_cast<std::size_t>(target.height) >= kStreamFrom;
  std::vector<std::uint32_t> row(stream ? target.stride / sizeof(std::uint32_t) : 0);
  for (std::int32_t y = 0; y < target.height; ++y) {
    if (reports.DueFirst(static_cast<std::uint32_t>(y)) && !reports.Send(y + 1)) return;
    const std::uint32_t sourceRow = rows[static_cast<std::size_t>(y)];
    const bool again = y > 0 && sourceRow == rows[static_cast<std::size_t>(y) - 1];
    const std::uint8_t* from = source.pixels + sourceRow * sourceStride;
    if (stream) {
      if (!again) pick(from, reinterpret_cast<std::uint8_t*>(row.data()));
      StreamWords(row.data(), target.Words(y), row.size());
    } else if (again) {
      std::memcpy(target.Row(y), target.Row(y - 1), target.stride);
    } else {
      pick(from, target.Row(y));
    }
  }
  if (stream) StreamEnd();
}

}  // namespace glib
#endif  // HWY_ONCE
