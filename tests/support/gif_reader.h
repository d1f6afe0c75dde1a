#ifndef TESTS_SUPPORT_GIF_READER_H_
#define TESTS_SUPPORT_GIF_READER_H_

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace support {

// A GIF as giflib decodes it, composed here by the plain rules of the format, so that nothing of our own reader or
// writer takes part.

struct GifFrame {
  std::uint32_t left = 0;
  std::uint32_t top = 0;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t delay = 0;  // hundredths of a second
  std::uint32_t disposal = 0;
  int transparent = -1;  // index, or -1
  bool interlaced = false;
  bool localTable = false;
  std::vector<std::uint32_t> palette;  // of the table in force, opaque words as rasters have them
  std::vector<std::uint8_t> indices;   // rows from top to bottom without padding
};

// What is seen while a frame is shown, over the whole screen.
struct GifPage {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t delay = 0;
  std::vector<std::uint32_t> pixels;  // opaque words, or 0 for transparent

  std::uint32_t At(std::uint32_t x, std::uint32_t y) const { return pixels[std::size_t{y} * width + x]; }
};

struct GifFile {
  bool ok = false;
  std::string error;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t aspect = 0;                  // the byte in the file
  std::vector<std::uint32_t> globalPalette;  // empty: the file has none
  int loops = -1;                            // repetitions of the looping extension, 0 for ever; -1 without it
  std::vector<GifFrame> frames;
  std::vector<GifPage> pages;  // one for each frame
};

GifFile ReadGif(std::span<const std::uint8_t> bytes);
GifFile ReadGif(const std::string& path);  // a native path

// The pages that frames make on a screen of this size.
std::vector<GifPage> ComposeGif(const std::vector<GifFrame>& frames, std::uint32_t width, std::uint32_t height);

}  // namespace support

#endif  // TESTS_SUPPORT_GIF_READER_H_
