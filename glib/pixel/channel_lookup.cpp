#include <cstddef>
#include <cstdint>

#include "glib/pixel/color_effect.h"
#include "platform/vector_targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "glib/pixel/channel_lookup.cpp"
#include "hwy/foreach_target.h"
//
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace glib {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// All that fill whole vectors; gives how many pixels that were. With vectors of 16 bytes look-ups one by one are
// faster.
//
// A shuffle looks up the low half of a value in 16 entries, and gives 0 where the value's sign is set. Counted down by
// 16 a step, a value below 128 takes part up to the step of its own 16 entries. The shuffles hold what differs from the
// 16 entries before, so that all up to there add up to its own. Values from 128 on do the same in the second half.
std::size_t LookUpVectors(std::uint32_t* pixels, std::size_t count, const std::uint8_t* table) {
#if HWY_TARGET <= HWY_AVX2 && HWY_ARCH_X86
  const hn::ScalableTag<std::uint32_t> d;
  const hn::Repartition<std::uint8_t, decltype(d)> d8;
  const hn::RebindToSigned<decltype(d8)> dSigned;
  constexpr std::size_t kSteps = 8;
  const auto entries = [&](std::size_t k) HWY_ATTR { return hn::LoadDup128(d8, table + 16 * k); };
  hn::Vec<decltype(d8)> low[kSteps] = {entries(0)};
  hn::Vec<decltype(d8)> high[kSteps] = {entries(kSteps)};
  for (std::size_t k = 1; k < kSteps; ++k) {
    low[k] = hn::Xor(entries(k), entries(k - 1));
    high[k] = hn::Xor(entries(kSteps + k), entries(kSteps + k - 1));
  }
  const auto sixteen = hn::Set(dSigned, 16);
  const auto colours = hn::BitCast(d8, hn::Set(d, 0x00FFFFFF));
  const auto lookUp = [&](hn::Vec<decltype(dSigned)> value, const hn::Vec<decltype(d8)>* steps) HWY_ATTR {
    auto found = hn::TableLookupBytes(steps[0], hn::BitCast(d8, value));
    HWY_UNROLL(kSteps)
    for (std::size_t k = 1; k < kSteps; ++k) {
      value = hn::SaturatedSub(value, sixteen);
      found = hn::Xor(found, hn::TableLookupBytes(steps[k], hn::BitCast(d8, value)));
    }
    return found;
  };
  std::size_t i = 0;
  for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
    const auto values = hn::BitCast(dSigned, hn::LoadU(d, pixels + i));
    const auto found = hn::Or(lookUp(values, low), lookUp(hn::Xor(values, hn::Set(dSigned, -128)), high));
    const auto result = hn::OrAnd(hn::AndNot(colours, hn::BitCast(d8, values)), found, colours);
    hn::StoreU(hn::BitCast(d, result), d, pixels + i);
  }
  return i;
#else
  (void)pixels, (void)count, (void)table;
  return 0;
#endif
}

}  // namespace HWY_NAMESPACE
}  // namespace glib
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace glib {

HWY_EXPORT(LookUpVectors);

namespace {

#if HWY_ARCH_X86

// The same with shuffles among 128 entries, which Highway has no call for.
__attribute__((target("avx512f,avx512bw,avx512vbmi"))) std::size_t LookUpWideVectors(std::uint32_t* pixels,
                                                                                     std::size_t count,
                                                                                     const std::uint8_t* table) {
  const __m512i first = _mm512_loadu_si512(table);
  const __m512i second = _mm512_loadu_si512(table + 64);
  const __m512i third = _mm512_loadu_si512(table + 128);
  const __m512i fourth = _mm512_loadu_si512(table + 192);
  constexpr __mmask64 kColours = 0x7777777777777777U;
  std::size_t i = 0;
  for (; i + 16 <= count; i += 16) {
    const __m512i values = _mm512_loadu_si512(pixels + i);
    const __m512i low = _mm512_permutex2var_epi8(first, values, second);
    const __m512i high = _mm512_permutex2var_epi8(third, values, fourth);
    const __m512i result =
        _mm512_mask_mov_epi8(_mm512_mask_mov_epi8(values, kColours, low), kColours & _mm512_movepi8_mask(values), high);
    _mm512_storeu_si512(pixels + i, result);
  }
  return i;
}

#endif

std::size_t LookUpMost(std::uint32_t* pixels, std::size_t count, const ChannelTable& table) {
#if HWY_ARCH_X86
  if (platform::HasWideByteTables()) return LookUpWideVectors(pixels, count, table.data());
#endif
  return HWY_DYNAMIC_DISPATCH(LookUpVectors)(pixels, count, table.data());
}

}  // namespace

void ApplyTables(std::uint32_t* pixels, std::size_t count, const ChannelTable& blue, const ChannelTable& green,
                 const ChannelTable& red) {
  const bool same = blue == green && green == red;
  for (std::size_t i = same ? LookUpMost(pixels, count, blue) : 0; i < count; ++i) {
    const std::uint32_t word = pixels[i];
    pixels[i] = (word & 0xFF000000U) | static_cast<std::uint32_t>(red[word >> 16 & 255]) << 16 |
                static_cast<std::uint32_t>(green[word >> 8 & 255]) << 8 | blue[word & 255];
  }
}

}  // namespace glib
#endif  // HWY_ONCE
