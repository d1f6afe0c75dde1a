#ifndef TESTS_SUPPORT_PICTURE_FILES_H_
#define TESTS_SUPPORT_PICTURE_FILES_H_

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace test_support {

// Colours are 0xRRGGBB.
using Painter = std::function<std::uint32_t(int x, int y)>;

Painter Plain(std::uint32_t colour);
// Every pixel another colour, the same each time.
Painter Noise(std::uint32_t seed);

struct Picture {
  int width = 0;
  int height = 0;
  Painter paint;
  int delay = 10;  // hundredths of a second
};

// The bytes of a file with 24 bits a pixel.
std::string BmpFile(const Picture& picture);

// The bytes of a GIF as giflib writes it: full frames that together have at most 256 colours, none of them transparent.
std::string GifFileOf(const std::vector<Picture>& frames);

}  // namespace test_support

#endif  // TESTS_SUPPORT_PICTURE_FILES_H_
