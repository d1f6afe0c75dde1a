#ifndef MODULES_QMNG_FRAMES_H_
#define MODULES_QMNG_FRAMES_H_

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace qmng {

// One picture of an animation, as a file of its own.
struct Frame {
  std::vector<std::uint8_t> file;  // PNG or JNG
  bool photograph = false;         // JNG
  bool repeated = false;           // by a loop
  std::uint32_t delay = 10;        // hundredths of a second
};

// Takes an animation apart: gives its pictures to `visit` in the order in which they play, until one is answered with
// false. Loops play as often as they say; those that would play for ages (mostly the one around everything, which never
// ends) play once. Objects are neither moved nor laid over each other.
void ForEachFrame(std::span<const std::uint8_t> file, const std::function<bool(const Frame&)>& visit);

}  // namespace qmng

#endif  // MODULES_QMNG_FRAMES_H_
