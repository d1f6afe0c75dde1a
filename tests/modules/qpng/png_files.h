#ifndef TESTS_MODULES_QPNG_PNG_FILES_H_
#define TESTS_MODULES_QPNG_PNG_FILES_H_

#include <png.h>
#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace tests {

using Bytes = std::vector<std::uint8_t>;

struct PngOptions {
  std::uint32_t width = 21;
  std::uint32_t height = 19;
  int type = PNG_COLOR_TYPE_RGB;
  int depth = 8;
  bool interlaced = false;
  int paletteSize = 0;             // 0: all that the depth allows
  std::vector<png_byte> alphas{};  // tRNS of a palette
  bool transparentColour = false;  // tRNS without a palette: the samples of pixel 1, 0
  int resolutionUnit = -1;         // with 11811 and 5906
  Bytes profile = {};              // ICC
};

// Sample of a made picture, 0 to 65535; its high byte serves smaller depths.
inline std::uint32_t PngSample(std::uint32_t x, std::uint32_t y, std::uint32_t channel) {
  return (x * 2654435761U + y * 40503U * 257U + channel * 7919U * 65537U) >> 13 & 0xFFFF;
}

inline png_color PngPaletteColour(std::uint32_t index) {
  return {static_cast<png_byte>(index * 37), static_cast<png_byte>(255 - index), static_cast<png_byte>(index * 91 + 5)};
}

inline std::uint32_t PngChannels(int type) {
  return type == PNG_COLOR_TYPE_RGB          ? 3U
         : type == PNG_COLOR_TYPE_RGB_ALPHA  ? 4U
         : type == PNG_COLOR_TYPE_GRAY_ALPHA ? 2U
                                             : 1U;
}

// Sample as the file has it.
inline std::uint32_t StoredSample(const PngOptions& o, std::uint32_t x, std::uint32_t y, std::uint32_t channel) {
  const std::uint32_t sample = PngSample(x, y, channel) >> (16 - o.depth);
  return o.paletteSize != 0 ? sample % static_cast<std::uint32_t>(o.paletteSize) : sample;
}

inline Bytes MakePng(const PngOptions& o) {
  Bytes file;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_set_write_fn(
      png, &file,
      [](png_structp writer, png_bytep data, std::size_t size) {
        auto* bytes = static_cast<Bytes*>(png_get_io_ptr(writer));
        bytes->insert(bytes->end(), data, data + size);
      },
      nullptr);
  png_set_IHDR(png, info, o.width, o.height, o.depth, o.type, o.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  if (o.type == PNG_COLOR_TYPE_PALETTE) {
    std::vector<png_color> colours;
    const int size = o.paletteSize != 0 ? o.paletteSize : 1 << o.depth;
    for (int i = 0; i < size; ++i) colours.push_back(PngPaletteColour(static_cast<std::uint32_t>(i)));
    png_set_PLTE(png, info, colours.data(), size);
    if (!o.alphas.empty()) png_set_tRNS(png, info, o.alphas.data(), static_cast<int>(o.alphas.size()), nullptr);
  }
  if (o.transparentColour) {
    const auto at = [&](std::uint32_t channel) { return static_cast<png_uint_16>(StoredSample(o, 1, 0, channel)); };
    const png_color_16 colour{0, at(0), at(1), at(2), at(0)};
    png_set_tRNS(png, info, nullptr, 0, &colour);
  }
  if (o.resolutionUnit >= 0) png_set_pHYs(png, info, 11811, 5906, o.resolutionUnit);
  if (!o.profile.empty()) {
    png_set_iCCP(png, info, "profile", 0, o.profile.data(), static_cast<png_uint_32>(o.profile.size()));
  }
  png_write_info(png, info);

  const std::uint32_t channels = PngChannels(o.type);
  const auto depth = static_cast<std::uint32_t>(o.depth);
  const std::size_t rowBytes = (std::size_t{o.width} * channels * depth + 7) / 8;
  Bytes rows(rowBytes * o.height);
  std::vector<png_bytep> pointers;
  for (std::uint32_t y = 0; y < o.height; ++y) {
    std::uint8_t* row = rows.data() + y * rowBytes;
    pointers.push_back(row);
    for (std::uint32_t i = 0; i < o.width * channels; ++i) {
      const std::uint32_t sample = StoredSample(o, i / channels, y, i % channels);
      if (depth == 16) {
        row[i * 2] = static_cast<std::uint8_t>(sample >> 8);
        row[i * 2 + 1] = static_cast<std::uint8_t>(sample);
      } else {
        const std::uint32_t bit = i * depth;
        row[bit / 8] = static_cast<std::uint8_t>(row[bit / 8] | sample << (8 - depth - bit % 8));
      }
    }
  }
  png_write_image(png, pointers.data());
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
  return file;
}

// Where a chunk begins (at its length); the file's size if there is none.
inline std::size_t FindChunk(const Bytes& file, const std::string& name) {
  const auto at = std::search(file.begin(), file.end(), name.begin(), name.end());
  return at == file.end() ? file.size() : static_cast<std::size_t>(at - file.begin()) - 4;
}

inline std::uint32_t BigLongAt(const Bytes& bytes, std::size_t at) {
  return static_cast<std::uint32_t>(bytes[at]) << 24 | static_cast<std::uint32_t>(bytes[at + 1]) << 16 |
         static_cast<std::uint32_t>(bytes[at + 2]) << 8 | bytes[at + 3];
}

inline void PutBigLong(Bytes& bytes, std::size_t at, std::uint32_t value) {
  for (std::size_t i = 0; i < 4; ++i) bytes[at + i] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
}

// Makes the checksum of the chunk that begins at `at` right.
inline void MendChunk(Bytes& file, std::size_t at) {
  const std::uint32_t length = BigLongAt(file, at);
  PutBigLong(file, at + 8 + length, static_cast<std::uint32_t>(crc32(0, file.data() + at + 4, length + 4)));
}

inline void InsertChunk(Bytes& file, std::size_t at, const std::string& name, const Bytes& body) {
  Bytes chunk(4);
  PutBigLong(chunk, 0, static_cast<std::uint32_t>(body.size()));
  chunk.insert(chunk.end(), name.begin(), name.end());
  chunk.insert(chunk.end(), body.begin(), body.end());
  chunk.resize(chunk.size() + 4);
  MendChunk(chunk, 0);
  file.insert(file.begin() + static_cast<std::ptrdiff_t>(at), chunk.begin(), chunk.end());
}

inline Bytes WithSize(Bytes file, std::uint32_t width, std::uint32_t height) {
  PutBigLong(file, 16, width);
  PutBigLong(file, 20, height);
  MendChunk(file, 8);
  return file;
}

}  // namespace tests

#endif  // TESTS_MODULES_QPNG_PNG_FILES_H_
