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

#if HWY_TARGET <= HWY_AVX2 && HWY_ARCH_X86

using D = hn::ScalableTag<std::uint32_t>;
using D8 = hn::Repartition<std::uint8_t, D>;
using DSigned = hn::RebindToSigned<D8>;

// The three colours of four vectors of pixels fill three vectors.
struct Packed {
  hn::Vec<D8> part[3];
};

// 16 bytes for every block of a vector.
HWY_INLINE hn::Vec<D8> Blocks(const std::uint8_t* bytes) { return hn::LoadDup128(D8(), bytes); }

HWY_INLINE Packed Pack(const hn::Vec<D8>* pixels) {
  static constexpr std::uint8_t kColours[16] = {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 128, 128, 128, 128};
  const D8 d;
  const auto order = Blocks(kColours);
  const auto a = hn::TableLookupBytesOr0(pixels[0], order);
  const auto b = hn::TableLookupBytesOr0(pixels[1], order);
  const auto c = hn::TableLookupBytesOr0(pixels[2], order);
  const auto e = hn::TableLookupBytesOr0(pixels[3], order);
  return {{hn::Or(a, hn::ShiftLeftBytes<12>(d, b)), hn::Or(hn::ShiftRightBytes<4>(d, b), hn::ShiftLeftBytes<8>(d, c)),
           hn::Or(hn::ShiftRightBytes<8>(d, c), hn::ShiftLeftBytes<4>(d, e))}};
}

// The pixels keep their alpha.
HWY_INLINE void Unpack(const Packed& colours, hn::Vec<D8>* pixels) {
  static constexpr std::uint8_t kPlaces[16] = {0, 1, 2, 128, 3, 4, 5, 128, 6, 7, 8, 128, 9, 10, 11, 128};
  const D8 d;
  const auto order = Blocks(kPlaces);
  const auto alpha = hn::BitCast(d, hn::Set(D(), 0xFF000000));
  const auto& [a, b, c] = colours.part;
  const hn::Vec<D8> triples[4] = {a, hn::CombineShiftRightBytes<12>(d, b, a), hn::CombineShiftRightBytes<8>(d, c, b),
                                  hn::ShiftRightBytes<4>(d, c)};
  HWY_UNROLL(4)
  for (std::size_t i = 0; i < 4; ++i) {
    pixels[i] = hn::OrAnd(hn::TableLookupBytesOr0(triples[i], order), pixels[i], alpha);
  }
}

// Adds to `found` what the eight steps of one half of the table say.
//
// A shuffle looks up the low half of a value in 16 entries, and gives 0 where the value's sign is set. Counted down by
// 16 a step, a value below 128 takes part up to the step of its own 16 entries. The steps hold what differs from the 16
// entries before, so that all up to there add up to its own.
HWY_INLINE void AddHalf(Packed values, const std::uint8_t (*steps)[16], Packed& found) {
  const DSigned d;
  HWY_UNROLL(8)
  for (std::size_t k = 0; k < 8; ++k) {
    const auto step = Blocks(steps[k]);
    HWY_UNROLL(3)
    for (std::size_t i = 0; i < 3; ++i) {
      found.part[i] = hn::Xor(found.part[i], hn::TableLookupBytes(step, values.part[i]));
      values.part[i] = hn::BitCast(D8(), hn::SaturatedSub(hn::BitCast(d, values.part[i]), hn::Set(d, 16)));
    }
  }
}

#endif

// All that fill four vectors; gives how many pixels that were. With vectors of 16 bytes look-ups one by one are faster.
std::size_t LookUpVectors(std::uint32_t* pixels, std::size_t count, const std::uint8_t* table) {
#if HWY_TARGET <= HWY_AVX2 && HWY_ARCH_X86
  alignas(16) std::uint8_t steps[16][16];
  for (std::size_t i = 0; i < 256; ++i) {
    steps[i / 16][i % 16] = i / 16 % 8 == 0 ? table[i] : static_cast<std::uint8_t>(table[i] ^ table[i - 16]);
  }
  const D d;
  const D8 d8;
  const std::size_t lanes = hn::Lanes(d);
  std::size_t i = 0;
  for (; i + 4 * lanes <= count; i += 4 * lanes) {
    hn::Vec<D8> words[4];
    HWY_UNROLL(4)
    for (std::size_t k = 0; k < 4; ++k) words[k] = hn::BitCast(d8, hn::LoadU(d, pixels + i + k * lanes));
    Packed values = Pack(words);
    Packed found = {{hn::Zero(d8), hn::Zero(d8), hn::Zero(d8)}};
    AddHalf(values, steps, found);
    HWY_UNROLL(3)
    for (std::size_t k = 0; k < 3; ++k) values.part[k] = hn::Xor(values.part[k], hn::Set(d8, 128));
    AddHalf(values, steps + 8, found);
    Unpack(found, words);
    HWY_UNROLL(4)
    for (std::size_t k = 0; k < 4; ++k) hn::StoreU(hn::BitCast(d, words[k]), d, pixels + i + k * lanes);
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
