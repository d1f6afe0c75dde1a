#include "glib/color/nearest_listed.h"

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

void NearestOfPixels(CandidateLists& lists, const std::uint32_t* colors, std::size_t count, const std::uint8_t* held,
                     std::uint8_t* indices) {
  (held == nullptr ? NearestOfRow<false> : NearestOfRow<true>)(lists, colors, count, held, indices);
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
