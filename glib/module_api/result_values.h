#ifndef GLIB_MODULE_API_RESULT_VALUES_H_
#define GLIB_MODULE_API_RESULT_VALUES_H_

#include <cstdint>

namespace glib {

// Results of film and module operations: four letters, the first one highest. A module may answer with others, which
// are passed through.
inline constexpr std::uint32_t RCOK = 0x52434F4B;  // success
inline constexpr std::uint32_t BADA = 0x42414441;  // a range or position that doesn't fit the film
inline constexpr std::uint32_t IERR = 0x49455252;  // nothing to hand over; in a module: damaged or unreadable
inline constexpr std::uint32_t NSUP = 0x4E535550;  // no module answers, or it can't do what was asked
inline constexpr std::uint32_t TMIS = 0x544D4953;  // the format has no thumbnails

}  // namespace glib

#endif  // GLIB_MODULE_API_RESULT_VALUES_H_
