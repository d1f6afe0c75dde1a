#include "glib/pixel/filter_rows.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "glib/pixel/filter_rows.cpp"
#include "hwy/foreach_target.h"
//
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace glib {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using D16 = hn::ScalableTag<std::int16_t>;
using DU16 = hn::ScalableTag<std::uint16_t>;
using D8 = hn::Rebind<std::uint8_t, D16>;

// One channel value a lane: row bytes from `at` on, widened.
HWY_INLINE hn::Vec<D16> Widen(const std::uint8_t* at) { return hn::PromoteTo(D16(), hn::LoadU(D8(), at)); }

// All pixels of a row but the first and last. Sums of nine bytes and five-fold bytes fit 15 bits.
template <FilterKernel kKernel>
void ConvolveInner(const std::uint8_t* upper, const std::uint8_t* middle, const std::uint8_t* lower, std::size_t begin,
                   std::size_t end, std::uint8_t* out, std::size_t& done) {
  const D16 d;
  const DU16 du;
  const std::size_t lanes = hn::Lanes(d);
  done = begin;
  if (lanes < 4) return;
  const auto isAlpha = hn::Eq(hn::And(hn::Iota(d, 0), hn::Set(d, 3)), hn::Set(d, 3));
  std::size_t i = begin;
  for (; i + lanes <= end; i += lanes) {
    const auto u0 = Widen(upper + i - 4);
    const auto u1 = Widen(upper + i);
    const auto u2 = Widen(upper + i + 4);
    const auto m0 = Widen(middle + i - 4);
    const auto m1 = Widen(middle + i);
    const auto m2 = Widen(middle + i + 4);
    const auto l0 = Widen(lower + i - 4);
    const auto l1 = Widen(lower + i);
    const auto l2 = Widen(lower + i + 4);
    const auto cross = hn::Add(hn::Add(u1, l1), hn::Add(m0, m2));
    const auto sum = hn::Add(hn::Add(hn::Add(u0, u2), hn::Add(l0, l2)), hn::Add(cross, m1));
    const auto alpha = hn::BitCast(d, hn::MulHigh(hn::BitCast(du, sum), hn::Set(du, 7282)));
    auto colour = alpha;
    if constexpr (kKernel == FilterKernel::kBlur) {
      const auto twice = hn::Add(hn::Add(sum, sum), hn::Set(d, 9));
      colour = hn::BitCast(d, hn::MulHigh(hn::BitCast(du, twice), hn::Set(du, 3641)));
    } else if constexpr (kKernel == FilterKernel::kSharpen) {
      colour = hn::Sub(hn::Add(hn::ShiftLeft<2>(m1), m1), cross);
    } else {
      const auto above = hn::Add(hn::Add(u0, u1), m0);
      const auto below = hn::Add(hn::Add(l2, l1), m2);
      // Half of the difference, and 128.5 for the rounding: whole after the shift.
      colour = hn::ShiftRight<1>(hn::Add(hn::Sub(above, below), hn::Set(d, 257)));
    }
    hn::StoreU(hn::DemoteTo(D8(), hn::IfThenElse(isAlpha, alpha, colour)), D8(), out + i);
  }
  done = i;
}

void ConvolveRowInner(const std::uint8_t* upper, const std::uint8_t* middle, const std::uint8_t* lower,
                      std::size_t begin, std::size_t end, FilterKernel kernel, std::uint8_t* out, std::size_t& done) {
  const auto inner = kernel == FilterKernel::kBlur      ? ConvolveInner<FilterKernel::kBlur>
                     : kernel == FilterKernel::kSharpen ? ConvolveInner<FilterKernel::kSharpen>
                                                        : ConvolveInner<FilterKernel::kEmboss>;
  inner(upper, middle, lower, begin, end, out, done);
}

void Brightness(const std::uint32_t* row, std::size_t width, std::uint8_t* out) {
  const hn::ScalableTag<std::uint32_t> d;
  const hn::Rebind<std::uint8_t, decltype(d)> d8;
  const std::size_t lanes = hn::Lanes(d);
  const auto low = hn::Set(d, 255);
  std::size_t x = 0;
  for (; x + lanes <= width; x += lanes) {
    const auto words = hn::LoadU(d, row + x);
    const auto sum = hn::Add(hn::Add(hn::And(words, low), hn::And(hn::ShiftRight<8>(words), low)),
                             hn::And(hn::ShiftRight<16>(words), low));
    // A third, cut: exact for sums up to 765.
    hn::StoreU(hn::U8FromU32(hn::ShiftRight<16>(hn::Mul(sum, hn::Set(d, 21846)))), d8, out + x);
  }
  for (; x < width; ++x) {
    const std::uint32_t w = row[x];
    out[x] = static_cast<std::uint8_t>(((w & 255) + (w >> 8 & 255) + (w >> 16 & 255)) / 3);
  }
}

template <typename V>
HWY_INLINE V Median(V a, V b, V c) {
  return hn::Max(hn::Min(a, b), hn::Min(hn::Max(a, b), c));
}

// The brightness at `rank` of nine: the columns are sorted once for all three neighbourhoods that they belong to. Of
// the sorted columns' lowest values the largest, of the middle ones the median, of the highest ones the smallest: the
// median of these three is that of all nine.
void Rank(const std::uint8_t* upper, const std::uint8_t* middle, const std::uint8_t* lower, std::size_t width,
          std::uint32_t rank, std::uint8_t* scratch, std::uint8_t* out) {
  const hn::ScalableTag<std::uint8_t> full;
  const hn::CappedTag<std::uint8_t, 1> single;
  std::uint8_t* lows = scratch;
  std::uint8_t* middles = scratch + width;
  std::uint8_t* highs = scratch + 2 * width;

  const auto sortColumns = [&](auto d, std::size_t x) HWY_ATTR {
    const auto a = hn::LoadU(d, upper + x);
    const auto b = hn::LoadU(d, middle + x);
    const auto c = hn::LoadU(d, lower + x);
    const auto small = hn::Min(a, b);
    const auto large = hn::Max(a, b);
    hn::StoreU(hn::Min(small, c), d, lows + x);
    hn::StoreU(hn::Max(small, hn::Min(large, c)), d, middles + x);
    hn::StoreU(hn::Max(large, c), d, highs + x);
  };
  const auto choose = [&](auto d, std::size_t x) HWY_ATTR {
    const auto at = [&](const std::uint8_t* values, std::size_t i) HWY_ATTR { return hn::LoadU(d, values + i); };
    auto wanted = hn::Zero(d);
    if (rank == 0) {
      wanted = hn::Min(hn::Min(at(lows, x - 1), at(lows, x)), at(lows, x + 1));
    } else if (rank == 8) {
      wanted = hn::Max(hn::Max(at(highs, x - 1), at(highs, x)), at(highs, x + 1));
    } else {
      const auto low = hn::Max(hn::Max(at(lows, x - 1), at(lows, x)), at(lows, x + 1));
      const auto mid = Median(at(middles, x - 1), at(middles, x), at(middles, x + 1));
      const auto high = hn::Min(hn::Min(at(highs, x - 1), at(highs, x)), at(highs, x + 1));
      wanted = Median(low, mid, high);
    }
    // From the last neighbour to the first, so that the first one with this brightness stays.
    const std::uint8_t* rows[3] = {upper, middle, lower};
    auto index = hn::Set(d, 8);
    for (std::size_t i = 8; i-- > 0;) {
      index = hn::IfThenElse(hn::Eq(at(rows[i / 3], x + i % 3 - 1), wanted), hn::Set(d, static_cast<std::uint8_t>(i)),
                             index);
    }
    hn::StoreU(index, d, out + x);
  };

  const std::size_t lanes = hn::Lanes(full);
  std::size_t x = 0;
  for (; x + lanes <= width; x += lanes) sortColumns(full, x);
  for (; x < width; ++x) sortColumns(single, x);
  for (x = 1; x + lanes + 1 <= width; x += lanes) choose(full, x);
  for (; x + 1 < width; ++x) choose(single, x);
}

}  // namespace HWY_NAMESPACE
}  // namespace glib
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace glib {

HWY_EXPORT(ConvolveRowInner);
HWY_EXPORT(Brightness);
HWY_EXPORT(Rank);

std::uint32_t ConvolvePixel(const std::uint32_t* upper, const std::uint32_t* middle, const std::uint32_t* lower,
                            std::size_t width, std::size_t x, FilterKernel kernel) {
  const std::uint32_t centre = middle[x];
  std::uint32_t pixels[9];
  const std::uint32_t* rows[3] = {upper, middle, lower};
  for (std::size_t r = 0; r < 3; ++r) {
    pixels[3 * r] = x == 0 ? centre : rows[r][x - 1];
    pixels[3 * r + 1] = rows[r][x];
    pixels[3 * r + 2] = x + 1 == width ? centre : rows[r][x + 1];
  }
  static constexpr std::int32_t kWeights[3][9] = {
      {1, 1, 1, 1, 1, 1, 1, 1, 1}, {0, -1, 0, -1, 5, -1, 0, -1, 0}, {1, 1, 0, 1, 0, -1, 0, -1, -1}};
  const std::int32_t* weights = kWeights[static_cast<int>(kernel)];
  std::uint32_t result = 0;
  for (std::uint32_t shift = 0; shift < 32; shift += 8) {
    std::int32_t sum = 0;
    std::uint32_t plain = 0;
    for (std::size_t i = 0; i < 9; ++i) {
      const std::uint32_t value = pixels[i] >> shift & 255;
      sum += static_cast<std::int32_t>(value) * weights[i];
      plain += value;
    }
    std::int32_t value = 0;
    if (shift == 24) {
      value = static_cast<std::int32_t>(AlphaMean(plain));
    } else if (kernel == FilterKernel::kBlur) {
      value = static_cast<std::int32_t>(BlurMean(plain));
    } else {
      value = kernel == FilterKernel::kSharpen ? sum : (sum + 257) >> 1;
    }
    result |= static_cast<std::uint32_t>(std::clamp(value, 0, 255)) << shift;
  }
  return result;
}

void ConvolveRow(const std::uint32_t* upper, const std::uint32_t* middle, const std::uint32_t* lower, std::size_t width,
                 FilterKernel kernel, std::uint32_t* out) {
  out[0] = ConvolvePixel(upper, middle, lower, width, 0, kernel);
  std::size_t done = 4;
  HWY_DYNAMIC_DISPATCH(ConvolveRowInner)
  (reinterpret_cast<const std::uint8_t*>(upper), reinterpret_cast<const std::uint8_t*>(middle),
   reinterpret_cast<const std::uint8_t*>(lower), 4, 4 * (width - 1), kernel, reinterpret_cast<std::uint8_t*>(out),
   done);
  for (std::size_t x = done / 4; x < width; ++x) out[x] = ConvolvePixel(upper, middle, lower, width, x, kernel);
}

void BrightnessRow(const std::uint32_t* row, std::size_t width, std::uint8_t* out) {
  HWY_DYNAMIC_DISPATCH(Brightness)(row, width, out);
}

void RankRow(const std::uint8_t* upper, const std::uint8_t* middle, const std::uint8_t* lower, std::size_t width,
             std::uint32_t rank, std::uint8_t* scratch, std::uint8_t* out) {
  HWY_DYNAMIC_DISPATCH(Rank)(upper, middle, lower, width, rank, scratch, out);
}

}  // namespace glib
#endif  // HWY_ONCE
