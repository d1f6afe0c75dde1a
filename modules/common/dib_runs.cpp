#include "modules/common/dib_runs.h"

#include <algorithm>
#include <cstring>

#include "modules/common/byte_reader.h"

namespace modules {
namespace {

// What the second byte says behind a count of 0; from 3 on it counts pixels that stand as they are.
constexpr std::uint8_t kEndOfRow = 0;
constexpr std::uint8_t kEndOfPicture = 1;
constexpr std::uint8_t kMove = 2;

// The three codes differ in what a pixel is: half a byte, a byte, three bytes.

struct Nibbles {
  static std::size_t BytesOf(std::size_t pixels) { return (pixels + 1) / 2; }
  static constexpr std::size_t kRunBytes = 1;  // two pixels that take turns

  static void Set(std::uint8_t* row, std::size_t x, unsigned value) {
    std::uint8_t& byte = row[x / 2];
    byte = static_cast<std::uint8_t>(x % 2 == 0 ? (byte & 15U) | value << 4 : (byte & 240U) | value);
  }
  static unsigned Get(const std::uint8_t* pixels, std::size_t x) {
    return x % 2 == 0 ? pixels[x / 2] >> 4 : pixels[x / 2] & 15U;
  }
  static void Repeat(std::uint8_t* row, std::size_t x, std::size_t count, const std::uint8_t* pixel) {
    std::size_t i = 0;
    if (x % 2 != 0) Set(row, x, Get(pixel, i++));
    const unsigned pair = Get(pixel, i) << 4 | Get(pixel, 1 - i);
    const std::size_t pairs = (count - i) / 2;
    std::memset(row + (x + i) / 2, static_cast<int>(pair), pairs);
    i += 2 * pairs;
    if (i < count) Set(row, x + i, Get(pixel, i % 2));
  }
  static void Copy(std::uint8_t* row, std::size_t x, std::size_t count, const std::uint8_t* pixels) {
    for (std::size_t i = 0; i < count; ++i) Set(row, x + i, Get(pixels, i));
  }
};

struct Bytes {
  static std::size_t BytesOf(std::size_t pixels) { return pixels; }
  static constexpr std::size_t kRunBytes = 1;

  static void Repeat(std::uint8_t* row, std::size_t x, std::size_t count, const std::uint8_t* pixel) {
    std::memset(row + x, *pixel, count);
  }
  static void Copy(std::uint8_t* row, std::size_t x, std::size_t count, const std::uint8_t* pixels) {
    std::memcpy(row + x, pixels, count);
  }
};

struct Triples {
  static std::size_t BytesOf(std::size_t pixels) { return pixels * 3; }
  static constexpr std::size_t kRunBytes = 3;

  static void Repeat(std::uint8_t* row, std::size_t x, std::size_t count, const std::uint8_t* pixel) {
    for (std::size_t i = 0; i < count; ++i) std::memcpy(row + (x + i) * 3, pixel, 3);
  }
  static void Copy(std::uint8_t* row, std::size_t x, std::size_t count, const std::uint8_t* pixels) {
    std::memcpy(row + x * 3, pixels, count * 3);
  }
};

template <typename Pixels>
std::uint32_t Decode(std::span<const std::uint8_t> data, const DibHeader& header, Page& page) {
  ByteReader in(data);
  const std::size_t width = header.width;
  std::size_t x = 0;  // may lie past the width, where pixels are dropped; at most a byte more for each byte of data
  std::uint32_t y = 0;
  const auto row = [&] { return Row(page, header.topDown ? y : header.height - 1 - y); };
  const auto visible = [&](std::size_t count) { return x < width ? std::min(count, width - x) : 0; };
  const auto rowsDone = [&] { return x >= width ? y + 1 : y; };

  while (y < header.height) {
    if (in.Left() < 2) return rowsDone();
    const std::uint8_t count = in.Byte();
    if (count != 0) {
      const auto pixel = in.Take(Pixels::kRunBytes);
      if (pixel.size() < Pixels::kRunBytes) return rowsDone();
      if (const std::size_t shown = visible(count)) Pixels::Repeat(row(), x, shown, pixel.data());
      x += count;
      continue;
    }
    const std::uint8_t code = in.Byte();
    if (code == kEndOfPicture) return header.height;
    if (code == kEndOfRow) {
      x = 0;
      ++y;
    } else if (code == kMove) {
      if (in.Left() < 2) return rowsDone();
      x += in.Byte();
      y += in.Byte();
    } else {
      const std::size_t bytes = Pixels::BytesOf(code);
      const auto pixels = in.Take(bytes);
      if (pixels.size() < bytes) return rowsDone();
      if (const std::size_t shown = visible(code)) Pixels::Copy(row(), x, shown, pixels.data());
      x += code;
      if (bytes % 2 != 0) in.Byte();  // such pixels fill up to two bytes
    }
  }
  return header.height;
}

}  // namespace

std::uint32_t ReadDibRuns(std::span<const std::uint8_t> data, const DibHeader& header, Page& page) {
  if (header.encoding == DibEncoding::kRuns4) return Decode<Nibbles>(data, header, page);
  if (header.encoding == DibEncoding::kRuns8) return Decode<Bytes>(data, header, page);
  return Decode<Triples>(data, header, page);
}

}  // namespace modules
