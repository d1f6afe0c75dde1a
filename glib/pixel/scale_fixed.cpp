// Both fixed routes: positions with 15 fractional bits, weights of 8 bits, every stage cut to whole values.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "glib/pixel/scale_routes.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "glib/pixel/scale_fixed.cpp"
#include "hwy/foreach_target.h"
//
#include "hwy/highway.h"

#ifndef GLIB_PIXEL_SCALE_FIXED_CPP_ONCE_
#define GLIB_PIXEL_SCALE_FIXED_CPP_ONCE_
namespace glib {
namespace {

constexpr std::uint32_t kOne = 0x8000;  // one pixel
constexpr std::uint32_t kWholeWeight = 256;

// Where the one or two samples of a target column of a reduction lie, ready for a load of two neighbouring pixels:
// the weight of the left one four times, then that of the right one.
struct ReduceColumn {
  std::uint32_t first;
  std::uint32_t second;
  std::uint16_t firstWeights[8];
  std::uint16_t secondWeights[8];
};

// The rows of up to two samples, each with the row below it and that one's weight.
struct ReduceRow {
  const std::uint8_t* first;
  const std::uint8_t* firstBelow;
  const std::uint8_t* second;
  const std::uint8_t* secondBelow;
  std::uint16_t firstWeight;
  std::uint16_t secondWeight;
};

}  // namespace
}  // namespace glib
#endif  // GLIB_PIXEL_SCALE_FIXED_CPP_ONCE_

