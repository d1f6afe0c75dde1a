#include "modules/common/pixel_rows.h"

#include <bit>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "modules/common/pixel_rows.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace modules {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

void Three(const std::uint8_t* first, const std::uint8_t* second, const std::uint8_t* third, std::size_t count,
           std::uint8_t* pixels) {
  const hn::ScalableTag<std::uint8_t> d;
  std::size_t i = 0;
  for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
    hn::StoreInterleaved3(hn::LoadU(d, first + i), hn::LoadU(d, second + i), hn::LoadU(d, third + i), d,
                          pixels + 3 * i);
  }
  JoinThreePlain(first + i, second + i, third + i, count - i, pixels + 3 * i);
}

void Four(const std::uint8_t* first, const std::uint8_t* second, const std::uint8_t* third, const std::uint8_t* fourth,
          std::size_t count, std::uint8_t* pixels) {
  const hn::ScalableTag<std::uint8_t> d;
  std::size_t i = 0;
  for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
    hn::StoreInterleaved4(hn::LoadU(d, first + i), hn::LoadU(d, second + i), hn::LoadU(d, third + i),
                          hn::LoadU(d, fourth + i), d, pixels + 4 * i);
  }
  JoinFourPlain(first + i, second + i, third + i, fourth + i, count - i, pixels + 4 * i);
}

void SwapOuter(const std::uint8_t* from, std::size_t count, std::uint8_t* to) {
  const hn::ScalableTag<std::uint8_t> d;
  std::size_t i = 0;
  for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
    hn::Vec<decltype(d)> first, second, third;
    hn::LoadInterleaved3(d, from + 3 * i, first, second, third);
    hn::StoreInterleaved3(third, second, first, d, to + 3 * i);
  }
  SwapOuterBytesPlain(from + 3 * i, count - i, to + 3 * i);
}

#if HWY_TARGET != HWY_SCALAR

// A word is its high byte times 257, and a rest from -255 to 255 that tells of the next number only beyond its half.
template <bool kSwap>
std::size_t RoundSome(const std::uint8_t* words, std::size_t count, std::uint8_t* bytes) {
  const hn::ScalableTag<std::int16_t> d;
  const hn::RebindToUnsigned<decltype(d)> dWords;
  const hn::Rebind<std::uint8_t, decltype(d)> dBytes;
  const auto half = hn::Set(d, 128);
  std::size_t i = 0;
  for (; i + hn::Lanes(d) <= count; i += hn::Lanes(d)) {
    const auto read = hn::BitCast(dWords, hn::LoadU(hn::Repartition<std::uint8_t, decltype(d)>(), words + 2 * i));
    const auto up = hn::ShiftRight<8>(read);
    const auto down = hn::And(read, hn::Set(dWords, 255));
    const auto high = hn::BitCast(d, kSwap ? down : up);
    const auto rest = hn::Sub(hn::BitCast(d, kSwap ? up : down), high);
    const auto more = hn::VecFromMask(d, hn::Gt(rest, half));
    const auto less = hn::VecFromMask(d, hn::Lt(rest, hn::Neg(half)));
    hn::StoreU(hn::DemoteTo(dBytes, hn::Add(hn::Sub(high, more), less)), dBytes, bytes + i);
  }
  return i;
}

#else

template <bool kSwap>
std::size_t RoundSome(const std::uint8_t*, std::size_t, std::uint8_t*) {
  return 0;
}

#endif

void Words(const std::uint8_t* words, std::size_t count, std::uint8_t* bytes) {
  const std::size_t done = RoundSome<false>(words, count, bytes);
  RoundWordsPlain(words + 2 * done, count - done, bytes + done);
}

void BigWords(const std::uint8_t* words, std::size_t count, std::uint8_t* bytes) {
  const std::size_t done = RoundSome<std::endian::native == std::endian::little>(words, count, bytes);
  RoundBigWordsPlain(words + 2 * done, count - done, bytes + done);
}

}  // namespace HWY_NAMESPACE
}  // namespace modules
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace modules {

HWY_EXPORT(Three);
HWY_EXPORT(Four);
HWY_EXPORT(SwapOuter);
HWY_EXPORT(Words);
HWY_EXPORT(BigWords);

void JoinThree(const std::uint8_t* first, const std::uint8_t* second, const std::uint8_t* third, std::size_t count,
               std::uint8_t* pixels) {
  HWY_DYNAMIC_DISPATCH(Three)(first, second, third, count, pixels);
}

void JoinThreePlain(const std::uint8_t* first, const std::uint8_t* second, const std::uint8_t* third, std::size_t count,
                    std::uint8_t* pixels) {
  for (std::size_t i = 0; i < count; ++i, pixels += 3) {
    pixels[0] = first[i];
    pixels[1] = second[i];
    pixels[2] = third[i];
  }
}

void JoinFour(const std::uint8_t* first, const std::uint8_t* second, const std::uint8_t* third,
              const std::uint8_t* fourth, std::size_t count, std::uint8_t* pixels) {
  HWY_DYNAMIC_DISPATCH(Four)(first, second, third, fourth, count, pixels);
}

void JoinFourPlain(const std::uint8_t* first, const std::uint8_t* second, const std::uint8_t* third,
                   const std::uint8_t* fourth, std::size_t count, std::uint8_t* pixels) {
  for (std::size_t i = 0; i < count; ++i, pixels += 4) {
    pixels[0] = first[i];
    pixels[1] = second[i];
    pixels[2] = third[i];
    pixels[3] = fourth[i];
  }
}

void SwapOuterBytes(const std::uint8_t* from, std::size_t count, std::uint8_t* to) {
  HWY_DYNAMIC_DISPATCH(SwapOuter)(from, count, to);
}

void SwapOuterBytesPlain(const std::uint8_t* from, std::size_t count, std::uint8_t* to) {
  for (std::size_t i = 0; i < count; ++i, from += 3, to += 3) {
    const std::uint8_t first = from[0];
    to[0] = from[2];
    to[1] = from[1];
    to[2] = first;
  }
}

namespace {

std::uint8_t Rounded(std::uint32_t word) { return static_cast<std::uint8_t>((word * 255 + 32767) / 65535); }

}  // namespace

void RoundWords(const std::uint8_t* words, std::size_t count, std::uint8_t* bytes) {
  HWY_DYNAMIC_DISPATCH(Words)(words, count, bytes);
}

void RoundWordsPlain(const std::uint8_t* words, std::size_t count, std::uint8_t* bytes) {
  for (std::size_t i = 0; i < count; ++i) {
    std::uint16_t word;
    std::memcpy(&word, words + 2 * i, sizeof word);
    bytes[i] = Rounded(word);
  }
}

void RoundBigWords(const std::uint8_t* words, std::size_t count, std::uint8_t* bytes) {
  HWY_DYNAMIC_DISPATCH(BigWords)(words, count, bytes);
}

void RoundBigWordsPlain(const std::uint8_t* words, std::size_t count, std::uint8_t* bytes) {
  for (std::size_t i = 0; i < count; ++i) bytes[i] = Rounded(words[2 * i] * 256U + words[2 * i + 1]);
}

}  // namespace modules
#endif  // HWY_ONCE
