#include "glib/color/damped_diffusion.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "glib/color/color_page.h"
#include "glib/color/nearest_listed.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "glib/color/damped_diffusion.cpp"
#include "hwy/foreach_target.h"
//
#include "glib/color/nearest_candidates-inl.h"
#include "hwy/highway.h"

#ifndef GLIB_COLOR_DAMPED_DIFFUSION_CPP_ONCE_
#define GLIB_COLOR_DAMPED_DIFFUSION_CPP_ONCE_
namespace glib {
namespace {

using Fine = DampedDiffusion::Fine;

// What one band works on.
struct Band {
  CandidateLists& lists;
  const Fine* entries;
  std::int32_t strength;
  std::size_t width;
  std::size_t rows;
  const std::uint32_t* colors;
  std::uint8_t* indices;
  Fine* passedOn[DampedDiffusion::kBandRows + 1];
  Fine* drift;  // null: not wanted
};

}  // namespace
}  // namespace glib
#endif  // GLIB_COLOR_DAMPED_DIFFUSION_CPP_ONCE_

HWY_BEFORE_NAMESPACE();
namespace glib {
namespace HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

using FineTag = hn::FixedTag<std::int32_t, 4>;
using FineVec = hn::Vec<FineTag>;

// One pixel; `left` is what the one before it passes on. Gives what this one does.
template <bool kDrift>
HWY_INLINE FineVec DiffusePixel(const Band& band, std::size_t row, std::size_t x, FineVec left) {
  const FineTag d;
  const hn::FixedTag<std::uint8_t, 4> dBytes;
  const hn::FixedTag<std::uint32_t, 1> dWord;
  const std::uint32_t word = band.colors[row * band.width + x];
  std::uint8_t* index = band.indices + row * band.width + x;
  std::int32_t* passedOn = band.passedOn[row + 1][x + 1].lane;
  if (HWY_UNLIKELY(!HasColor(word))) {
    if (word != kHeldPixel) *index = 0;
    hn::Store(hn::Zero(d), d, passedOn);
    return hn::Zero(d);
  }
  const Fine* above = band.passedOn[row] + x;
  const auto above0 = hn::Load(d, above[0].lane);
  const auto above1 = hn::Load(d, above[1].lane);
  const auto above2 = hn::Load(d, above[2].lane);
  const auto own = hn::ShiftLeft<4>(hn::PromoteTo(d, hn::BitCast(dBytes, hn::Set(dWord, word))));
  auto sum = hn::Add(hn::Add(above0, hn::Set(d, 8)), hn::Add(above1, hn::ShiftLeft<2>(above1)));
  sum = hn::Add(sum, hn::Add(above2, hn::ShiftLeft<1>(above2)));
  sum = hn::Add(sum, hn::Sub(hn::ShiftLeft<3>(left), left));
  const auto target = hn::Add(own, hn::ShiftRight<4>(sum));
  const auto clamped = hn::Min(hn::Max(target, hn::Zero(d)), hn::Set(d, kFineMax));
  const auto level = hn::ShiftRight<4>(hn::Add(clamped, hn::Set(d, 8)));
  const std::uint32_t color = hn::GetLane(hn::BitCast(dWord, hn::DemoteTo(dBytes, level)));
  const CandidateLists::List list = band.lists.ListOf(color);
  const std::uint8_t nearest =
      NearestOf(band.lists.Groups() + list.first, list.count, band.lists.RedGreen(color), band.lists.Blue(color));
  *index = nearest;
  const auto entry = hn::Load(d, band.entries[nearest].lane);
  if constexpr (kDrift) {
    // The alpha lane is nothing but the one that is added.
    std::int32_t* drift = band.drift[nearest].lane;
    alignas(16) static constexpr std::int32_t kCount[4] = {0, 0, 0, 1};
    hn::Store(hn::Add(hn::Load(d, drift), hn::Add(hn::Sub(target, entry), hn::Load(d, kCount))), d, drift);
  }
  const auto error = hn::Mul(hn::Sub(clamped, entry), hn::Set(d, band.strength));
  const auto damped = hn::ShiftRight<8>(hn::Add(error, hn::Set(d, 128)));
  hn::Store(damped, d, passedOn);
  return damped;
}

template <bool kDrift>
void DiffuseRowsOf(const Band& band) {
  constexpr std::size_t kBehind = 2;  // pixels from a row to the next, so that its right upper neighbour is done
  const std::size_t steps = band.width + kBehind * (band.rows - 1);
  const FineTag d;
  auto left0 = hn::Zero(d);
  auto left1 = hn::Zero(d);
  auto left2 = hn::Zero(d);
  auto left3 = hn::Zero(d);
  // At the ends not all rows have a pixel.
  const auto stepWithChecks = [&](std::size_t t) HWY_ATTR {
    const auto has = [&](std::size_t row) {
      return row < band.rows && t >= row * kBehind && t - row * kBehind < band.width;
    };
    if (has(0)) left0 = DiffusePixel<kDrift>(band, 0, t, left0);
    if (has(1)) left1 = DiffusePixel<kDrift>(band, 1, t - kBehind, left1);
    if (has(2)) left2 = DiffusePixel<kDrift>(band, 2, t - 2 * kBehind, left2);
    if (has(3)) left3 = DiffusePixel<kDrift>(band, 3, t - 3 * kBehind, left3);
  };
  std::size_t t = 0;
  if (band.rows == DampedDiffusion::kBandRows) {
    for (; t < std::min(steps, 3 * kBehind); ++t) stepWithChecks(t);
    for (; t < band.width; ++t) {
      left0 = DiffusePixel<kDrift>(band, 0, t, left0);
      left1 = DiffusePixel<kDrift>(band, 1, t - kBehind, left1);
      left2 = DiffusePixel<kDrift>(band, 2, t - 2 * kBehind, left2);
      left3 = DiffusePixel<kDrift>(band, 3, t - 3 * kBehind, left3);
    }
  }
  for (; t < steps; ++t) stepWithChecks(t);
}

// False: this instruction set has no fast form.
bool DiffuseRows(const Band& band) {
  (band.drift == nullptr ? DiffuseRowsOf<false> : DiffuseRowsOf<true>)(band);
  return true;
}

#else

bool DiffuseRows(const Band&) { return false; }

#endif

}  // namespace HWY_NAMESPACE
}  // namespace glib
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace glib {

HWY_EXPORT(DiffuseRows);

std::int32_t DiffusionStrength(std::size_t colorCount) {
  // Half at 256 colours, 0.64 at 64 and 0.72 at 16. More keeps the shades better after a blur, less
  // keeps the squared error smaller; measured on photographs and graphics, these do well by both.
  const double doublings = 8 - std::log2(static_cast<double>(std::clamp<std::size_t>(colorCount, 16, 256)));
  return static_cast<std::int32_t>(256 * (0.5 + (0.0875 - 0.008 * doublings) * doublings) + 0.5);
}

DampedDiffusion::DampedDiffusion(CandidateLists& lists, std::span<const std::uint32_t> colors, std::uint32_t firstIndex,
                                 std::int32_t strength, std::size_t width)
    : lists_(lists), strength_(strength), width_(width), entries_(256), drift_(256) {
  for (std::size_t i = 0; i < colors.size(); ++i) {
    for (std::size_t k = 0; k < 4; ++k) {
      entries_[firstIndex + i].lane[k] = static_cast<std::int32_t>(((colors[i] | kOpaqueAlpha) >> 8 * k & 255U) * 16);
    }
  }
  for (auto& row : passedOn_) row.resize(width + 2);
}

void DampedDiffusion::DiffuseBand(const std::uint32_t* colors, std::size_t rows, std::uint8_t* indices) {
  Band band{lists_, entries_.data(), strength_, width_, rows, colors, indices, {}, nullptr};
  for (std::size_t i = 0; i < passedOn_.size(); ++i) band.passedOn[i] = passedOn_[i].data();
  if (drifts_ != nullptr) band.drift = drift_.data();
  if (!HWY_DYNAMIC_DISPATCH(DiffuseRows)(band)) return DiffuseBandPlain(colors, rows, indices);
  EndBand(rows);
}

std::uint8_t DampedDiffusion::DiffusePixelPlain(std::uint32_t color, std::size_t row, std::size_t x) {
  const Fine* above = &passedOn_[row][x];
  const Fine& left = passedOn_[row + 1][x];
  std::array<std::int32_t, 3> target;
  std::array<std::int32_t, 3> clamped;
  std::uint32_t word = kOpaqueAlpha;
  for (std::size_t k = 0; k < 3; ++k) {
    const std::int32_t sum = 7 * left.lane[k] + above[0].lane[k] + 5 * above[1].lane[k] + 3 * above[2].lane[k];
    target[k] = static_cast<std::int32_t>(color >> 8 * k & 255U) * 16 + ((sum + 8) >> 4);
    clamped[k] = std::clamp<std::int32_t>(target[k], 0, kFineMax);
    word |= static_cast<std::uint32_t>((clamped[k] + 8) >> 4) << 8 * k;
  }
  std::uint8_t index;
  FindNearest(lists_, &word, 1, nullptr, &index);
  Fine& passedOn = passedOn_[row + 1][x + 1];
  for (std::size_t k = 0; k < 3; ++k) {
    passedOn.lane[k] = ((clamped[k] - entries_[index].lane[k]) * strength_ + 128) >> 8;
    drift_[index].lane[k] += drifts_ == nullptr ? 0 : target[k] - entries_[index].lane[k];
  }
  if (drifts_ != nullptr) ++drift_[index].lane[3];
  return index;
}

void DampedDiffusion::DiffuseBandPlain(const std::uint32_t* colors, std::size_t rows, std::uint8_t* indices) {
  for (std::size_t row = 0; row < rows; ++row) {
    for (std::size_t x = 0; x < width_; ++x) {
      const std::uint32_t color = colors[row * width_ + x];
      std::uint8_t& index = indices[row * width_ + x];
      if (HasColor(color)) {
        index = DiffusePixelPlain(color, row, x);
      } else {
        if (color != kHeldPixel) index = 0;
        passedOn_[row + 1][x + 1] = {};
      }
    }
  }
  EndBand(rows);
}

void DampedDiffusion::EndBand(std::size_t rows) {
  std::swap(passedOn_[0], passedOn_[rows]);
  if (drifts_ == nullptr) return;
  for (std::size_t i = 0; i < drift_.size(); ++i) {
    EntryDrift& drift = (*drifts_)[i];
    for (std::size_t k = 0; k < 3; ++k) drift.sum[k] += drift_[i].lane[2 - k];
    drift.count += drift_[i].lane[3];
    drift_[i] = {};
  }
}

}  // namespace glib
#endif  // HWY_ONCE
