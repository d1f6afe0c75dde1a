#include "glib/model/over_rows.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "glib/model/over_rows.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace glib {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

// All forms work in 16-bit lanes, two to a pixel: bytes 0 and 2 are the low halves of the lanes (even), bytes 1 and 3
// the high ones (odd), so that nothing is unpacked. Alpha goes through the arithmetic with the colours and is put in
// its place at the end.
using D32 = hn::ScalableTag<std::uint32_t>;
using D16 = hn::Repartition<std::uint16_t, D32>;
using V32 = hn::Vec<D32>;
using V16 = hn::Vec<D16>;

HWY_INLINE V16 Even(V32 pixels) { return hn::And(hn::BitCast(D16(), pixels), hn::Set(D16(), 0xFF)); }
HWY_INLINE V16 Odd(V32 pixels) { return hn::ShiftRight<8>(hn::BitCast(D16(), pixels)); }
HWY_INLINE V32 Joined(V16 even, V16 odd) { return hn::BitCast(D32(), hn::Or(even, hn::ShiftLeft<8>(odd))); }

// The alpha of a pixel in both of its lanes.
HWY_INLINE V16 Alpha(V32 pixels) {
  const V32 alpha = hn::ShiftRight<24>(pixels);
  return hn::BitCast(D16(), hn::Or(alpha, hn::ShiftLeft<16>(alpha)));
}

HWY_INLINE V32 WithAlphaOf(V32 pixels, V32 alpha) {
  const V32 mask = hn::Set(D32(), 0xFF000000U);
  return hn::Or(hn::AndNot(mask, pixels), hn::And(mask, alpha));
}

// Exact for all 16-bit values.
HWY_INLINE V16 By255(V16 value) { return hn::ShiftRight<7>(hn::MulHigh(value, hn::Set(D16(), 0x8081))); }

// d + ((s - d) * a >> 8) without a sign: (d * (256 - a) + s * a) >> 8, where the sum is at most 255 * 256.
HWY_INLINE V32 Mixed(V32 source, V16 targetEven, V16 targetOdd) {
  const V16 alpha = Alpha(source);
  const V16 rest = hn::Sub(hn::Set(D16(), 256), alpha);
  const V16 even = hn::Add(hn::Mul(Even(source), alpha), hn::Mul(targetEven, rest));
  const V16 odd = hn::Add(hn::Mul(Odd(source), alpha), hn::Mul(targetOdd, rest));
  const V16 high = hn::Set(D16(), 0xFF00);
  const V16 mixed = hn::Or(hn::ShiftRight<8>(even), hn::And(high, odd));
  return WithAlphaOf(hn::BitCast(D32(), mixed), source);
}

void Mix(std::uint32_t* target, const std::uint32_t* source, std::size_t count) {
  const D32 d;
  std::size_t i = 0;
  for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
    const V32 below = hn::LoadU(d, target + i);
    hn::StoreU(Mixed(hn::LoadU(d, source + i), Even(below), Odd(below)), d, target + i);
  }
  MixRowPlain(target + i, source + i, count - i);
}

void MixOnColor(std::uint32_t* target, const std::uint32_t* source, std::uint32_t color, std::size_t count) {
  const D32 d;
  const V16 even = Even(hn::Set(d, color));
  const V16 odd = Odd(hn::Set(d, color));
  std::size_t i = 0;
  for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
    hn::StoreU(Mixed(hn::LoadU(d, source + i), even, odd), d, target + i);
  }
  MixRowOnColorPlain(target + i, source + i, color, count - i);
}

void Over(std::uint32_t* target, const std::uint32_t* source, std::size_t count) {
  const D32 d;
  const V16 full = hn::Set(D16(), 255);
  std::size_t i = 0;
  for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
    const V32 above = hn::LoadU(d, source + i);
    const V32 below = hn::LoadU(d, target + i);
    const V16 aboveAlpha = Alpha(above);
    const V16 belowAlpha = Alpha(below);
    // The weights add up to 255, so that the sums are at most 255 * 255.
    const V16 belowWeight = hn::Sub(belowAlpha, By255(hn::Mul(aboveAlpha, belowAlpha)));
    const V16 aboveWeight = hn::Sub(full, belowWeight);
    const V16 even = By255(hn::Add(hn::Mul(Even(above), aboveWeight), hn::Mul(Even(below), belowWeight)));
    const V16 odd = By255(hn::Add(hn::Mul(Odd(above), aboveWeight), hn::Mul(Odd(below), belowWeight)));
    const V16 alpha = hn::Min(hn::Add(aboveAlpha, belowAlpha), full);
    hn::StoreU(WithAlphaOf(Joined(even, odd), hn::ShiftLeft<24>(hn::BitCast(d, alpha))), d, target + i);
  }
  OverRowPlain(target + i, source + i, count - i);
}

