#ifndef GLIB_COLOR_COLOR_PAGE_H_
#define GLIB_COLOR_COLOR_PAGE_H_

#include <cstddef>
#include <cstdint>

namespace glib {

// A picture whose colours are to become fewer; owns nothing. Rows stand top row first in the layouts of RasterBlock.
struct ColorPage {
  const std::uint8_t* pixels = nullptr;
  std::size_t strideBytes = 0;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t bits = 0;                  // 1, 4, 8, 24 or 32
  const std::uint32_t* palette = nullptr;  // 256 pixel words; of pages of 8 bits and less

  const std::uint8_t* Row(std::uint32_t y) const { return pixels + y * strideBytes; }
  std::uint64_t PixelCount() const { return std::uint64_t{width} * height; }
};

// What ReadColors gives for a pixel of alpha 0. Every other pixel has a word with alpha 255.
inline constexpr std::uint32_t kNoColor = 0;
inline constexpr std::uint32_t kOpaqueAlpha = 0xFF000000U;

inline bool HasColor(std::uint32_t color) { return color >= kOpaqueAlpha; }

// Row `y` as one word a pixel, with `grayscale` as greys of the value (77 red + 150 green + 29 blue) / 256.
void ReadColors(const ColorPage& page, std::uint32_t y, bool grayscale, std::uint32_t* colors);

// Every `step`-th pixel of row `y` from column `first` on; gives how many there are. No more than width are written.
std::size_t ReadEveryNthColor(const ColorPage& page, std::uint32_t y, std::size_t first, std::size_t step,
                              bool grayscale, std::uint32_t* colors);

}  // namespace glib

#endif  // GLIB_COLOR_COLOR_PAGE_H_
