#include "modules/common/upright_rows.h"

#include <algorithm>
#include <cstring>

#include "glib/raster/raster_block.h"

namespace modules {
namespace {

// Enough for whole cache lines in the page's columns, few enough for the buffer's lines to stay in the first cache.
constexpr std::uint32_t kRowsWaiting = 64;

std::uint32_t SmallPixel(const std::uint8_t* row, std::uint32_t x, std::uint32_t bits) {
  const std::uint32_t bit = x * bits;
  return row[bit / 8] >> (8 - bits - bit % 8) & ((1U << bits) - 1);
}

void PutSmallPixel(std::uint8_t* row, std::uint32_t x, std::uint32_t bits, std::uint32_t value) {
  const std::uint32_t bit = x * bits;
  const std::uint32_t shift = 8 - bits - bit % 8;
  const std::uint32_t mask = ((1U << bits) - 1) << shift;
  row[bit / 8] = static_cast<std::uint8_t>((row[bit / 8] & ~mask) | value << shift);
}

template <std::size_t kBytes>
void MirrorPixels(std::uint8_t* row, std::uint32_t width) {
  std::uint8_t* left = row;
  std::uint8_t* right = row + (std::size_t{width} - 1) * kBytes;
  for (; left < right; left += kBytes, right -= kBytes) std::swap_ranges(left, left + kBytes, right);
}

void MirrorRow(std::uint8_t* row, std::uint32_t width, std::uint32_t bits) {
  if (bits == 8) return MirrorPixels<1>(row, width);
  if (bits == 24) return MirrorPixels<3>(row, width);
  if (bits == 32) return MirrorPixels<4>(row, width);
  for (std::uint32_t left = 0, right = width - 1; left < right; ++left, --right) {
    const std::uint32_t pixel = SmallPixel(row, left, bits);
    PutSmallPixel(row, left, bits, SmallPixel(row, right, bits));
    PutSmallPixel(row, right, bits, pixel);
  }
}

// One pixel of each of `rows` rows, which are `step` bytes apart, to neighbouring pixels. `from` may be read one byte
// past its pixels.
template <std::size_t kBytes>
void TurnColumn(const std::uint8_t* from, std::ptrdiff_t step, std::uint32_t rows, std::uint8_t* to) {
  // Three bytes cost two stores, four cost one; the next pixel puts the fourth right.
  for (; kBytes == 3 && rows > 1; --rows, from += step, to += kBytes) std::memcpy(to, from, 4);
  for (; rows != 0; --rows, from += step, to += kBytes) std::memcpy(to, from, kBytes);
}

}  // namespace

UprightRows::UprightRows(Page& page, std::uint32_t orientation)
    : page_(page),
      orientation_(orientation >= 1 && orientation <= 8 ? orientation : 1),
      storedWidth_(static_cast<std::uint32_t>(ExchangesSides(orientation_) ? page.height : page.width)),
      storedHeight_(static_cast<std::uint32_t>(ExchangesSides(orientation_) ? page.width : page.height)) {
  if (!ExchangesSides(orientation_)) return;
  // An odd number of cache lines, so that a column of the buffer spreads over all sets of the cache.
  const std::size_t lines = (glib::PaddedStride(storedWidth_, static_cast<std::size_t>(page.bits)) + 63) / 64;
  waitingStride_ = (lines | 1) * 64;
  buffer_ = std::make_unique<std::uint8_t[]>(waitingStride_ * kRowsWaiting + 1);
}

std::uint8_t* UprightRows::NextRow() {
  if (ExchangesSides(orientation_)) return buffer_.get() + waiting_ * waitingStride_;
  return Row(page_, orientation_ <= 2 ? rowsDone_ : storedHeight_ - 1 - rowsDone_);
}

void UprightRows::RowDone() {
  if (orientation_ == 2 || orientation_ == 3)
    MirrorRow(NextRow(), storedWidth_, static_cast<std::uint32_t>(page_.bits));
  ++rowsDone_;
  if (!ExchangesSides(orientation_)) return;
  if (++waiting_ == kRowsWaiting || rowsDone_ == storedHeight_) TurnWaiting();
}

void UprightRows::Finish() {
  if (waiting_ != 0) TurnWaiting();
}

void UprightRows::TurnWaiting() {
  const auto bits = static_cast<std::uint32_t>(page_.bits);
  const bool upwards = orientation_ == 7 || orientation_ == 8;    // stored columns become rows from the bottom
  const bool backwards = orientation_ == 6 || orientation_ == 7;  // stored rows become columns from the right
  const std::uint32_t column = backwards ? storedHeight_ - rowsDone_ : rowsDone_ - waiting_;
  // Columns are filled from the left, whichever way that goes through the waiting rows.
  const std::uint8_t* firstRow = buffer_.get() + (backwards ? (waiting_ - 1) * waitingStride_ : 0);
  const auto stride = static_cast<std::ptrdiff_t>(waitingStride_);
  const std::ptrdiff_t step = backwards ? -stride : stride;
  for (std::size_t x = 0; x < storedWidth_; ++x) {
    const auto row = static_cast<std::uint32_t>(x);
    std::uint8_t* to = Row(page_, upwards ? storedWidth_ - 1 - row : row);
    switch (bits) {
      case 8:
        TurnColumn<1>(firstRow + x, step, waiting_, to + column);
        break;
      case 24:
        TurnColumn<3>(firstRow + x * 3, step, waiting_, to + std::size_t{column} * 3);
        break;
      case 32:
        TurnColumn<4>(firstRow + x * 4, step, waiting_, to + std::size_t{column} * 4);
        break;
      default:
        for (std::uint32_t i = 0; i < waiting_; ++i) {
          PutSmallPixel(to, column + i, bits, SmallPixel(firstRow + i * step, row, bits));
        }
    }
  }
  waiting_ = 0;
}

}  // namespace modules
