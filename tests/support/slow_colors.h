#ifndef TESTS_SUPPORT_SLOW_COLORS_H_
#define TESTS_SUPPORT_SLOW_COLORS_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "glib/color/color_page.h"
#include "glib/color/color_space.h"

namespace test_support {

// Every entry is looked at; the first of the nearest wins.
std::size_t SlowNearest(const glib::ColorSpace& space, const std::vector<std::uint32_t>& colors, std::uint32_t color);

// Error diffusion of a whole page, pixel after pixel, each giving its error to its four neighbours. `held` may be
// empty.
void SlowDiffuse(const glib::ColorSpace& space, const std::vector<std::uint32_t>& colors, std::uint32_t firstIndex,
                 std::int32_t strength, const std::vector<std::uint32_t>& pixels, std::size_t width,
                 const std::vector<std::uint8_t>& held, std::vector<std::uint8_t>& indices);

// A 32-bit page over words.
inline glib::ColorPage PageOf(const std::vector<std::uint32_t>& words, std::uint32_t width) {
  return {reinterpret_cast<const std::uint8_t*>(words.data()),
          std::size_t{width} * 4,
          width,
          static_cast<std::uint32_t>(words.size() / width),
          32,
          nullptr};
}

// Smooth shades with a little noise: as hard for a palette as a photograph.
std::vector<std::uint32_t> ShadedPicture(std::uint32_t width, std::uint32_t height);

// Of the colours of the indices against the pixels.
double Psnr(const std::vector<std::uint32_t>& pixels, const std::vector<std::uint32_t>& colors,
            const std::vector<std::uint8_t>& indices);

}  // namespace test_support

#endif  // TESTS_SUPPORT_SLOW_COLORS_H_
