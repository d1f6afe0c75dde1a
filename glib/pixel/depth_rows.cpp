#include "glib/pixel/depth_rows.h"

#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "glib/pixel/depth_rows.cpp"
#include "hwy/foreach_target.h"  // IWYU pragma: keep
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace glib {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

// Four pixels are 16 bytes on one side and 12 on the other; the step touches 16 on both, so that two more pixels must
// follow.
constexpr std::size_t kStep = 4;
constexpr std::size_t kReach = 6;

void Widen(std::uint32_t* target, const std::uint8_t* source, std::size_t count) {
  const hn::FixedTag<std::uint8_t, 16> d8;
  const hn::FixedTag<std::uint32_t, 4> d32;
  alignas(16) static constexpr std::uint8_t kPlaces[16] = {0, 1, 2, 0, 3, 4, 5, 0, 6, 7, 8, 0, 9, 10, 11, 0};
  const auto places = hn::Load(d8, kPlaces);
  const auto opaque = hn::Set(d32, 0xFF000000U);
  std::size_t i = 0;
  for (; i + kReach <= count; i += kStep) {
    const auto pixels = hn::BitCast(d32, hn::TableLookupBytes(hn::LoadU(d8, source + 3 * i), places));
    hn::StoreU(hn::Or(pixels, opaque), d32, target + i);
  }
  WidenRowPlain(target + i, source + 3 * i, count - i);
}

void Narrow(std::uint8_t* target, const std::uint32_t* source, std::size_t count) {
  const hn::FixedTag<std::uint8_t, 16> d8;
  const hn::FixedTag<std::uint32_t, 4> d32;
  alignas(16) static constexpr std::uint8_t kPlaces[16] = {0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 0, 0, 0, 0};
  const auto places = hn::Load(d8, kPlaces);
  std::size_t i = 0;
  for (; i + kReach <= count; i += kStep) {
    const auto pixels = hn::BitCast(d8, hn::LoadU(d32, source + i));
    hn::StoreU(hn::TableLookupBytes(pixels, places), d8, target + 3 * i);
  }
  NarrowRowPlain(target + 3 * i, source + i, count - i);
}

#else

void Widen(std::uint32_t* target, const std::uint8_t* source, std::size_t count) {
  WidenRowPlain(target, source, count);
}
void Narrow(std::uint8_t* target, const std::uint32_t* source, std::size_t count) {
  NarrowRowPlain(target, source, count);
}

#endif

}  // namespace HWY_NAMESPACE
}  // namespace glib
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace glib {

HWY_EXPORT(Widen);
HWY_EXPORT(Narrow);

void WidenRow(std::uint32_t* target, const std::uint8_t* source, std::size_t count) {
  HWY_DYNAMIC_DISPATCH(Widen)(target, source, count);
}

void WidenRowPlain(std::uint32_t* target, const std::uint8_t* source, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint8_t* p = source + 3 * i;
    target[i] = 0xFF000000U | static_cast<std::uint32_t>(p[2]) << 16 | static_cast<std::uint32_t>(p[1]) << 8 | p[0];
  }
}

void NarrowRow(std::uint8_t* target, const std::uint32_t* source, std::size_t count) {
  HWY_DYNAMIC_DISPATCH(Narrow)(target, source, count);
}

void NarrowRowPlain(std::uint8_t* target, const std::uint32_t* source, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    target[3 * i] = static_cast<std::uint8_t>(source[i]);
    target[3 * i + 1] = static_cast<std::uint8_t>(source[i] >> 8);
    target[3 * i + 2] = static_cast<std::uint8_t>(source[i] >> 16);
  }
}

void ExpandBytes(std::uint32_t* target, const std::uint8_t* source, const std::uint32_t* palette, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) target[i] = palette[source[i]];
}

void ExpandNibbles(std::uint32_t* target, const std::uint8_t* source, const std::uint32_t* palette, std::size_t count) {
  const std::size_t whole = count / 2;
  for (std::size_t i = 0; i < whole; ++i) {
    target[2 * i] = palette[source[i] >> 4];
    target[2 * i + 1] = palette[source[i] & 15];
  }
  if (count % 2 != 0) target[count - 1] = palette[source[whole] >> 4];
}

void ExpandBitsPlain(std::uint32_t* target, const std::uint8_t* source, const std::uint32_t* palette,
                     std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) target[i] = palette[source[i / 8] >> (7 - i % 8) & 1];
}

// Half a byte is one of 16 runs of four words, so that a byte costs two copies of 16 bytes.
void ExpandBits(std::uint32_t* target, const std::uint8_t* source, const std::uint32_t* palette, std::size_t count) {
  constexpr std::size_t kWorthATable = 128;
  if (count < kWorthATable) return ExpandBitsPlain(target, source, palette, count);
  std::uint32_t runs[16][4];
  for (std::uint32_t half = 0; half < 16; ++half) {
    for (std::uint32_t i = 0; i < 4; ++i) runs[half][i] = palette[half >> (3 - i) & 1];
  }
  const std::size_t whole = count / 8;
  for (std::size_t i = 0; i < whole; ++i) {
    std::memcpy(target + 8 * i, runs[source[i] >> 4], sizeof runs[0]);
    std::memcpy(target + 8 * i + 4, runs[source[i] & 15], sizeof runs[0]);
  }
  ExpandBitsPlain(target + 8 * whole, source + whole, palette, count % 8);
}

void UnpackRow(std::uint8_t* target, const std::uint8_t* source, std::size_t count, std::int32_t bits) {
  if (bits == 8) {
    std::memcpy(target, source, count);
  } else if (bits == 4) {
    for (std::size_t i = 0; i < count; ++i) {
      target[i] = static_cast<std::uint8_t>(i % 2 == 0 ? source[i / 2] >> 4 : source[i / 2] & 15);
    }
  } else {
    for (std::size_t i = 0; i < count; ++i) target[i] = source[i / 8] >> (7 - i % 8) & 1;
  }
}

}  // namespace glib
#endif  // HWY_ONCE
