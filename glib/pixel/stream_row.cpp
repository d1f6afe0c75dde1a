#include "glib/pixel/stream_row.h"

#include <algorithm>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "glib/pixel/stream_row.cpp"
#include "hwy/foreach_target.h"
//
#include "hwy/cache_control.h"
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace glib {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// `target` begins on a line and `count` fills lines.
void StreamLines(const std::uint32_t* source, std::uint32_t* target, std::size_t count) {
  const hn::CappedTag<std::uint32_t, 16> d;
  for (std::size_t i = 0; i < count; i += hn::Lanes(d)) hn::Stream(hn::LoadU(d, source + i), d, target + i);
}

}  // namespace HWY_NAMESPACE
}  // namespace glib
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace glib {

HWY_EXPORT(StreamLines);

void StreamWords(const std::uint32_t* source, std::uint32_t* target, std::size_t count) {
  constexpr std::size_t kLine = 16;  // words
  const std::size_t offset = reinterpret_cast<std::uintptr_t>(target) / sizeof(*target) % kLine;
  const std::size_t head = std::min(count, (kLine - offset) % kLine);
  const std::size_t lines = (count - head) / kLine * kLine;
  std::memcpy(target, source, head * sizeof(*target));
  HWY_DYNAMIC_DISPATCH(StreamLines)(source + head, target + head, lines);
  std::memcpy(target + head + lines, source + head + lines, (count - head - lines) * sizeof(*target));
}

void StreamEnd() { hwy::FlushStream(); }

}  // namespace glib
#endif  // HWY_ONCE
