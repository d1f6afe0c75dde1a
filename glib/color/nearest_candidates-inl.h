// The search among candidates, for the files that are compiled once for each instruction set.

#if defined(GLIB_COLOR_NEAREST_CANDIDATES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef GLIB_COLOR_NEAREST_CANDIDATES_INL_H_
#undef GLIB_COLOR_NEAREST_CANDIDATES_INL_H_
#else
#define GLIB_COLOR_NEAREST_CANDIDATES_INL_H_
#endif

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "glib/color/nearest_candidates.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace glib {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR

// The index of the nearest entry of `count` groups, which is at least 1. `redGreen` is a pair, `blue` a pair with 0.
HWY_INLINE std::uint8_t NearestOf(const CandidateGroup* groups, std::size_t count, std::int32_t redGreen,
                                  std::int32_t blue) {
  const auto lower = [](std::int32_t pair) { return static_cast<std::int16_t>(pair & 0xFFFF); };
  std::int32_t best = 0x7FFFFFFF;
  for (std::size_t g = 0; g < count; ++g) {
    for (std::size_t i = 0; i < CandidateGroup::kSize; ++i) {
      const std::int32_t dot = lower(groups[g].redGreen[i]) * lower(redGreen) +
                               (groups[g].redGreen[i] >> 16) * (redGreen >> 16) + lower(groups[g].blue[i]) * blue;
      best = std::min(best, dot * 256 + groups[g].base[i]);
    }
  }
  return static_cast<std::uint8_t>(best);
}

#else

using CandidateTag = hn::CappedTag<std::int32_t, CandidateGroup::kSize>;

// Per lane, the product of the lower halves plus the product of the upper halves.
template <class V>
HWY_INLINE V PairDot(CandidateTag d, V a, V b) {
#if HWY_ARCH_X86
  const hn::Repartition<std::int16_t, CandidateTag> d16;
  V rest = hn::Zero(d);
  return hn::ReorderWidenMulAccumulate(d, hn::BitCast(d16, a), hn::BitCast(d16, b), hn::Zero(d), rest);
#else
  (void)d;
  const auto lower = [](V pair) HWY_ATTR { return hn::ShiftRight<16>(hn::ShiftLeft<16>(pair)); };
  return hn::Add(hn::Mul(lower(a), lower(b)), hn::Mul(hn::ShiftRight<16>(a), hn::ShiftRight<16>(b)));
#endif
}

template <class V>
HWY_INLINE V KeysOf(CandidateTag d, const CandidateGroup& group, std::size_t i, V redGreen, V blue) {
  const V dot =
      hn::Add(PairDot(d, hn::Load(d, group.redGreen + i), redGreen), PairDot(d, hn::Load(d, group.blue + i), blue));
  return hn::Add(hn::ShiftLeft<8>(dot), hn::Load(d, group.base + i));
}

// The least key of each lane.
HWY_INLINE hn::Vec<CandidateTag> LeastKeys(const CandidateGroup* groups, std::size_t count, std::int32_t redGreen,
                                           std::int32_t blue) {
  const CandidateTag d;
  const auto pair = hn::Set(d, redGreen);
  const auto single = hn::Set(d, blue);
  auto best = KeysOf(d, groups[0], 0, pair, single);
  for (std::size_t i = hn::Lanes(d); i < CandidateGroup::kSize; i += hn::Lanes(d)) {
    best = hn::Min(best, KeysOf(d, groups[0], i, pair, single));
  }
  for (std::size_t g = 1; g < count; ++g) {
    for (std::size_t i = 0; i < CandidateGroup::kSize; i += hn::Lanes(d)) {
      best = hn::Min(best, KeysOf(d, groups[g], i, pair, single));
    }
  }
  return best;
}

HWY_INLINE std::uint8_t NearestOf(const CandidateGroup* groups, std::size_t count, std::int32_t redGreen,
                                  std::int32_t blue) {
  return static_cast<std::uint8_t>(
      hn::GetLane(hn::MinOfLanes(CandidateTag(), LeastKeys(groups, count, redGreen, blue))));
}

#endif

}  // namespace HWY_NAMESPACE
}  // namespace glib
HWY_AFTER_NAMESPACE();

#endif  // GLIB_COLOR_NEAREST_CANDIDATES_INL_H_