HWY_BEFORE_NAMESPACE();
namespace glib {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// (lower x weight + upper x (256 - weight)) >> 8 over `count` bytes. 255 x 256 fits 16 bits.
void MixBytes(const std::uint8_t* upper, const std::uint8_t* lower, std::uint32_t weight, std::uint8_t* out,
              std::size_t count) {
  const hn::ScalableTag<std::uint16_t> d16;
  const hn::Rebind<std::int16_t, decltype(d16)> dSigned;
  const hn::Rebind<std::uint8_t, decltype(d16)> d8;
  const auto lowerWeight = hn::Set(d16, static_cast<std::uint16_t>(weight));
  const auto upperWeight = hn::Set(d16, static_cast<std::uint16_t>(kWholeWeight - weight));
  const std::size_t lanes = hn::Lanes(d16);
  std::size_t i = 0;
  for (; i + lanes <= count; i += lanes) {
    const auto u = hn::PromoteTo(d16, hn::LoadU(d8, upper + i));
    const auto l = hn::PromoteTo(d16, hn::LoadU(d8, lower + i));
    const auto sum = hn::Add(hn::Mul(l, lowerWeight), hn::Mul(u, upperWeight));
    hn::StoreU(hn::DemoteTo(d8, hn::BitCast(dSigned, hn::ShiftRight<8>(sum))), d8, out + i);
  }
  for (; i < count; ++i) {
    out[i] = static_cast<std::uint8_t>((lower[i] * weight + upper[i] * (kWholeWeight - weight)) >> 8);
  }
}

#if HWY_TARGET == HWY_SCALAR

// The plain form, for processors without vectors.
void ReduceRowFixed(const ReduceColumn* columns, std::size_t width, const ReduceRow& row, bool singleX, bool singleY,
                    std::uint32_t* out) {
  const auto sample = [](const std::uint8_t* upper, const std::uint8_t* lower, std::uint32_t weight, std::uint32_t x,
                         const std::uint16_t* weights, std::size_t channel) {
    const std::size_t at = std::size_t{4} * x + channel;
    const std::uint32_t left = (upper[at] * (kWholeWeight - weight) + lower[at] * weight) >> 8;
    const std::uint32_t right = (upper[at + 4] * (kWholeWeight - weight) + lower[at + 4] * weight) >> 8;
    return (left * weights[0] + right * weights[4]) >> 8;
  };
  auto* bytes = reinterpret_cast<std::uint8_t*>(out);
  for (std::size_t x = 0; x < width; ++x) {
    const ReduceColumn& at = columns[x];
    for (std::size_t c = 0; c < 4; ++c) {
      std::uint32_t sum = sample(row.first, row.firstBelow, row.firstWeight, at.first, at.firstWeights, c);
      if (!singleX) sum += sample(row.first, row.firstBelow, row.firstWeight, at.second, at.secondWeights, c);
      if (!singleY) {
        sum += sample(row.second, row.secondBelow, row.secondWeight, at.first, at.firstWeights, c);
        if (!singleX) sum += sample(row.second, row.secondBelow, row.secondWeight, at.second, at.secondWeights, c);
      }
      bytes[x * 4 + c] = static_cast<std::uint8_t>(sum >> ((singleX ? 0 : 1) + (singleY ? 0 : 1)));
    }
  }
}

#else

// One target row: `columns` has its `width` columns. A column's first sample counts alone if `singleX`, a row's if
// `singleY`.
template <bool kSingleX, bool kSingleY>
void ReduceRowOf(const ReduceColumn* columns, std::size_t width, const ReduceRow& row, std::uint32_t* out) {
  const hn::FixedTag<std::uint16_t, 8> d16;
  const hn::FixedTag<std::int16_t, 8> dSigned;
  const hn::FixedTag<std::uint8_t, 8> d8;
  const auto one = hn::Set(d16, static_cast<std::uint16_t>(kWholeWeight));
  const auto below1 = hn::Set(d16, row.firstWeight);
  const auto above1 = hn::Sub(one, below1);
  const auto below2 = hn::Set(d16, row.secondWeight);
  const auto above2 = hn::Sub(one, below2);

  // Two neighbouring pixels of a row and the row below, mixed: left in the lower half, right in the upper half.
  const auto pair = [&](const std::uint8_t* upper, const std::uint8_t* lower, std::uint32_t x, auto above, auto below)
                        HWY_ATTR {
                          const auto u = hn::PromoteTo(d16, hn::LoadU(d8, upper + std::size_t{4} * x));
                          const auto l = hn::PromoteTo(d16, hn::LoadU(d8, lower + std::size_t{4} * x));
                          return hn::ShiftRight<8>(hn::Add(hn::Mul(u, above), hn::Mul(l, below)));
                        };
  // The samples at a column's first place in the lower half, at its second in the upper half.
  const auto samples = [&](const ReduceColumn& column, const std::uint8_t* upper, const std::uint8_t* lower, auto above,
                           auto below) HWY_ATTR {
    const auto first = hn::Mul(pair(upper, lower, column.first, above, below), hn::LoadU(d16, column.firstWeights));
    const auto second =
        kSingleX ? first
                 : hn::Mul(pair(upper, lower, column.second, above, below), hn::LoadU(d16, column.secondWeights));
    const auto left = hn::ConcatLowerLower(d16, second, first);
    const auto right = hn::ConcatUpperUpper(d16, second, first);
    return hn::ShiftRight<8>(hn::Add(left, right));
  };
  for (std::size_t x = 0; x < width; ++x) {
    auto sum = samples(columns[x], row.first, row.firstBelow, above1, below1);
    if constexpr (!kSingleY) sum = hn::Add(sum, samples(columns[x], row.second, row.secondBelow, above2, below2));
    if constexpr (!kSingleX) sum = hn::Add(sum, hn::ConcatUpperUpper(d16, sum, sum));
    if constexpr (kSingleX != kSingleY) sum = hn::ShiftRight<1>(sum);
    if constexpr (!kSingleX && !kSingleY) sum = hn::ShiftRight<2>(sum);
    std::uint8_t bytes[8];
    hn::StoreU(hn::DemoteTo(d8, hn::BitCast(dSigned, sum)), d8, bytes);
    std::memcpy(out + x, bytes, sizeof(*out));
  }
}

void ReduceRowFixed(const ReduceColumn* columns, std::size_t width, const ReduceRow& row, bool singleX, bool singleY,
                    std::uint32_t* out) {
  if (singleX) {
    (singleY ? ReduceRowOf<true, true> : ReduceRowOf<true, false>)(columns, width, row, out);
  } else {
    (singleY ? ReduceRowOf<false, true> : ReduceRowOf<false, false>)(columns, width, row, out);
  }
}

#endif

}  // namespace HWY_NAMESPACE
}  // namespace glib
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace glib {

HWY_EXPORT(MixBytes);
HWY_EXPORT(ReduceRowFixed);

namespace {

// The four bytes of a pixel in 16-bit lanes of a 64-bit word, so that one multiplication weighs all four.
constexpr std::uint64_t kLaneMask = 0x00FF00FF00FF00FFU;

std::uint64_t Spread(std::uint32_t pixel) { return (pixel | std::uint64_t{pixel} << 24) & kLaneMask; }

std::uint32_t Pack(std::uint64_t lanes) { return static_cast<std::uint32_t>(lanes | lanes >> 24); }

// Each lane stays below 2^16: 255 x 256 at most.
std::uint64_t MixLanes(std::uint64_t a, std::uint64_t b, std::uint64_t weightOfB) {
  return (a * (kWholeWeight - weightOfB) + b * weightOfB) >> 8 & kLaneMask;
}

// One axis of an enlargement: the source position of each target position, and the weight of the pixel behind it.
struct FixedPosition {
  std::uint32_t at;
  std::uint32_t weight;
};

std::vector<FixedPosition> EnlargePositions(std::int32_t source, std::int32_t target) {
  const auto span = static_cast<std::uint64_t>(std::max(source - 1, 1));
  const auto increment = static_cast<std::uint32_t>(span * kOne / static_cast<std::uint64_t>(target)) & 0xFFFF;
  std::vector<FixedPosition> positions(static_cast<std::size_t>(target));
  std::uint32_t at = 0;
  std::uint32_t fraction = 0;
  for (FixedPosition& position : positions) {
    position = {at, fraction >> 7};
    fraction += increment;
    at += fraction / kOne;
    fraction %= kOne;
  }
  return positions;
}

void EnlargeRow(const std::uint32_t* source, std::int32_t sourceWidth, const std::vector<FixedPosition>& columns,
                std::uint32_t* out) {
  const auto last = static_cast<std::uint32_t>(sourceWidth) - 1;
  for (std::size_t x = 0; x < columns.size(); ++x) {
    const std::uint32_t at = columns[x].at;
    const std::uint64_t right = at < last ? Spread(source[at + 1]) : 0;
    out[x] = Pack(MixLanes(Spread(source[at]), right, columns[x].weight));
  }
}

struct ReduceAxis {
  std::uint32_t step;       // whole pixels from one target position to the next
  std::uint32_t increment;  // and the fraction of one
};

ReduceAxis AxisOf(std::int32_t source, std::int32_t target) {
  const auto effective = static_cast<std::uint64_t>(target > source ? source - 1 : source);
  const auto size = static_cast<std::uint64_t>(target);
  return {static_cast<std::uint32_t>(effective / size), static_cast<std::uint32_t>(effective % size * kOne / size)};
}

// Both sample places of a target position.
struct ReducePosition {
  FixedPosition first;
  FixedPosition second;
};

std::vector<ReducePosition> ReducePositions(const ReduceAxis& axis, std::int32_t target) {
  std::vector<ReducePosition> positions(static_cast<std::size_t>(target));
  std::uint32_t at = 0;
  std::uint32_t fraction = 0;
  for (ReducePosition& position : positions) {
    const std::uint32_t secondFraction = fraction + axis.increment;
    const std::uint32_t secondAt = at + (axis.step == 0 ? 0 : axis.step - 1) + secondFraction / kOne;
    position = {{at, fraction >> 7}, {secondAt, secondFraction % kOne >> 7}};
    at += axis.step + secondFraction / kOne;
    fraction = secondFraction % kOne;
  }
  return positions;
}

// The place for a load of two pixels. The last column has none to its right: its weight is then 0, and the load begins
// one pixel earlier with the weights changed over.
std::uint32_t PairPlace(const FixedPosition& position, std::uint32_t last, std::uint16_t* weights) {
  const bool atEnd = position.at >= last;
  const auto right = static_cast<std::uint16_t>(atEnd ? kWholeWeight : position.weight);
  const auto left = static_cast<std::uint16_t>(kWholeWeight - right);
  std::fill(weights, weights + 4, left);
  std::fill(weights + 4, weights + 8, right);
  return atEnd ? last - 1 : position.at;
}

// A source of one column as one of two equal columns, which a load of two pixels can read.
std::vector<std::uint32_t> DoubledColumn(const RasterView& source) {
  std::vector<std::uint32_t> doubled(std::size_t{2} * static_cast<std::size_t>(source.height));
  for (std::int32_t y = 0; y < source.height; ++y) {
    std::memcpy(&doubled[static_cast<std::size_t>(y) * 2], source.Row(y), sizeof(std::uint32_t));
    doubled[static_cast<std::size_t>(y) * 2 + 1] = doubled[static_cast<std::size_t>(y) * 2];
  }
  return doubled;
}

}  // namespace

void EnlargeFixed(const RasterView& source, const ScaleTarget& target, RowReports& reports) {
  const auto columns = EnlargePositions(source.width, target.width);
  const auto rows = EnlargePositions(source.height, target.height);
  const auto width = static_cast<std::size_t>(target.width);
  // The source rows around the target row, already of the target's width; each source row is widened once.
  std::vector<std::uint32_t> upper(width);
  std::vector<std::uint32_t> lower(width);
  std::int64_t upperRow = -1;
  std::int64_t lowerRow = -1;
  const auto widen = [&](std::int64_t y, std::vector<std::uint32_t>& out) {
    if (y >= source.height) {
      std::fill(out.begin(), out.end(), 0);
    } else {
      EnlargeRow(reinterpret_cast<const std::uint32_t*>(source.Row(static_cast<std::int32_t>(y))), source.width,
                 columns, out.data());
    }
  };
  for (std::int32_t y = 0; y < target.height; ++y) {
    const FixedPosition& row = rows[static_cast<std::size_t>(y)];
    if (upperRow != row.at) {
      if (lowerRow == row.at) {
        std::swap(upper, lower);
      } else {
        widen(row.at, upper);
      }
      upperRow = row.at;
      lowerRow = -1;
    }
    if (row.weight == 0) {
      std::memcpy(target.Row(y), upper.data(), width * 4);
    } else {
      if (lowerRow < 0) {
        lowerRow = row.at + std::int64_t{1};
        widen(lowerRow, lower);
      }
      HWY_DYNAMIC_DISPATCH(MixBytes)
      (reinterpret_cast<const std::uint8_t*>(upper.data()), reinterpret_cast<const std::uint8_t*>(lower.data()),
       row.weight, target.Row(y), width * 4);
    }
    if (reports.DueLast(static_cast<std::uint32_t>(y)) && !reports.Send(y + 1)) return;
  }
}

void ReduceFixed(const RasterView& source, const ScaleTarget& target, RowReports& reports) {
  const ReduceAxis xAxis = AxisOf(source.width, target.width);
  const ReduceAxis yAxis = AxisOf(source.height, target.height);
  std::vector<std::uint32_t> doubled;
  RasterView pixels = source;
  if (source.width == 1) {
    doubled = DoubledColumn(source);
    pixels.pixels = reinterpret_cast<const std::uint8_t*>(doubled.data());
    pixels.width = 2;
  }

  const auto last = static_cast<std::uint32_t>(pixels.width) - 1;
  std::vector<ReduceColumn> columns;
  columns.reserve(static_cast<std::size_t>(target.width));
  for (const ReducePosition& position : ReducePositions(xAxis, target.width)) {
    ReduceColumn& column = columns.emplace_back();
    column.first = PairPlace(position.first, last, column.firstWeights);
    column.second = PairPlace(position.second, last, column.secondWeights);
  }

  const auto rows = ReducePositions(yAxis, target.height);
  const auto lastRow = static_cast<std::uint32_t>(source.height) - 1;
  const auto rowAt = [&](std::uint32_t y) { return pixels.Row(static_cast<std::int32_t>(std::min(y, lastRow))); };
  for (std::int32_t y = 0; y < target.height; ++y) {
    const ReducePosition& position = rows[static_cast<std::size_t>(y)];
    const ReduceRow row{rowAt(position.first.at),
                        rowAt(position.first.at + 1),
                        rowAt(position.second.at),
                        rowAt(position.second.at + 1),
                        static_cast<std::uint16_t>(position.first.weight),
                        static_cast<std::uint16_t>(position.second.weight)};
    HWY_DYNAMIC_DISPATCH(ReduceRowFixed)
    (columns.data(), columns.size(), row, xAxis.step == 0, yAxis.step == 0, target.Words(y));
    if (reports.DueLast(static_cast<std::uint32_t>(y)) && !reports.Send(y + 1)) return;
  }
}

}  // namespace glib
#endif  // HWY_ONCE
