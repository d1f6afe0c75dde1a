#include <algorithm>
#include <cstddef>

#include "glib/pixel/rotate_rows.h"
#include "glib/pixel/stream_row.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "glib/pixel/rotate_right_angles.cpp"
#include "hwy/foreach_target.h"
//
#include "hwy/cache_control.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace glib {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// Columns `x0` up to `x1` of rows `y0` up to `y1` become rows: source pixel (x, y) goes to target[x x `targetRow` + y x
// `along`], `along` being 1 or -1. Strides are in pixels and may be negative.
void TurnBlockPlain(const std::uint32_t* source, std::ptrdiff_t sourceRow, std::ptrdiff_t x0, std::ptrdiff_t x1,
                    std::ptrdiff_t y0, std::ptrdiff_t y1, std::uint32_t* target, std::ptrdiff_t targetRow,
                    std::ptrdiff_t along) {
  for (std::ptrdiff_t x = x0; x < x1; ++x) {
    for (std::ptrdiff_t y = y0; y < y1; ++y) target[x * targetRow + y * along] = source[y * sourceRow + x];
  }
}

#if HWY_TARGET == HWY_SCALAR

void TurnBlock(const std::uint32_t* source, std::ptrdiff_t sourceRow, std::ptrdiff_t x0, std::ptrdiff_t x1,
               std::ptrdiff_t y0, std::ptrdiff_t y1, std::uint32_t* target, std::ptrdiff_t targetRow,
               std::ptrdiff_t along) {
  TurnBlockPlain(source, sourceRow, x0, x1, y0, y1, target, targetRow, along);
}

#else

// The same, four by four pixels in registers.
void TurnBlock(const std::uint32_t* source, std::ptrdiff_t sourceRow, std::ptrdiff_t x0, std::ptrdiff_t x1,
               std::ptrdiff_t y0, std::ptrdiff_t y1, std::uint32_t* target, std::ptrdiff_t targetRow,
               std::ptrdiff_t along) {
  const hn::FixedTag<std::uint32_t, 4> d;
  const hn::FixedTag<std::uint64_t, 2> d64;
  const std::ptrdiff_t xEnd = x0 + (x1 - x0) / 4 * 4;
  const std::ptrdiff_t yEnd = y0 + (y1 - y0) / 4 * 4;
  // In the order of the target's columns: from the lowest row up, or from the highest down.
  const std::ptrdiff_t firstRow = along > 0 ? 0 : 3;
  for (std::ptrdiff_t y = y0; y < yEnd; y += 4) {
    const std::uint32_t* from = source + (y + firstRow) * sourceRow;
    const std::ptrdiff_t next = along * sourceRow;
    std::uint32_t* to = target + (along > 0 ? y : -(y + 3));
    for (std::ptrdiff_t x = x0; x < xEnd; x += 4) {
      const auto a = hn::LoadU(d, from + x);
      const auto b = hn::LoadU(d, from + x + next);
      const auto c = hn::LoadU(d, from + x + 2 * next);
      const auto e = hn::LoadU(d, from + x + 3 * next);
      const auto ab01 = hn::BitCast(d64, hn::InterleaveLower(d, a, b));
      const auto ab23 = hn::BitCast(d64, hn::InterleaveUpper(d, a, b));
      const auto ce01 = hn::BitCast(d64, hn::InterleaveLower(d, c, e));
      const auto ce23 = hn::BitCast(d64, hn::InterleaveUpper(d, c, e));
      hn::StoreU(hn::BitCast(d, hn::InterleaveLower(d64, ab01, ce01)), d, to + x * targetRow);
      hn::StoreU(hn::BitCast(d, hn::InterleaveUpper(d64, ab01, ce01)), d, to + (x + 1) * targetRow);
      hn::StoreU(hn::BitCast(d, hn::InterleaveLower(d64, ab23, ce23)), d, to + (x + 2) * targetRow);
      hn::StoreU(hn::BitCast(d, hn::InterleaveUpper(d64, ab23, ce23)), d, to + (x + 3) * targetRow);
    }
  }
  TurnBlockPlain(source, sourceRow, xEnd, x1, y0, yEnd, target, targetRow, along);
  TurnBlockPlain(source, sourceRow, x0, x1, yEnd, y1, target, targetRow, along);
}

