#ifndef MODULES_QMNG_LOOPS_H_
#define MODULES_QMNG_LOOPS_H_

#include <cstdint>
#include <span>
#include <vector>

namespace qmng {

// Loops of an animation that would play for ages (mostly the one around all of it, which never ends) are of no use in a
// list of frames, and the library plays them all. Gives a copy of the file whose loops run once, or nothing if the
// library may play them as they are.
std::vector<std::uint8_t> UnrollEndlessLoops(std::span<const std::uint8_t> file);

}  // namespace qmng

#endif  // MODULES_QMNG_LOOPS_H_
