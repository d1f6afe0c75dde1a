#include "glib/pixel/color_effect.h"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "glib/pixel/color_effect.cpp"
#include "hwy/foreach_target.h"
//
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace glib {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using D = hn::ScalableTag<std::uint32_t>;

// Calls `change` for all pixels, a vector at a time; the last few by way of a buffer.
template <typename Change>
HWY_INLINE void ForPixels(std::uint32_t* pixels, std::size_t count, Change change) {
  const D d;
  const std::size_t lanes = hn::Lanes(d);
  std::size_t i = 0;
  for (; i + lanes <= count; i += lanes) hn::StoreU(change(hn::LoadU(d, pixels + i)), d, pixels + i);
  if (i == count) return;
  HWY_ALIGN std::uint32_t rest[HWY_MAX_BYTES / sizeof(std::uint32_t)] = {};
  std::copy(pixels + i, pixels + count, rest);
  hn::Store(change(hn::Load(d, rest)), d, rest);
  std::copy(rest, rest + (count - i), pixels + i);
}

// `up` and `down` are words of amounts, one byte a channel.
void AddSubtract(std::uint32_t* pixels, std::size_t count, std::uint32_t up, std::uint32_t down) {
  const hn::ScalableTag<std::uint8_t> d;
  const std::size_t lanes = hn::Lanes(d);
  HWY_ALIGN std::uint8_t ups[HWY_MAX_BYTES + 4];
  HWY_ALIGN std::uint8_t downs[HWY_MAX_BYTES + 4];
  for (std::size_t i = 0; i < sizeof(ups); ++i) {
    ups[i] = static_cast<std::uint8_t>(up >> 8 * (i % 4));
    downs[i] = static_cast<std::uint8_t>(down >> 8 * (i % 4));
  }
  auto* bytes = reinterpret_cast<std::uint8_t*>(pixels);
  const auto change = [&](auto tag, std::size_t i) HWY_ATTR {
    const auto raised = hn::SaturatedAdd(hn::LoadU(tag, bytes + i), hn::LoadU(tag, ups + i % 4));
    hn::StoreU(hn::SaturatedSub(raised, hn::LoadU(tag, downs + i % 4)), tag, bytes + i);
  };
  std::size_t i = 0;
  for (; i + lanes <= 4 * count; i += lanes) change(d, i);
  for (; i < 4 * count; ++i) change(hn::CappedTag<std::uint8_t, 1>(), i);
}

// A factor's whole and fractional part are multiplied apart, each within 16 bits.
void Ramps(std::uint32_t* pixels, std::size_t count, const ChannelRamp* ramps) {
  constexpr std::size_t kRoom = HWY_MAX_BYTES / sizeof(std::uint16_t) + 4;
  std::uint16_t lows[kRoom];
  std::uint16_t wholes[kRoom];
  std::uint16_t fractions[kRoom];
  for (std::size_t i = 0; i < kRoom; ++i) {
    const ChannelRamp ramp = i % 4 == 3 ? ChannelRamp{0, 0x10000} : ramps[i % 4];
    lows[i] = ramp.low;
    wholes[i] = static_cast<std::uint16_t>(ramp.step >> 16);
    fractions[i] = static_cast<std::uint16_t>(ramp.step);
  }
  using D16 = hn::ScalableTag<std::uint16_t>;
  const D16 d16;
  const hn::Rebind<std::uint8_t, D16> d8;
  const hn::Rebind<std::int16_t, D16> dSigned;
  const std::size_t lanes = hn::Lanes(d16);
  auto* bytes = reinterpret_cast<std::uint8_t*>(pixels);
  const auto top = hn::Set(d16, 255);
  std::size_t i = 0;
  for (; i + lanes <= 4 * count; i += lanes) {
    const std::size_t c = i % 4;  // 0 but for vectors of one lane
    const auto value = hn::SaturatedSub(hn::PromoteTo(d16, hn::LoadU(d8, bytes + i)), hn::LoadU(d16, lows + c));
    const auto whole = hn::Mul(value, hn::LoadU(d16, wholes + c));  // at most 255 x 256
    const auto sum = hn::SaturatedAdd(whole, hn::MulHigh(value, hn::LoadU(d16, fractions + c)));
    hn::StoreU(hn::DemoteTo(d8, hn::BitCast(dSigned, hn::Min(sum, top))), d8, bytes + i);
  }
  for (; i < 4 * count; ++i) {
    const std::size_t c = i % 4;
    const std::uint32_t value = bytes[i] < lows[c] ? 0U : static_cast<std::uint32_t>(bytes[i] - lows[c]);
    bytes[i] = static_cast<std::uint8_t>(std::min(value * wholes[c] + (value * fractions[c] >> 16), 255U));
  }
}

void Invert(std::uint32_t* pixels, std::size_t count) {
  const auto colours = hn::Set(D(), 0x00FFFFFF);
  ForPixels(pixels, count, [&](auto words) HWY_ATTR { return hn::Xor(words, colours); });
}

// The three colours become (b x blue + g x green + r x red) >> 16.
void Gray(std::uint32_t* pixels, std::size_t count, std::uint32_t b, std::uint32_t g, std::uint32_t r) {
  const D d;
  const auto low = hn::Set(d, 255);
  const auto alphaMask = hn::Set(d, 0xFF000000);
  const auto blueWeight = hn::Set(d, b);
  const auto greenWeight = hn::Set(d, g);
  const auto redWeight = hn::Set(d, r);
  ForPixels(pixels, count, [&](auto words) HWY_ATTR {
    const auto blue = hn::Mul(hn::And(words, low), blueWeight);
    const auto green = hn::Mul(hn::And(hn::ShiftRight<8>(words), low), greenWeight);
    const auto red = hn::Mul(hn::And(hn::ShiftRight<16>(words), low), redWeight);
    const auto value = hn::ShiftRight<16>(hn::Add(hn::Add(blue, green), red));
    const auto colours = hn::Or(hn::Or(value, hn::ShiftLeft<8>(value)), hn::ShiftLeft<16>(value));
    return hn::Or(colours, hn::And(words, alphaMask));
  });
}

// `low` and `high` have four entries, blue first, and hold extremes already.
void Range(const std::uint32_t* pixels, std::size_t count, std::uint8_t* low, std::uint8_t* high) {
  const hn::ScalableTag<std::uint8_t> d;
  const std::size_t lanes = hn::Lanes(d);
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(pixels);
  const auto widen = [&](const std::uint8_t* smallest, const std::uint8_t* largest, std::size_t values) {
    for (std::size_t i = 0; i < values; ++i) {
      low[i % 4] = std::min(low[i % 4], smallest[i]);
      high[i % 4] = std::max(high[i % 4], largest[i]);
    }
  };
  std::size_t i = 0;
  if (lanes >= 4) {
    auto smallest = hn::Set(d, 255);
    auto largest = hn::Zero(d);
    for (; i + lanes <= 4 * count; i += lanes) {
      const auto values = hn::LoadU(d, bytes + i);
      smallest = hn::Min(smallest, values);
      largest = hn::Max(largest, values);
    }
    HWY_ALIGN std::uint8_t ends[2][HWY_MAX_BYTES];
    hn::Store(smallest, d, ends[0]);
    hn::Store(largest, d, ends[1]);
    widen(ends[0], ends[1], lanes);
  }
  widen(bytes + i, bytes + i, 4 * count - i);
}

}  // namespace HWY_NAMESPACE
}  // namespace glib
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace glib {

HWY_EXPORT(AddSubtract);
HWY_EXPORT(Invert);
HWY_EXPORT(Ramps);
HWY_EXPORT(Gray);
HWY_EXPORT(Range);

void ApplyRamps(std::uint32_t* pixels, std::size_t count, const ChannelRamp* ramps) {
  HWY_DYNAMIC_DISPATCH(Ramps)(pixels, count, ramps);
}

void ShiftChannels(std::uint32_t* pixels, std::size_t count, std::int32_t blue, std::int32_t green, std::int32_t red) {
  std::uint32_t up = 0;
  std::uint32_t down = 0;
  for (const std::int32_t amount : {red, green, blue}) {
    up = up << 8 | static_cast<std::uint32_t>(std::clamp(amount, 0, 255));
    down = down << 8 | static_cast<std::uint32_t>(std::clamp(-std::max(amount, -255), 0, 255));
  }
  HWY_DYNAMIC_DISPATCH(AddSubtract)(pixels, count, up, down);
}

void InvertChannels(std::uint32_t* pixels, std::size_t count) { HWY_DYNAMIC_DISPATCH(Invert)(pixels, count); }

void WeightedGray(std::uint32_t* pixels, std::size_t count) {
  HWY_DYNAMIC_DISPATCH(Gray)(pixels, count, 77 * 256, 150 * 256, 29 * 256);
}

void MeanGray(std::uint32_t* pixels, std::size_t count) {
  constexpr std::uint32_t kThird = 21846;  // of 65536, rounded up: exact for sums up to 765
  HWY_DYNAMIC_DISPATCH(Gray)(pixels, count, kThird, kThird, kThird);
}

ChannelRange RangeOf(const std::uint32_t* pixels, std::size_t count) {
  ChannelRange range{{255, 255, 255, 255}, {0, 0, 0, 0}};
  HWY_DYNAMIC_DISPATCH(Range)(pixels, count, range.low, range.high);
  return range;
}

void Mosaic(std::uint32_t* pixels, std::int32_t width, std::int32_t height, std::int64_t blockWidth,
            std::int64_t blockHeight) {
  const auto row = [&](std::int64_t y) { return pixels + y * width; };
  for (std::int64_t top = 0; top < height; top += blockHeight) {
    const std::uint32_t* samples = row(std::min<std::int64_t>(top + blockHeight / 2 + 1, height - 1));
    const std::int64_t bottom = std::min<std::int64_t>(top + blockHeight, height);
    // The first row of the blocks is made whole before any other, and the samples may stand in it or in the others: a
    // sample to the right of where the row has come to still has its old value.
    std::uint32_t* first = row(top);
    for (std::int64_t left = 0; left < width; left += blockWidth) {
      const std::uint32_t sample = samples[std::min<std::int64_t>(left + blockWidth / 2 + 1, width - 1)];
      std::fill(first + left, first + std::min<std::int64_t>(left + blockWidth, width), sample);
    }
    for (std::int64_t y = top + 1; y < bottom; ++y) std::copy(first, first + width, row(y));
  }
}

}  // namespace glib
#endif  // HWY_ONCE
