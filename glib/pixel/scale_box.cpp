// The reduction that averages every sample of a box. Ratios, positions and fractions have single precision; what is
// made of them has double precision, or is whole numbers where those give the same.

#include <algorithm>
#include <cstdint>
#include <vector>

#include "glib/pixel/scale_routes.h"
#include "glib/pixel/word_rows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "glib/pixel/scale_box.cpp"
#include "hwy/foreach_target.h"
//
#include "hwy/highway.h"

#ifndef GLIB_PIXEL_SCALE_BOX_CPP_ONCE_
#define GLIB_PIXEL_SCALE_BOX_CPP_ONCE_
namespace glib {
namespace {

// A channel mixed on the vertical axis: 8 bits before the point and so many behind it, in 31 bits with the sign of a
// difference beside them.
constexpr int kMixedBits = 22;
// The fraction of a column as a whole number.
constexpr int kWeightBits = 31;

// The source columns of a target column: `count` samples from `at` on, each `fraction` of the way to the next pixel, or
// the bare pixel there (`count` 0).
struct BoxColumn {
  std::int32_t at;
  std::int32_t count;
  double fraction;
  std::int32_t weight;  // the fraction in units of 2^-31
};

// The target columns whose boxes lie in the source, and the bytes of a pixel in the rows that they sum.
struct BoxColumns {
  const BoxColumn* columns;
  std::size_t width;
  std::size_t pixelBytes;
};

}  // namespace
}  // namespace glib
#endif  // GLIB_PIXEL_SCALE_BOX_CPP_ONCE_

HWY_BEFORE_NAMESPACE();
namespace glib {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// The channels of one pixel, or as many of them as a vector holds.
using Channels = hn::CappedTag<double, 4>;
using ChannelInts = hn::Rebind<std::int32_t, Channels>;
using ChannelSums = hn::Rebind<std::uint32_t, Channels>;
using ChannelBytes = hn::Rebind<std::uint8_t, Channels>;
constexpr std::size_t kChannels = 4;

// Adds the samples between two source rows, each cut to a whole value, to the sums of their boxes: four sums a box.
// `lower` is null where the upper row stands alone.
void AddSamples(const std::uint32_t* upper, const std::uint32_t* lower, double fraction, const BoxColumns& boxes,
                std::uint32_t* sums) {
  const Channels d;
  const ChannelInts di;
  const ChannelSums ds;
  const auto g = hn::Set(d, fraction);
  const auto restY = hn::Set(d, 1.0 - fraction);
  for (std::size_t x = 0; x < boxes.width; ++x, sums += kChannels) {
    const BoxColumn& box = boxes.columns[x];
    const auto f = hn::Set(d, box.fraction);
    const auto restX = hn::Set(d, 1.0 - box.fraction);
    for (std::size_t c = 0; c < kChannels; c += hn::Lanes(d)) {
      const auto load = [&](const std::uint32_t* pixel) HWY_ATTR {
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(pixel) + c;
        return hn::PromoteTo(d, hn::PromoteTo(di, hn::LoadU(ChannelBytes(), bytes)));
      };
      const auto between = [&](const std::uint32_t* pixel) HWY_ATTR {
        if (box.count == 0) return load(pixel);
        return hn::Add(hn::Mul(load(pixel), restX), hn::Mul(load(pixel + 1), f));
      };
      auto sum = hn::LoadU(ds, sums + c);
      for (std::int32_t at = box.at; at < box.at + std::max(box.count, 1); ++at) {
        auto value = between(upper + at);
        if (lower != nullptr) value = hn::Add(hn::Mul(value, restY), hn::Mul(between(lower + at), g));
        sum = hn::Add(sum, hn::BitCast(ds, hn::DemoteTo(di, value)));
      }
      hn::StoreU(sum, ds, sums + c);
    }
  }
}

// Between two rows of bytes: upper + (lower - upper) x weight, in units of 2^-22 like the weight.
void MixRows(const std::uint8_t* upper, const std::uint8_t* lower, std::int32_t weight, std::size_t count,
             std::int32_t* out) {
  const hn::ScalableTag<std::int32_t> d;
  const hn::Rebind<std::uint8_t, decltype(d)> d8;
  const auto w = hn::Set(d, weight);
  std::size_t i = 0;
  for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
    const auto u = hn::PromoteTo(d, hn::LoadU(d8, upper + i));
    const auto l = hn::PromoteTo(d, hn::LoadU(d8, lower + i));
    hn::StoreU(hn::Add(hn::ShiftLeft<kMixedBits>(u), hn::Mul(hn::Sub(l, u), w)), d, out + i);
  }
  for (; i < count; ++i) out[i] = upper[i] * (1 << kMixedBits) + (lower[i] - upper[i]) * weight;
}

