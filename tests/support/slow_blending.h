#ifndef TESTS_SUPPORT_SLOW_BLENDING_H_
#define TESTS_SUPPORT_SLOW_BLENDING_H_

#include <array>
#include <cstdint>

namespace test_support {

// A 32-bit pixel as it lies in memory: blue, green, red, alpha.
using Pixel = std::array<int, 4>;

Pixel ToPixel(std::uint32_t word);
std::uint32_t ToWord(const Pixel& pixel);

// Plain, pixel by pixel forms of laying `s` on `d`. Nothing here is meant to be fast.
Pixel SlowMix(const Pixel& s, const Pixel& d);
Pixel SlowOver(const Pixel& s, const Pixel& d);
// The modes 2 to 15.
Pixel SlowBlend(int mode, const Pixel& s, const Pixel& d);
Pixel SlowLayOnBackground(const Pixel& p, const Pixel& background);

}  // namespace test_support

#endif  // TESTS_SUPPORT_SLOW_BLENDING_H_
