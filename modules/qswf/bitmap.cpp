#include "modules/qswf/bitmap.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "modules/common/byte_reader.h"

namespace qswf {
namespace {

enum BitmapCode : std::uint32_t {
  kBits = 6,
  kLossless = 20,
  kJpeg2 = 21,
  kJpeg3 = 35,
  kLossless2 = 36,
  kJpeg4 = 90,
};

using PicturePtr = std::unique_ptr<modules::Picture>;

// Writers put an end and a beginning between the tables and the picture, and sometimes in front of it all.
std::vector<std::uint8_t> JoinedJpeg(std::span<const std::uint8_t> tables, std::span<const std::uint8_t> data) {
  constexpr std::array<std::uint8_t, 4> kJoint = {0xFF, 0xD9, 0xFF, 0xD8};
  std::vector<std::uint8_t> bytes(tables.begin(), tables.end());
  bytes.insert(bytes.end(), data.begin(), data.end());
  for (auto at = bytes.begin();;) {
    at = std::search(at, bytes.end(), kJoint.begin(), kJoint.end());
    if (at == bytes.end()) return bytes;
    at = bytes.erase(at, at + kJoint.size());
  }
}

bool IsPng(std::span<const std::uint8_t> bytes) {
  constexpr std::array<std::uint8_t, 4> kMark = {0x89, 'P', 'N', 'G'};
  return bytes.size() > kMark.size() && std::equal(kMark.begin(), kMark.end(), bytes.begin());
}

PicturePtr Decode(std::span<const std::uint8_t> bytes) {
  auto picture = std::make_unique<modules::Picture>();
  const bool done = IsPng(bytes) ? modules::DecodePng(bytes, *picture) : modules::DecodeJpeg(bytes, *picture);
  return done ? std::move(picture) : nullptr;
}

PicturePtr DecodeWithAlpha(std::span<const std::uint8_t> data, bool withFilter) {
  modules::ByteReader in(data);
  const std::size_t size = in.Long();
  if (withFilter) in.Skip(2);
  const auto body = in.Take(size);
  if (IsPng(body)) return Decode(body);
  const PicturePtr opaque = Decode(JoinedJpeg({}, body));
  if (opaque == nullptr) return nullptr;
  auto picture = std::make_unique<modules::Picture>();
  if (!picture->Allocate(opaque->width, opaque->height, 32)) return nullptr;
  // What a short stream lacks is opaque.
  const std::size_t pixels = std::size_t{opaque->width} * opaque->height;
  const std::vector<std::uint8_t> inflated = Inflate(in.Take(in.Left()), pixels);
  std::vector<std::uint8_t> alpha(pixels, 255);
  std::copy_n(inflated.begin(), std::min(inflated.size(), pixels), alpha.begin());
  const std::size_t step = opaque->bits / 8;
  for (std::uint32_t y = 0; y < picture->height; ++y) {
    const std::uint8_t* from = opaque->Row(y);
    std::uint8_t* to = picture->Row(y);
    for (std::uint32_t x = 0; x < picture->width; ++x, from += step, to += 4) {
      to[0] = from[0];
      to[1] = from[step == 3 ? 1 : 0];
      to[2] = from[step == 3 ? 2 : 0];
      to[3] = alpha[std::size_t{y} * picture->width + x];
    }
  }
  return picture;
}

std::uint8_t Straight(std::uint32_t value, std::uint32_t alpha) {
  return alpha == 0 ? std::uint8_t{0} : static_cast<std::uint8_t>(std::min((value * 255 + alpha / 2) / alpha, 255U));
}

void MappedRows(std::span<const std::uint8_t> bytes, std::uint32_t entries, bool alpha, modules::Picture& picture) {
  modules::ByteReader in(bytes);
  for (std::uint32_t i = 0; i < entries; ++i) {
    std::uint32_t red = in.Byte();
    std::uint32_t green = in.Byte();
    std::uint32_t blue = in.Byte();
    const std::uint32_t opacity = alpha ? in.Byte() : 255;
    if (alpha) {
      red = Straight(red, opacity);
      green = Straight(green, opacity);
      blue = Straight(blue, opacity);
    }
    picture.palette[i] = opacity << 24 | red << 16 | green << 8 | blue;
  }
  picture.paletteEntries = entries;
  const std::size_t padding = (4 - picture.width % 4) % 4;
  for (std::uint32_t y = 0; y < picture.height; ++y) {
    in.Read(picture.Row(y), picture.width);
    in.Skip(padding);
  }
}

void Rows15(std::span<const std::uint8_t> bytes, modules::Picture& picture) {
  modules::ByteReader in(bytes);
  const auto wide = [](std::uint32_t value) {
    value &= 31U;
    return static_cast<std::uint8_t>(value << 3 | value >> 2);
  };
  for (std::uint32_t y = 0; y < picture.height; ++y) {
    std::uint8_t* to = picture.Row(y);
    for (std::uint32_t x = 0; x < picture.width; ++x, to += 3) {
      const std::uint32_t pixel = in.BigWord();
      to[0] = wide(pixel);
      to[1] = wide(pixel >> 5);
      to[2] = wide(pixel >> 10);
    }
    if (picture.width % 2 != 0) in.Skip(2);
  }
}

void Rows32(std::span<const std::uint8_t> bytes, modules::Picture& picture) {
  modules::ByteReader in(bytes);
  const bool alpha = picture.bits == 32;
  for (std::uint32_t y = 0; y < picture.height; ++y) {
    std::uint8_t* to = picture.Row(y);
    for (std::uint32_t x = 0; x < picture.width; ++x, to += alpha ? 4 : 3) {
      std::uint8_t pixel[4] = {};
      in.Read(pixel, 4);
      for (std::size_t i = 0; i < 3; ++i) to[i] = alpha ? Straight(pixel[3 - i], pixel[0]) : pixel[3 - i];
      if (alpha) to[3] = pixel[0];
    }
  }
}

PicturePtr DecodeLossless(std::span<const std::uint8_t> data, bool alpha) {
  modules::ByteReader in(data);
  const std::uint32_t format = in.Byte();
  const std::uint32_t width = in.Word();
  const std::uint32_t height = in.Word();
  const std::uint32_t entries = format == 3 ? in.Byte() + 1U : 0;
  if (in.Failed() || format < 3 || format > 5 || (format == 4 && alpha)) return nullptr;
  auto picture = std::make_unique<modules::Picture>();
  if (!picture->Allocate(width, height, format == 3 ? 8 : alpha ? 32 : 24)) return nullptr;
  const std::size_t pixelBytes = format == 3 ? 1 : format == 4 ? 2 : 4;
  const std::size_t rowBytes = (width * pixelBytes + 3) / 4 * 4;
  const std::size_t size = rowBytes * height + entries * (alpha ? 4 : 3);
  const std::vector<std::uint8_t> bytes = Inflate(in.Take(in.Left()), size);
  if (bytes.empty()) return nullptr;
  if (format == 3) {
    MappedRows(bytes, entries, alpha, *picture);
  } else if (format == 4) {
    Rows15(bytes, *picture);
  } else {
    Rows32(bytes, *picture);
  }
  return picture;
}

}  // namespace

bool IsBitmapTag(std::uint32_t code) {
  return code == kBits || code == kLossless || code == kJpeg2 || code == kJpeg3 || code == kLossless2 || code == kJpeg4;
}

std::unique_ptr<modules::Picture> DecodeBitmap(const BitmapTag& tag, std::span<const std::uint8_t> tables) {
  switch (tag.code) {
    case kBits:
      return Decode(JoinedJpeg(tables, tag.data));
    case kJpeg2:
      return Decode(IsPng(tag.data) ? std::vector(tag.data.begin(), tag.data.end()) : JoinedJpeg({}, tag.data));
    case kJpeg3:
    case kJpeg4:
      return DecodeWithAlpha(tag.data, tag.code == kJpeg4);
    case kLossless:
    case kLossless2:
      return DecodeLossless(tag.data, tag.code == kLossless2);
    default:
      return nullptr;
  }
}

std::vector<std::uint8_t> Inflate(std::span<const std::uint8_t> data, std::size_t limit) {
  constexpr std::size_t kStep = std::size_t{1} << 16;
  std::vector<std::uint8_t> bytes;
  z_stream stream{};
  if (inflateInit(&stream) != Z_OK) return bytes;
  stream.next_in = const_cast<Bytef*>(data.data());
  stream.avail_in = static_cast<uInt>(std::min<std::size_t>(data.size(), 0xFFFFFFFF));
  int result = Z_OK;
  while (result == Z_OK && bytes.size() < limit) {
    const std::size_t done = bytes.size();
    // Grows with what comes out, so that a few bytes that promise much cost little.
    bytes.resize(std::min(limit, done + std::max(kStep, done)));
    stream.next_out = bytes.data() + done;
    stream.avail_out = static_cast<uInt>(bytes.size() - done);
    result = inflate(&stream, Z_SYNC_FLUSH);
    const bool stuck = stream.avail_in == 0 && stream.avail_out != 0;
    bytes.resize(bytes.size() - stream.avail_out);
    if (stuck) break;
  }
  inflateEnd(&stream);
  return bytes;
}

}  // namespace qswf
