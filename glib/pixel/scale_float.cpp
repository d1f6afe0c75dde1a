// Both floating-point routes. Ratios, positions and fractions have single precision, all that is made of them double;
// no product and sum may be contracted, or pixels would depend on the processor.

#include <algorithm>
#include <cstdint>
#include <vector>

#include "glib/pixel/scale_routes.h"
#include "glib/pixel/word_rows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "glib/pixel/scale_float.cpp"
#include "hwy/foreach_target.h"
//
#include "hwy/highway.h"

#ifndef GLIB_PIXEL_SCALE_FLOAT_CPP_ONCE_
#define GLIB_PIXEL_SCALE_FLOAT_CPP_ONCE_
namespace glib {
namespace {

// A place between two source pixels: `fraction` of the way from `at` to the next.
struct FloatPosition {
  std::int32_t at;
  double fraction;
};

// The source columns of a target column: `count` samples from `at` on, or the bare pixel there (`count` 0). Outside the
// source there is nothing.
struct BoxColumn {
  std::int32_t at;
  std::int32_t count;
  double fraction;
  bool outside;
};

}  // namespace
}  // namespace glib
#endif  // GLIB_PIXEL_SCALE_FLOAT_CPP_ONCE_

HWY_BEFORE_NAMESPACE();
namespace glib {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// The channels of one pixel, or as many of them as a vector holds.
using Channels = hn::CappedTag<double, 4>;
using ChannelInts = hn::Rebind<std::int32_t, Channels>;
using ChannelBytes = hn::Rebind<std::uint8_t, Channels>;
constexpr std::size_t kChannels = 4;

HWY_INLINE hn::Vec<Channels> LoadChannels(const std::uint32_t* pixel, std::size_t channel) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(pixel) + channel;
  return hn::PromoteTo(Channels(), hn::PromoteTo(ChannelInts(), hn::LoadU(ChannelBytes(), bytes)));
}

HWY_INLINE void StoreChannels(hn::Vec<ChannelInts> values, std::uint32_t* pixel, std::size_t channel) {
  auto* bytes = reinterpret_cast<std::uint8_t*>(pixel) + channel;
  hn::StoreU(hn::DemoteTo(ChannelBytes(), values), ChannelBytes(), bytes);
}

// A source row between its columns: four doubles a target column.
void SpreadRow(const std::uint32_t* source, std::int32_t sourceWidth, const FloatPosition* columns, std::size_t width,
               double* out) {
  const Channels d;
  const std::uint32_t nothing = 0;
  for (std::size_t x = 0; x < width; ++x) {
    const auto f = hn::Set(d, columns[x].fraction);
    const auto rest = hn::Set(d, 1.0 - columns[x].fraction);
    const std::uint32_t* left = source + columns[x].at;
    const std::uint32_t* right = columns[x].at + 1 < sourceWidth ? left + 1 : &nothing;
    for (std::size_t c = 0; c < kChannels; c += hn::Lanes(d)) {
      const auto value = hn::Add(hn::Mul(LoadChannels(right, c), f), hn::Mul(LoadChannels(left, c), rest));
      hn::StoreU(value, d, out + x * kChannels + c);
    }
  }
}

// Two spread rows to a target row. A null `lower` counts as 0.
void MixSpreadRows(const double* upper, const double* lower, double fraction, std::size_t width, std::uint32_t* out) {
  const Channels d;
  const auto g = hn::Set(d, fraction);
  const auto rest = hn::Set(d, 1.0 - fraction);
  for (std::size_t x = 0; x < width; ++x) {
    for (std::size_t c = 0; c < kChannels; c += hn::Lanes(d)) {
      const std::size_t at = x * kChannels + c;
      const auto below = lower == nullptr ? hn::Zero(d) : hn::Mul(hn::LoadU(d, lower + at), g);
      const auto value = hn::Add(below, hn::Mul(hn::LoadU(d, upper + at), rest));
      StoreChannels(hn::DemoteTo(ChannelInts(), value), out + x, c);
    }
  }
}

// The samples of a source row between its columns, box after box: four doubles a sample.
void SampleRow(const std::uint32_t* source, const BoxColumn* columns, std::size_t width, double* out) {
  const Channels d;
  for (std::size_t x = 0; x < width; ++x) {
    const BoxColumn& column = columns[x];
    if (column.outside) continue;
    const std::uint32_t* pixel = source + column.at;
    if (column.count == 0) {
      for (std::size_t c = 0; c < kChannels; c += hn::Lanes(d)) hn::StoreU(LoadChannels(pixel, c), d, out + c);
      out += kChannels;
      continue;
    }
    const auto f = hn::Set(d, column.fraction);
    const auto rest = hn::Set(d, 1.0 - column.fraction);
    for (std::int32_t i = 0; i < column.count; ++i, ++pixel, out += kChannels) {
      for (std::size_t c = 0; c < kChannels; c += hn::Lanes(d)) {
        const auto value = hn::Add(hn::Mul(LoadChannels(pixel, c), rest), hn::Mul(LoadChannels(pixel + 1, c), f));
        hn::StoreU(value, d, out + c);
      }
    }
  }
}

