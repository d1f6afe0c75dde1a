// Ratios and fractions have single precision, all that is made of them double; no product and sum may be contracted, or
// pixels would depend on the processor.

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

}  // namespace HWY_NAMESPACE
}  // namespace glib
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace glib {

HWY_EXPORT(SpreadRow);
HWY_EXPORT(MixSpreadRows);

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

}  // namespace glib
#endif  // HWY_ONCE
