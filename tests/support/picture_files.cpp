#include "tests/support/picture_files.h"

#include <gif_lib.h>

#include <algorithm>
#include <stdexcept>

#include "tests/support/dib_writer.h"

namespace test_support {
namespace {

int AppendBytes(GifFileType* file, const GifByteType* bytes, int count) {
  static_cast<std::string*>(file->UserData)
      ->append(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(count));
  return count;
}

std::vector<std::uint32_t> ColoursOf(const std::vector<Picture>& frames) {
  std::vector<std::uint32_t> colours;
  for (const Picture& frame : frames) {
    for (int y = 0; y < frame.height; ++y) {
      for (int x = 0; x < frame.width; ++x) colours.push_back(frame.paint(x, y));
    }
  }
  std::sort(colours.begin(), colours.end());
  colours.erase(std::unique(colours.begin(), colours.end()), colours.end());
  if (colours.size() > 256) throw std::runtime_error("too many colours for a GIF");
  return colours;
}

void PutFrame(GifFileType* file, const Picture& frame, const std::vector<std::uint32_t>& colours) {
  const GraphicsControlBlock control = {DISPOSE_DO_NOT, false, frame.delay, NO_TRANSPARENT_COLOR};
  GifByteType extension[4];
  EGifGCBToExtension(&control, extension);
  EGifPutExtension(file, GRAPHICS_EXT_FUNC_CODE, 4, extension);
  EGifPutImageDesc(file, 0, 0, frame.width, frame.height, false, nullptr);
  std::vector<GifByteType> row(static_cast<std::size_t>(frame.width));
  for (int y = 0; y < frame.height; ++y) {
    for (int x = 0; x < frame.width; ++x) {
      const auto place = std::lower_bound(colours.begin(), colours.end(), frame.paint(x, y));
      row[static_cast<std::size_t>(x)] = static_cast<GifByteType>(place - colours.begin());
    }
    EGifPutLine(file, row.data(), frame.width);
  }
}

}  // namespace

Painter Plain(std::uint32_t colour) {
  return [=](int, int) { return colour; };
}

Painter Noise(std::uint32_t seed) {
  return [=](int x, int y) {
    std::uint32_t value = seed + static_cast<std::uint32_t>(x) * 2654435761U + static_cast<std::uint32_t>(y) * 40503U;
    value = (value ^ value >> 15) * 2246822519U;
    return (value ^ value >> 13) & 0xFFFFFF;
  };
}

std::string BmpFile(const Picture& picture) {
  tests::DibSpec spec;
  spec.width = picture.width;
  spec.height = picture.height;
  spec.data = tests::DibRows(picture.width, picture.height, 24, [&](std::uint32_t x, std::uint32_t y) {
    return picture.paint(static_cast<int>(x), static_cast<int>(y));
  });
  const std::vector<std::uint8_t> bytes = tests::MakeBmp(spec);
  return {bytes.begin(), bytes.end()};
}

std::string GifFileOf(const std::vector<Picture>& frames) {
  const std::vector<std::uint32_t> colours = ColoursOf(frames);
  int tableSize = 2;
  while (static_cast<std::size_t>(tableSize) < colours.size()) tableSize *= 2;
  ColorMapObject* table = GifMakeMapObject(tableSize, nullptr);
  for (std::size_t i = 0; i < colours.size(); ++i) {
    table->Colors[i] = {static_cast<GifByteType>(colours[i] >> 16), static_cast<GifByteType>(colours[i] >> 8),
                        static_cast<GifByteType>(colours[i])};
  }
  std::string bytes;
  int error = 0;
  GifFileType* file = EGifOpen(&bytes, AppendBytes, &error);
  EGifSetGifVersion(file, true);
  EGifPutScreenDesc(file, frames[0].width, frames[0].height, 8, 0, table);
  for (const Picture& frame : frames) PutFrame(file, frame, colours);
  EGifCloseFile(file, &error);
  GifFreeMapObject(table);
  return bytes;
}

}  // namespace test_support