// Adds the samples between two sampled rows, each cut to a whole value, to the sums of their boxes. A null `lower`
// means the upper row alone.
void AddSamples(const double* upper, const double* lower, double fraction, const BoxColumn* columns, std::size_t width,
                std::int32_t* sums) {
  const Channels d;
  const ChannelInts di;
  const auto g = hn::Set(d, fraction);
  const auto rest = hn::Set(d, 1.0 - fraction);
  for (std::size_t x = 0; x < width; ++x) {
    if (columns[x].outside) continue;
    const std::int32_t count = std::max(columns[x].count, 1);
    const std::size_t samples = static_cast<std::size_t>(count) * kChannels;
    for (std::size_t c = 0; c < kChannels; c += hn::Lanes(d)) {
      auto sum = hn::LoadU(di, sums + x * kChannels + c);
      for (std::size_t i = c; i < samples; i += kChannels) {
        auto value = hn::LoadU(d, upper + i);
        if (lower != nullptr) value = hn::Add(hn::Mul(value, rest), hn::Mul(hn::LoadU(d, lower + i), g));
        sum = hn::Add(sum, hn::DemoteTo(di, value));
      }
      hn::StoreU(sum, di, sums + x * kChannels + c);
    }
    upper += samples;
    if (lower != nullptr) lower += samples;
  }
}

// Adds bare source pixels to the sums of their boxes: what sampling comes to where no position has a fraction.
void AddPixels(const std::uint32_t* source, const BoxColumn* columns, std::size_t width, std::int32_t* sums) {
  const ChannelInts di;
  for (std::size_t x = 0; x < width; ++x) {
    if (columns[x].outside) continue;
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(source + columns[x].at);
    const std::size_t end = static_cast<std::size_t>(std::max(columns[x].count, 1)) * kChannels;
    for (std::size_t c = 0; c < kChannels; c += hn::Lanes(di)) {
      auto sum = hn::LoadU(di, sums + x * kChannels + c);
      for (std::size_t i = c; i < end; i += kChannels) {
        sum = hn::Add(sum, hn::PromoteTo(di, hn::LoadU(ChannelBytes(), bytes + i)));
      }
      hn::StoreU(sum, di, sums + x * kChannels + c);
    }
  }
}

