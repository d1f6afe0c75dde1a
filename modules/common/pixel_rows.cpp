#include "modules/common/pixel_rows.h"

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

}  // namespace HWY_NAMESPACE
}  // namespace modules
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace modules {

HWY_EXPORT(Three);
HWY_EXPORT(Four);
HWY_EXPORT(SwapOuter);

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

}  // namespace modules
#endif  // HWY_ONCE
