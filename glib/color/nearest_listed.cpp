#include "glib/color/nearest_listed.h"

#include <array>
#include <cstring>

#include "glib/color/color_page.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "glib/color/nearest_listed.cpp"
#include "hwy/foreach_target.h"
//
#include "glib/color/nearest_candidates-inl.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace glib {
namespace HWY_NAMESPACE {

template <bool kHeld>
void NearestOfRow(CandidateLists& lists, const std::uint32_t* colors, std::size_t count, const std::uint8_t* held,
                  std::uint8_t* indices) {
  std::uint32_t last = kNoColor;
  std::uint8_t index = 0;
  for (std::size_t x = 0; x < count; ++x) {
    const std::uint32_t color = colors[x];
    if (color != last) {
      last = color;
      index = 0;
      if (HasColor(color)) {
        const CandidateLists::List list = lists.ListOf(color);
        index = NearestOf(lists.Groups() + list.first, list.count, lists.RedGreen(color), lists.Blue(color));
      }
    }
    if (!kHeld || held[x] == 0) indices[x] = index;
  }
}

#if HWY_TARGET == HWY_SCALAR || HWY_HAVE_SCALABLE

std::size_t NearestOfBlocks(CandidateLists&, const std::uint32_t*, std::size_t, std::uint8_t*) { return 0; }

#else

constexpr std::size_t kBlock = 8;

// Cubes and places of a block of pixels.
struct BlockPlaces {
  HWY_ALIGN std::uint32_t cubes[kBlock];
  HWY_ALIGN std::int32_t redGreen[kBlock];
  HWY_ALIGN std::int32_t blue[kBlock];
};

HWY_INLINE void PlacesOf(const std::uint32_t* colors, const std::array<std::int32_t, 3>& scales, BlockPlaces& places) {
  const hn::CappedTag<std::uint32_t, kBlock> d;
  const hn::RebindToSigned<decltype(d)> dSigned;
  const auto byte = hn::Set(d, 255);
  const auto half = hn::Set(d, 1U << (CandidateLists::kScaleBits - 1));
  const auto axis = [&](hn::Vec<decltype(d)> level, std::int32_t scale) HWY_ATTR {
    const auto scaled = hn::Mul(level, hn::Set(d, static_cast<std::uint32_t>(scale)));
    return hn::ShiftRight<CandidateLists::kScaleBits>(hn::Add(scaled, half));
  };
  for (std::size_t i = 0; i < kBlock; i += hn::Lanes(d)) {
    const auto word = hn::LoadU(d, colors + i);
    const auto red = hn::And(hn::ShiftRight<16>(word), byte);
    const auto green = hn::And(hn::ShiftRight<8>(word), byte);
    const auto blue = hn::And(word, byte);
    const auto high = hn::ShiftLeft<10>(hn::ShiftRight<3>(red));
    const auto middle = hn::ShiftLeft<5>(hn::ShiftRight<3>(green));
    hn::Store(hn::Or(hn::Or(high, middle), hn::ShiftRight<3>(blue)), d, places.cubes + i);
    const auto redGreen = hn::Or(axis(red, scales[0]), hn::ShiftLeft<16>(axis(green, scales[1])));
    hn::Store(hn::BitCast(dSigned, redGreen), dSigned, places.redGreen + i);
    hn::Store(hn::BitCast(dSigned, axis(blue, scales[2])), dSigned, places.blue + i);
  }
}

using FourTag = hn::FixedTag<std::int32_t, 4>;

// The least key of each of four colours.
HWY_INLINE hn::Vec<FourTag> LeastOfFour(const CandidateGroup* groups, const std::uint32_t* lists,
                                        const BlockPlaces& places, std::size_t first) {
  const FourTag d;
  const hn::Repartition<std::int64_t, FourTag> dPair;
  const auto folded = [&](std::size_t i) HWY_ATTR {
    const CandidateLists::List list = CandidateLists::ListIn(lists, places.cubes[i]);
    const auto keys = LeastKeys(groups + list.first, list.count, places.redGreen[i], places.blue[i]);
#if HWY_MAX_BYTES >= 32
    return hn::Min(hn::LowerHalf(d, keys), hn::UpperHalf(d, keys));
#else
    return keys;
#endif
  };
  const auto k0 = folded(first);
  const auto k1 = folded(first + 1);
  const auto k2 = folded(first + 2);
  const auto k3 = folded(first + 3);
  const auto k01 = hn::BitCast(dPair, hn::Min(hn::InterleaveLower(d, k0, k1), hn::InterleaveUpper(d, k0, k1)));
  const auto k23 = hn::BitCast(dPair, hn::Min(hn::InterleaveLower(d, k2, k3), hn::InterleaveUpper(d, k2, k3)));
  return hn::Min(hn::BitCast(d, hn::InterleaveLower(dPair, k01, k23)),
                 hn::BitCast(d, hn::InterleaveUpper(dPair, k01, k23)));
}

// Pixels in blocks: what is done for one after the other else, up to the search, is done for all at once, and the least
// of the lanes of four vectors costs little more than that of one. Gives how many pixels were done.
std::size_t NearestOfBlocks(CandidateLists& lists, const std::uint32_t* colors, std::size_t count,
                            std::uint8_t* indices) {
  const FourTag d;
  const hn::Rebind<std::uint8_t, FourTag> dByte;
  const hn::Repartition<std::uint32_t, FourTag> dWord;
  const std::array<std::int32_t, 3> scales = lists.AxisScales();
  if (scales[0] == 0) return 0;
  BlockPlaces places;
  std::size_t x = 0;
  for (; x + kBlock <= count; x += kBlock) {
    // A block like the one before it: areas of one colour.
    if (x != 0 && std::memcmp(colors + x, colors + x - 1, kBlock * 4) == 0) {
      std::memset(indices + x, indices[x - 1], kBlock);
      continue;
    }
    PlacesOf(colors + x, scales, places);
    for (const std::uint32_t cube : places.cubes) lists.Prepare(cube);
    const CandidateGroup* groups = lists.Groups();
    const std::uint32_t* known = lists.Lists();
    for (std::size_t i = 0; i < kBlock; i += 4) {
      // Words with a colour are negative as signed numbers.
      const auto signs = hn::ShiftRight<31>(hn::BitCast(d, hn::LoadU(dWord, colors + x + i)));
      const auto index = hn::And(LeastOfFour(groups, known, places, i), hn::And(signs, hn::Set(d, 255)));
      hn::StoreU(hn::DemoteTo(dByte, index), dByte, indices + x + i);
    }
  }
  return x;
}

#endif

void NearestOfPixels(CandidateLists& lists, const std::uint32_t* colors, std::size_t count, const std::uint8_t* held,
                     std::uint8_t* indices) {
  if (held != nullptr) return NearestOfRow<true>(lists, colors, count, held, indices);
  const std::size_t done = NearestOfBlocks(lists, colors, count, indices);
  NearestOfRow<false>(lists, colors + done, count - done, nullptr, indices + done);
}

}  // namespace HWY_NAMESPACE
}  // namespace glib
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace glib {

HWY_EXPORT(NearestOfPixels);

void FindNearest(CandidateLists& lists, const std::uint32_t* colors, std::size_t count, const std::uint8_t* held,
                 std::uint8_t* indices) {
  HWY_DYNAMIC_DISPATCH(NearestOfPixels)(lists, colors, count, held, indices);
}

}  // namespace glib
#endif  // HWY_ONCE