#endif

// Rows `first` up to `end` by way of a block near the processor, from which long pieces of target rows go out. The
// block draws one line of memory from each of many rows, which no processor foresees: the lines of the next block are
// asked for while this one is turned.
void TurnInBlocks(const std::uint32_t* source, std::ptrdiff_t width, std::ptrdiff_t first, std::ptrdiff_t end,
                  std::uint32_t* target, std::ptrdiff_t targetRow, std::ptrdiff_t along, bool stream) {
  constexpr std::ptrdiff_t kColumns = 16;
  constexpr std::ptrdiff_t kRows = 512;
  constexpr std::ptrdiff_t kStripe = 8;
  HWY_ALIGN std::uint32_t block[kColumns * kRows];
  for (std::ptrdiff_t y = first; y < end; y += kRows) {
    const std::ptrdiff_t rows = std::min(kRows, end - y);
    const std::ptrdiff_t lowest = along > 0 ? y : -(y + rows - 1);  // of the target columns of these rows
    for (std::ptrdiff_t x = 0; x < width; x += kColumns) {
      const std::ptrdiff_t columns = std::min(kColumns, width - x);
      const std::uint32_t* from = source + y * width + x;
      std::uint32_t* corner = along > 0 ? block : block + (rows - 1);
      for (std::ptrdiff_t top = 0; top < rows; top += kStripe) {
        const std::ptrdiff_t bottom = std::min(top + kStripe, rows);
        if (x + kColumns < width) {
          for (std::ptrdiff_t i = top; i < bottom; ++i) hwy::Prefetch(from + i * width + kColumns);
        }
        TurnBlock(from, width, 0, columns, top, bottom, corner, kRows, along);
      }
      for (std::ptrdiff_t i = 0; i < columns; ++i) {
        std::uint32_t* to = target + (x + i) * targetRow + lowest;
        if (stream) {
          StreamWords(block + i * kRows, to, static_cast<std::size_t>(rows));
        } else {
          std::copy_n(block + i * kRows, rows, to);
        }
      }
    }
  }
  if (stream) StreamEnd();
}

// A row backwards.
void ReverseRow(const std::uint32_t* source, std::size_t width, std::uint32_t* target) {
  const hn::ScalableTag<std::uint32_t> d;
  const std::size_t lanes = hn::Lanes(d);
  std::size_t x = 0;
  for (; x + lanes <= width; x += lanes) {
    hn::StoreU(hn::Reverse(d, hn::LoadU(d, source + x)), d, target + (width - lanes - x));
  }
  for (; x < width; ++x) target[width - 1 - x] = source[x];
}

}  // namespace HWY_NAMESPACE
}  // namespace glib
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace glib {

HWY_EXPORT(TurnInBlocks);
HWY_EXPORT(ReverseRow);

namespace {

bool Streamed(std::int32_t width, std::int32_t height) {
  return std::size_t{4} * static_cast<std::size_t>(width) * static_cast<std::size_t>(height) >= kStreamFrom;
}

}  // namespace

void TurnRowsRight(const std::uint32_t* source, std::int32_t width, std::int32_t height, std::int32_t first,
                   std::int32_t end, std::uint32_t* target) {
  HWY_DYNAMIC_DISPATCH(TurnInBlocks)
  (source, width, first, end, target + (height - 1), height, -1, Streamed(width, height));
}

void TurnRowsOver(const std::uint32_t* source, std::int32_t width, std::int32_t height, std::int32_t first,
                  std::int32_t end, std::uint32_t* target) {
  const std::ptrdiff_t row = width;
  for (std::ptrdiff_t y = first; y < end; ++y) {
    HWY_DYNAMIC_DISPATCH(ReverseRow)
    (source + y * row, static_cast<std::size_t>(width), target + (height - 1 - y) * row);
  }
}

void TurnRowsLeft(const std::uint32_t* source, std::int32_t width, std::int32_t height, std::int32_t first,
                  std::int32_t end, std::uint32_t* target) {
  HWY_DYNAMIC_DISPATCH(TurnInBlocks)
  (source, width, first, end, target + std::ptrdiff_t{width - 1} * height, -std::ptrdiff_t{height}, 1,
   Streamed(width, height));
}

}  // namespace glib
#endif  // HWY_ONCE
