#include "tests/support/gif_reader.h"

#include <gif_lib.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <fstream>
#include <iterator>

namespace support {
namespace {

struct Input {
  std::span<const std::uint8_t> bytes;
  std::size_t position = 0;
};

int ReadBytes(GifFileType* gif, GifByteType* target, int count) {
  auto* input = static_cast<Input*>(gif->UserData);
  const std::size_t left = input->bytes.size() - input->position;
  const std::size_t taken = std::min(left, static_cast<std::size_t>(count));
  if (taken != 0) std::memcpy(target, input->bytes.data() + input->position, taken);
  input->position += taken;
  return static_cast<int>(taken);
}

std::vector<std::uint32_t> Words(const ColorMapObject* map) {
  std::vector<std::uint32_t> words;
  for (int i = 0; map != nullptr && i < map->ColorCount; ++i) {
    const GifColorType& c = map->Colors[i];
    words.push_back(0xFF000000U | std::uint32_t{c.Red} << 16 | std::uint32_t{c.Green} << 8 | c.Blue);
  }
  return words;
}

void TakeExtensions(const SavedImage& image, GifFile& file) {
  for (int i = 0; i + 1 < image.ExtensionBlockCount; ++i) {
    const ExtensionBlock& name = image.ExtensionBlocks[i];
    const ExtensionBlock& data = image.ExtensionBlocks[i + 1];
    if (name.Function == APPLICATION_EXT_FUNC_CODE && name.ByteCount == 11 &&
        std::memcmp(name.Bytes, "NETSCAPE2.0", 11) == 0 && data.ByteCount == 3 && data.Bytes[0] == 1) {
      file.loops = data.Bytes[1] | data.Bytes[2] << 8;
    }
  }
}

GifFrame TakeFrame(GifFileType* gif, int number) {
  const SavedImage& image = gif->SavedImages[number];
  const GifImageDesc& place = image.ImageDesc;
  GifFrame frame;
  frame.left = static_cast<std::uint32_t>(place.Left);
  frame.top = static_cast<std::uint32_t>(place.Top);
  frame.width = static_cast<std::uint32_t>(place.Width);
  frame.height = static_cast<std::uint32_t>(place.Height);
  frame.interlaced = place.Interlace;
  frame.localTable = place.ColorMap != nullptr;
  frame.palette = Words(frame.localTable ? place.ColorMap : gif->SColorMap);
  frame.indices.assign(image.RasterBits, image.RasterBits + std::size_t{frame.width} * frame.height);
  GraphicsControlBlock control;
  if (DGifSavedExtensionToGCB(gif, number, &control) == GIF_OK) {
    frame.delay = static_cast<std::uint32_t>(control.DelayTime);
    frame.disposal = static_cast<std::uint32_t>(control.DisposalMode);
    frame.transparent = control.TransparentColor;
  }
  return frame;
}

}  // namespace

std::vector<GifPage> ComposeGif(const std::vector<GifFrame>& frames, std::uint32_t width, std::uint32_t height) {
  std::vector<GifPage> pages;
  std::vector<std::uint32_t> screen(std::size_t{width} * height, 0);
  for (const GifFrame& frame : frames) {
    const std::vector<std::uint32_t> before = screen;
    const auto forEach = [&](auto change) {
      for (std::uint32_t y = 0; y < frame.height && frame.top + y < height; ++y) {
        for (std::uint32_t x = 0; x < frame.width && frame.left + x < width; ++x) {
          change(screen[(std::size_t{frame.top} + y) * width + frame.left + x],
                 frame.indices[std::size_t{y} * frame.width + x]);
        }
      }
    };
    forEach([&](std::uint32_t& pixel, std::uint8_t index) {
      if (index == frame.transparent) return;
      pixel = index < frame.palette.size() ? frame.palette[index] : 0xFF000000U;
    });
    pages.push_back({width, height, frame.delay, screen});
    if (frame.disposal == DISPOSE_BACKGROUND) forEach([](std::uint32_t& pixel, std::uint8_t) { pixel = 0; });
    if (frame.disposal == DISPOSE_PREVIOUS) screen = before;
  }
  return pages;
}

GifFile ReadGif(std::span<const std::uint8_t> bytes) {
  GifFile file;
  Input input{bytes};
  int error = 0;
  GifFileType* gif = DGifOpen(&input, ReadBytes, &error);
  if (gif == nullptr) {
    file.error = GifErrorString(error);
    return file;
  }
  if (DGifSlurp(gif) == GIF_OK) {
    file.ok = true;
    file.width = static_cast<std::uint32_t>(gif->SWidth);
    file.height = static_cast<std::uint32_t>(gif->SHeight);
    file.aspect = gif->AspectByte;
    file.globalPalette = Words(gif->SColorMap);
    for (int i = 0; i < gif->ImageCount; ++i) {
      TakeExtensions(gif->SavedImages[i], file);
      file.frames.push_back(TakeFrame(gif, i));
    }
    file.pages = ComposeGif(file.frames, file.width, file.height);
  } else {
    file.error = GifErrorString(gif->Error);
  }
  DGifCloseFile(gif, &error);
  return file;
}

GifFile ReadGif(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  const std::vector<char> bytes((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
  return ReadGif({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

}  // namespace support
