#include "glib/color/color_page.h"

#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "glib/color/color_page.cpp"
#include "hwy/foreach_target.h"
//
#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace glib {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// Rows of the common depths as far as they fill vectors. Give how many pixels were written.

#if HWY_TARGET == HWY_SCALAR

std::size_t ReadWords32(const std::uint8_t*, std::size_t, std::uint32_t*) { return 0; }
std::size_t ReadWords24(const std::uint8_t*, std::size_t, std::uint32_t*) { return 0; }

#else

std::size_t ReadWords32(const std::uint8_t* row, std::size_t width, std::uint32_t* colors) {
  const hn::ScalableTag<std::uint32_t> d;
  const hn::Repartition<std::uint8_t, decltype(d)> dBytes;
  const auto alpha = hn::Set(d, kOpaqueAlpha);
  std::size_t x = 0;
  for (; x + hn::Lanes(d) <= width; x += hn::Lanes(d)) {
    const auto word = hn::BitCast(d, hn::LoadU(dBytes, row + x * 4));
    const auto empty = hn::Eq(hn::And(word, alpha), hn::Zero(d));
    hn::StoreU(hn::IfThenZeroElse(empty, hn::Or(word, alpha)), d, colors + x);
  }
  return x;
}

std::size_t ReadWords24(const std::uint8_t* row, std::size_t width, std::uint32_t* colors) {
  const hn::ScalableTag<std::uint8_t> d;
  auto* out = reinterpret_cast<std::uint8_t*>(colors);
  std::size_t x = 0;
  for (; x + hn::Lanes(d) <= width; x += hn::Lanes(d)) {
    hn::Vec<decltype(d)> blue;
    hn::Vec<decltype(d)> green;
    hn::Vec<decltype(d)> red;
    hn::LoadInterleaved3(d, row + x * 3, blue, green, red);
    hn::StoreInterleaved4(blue, green, red, hn::Set(d, 255), d, out + x * 4);
  }
  return x;
}

#endif

}  // namespace HWY_NAMESPACE
}  // namespace glib
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace glib {

HWY_EXPORT(ReadWords32);
HWY_EXPORT(ReadWords24);

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
  const bool whole = first == 0 && step == 1;
  std::size_t done = 0;
  std::size_t count = 0;
  switch (page.bits) {
    case 32:
      if (whole) done = HWY_DYNAMIC_DISPATCH(ReadWords32)(row, width, colors);
      count = done + Walk(width, first + done, step, colors + done, [&](std::size_t x) {
                std::uint32_t word;
                std::memcpy(&word, row + x * 4, sizeof(word));
                return Normal(word);
              });
      break;
    case 24:
      if (whole) done = HWY_DYNAMIC_DISPATCH(ReadWords24)(row, width, colors);
      count =
          done + Walk(width, first + done, step, colors + done, [&](std::size_t x) { return Word24(row, x, width); });
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
#endif  // HWY_ONCE
