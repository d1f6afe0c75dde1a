#ifndef GLIB_RASTER_RGB32_H_
#define GLIB_RASTER_RGB32_H_

#include <cstdint>

namespace glib {

// A colour as users, films and slides hold it. Raster memory has another order: see ToPixel.
struct RGB32 {
  // Leaves the bytes as they are.
  RGB32() {}  // NOLINT(modernize-use-equals-default,cppcoreguidelines-pro-type-member-init)
  RGB32(std::uint8_t r, std::uint8_t g, std::uint8_t b, std::uint8_t a) : red(r), green(g), blue(b), alpha(a) {}

  // From a platform colour word, whose lowest byte is red and whose next are green and blue; alpha stays.
  void SetRgb(std::uint32_t word) {
    red = static_cast<std::uint8_t>(word);
    green = static_cast<std::uint8_t>(word >> 8);
    blue = static_cast<std::uint8_t>(word >> 16);
  }

  bool operator==(const RGB32& other) const {
    return red == other.red && green == other.green && blue == other.blue && alpha == other.alpha;
  }

  std::uint8_t red;
  std::uint8_t green;
  std::uint8_t blue;
  std::uint8_t alpha;
};
static_assert(sizeof(RGB32) == 4);

// The word of a 32-bit raster for a colour: alpha x 2^24 + red x 65536 + green x 256 + blue, so that its bytes in
// memory are blue, green, red, alpha. Palette entries are words of this form too.
inline std::uint32_t ToPixel(RGB32 colour) {
  return static_cast<std::uint32_t>(colour.alpha) << 24 | static_cast<std::uint32_t>(colour.red) << 16 |
         static_cast<std::uint32_t>(colour.green) << 8 | colour.blue;
}

}  // namespace glib

#endif  // GLIB_RASTER_RGB32_H_