#if HWY_TARGET == HWY_SCALAR

template <std::size_t kBytes>
void AddBox(const std::int32_t* mixed, std::int32_t count, std::int32_t weight, std::uint32_t* sums) {
  for (std::size_t c = 0; c < kBytes; ++c) {
    for (std::int32_t i = 0; i < count; ++i) {
      const std::int32_t left = mixed[static_cast<std::size_t>(i) * kBytes + c];
      const std::int64_t step = mixed[static_cast<std::size_t>(i + 1) * kBytes + c] - left;
      sums[c] +=
          static_cast<std::uint32_t>((left + static_cast<std::int32_t>(step * weight >> kWeightBits)) >> kMixedBits);
    }
    if (count == 0) sums[c] += static_cast<std::uint32_t>(mixed[c] >> kMixedBits);
  }
}

#else

// left + (right - left) x weight, cut to whole values.
template <class D, class V = hn::Vec<D> >
HWY_INLINE V Sample(D d, V left, V right, V weight) {
  const hn::RepartitionToWide<D> wide;
  const hn::RebindToUnsigned<decltype(wide)> bits;
  const auto step = hn::Sub(right, left);
  const auto even = hn::BitCast(bits, hn::MulEven(step, weight));
  const auto odd = hn::BitCast(bits, hn::MulEven(hn::BitCast(d, hn::ShiftRight<32>(hn::BitCast(bits, step))), weight));
  const auto part = hn::OddEven(hn::BitCast(d, hn::ShiftLeft<32 - kWeightBits>(odd)),
                                hn::BitCast(d, hn::ShiftRight<kWeightBits>(even)));
  return hn::ShiftRight<kMixedBits>(hn::Add(left, part));
}

// Adds the `count` samples from `mixed` on to one box, or the bare pixel there. With three bytes a pixel the last sum
// of a box gets whatever comes.
template <std::size_t kBytes>
HWY_INLINE void AddBox(const std::int32_t* mixed, std::int32_t count, std::int32_t weight, std::uint32_t* sums) {
  const hn::FixedTag<std::int32_t, 4> d;
  const hn::FixedTag<std::uint32_t, 4> ds;
  auto sum = hn::Zero(d);  // of fewer than 2^23 samples in a row
  if (count == 0) sum = hn::ShiftRight<kMixedBits>(hn::LoadU(d, mixed));
#if HWY_MAX_BYTES >= 32
  if (count >= 2) {
    const hn::FixedTag<std::int32_t, 8> pair;
    auto pairs = hn::Zero(pair);
    for (; count >= 2; count -= 2, mixed += 2 * kBytes) {
      const auto left = hn::LoadU(pair, mixed);
      pairs = hn::Add(pairs, Sample(pair, left, hn::LoadU(pair, mixed + kBytes), hn::Set(pair, weight)));
    }
    HWY_ALIGN static constexpr std::int32_t kSecond[8] = {kBytes, kBytes + 1, kBytes + 2, 7, 7, 7, 7, 7};
    const auto second = hn::TableLookupLanes(pairs, hn::SetTableIndices(pair, kSecond));
    sum = hn::Add(sum, hn::LowerHalf(d, hn::Add(pairs, second)));
  }
#endif
  for (; count > 0; --count, mixed += kBytes) {
    sum = hn::Add(sum, Sample(d, hn::LoadU(d, mixed), hn::LoadU(d, mixed + kBytes), hn::Set(d, weight)));
  }
  hn::StoreU(hn::Add(hn::LoadU(ds, sums), hn::BitCast(ds, sum)), ds, sums);
}

#endif

// The same as AddSamples for fractions of so few bits that no step of it rounds; then whole numbers give what it gives,
// and the vertical axis can come first, which is done once for neighbouring samples. `weight` is the fraction in units
// of 2^-22. `mixed` has room for a row and 8 more.
template <std::size_t kBytes>
void AddExactSamplesOf(const std::uint8_t* upper, const std::uint8_t* lower, std::int32_t weight,
                       const BoxColumns& boxes, std::int32_t* mixed, std::uint32_t* sums) {
  constexpr std::int32_t kPixels = 512;  // what is mixed stays in the first cache
  for (std::size_t x = 0; x < boxes.width;) {
    const std::int32_t begin = boxes.columns[x].at;
    const auto end = [&](std::size_t i) { return boxes.columns[i].at + boxes.columns[i].count + 1; };
    std::size_t next = x + 1;
    while (next < boxes.width && end(next) - begin <= kPixels) ++next;
    const std::size_t offset = static_cast<std::size_t>(begin) * kBytes;
    MixRows(upper + offset, lower + offset, weight, static_cast<std::size_t>(end(next - 1) - begin) * kBytes, mixed);
    for (; x < next; ++x) {
      const BoxColumn& box = boxes.columns[x];
      AddBox<kBytes>(mixed + static_cast<std::size_t>(box.at - begin) * kBytes, box.count, box.weight,
                     sums + x * kChannels);
    }
  }
}