void Lay(std::uint32_t* row, std::uint32_t background, std::size_t count) {
  const D32 d;
  const V16 full = hn::Set(D16(), 255);
  const V16 evenBackground = Even(hn::Set(d, background));
  const V16 oddBackground = Odd(hn::Set(d, background));
  std::size_t i = 0;
  for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
    const V32 pixels = hn::LoadU(d, row + i);
    const V16 alpha = Alpha(pixels);
    const auto laid = [&](V16 color, V16 under) {
      return hn::Min(hn::SaturatedSub(hn::Add(By255(hn::Mul(color, alpha)), under), alpha), full);
    };
    const V32 result = Joined(laid(Even(pixels), evenBackground), laid(Odd(pixels), oddBackground));
    hn::StoreU(WithAlphaOf(result, pixels), d, row + i);
  }
  LayOnBackgroundPlain(row + i, background, count - i);
}

#else

void Mix(std::uint32_t* target, const std::uint32_t* source, std::size_t count) { MixRowPlain(target, source, count); }

void MixOnColor(std::uint32_t* target, const std::uint32_t* source, std::uint32_t color, std::size_t count) {
  MixRowOnColorPlain(target, source, color, count);
}

void Over(std::uint32_t* target, const std::uint32_t* source, std::size_t count) {
  OverRowPlain(target, source, count);
}

void Lay(std::uint32_t* row, std::uint32_t background, std::size_t count) {
  LayOnBackgroundPlain(row, background, count);
}

#endif

}  // namespace HWY_NAMESPACE
}  // namespace glib
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace glib {
namespace {

constexpr int kColors = 3;

std::uint8_t* Bytes(std::uint32_t* row) { return reinterpret_cast<std::uint8_t*>(row); }
const std::uint8_t* Bytes(const std::uint32_t* row) { return reinterpret_cast<const std::uint8_t*>(row); }

}  // namespace

HWY_EXPORT(Mix);
HWY_EXPORT(MixOnColor);
HWY_EXPORT(Over);
HWY_EXPORT(Lay);

void MixRow(std::uint32_t* target, const std::uint32_t* source, std::size_t count) {
  HWY_DYNAMIC_DISPATCH(Mix)(target, source, count);
}

void MixRowPlain(std::uint32_t* target, const std::uint32_t* source, std::size_t count) {
  std::uint8_t* d = Bytes(target);
  const std::uint8_t* s = Bytes(source);
  for (std::size_t i = 0; i < count; ++i, d += 4, s += 4) {
    const int sa = s[3];
    for (int c = 0; c < kColors; ++c) d[c] = static_cast<std::uint8_t>(d[c] + ((s[c] - d[c]) * sa >> 8));
    d[3] = static_cast<std::uint8_t>(sa);
  }
}

void MixRowOnColor(std::uint32_t* target, const std::uint32_t* source, std::uint32_t color, std::size_t count) {
  HWY_DYNAMIC_DISPATCH(MixOnColor)(target, source, color, count);
}

void MixRowOnColorPlain(std::uint32_t* target, const std::uint32_t* source, std::uint32_t color, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    std::uint32_t pixel = color;
    MixRowPlain(&pixel, source + i, 1);
    target[i] = pixel;
  }
}

void OverRow(std::uint32_t* target, const std::uint32_t* source, std::size_t count) {
  HWY_DYNAMIC_DISPATCH(Over)(target, source, count);
}

void OverRowPlain(std::uint32_t* target, const std::uint32_t* source, std::size_t count) {
  std::uint8_t* d = Bytes(target);
  const std::uint8_t* s = Bytes(source);
  for (std::size_t i = 0; i < count; ++i, d += 4, s += 4) {
    const int sa = s[3];
    const int da = d[3];
    const int p = sa * da / 255;
    const int sourceWeight = 255 + p - da;
    const int targetWeight = da - p;
    for (int c = 0; c < kColors; ++c) {
      d[c] = static_cast<std::uint8_t>((s[c] * sourceWeight + d[c] * targetWeight) / 255);
    }
    d[3] = static_cast<std::uint8_t>(std::min(sa + da, 255));
  }
}

void LayOnBackground(std::uint32_t* row, std::uint32_t background, std::size_t count) {
  HWY_DYNAMIC_DISPATCH(Lay)(row, background, count);
}

void LayOnBackgroundPlain(std::uint32_t* row, std::uint32_t background, std::size_t count) {
  std::uint8_t* p = Bytes(row);
  const std::uint8_t* b = Bytes(&background);
  for (std::size_t i = 0; i < count; ++i, p += 4) {
    const int alpha = p[3];
    for (int c = 0; c < kColors; ++c) {
      p[c] = static_cast<std::uint8_t>(std::clamp(p[c] * alpha / 255 - alpha + b[c], 0, 255));
    }
  }
}

}  // namespace glib
#endif  // HWY_ONCE
