#ifndef GLIB_PIXEL_STREAM_ROW_H_
#define GLIB_PIXEL_STREAM_ROW_H_

#include <cstddef>
#include <cstdint>

namespace glib {

// A target of at least so many bytes won't be in any cache when it is read next.
inline constexpr std::size_t kStreamFrom = std::size_t{16} << 20;

// Copies words past the caches: a store that replaces a whole line of memory then need not read it first. `source`
// should be in a cache itself. The ranges don't overlap. Stores are in order again after StreamEnd.
void StreamWords(const std::uint32_t* source, std::uint32_t* target, std::size_t count);
void StreamEnd();

}  // namespace glib

#endif  // GLIB_PIXEL_STREAM_ROW_H_