void AddExactSamples(const std::uint8_t* upper, const std::uint8_t* lower, std::int32_t weight, const BoxColumns& boxes,
                     std::int32_t* mixed, std::uint32_t* sums) {
  (boxes.pixelBytes == 3 ? AddExactSamplesOf<3> : AddExactSamplesOf<4>)(upper, lower, weight, boxes, mixed, sums);
}

// Adds the bytes of a row to the sums of their columns.
void AddRow(const std::uint8_t* row, std::size_t count, std::uint32_t* columnSums) {
  const hn::ScalableTag<std::uint32_t> d;
  const hn::Rebind<std::uint8_t, decltype(d)> d8;
  std::size_t i = 0;
  for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
    hn::StoreU(hn::Add(hn::LoadU(d, columnSums + i), hn::PromoteTo(d, hn::LoadU(d8, row + i))), d, columnSums + i);
  }
  for (; i < count; ++i) columnSums[i] += row[i];
}

// The sums of boxes from those of their source columns, which hold one channel after the other.
void AddColumns(const std::uint32_t* columnSums, const BoxColumns& boxes, std::uint32_t* sums) {
  const hn::CappedTag<std::uint32_t, 4> d;
  for (std::size_t x = 0; x < boxes.width; ++x) {
    const std::uint32_t* from = columnSums + static_cast<std::size_t>(boxes.columns[x].at) * boxes.pixelBytes;
    for (std::size_t c = 0; c < kChannels; c += hn::Lanes(d)) {
      auto sum = hn::LoadU(d, from + c);
      for (std::int32_t i = 1; i < boxes.columns[x].count; ++i) {
        sum = hn::Add(sum, hn::LoadU(d, from + static_cast<std::size_t>(i) * boxes.pixelBytes + c));
      }
      hn::StoreU(sum, d, sums + x * kChannels + c);
    }
  }
}

