#include "glib/color/color_page.h"

#include <cstring>

namespace glib {
namespace {

std::uint32_t Normal(std::uint32_t word) { return word >> 24 == 0 ? kNoColor : word | kOpaqueAlpha; }

std::uint32_t Gray(std::uint32_t color) {
  if (color == kNoColor) return kNoColor;
  const std::uint32_t level = (77 * (color >> 16 & 255U) + 150 * (color >> 8 & 255U) + 29 * (color & 255U)) >> 8;
  return kOpaqueAlpha | level * 0x010101U;
}

// Three bytes are read with the one behind them, which only the last pixel of a row hasn't.
std::uint32_t Word24(const std::uint8_t* row, std::size_t x, std::size_t width) {
  const std::uint8_t* at = row + x * 3;
  if (x + 1 == width) {
    return at[0] | std::uint32_t{at[1]} << 8 | std::uint32_t{at[2]} << 16 | kOpaqueAlpha;
  }
  std::uint32_t word;
  std::memcpy(&word, at, sizeof(word));
  return word | kOpaqueAlpha;
}

std::uint32_t PixelIndex(const ColorPage& page, const std::uint8_t* row, std::size_t x) {
  if (page.bits == 8) return row[x];
  if (page.bits == 4) return x % 2 == 0 ? row[x / 2] >> 4U : row[x / 2] & 15U;
  return row[x / 8] >> (7 - x % 8) & 1U;
}

template <typename PixelAt>
std::size_t Walk(std::size_t width, std::size_t first, std::size_t step, std::uint32_t* colors, PixelAt pixelAt) {
  std::size_t count = 0;
  for (std::size_t x = first; x < width; x += step) colors[count++] = pixelAt(x);
  return count;
}

}  // namespace

std::size_t ReadEveryNthColor(const ColorPage& page, std::uint32_t y, std::size_t first, std::size_t step,
                              bool grayscale, std::uint32_t* colors) {
  const std::uint8_t* row = page.Row(y);
  const std::size_t width = page.width;
  std::size_t count = 0;
  switch (page.bits) {
    case 32:
      count = Walk(width, first, step, colors, [&](std::size_t x) {
        std::uint32_t word;
        std::memcpy(&word, row + x * 4, sizeof(word));
        return Normal(word);
      });
      break;
    case 24:
      count = Walk(width, first, step, colors, [&](std::size_t x) { return Word24(row, x, width); });
      break;
    default:
      count = Walk(width, first, step, colors,
                   [&](std::size_t x) { return Normal(page.palette[PixelIndex(page, row, x)]); });
      break;
  }
  if (grayscale) {
    for (std::size_t i = 0; i < count; ++i) colors[i] = Gray(colors[i]);
  }
  return count;
}

void ReadColors(const ColorPage& page, std::uint32_t y, bool grayscale, std::uint32_t* colors) {
  ReadEveryNthColor(page, y, 0, 1, grayscale, colors);
}

}  // namespace glib