// The sums of a row of boxes, divided. `boxRows` is how many rows entered each.
void DivideSums(const std::int32_t* sums, const BoxColumn* columns, std::size_t width, std::int32_t boxRows,
                std::uint32_t* out) {
  const Channels d;
  const ChannelInts di;
  for (std::size_t x = 0; x < width; ++x) {
    // A quotient of whole numbers of this size, rounded to double, never reaches the next whole number.
    const double count = static_cast<double>(std::max(columns[x].count, 1)) * static_cast<double>(boxRows);
    const auto divisor = hn::Set(d, count);
    for (std::size_t c = 0; c < kChannels; c += hn::Lanes(d)) {
      const auto sum = hn::PromoteTo(d, hn::LoadU(di, sums + x * kChannels + c));
      StoreChannels(hn::DemoteTo(di, hn::Div(sum, divisor)), out + x, c);
    }
  }
}

}  // namespace HWY_NAMESPACE
}  // namespace glib
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace glib {

HWY_EXPORT(SpreadRow);
HWY_EXPORT(MixSpreadRows);
HWY_EXPORT(SampleRow);
HWY_EXPORT(AddSamples);
HWY_EXPORT(AddPixels);
HWY_EXPORT(DivideSums);

namespace {

std::vector<FloatPosition> EnlargePositions(std::int32_t source, std::int32_t target) {
  const float ratio = static_cast<float>(std::max(source - 1, 1)) / static_cast<float>(target);
  std::vector<FloatPosition> positions(static_cast<std::size_t>(target));
  for (std::int32_t i = 0; i < target; ++i) {
    const double position = static_cast<double>(i) * static_cast<double>(ratio);
    const auto at = std::min(static_cast<std::int32_t>(position), source - 1);
    positions[static_cast<std::size_t>(i)] = {at, static_cast<double>(static_cast<float>(position - at))};
  }
  return positions;
}

// One axis of a box reduction: a position that adds up in single precision, and how many source pixels a box covers.
class BoxAxis {
 public:
  BoxAxis(std::int32_t source, std::int32_t target)
      : source_(source),
        step_(static_cast<float>(source) / static_cast<float>(target)),
        size_(std::max(static_cast<std::int32_t>(step_ + 0.5F), 1)) {}

  BoxColumn Current() const {
    const auto at = static_cast<std::int32_t>(position_);
    if (at >= source_) return {0, 0, 0.0, true};
    const float fraction = position_ - static_cast<float>(at);
    return {at, at + size_ < source_ ? size_ : source_ - at - 1, static_cast<double>(fraction), false};
  }
  void Advance() { position_ += step_; }

 private:
  std::int32_t source_;
  float step_;
  std::int32_t size_;
  float position_ = 0.0F;
};

// The sampled rows of a box reduction. Each source row is sampled once: the lower row of one pair is the upper row of
// the next, and the boxes of two target rows meet or overlap by a row.
class SampledRows {
 public:
  SampledRows(WordRows& rows, const std::vector<BoxColumn>& columns, std::size_t samples)
      : rows_(rows), columns_(columns) {
    for (auto& row : sampled_) row.resize(samples * 4);
  }

  const double* Row(std::int32_t y) {
    const auto slot = static_cast<std::size_t>(y & 1);
    if (held_[slot] != y) {
      HWY_DYNAMIC_DISPATCH(SampleRow)(rows_.Row(y), columns_.data(), columns_.size(), sampled_[slot].data());
      held_[slot] = y;
    }
    return sampled_[slot].data();
  }

 private:
  WordRows& rows_;
  const std::vector<BoxColumn>& columns_;
  std::vector<double> sampled_[2];
  std::int32_t held_[2] = {-1, -1};
};

}  // namespace

void EnlargeFloat(const RasterView& source, const ScaleTarget& target, RowReports& reports) {
  const auto columns = EnlargePositions(source.width, target.width);
  const auto rows = EnlargePositions(source.height, target.height);
  WordRows words(source);
  const auto width = static_cast<std::size_t>(target.width);
  std::vector<double> spread[2];
  for (auto& row : spread) row.resize(width * 4);
  std::int32_t held[2] = {-1, -1};
  const auto spreadRow = [&](std::int32_t y) -> const double* {
    if (y >= source.height) return nullptr;
    const auto slot = static_cast<std::size_t>(y & 1);
    if (held[slot] != y) {
      HWY_DYNAMIC_DISPATCH(SpreadRow)(words.Row(y), source.width, columns.data(), width, spread[slot].data());
      held[slot] = y;
    }
    return spread[slot].data();
  };
  for (std::int32_t y = 0; y < target.height; ++y) {
    if (reports.DueFirst(static_cast<std::uint32_t>(y)) && !reports.Send(y + 1)) return;
    const FloatPosition& row = rows[static_cast<std::size_t>(y)];
    const double* upper = spreadRow(row.at);
    const double* lower = spreadRow(row.at + 1);
    HWY_DYNAMIC_DISPATCH(MixSpreadRows)(upper, lower, row.fraction, width, target.Words(y));
  }
}

void ReduceBox(const RasterView& source, const ScaleTarget& target, RowReports& reports) {
  std::vector<BoxColumn> columns;
  columns.reserve(static_cast<std::size_t>(target.width));
  std::size_t samples = 0;
  bool whole = true;
  BoxAxis xAxis(source.width, target.width);
  for (std::int32_t x = 0; x < target.width; ++x, xAxis.Advance()) {
    columns.push_back(xAxis.Current());
    samples += static_cast<std::size_t>(std::max(columns.back().count, 1));
    whole = whole && columns.back().fraction == 0.0;
  }

  WordRows words(source);
  SampledRows sampled(words, columns, samples);
  std::vector<std::int32_t> sums(static_cast<std::size_t>(target.width) * 4);
  BoxAxis yAxis(source.height, target.height);
  for (std::int32_t y = 0; y < target.height; ++y, yAxis.Advance()) {
    if (reports.DueFirst(static_cast<std::uint32_t>(y)) && !reports.Send(y + 1)) return;
    const BoxColumn row = yAxis.Current();
    if (row.outside) continue;
    std::fill(sums.begin(), sums.end(), 0);
    const std::int32_t boxRows = std::max(row.count, 1);
    for (std::int32_t j = 0; j < boxRows; ++j) {
      if (whole && row.fraction == 0.0) {
        HWY_DYNAMIC_DISPATCH(AddPixels)(words.Row(row.at + j), columns.data(), columns.size(), sums.data());
      } else {
        const double* upper = sampled.Row(row.at + j);
        const double* lower = row.count == 0 ? nullptr : sampled.Row(row.at + j + 1);
        HWY_DYNAMIC_DISPATCH(AddSamples)
        (upper, lower, row.fraction, columns.data(), columns.size(), sums.data());
      }
    }
    HWY_DYNAMIC_DISPATCH(DivideSums)(sums.data(), columns.data(), columns.size(), boxRows, target.Words(y));
  }
}

}  // namespace glib
#endif  // HWY_ONCE
