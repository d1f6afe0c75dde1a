#ifndef GLIB_MODEL_RANGE_H_
#define GLIB_MODEL_RANGE_H_

#include <cstdint>

namespace glib {

inline constexpr std::uint32_t kToTheLast = 0xFFFFFFFF;  // as a count

// Reads a range of slides or layers. False when it begins at or past `size`; else `end` is one past its last element,
// at most `size`.
inline bool RangeEnd(std::uint32_t first, std::uint32_t count, std::uint32_t size, std::uint32_t& end) {
  if (first >= size) return false;
  end = count >= size - first ? size : first + count;
  return true;
}

}  // namespace glib

#endif  // GLIB_MODEL_RANGE_H_