// The sums of a row of boxes, divided; `boxRows` is how many rows entered each. Rows without alpha are opaque.
void DivideSums(const std::uint32_t* sums, const BoxColumns& boxes, std::int32_t boxRows, std::uint32_t* out) {
  const Channels d;
  const ChannelInts di;
  const ChannelSums ds;
  const ChannelBytes d8;
  const std::uint32_t opaque = boxes.pixelBytes == 3 ? 0xFF000000U : 0;
  // Sums above 2^31 pass the conversion of signed numbers.
  constexpr std::uint32_t kHalf = 0x80000000U;
  const auto half = hn::Set(d, static_cast<double>(kHalf));
  for (std::size_t x = 0; x < boxes.width; ++x, sums += kChannels) {
    const std::int64_t samples = std::int64_t{std::max(boxes.columns[x].count, 1)} * boxRows;
    auto* bytes = reinterpret_cast<std::uint8_t*>(out + x);
    // A quotient of whole numbers of this size, rounded to double, never reaches the next whole number.
    const auto divisor = hn::Set(d, static_cast<double>(samples));
    for (std::size_t c = 0; c < kChannels; c += hn::Lanes(d)) {
      const auto sum = hn::LoadU(ds, sums + c);
      auto value = hn::BitCast(di, sum);
      if (samples > 1) {
        const auto lowered = hn::BitCast(di, hn::Xor(sum, hn::Set(ds, kHalf)));
        value = hn::DemoteTo(di, hn::Div(hn::Add(hn::PromoteTo(d, lowered), half), divisor));
      }
      hn::StoreU(hn::DemoteTo(d8, value), d8, bytes + c);
    }
    out[x] |= opaque;
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace glib
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace glib {

HWY_EXPORT(AddSamples);
HWY_EXPORT(AddExactSamples);
HWY_EXPORT(AddRow);
HWY_EXPORT(AddColumns);
HWY_EXPORT(DivideSums);

namespace {

// One axis of a box reduction: a position that adds up in single precision, and how many source pixels a box covers.
class BoxAxis {
 public:
  BoxAxis(std::int32_t source, std::int32_t target)
      : source_(source),
        step_(static_cast<float>(source) / static_cast<float>(target)),
        size_(std::max(static_cast<std::int32_t>(step_ + 0.5F), 1)) {}

  bool Inside() const { return At() < source_; }
  std::int32_t At() const { return static_cast<std::int32_t>(position_); }
  std::int32_t Count() const { return At() + size_ < source_ ? size_ : source_ - At() - 1; }
  float Fraction() const { return position_ - static_cast<float>(At()); }
  void Advance() { position_ += step_; }

  // Positions have 24 bits, and none but 0 is less than one step: whether all fractions are multiples of 2^-24, and the
  // current one is of 2^-21. A channel mixed on both axes then takes 8 + 24 + 21 bits, which a double holds.
  bool AllFine() const { return step_ >= 0.5F; }
  bool Coarse() const { return position_ >= 4.0F || position_ == 0.0F; }

 private:
  std::int32_t source_;
  float step_;
  std::int32_t size_;
  float position_ = 0.0F;
};

std::vector<BoxColumn> ColumnsOf(BoxAxis axis, std::int32_t width) {
  std::vector<BoxColumn> columns;
  columns.reserve(static_cast<std::size_t>(width));
  for (std::int32_t x = 0; x < width && axis.Inside(); ++x, axis.Advance()) {
    const auto fraction = static_cast<double>(axis.Fraction());
    columns.push_back({axis.At(), axis.Count(), fraction, static_cast<std::int32_t>(fraction * 0x80000000U)});
  }
  return columns;
}

}  // namespace

void ReduceBox(const RasterView& source, const ScaleTarget& target, RowReports& reports) {
  const BoxAxis xAxis(source.width, target.width);
  const auto columns = ColumnsOf(xAxis, target.width);
  const bool wholeColumns =
      std::all_of(columns.begin(), columns.end(), [](const BoxColumn& column) { return column.fraction == 0.0; });
  const BoxColumns triples{columns.data(), columns.size(), 3};
  const BoxColumns words{columns.data(), columns.size(), 4};
  const BoxColumns& boxes = source.bits == 24 ? triples : words;

  WordRows wordRows(source);
  const auto bytes = [&](std::int32_t y) {
    return source.bits == 24 ? source.Row(y) : reinterpret_cast<const std::uint8_t*>(wordRows.Row(y));
  };
  const std::size_t rowBytes = static_cast<std::size_t>(source.width) * boxes.pixelBytes;
  // A vector may reach behind the last pixel.
  std::vector<std::uint32_t> columnSums(wholeColumns ? rowBytes + 8 : 0);
  std::vector<std::int32_t> mixed(rowBytes + 8);
  std::vector<std::uint32_t> sums(columns.size() * 4);
  BoxAxis yAxis(source.height, target.height);
  for (std::int32_t y = 0; y < target.height; ++y, yAxis.Advance()) {
    if (reports.DueFirst(static_cast<std::uint32_t>(y)) && !reports.Send(y + 1)) return;
    if (!yAxis.Inside()) continue;
    const auto fraction = static_cast<double>(yAxis.Fraction());
    const std::int32_t first = yAxis.At();
    const std::int32_t last = first + std::max(yAxis.Count(), 1) - 1;
    const std::int32_t reach = yAxis.Count() == 0 ? 0 : 1;  // from a row to the one that it is mixed with
    std::fill(sums.begin(), sums.end(), 0);
    if (wholeColumns && fraction == 0.0) {
      std::fill(columnSums.begin(), columnSums.end(), 0);
      for (std::int32_t i = first; i <= last; ++i) HWY_DYNAMIC_DISPATCH(AddRow)(bytes(i), rowBytes, columnSums.data());
      HWY_DYNAMIC_DISPATCH(AddColumns)(columnSums.data(), boxes, sums.data());
      HWY_DYNAMIC_DISPATCH(DivideSums)(sums.data(), boxes, last - first + 1, target.Words(y));
    } else if (xAxis.AllFine() && yAxis.Coarse()) {
      const auto weight = static_cast<std::int32_t>(fraction * (1 << kMixedBits));
      for (std::int32_t i = first; i <= last; ++i) {
        const std::uint8_t* upper = bytes(i);
        const std::uint8_t* lower = bytes(i + reach);
        HWY_DYNAMIC_DISPATCH(AddExactSamples)(upper, lower, weight, boxes, mixed.data(), sums.data());
      }
      HWY_DYNAMIC_DISPATCH(DivideSums)(sums.data(), boxes, last - first + 1, target.Words(y));
    } else {
      for (std::int32_t i = first; i <= last; ++i) {
        const std::uint32_t* upper = wordRows.Row(i);
        const std::uint32_t* lower = reach == 0 ? nullptr : wordRows.Row(i + reach);
        HWY_DYNAMIC_DISPATCH(AddSamples)(upper, lower, fraction, words, sums.data());
      }
      HWY_DYNAMIC_DISPATCH(DivideSums)(sums.data(), words, last - first + 1, target.Words(y));
    }
  }
}

}  // namespace glib
#endif  // HWY_ONCE
