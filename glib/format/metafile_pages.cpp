#include "glib/format/metafile_pages.h"

#include <algorithm>
#include <vector>

#include "glib/format/depth_rows.h"
#include "platform/metafile/metafile.h"
#include "platform/metafile/player.h"
#include "platform/metafile/recorder.h"
#include "platform/pages.h"

namespace glib {
namespace {

constexpr double kFrameUnitsPerInch = 2540.0;
constexpr std::uint32_t kUnitsPerInch = 72;  // a pixel of an unset resolution
constexpr std::uint32_t kWhite = 0xFFFFFFFF;
// A header can ask for any size; this is 400 MB of pixels, which a run holds twice.
constexpr std::int64_t kMaxPixels = 100'000'000;

// Up to 2^32 units and any resolution; what no raster can have becomes 0.
std::int32_t FramePixels(std::int32_t from, std::int32_t to, double dpi) {
  const double units = static_cast<double>(to) - static_cast<double>(from);
  const double pixels = units * (dpi == 0.0 ? 72.0 : dpi) / kFrameUnitsPerInch;
  return pixels >= 0.0 && pixels < 2147483648.0 ? static_cast<std::int32_t>(pixels) : 0;
}

}  // namespace

bool MetafileSize(MetafileHandle metafile, double yDpi, double xDpi, std::int32_t& width, std::int32_t& height) {
  platform::EnhMetaHeader header;
  if (!platform::GetEnhMetaFileHeader(metafile, header)) return false;
  if (width < 0) width = FramePixels(header.frameLeft, header.frameRight, xDpi);
  if (height < 0) height = FramePixels(header.frameTop, header.frameBottom, yDpi);
  return true;
}

namespace {

// The pixel words of a picture that the metafile fills, or null.
platform::OwnedPages Play(MetafileHandle metafile, double yDpi, double xDpi, std::int32_t& width, std::int32_t& height,
                          std::uint32_t paper) {
  if (!MetafileSize(metafile, yDpi, xDpi, width, height)) return nullptr;
  if (std::int64_t{width} * height > kMaxPixels) return nullptr;
  platform::OwnedPages pixels(
      static_cast<std::uint8_t*>(platform::AllocateUninitialisedPages(PaddedBytes(width, height, 32))));
  if (pixels == nullptr ||
      !platform::PlayEnhMetaFile(metafile, width, height, paper, reinterpret_cast<std::uint32_t*>(pixels.get()))) {
    return nullptr;
  }
  return pixels;
}

std::uint32_t GreyOf(std::uint32_t pixel) {
  return ((pixel >> 16 & 255) * 77 + (pixel >> 8 & 255) * 150 + (pixel & 255) * 29 + 128) >> 8;
}

// A row at a depth without palette of its own: colours of 15 bits, and below them the nearest of so many greys, from
// black to white.
void PackRow(std::uint8_t* to, const std::uint32_t* from, std::size_t width, std::size_t bits) {
  for (std::size_t x = 0; x < width; ++x) {
    const std::uint32_t pixel = from[x];
    if (bits == 16) {
      const std::uint32_t word = (pixel >> 9 & 0x7C00) | (pixel >> 6 & 0x3E0) | (pixel >> 3 & 0x1F);
      to[2 * x] = static_cast<std::uint8_t>(word);
      to[2 * x + 1] = static_cast<std::uint8_t>(word >> 8);
      continue;
    }
    const std::uint32_t levels = (1U << bits) - 1;
    const std::uint32_t index = (GreyOf(pixel) * levels + 127) / 255;
    const std::size_t perByte = 8 / bits;
    const std::size_t shift = 8 - bits - x % perByte * bits;
    std::uint8_t& byte = to[x / perByte];
    byte = static_cast<std::uint8_t>(byte | index << shift);
  }
}

}  // namespace

std::uint8_t* RenderMetafile32(MetafileHandle metafile, double yDpi, double xDpi, std::int32_t& width,
                               std::int32_t& height) {
  return Play(metafile, yDpi, xDpi, width, height, kWhite).release();
}

std::uint8_t* RenderMetafile(MetafileHandle metafile, std::int32_t bits, double yDpi, double xDpi, std::int32_t& width,
                             std::int32_t& height, std::uint32_t background) {
  platform::OwnedPages words = Play(metafile, yDpi, xDpi, width, height, background);
  if (words == nullptr) return nullptr;
  auto* row = reinterpret_cast<std::uint32_t*>(words.get());
  const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  std::replace(row, row + count, 0U, background);
  if (bits == 32) return words.release();
  if (bits != 1 && bits != 4 && bits != 8 && bits != 16) bits = 24;

  platform::OwnedPages rows(static_cast<std::uint8_t*>(platform::AllocatePages(PaddedBytes(width, height, bits))));
  if (rows == nullptr) return nullptr;
  const auto columns = static_cast<std::size_t>(width);
  const std::size_t stride = PaddedStride(columns, static_cast<std::size_t>(bits));
  std::uint8_t* to = rows.get();
  for (std::int32_t y = 0; y < height; ++y, row += columns, to += stride) {
    if (bits == 24) {
      NarrowRow(to, row, columns);
    } else {
      PackRow(to, row, columns, static_cast<std::size_t>(bits));
    }
  }
  return rows.release();
}

bool WrapInMetafile(RasterBlock& block) {
  constexpr std::uint32_t kInfoHeader = 40;
  if (block.pixels == nullptr) return false;
  const auto bits = static_cast<std::size_t>(block.bits);
  const std::size_t sourceStride = block.Stride();
  const std::size_t stride = PaddedStride(static_cast<std::size_t>(block.width), bits);
  const auto rows = static_cast<std::size_t>(block.height);
  const std::size_t entries = bits <= 8 ? std::size_t{1} << bits : 0;

  std::vector<std::uint8_t> dib;
  const auto put = [&](std::uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8) dib.push_back(static_cast<std::uint8_t>(value >> shift));
  };
  dib.reserve(kInfoHeader + 4 * entries + stride * rows);
  put(kInfoHeader);
  put(static_cast<std::uint32_t>(block.width));
  put(0U - static_cast<std::uint32_t>(block.height));  // top row first
  put(1U | static_cast<std::uint32_t>(bits) << 16);
  for (int i = 0; i < 4; ++i) put(0);
  put(static_cast<std::uint32_t>(entries));
  put(0);
  for (std::size_t i = 0; i < entries; ++i) put(block.palette[i] & 0xFFFFFF);
  const std::size_t copied = std::min(stride, sourceStride);
  for (std::size_t y = 0; y < rows; ++y) {
    const std::uint8_t* row = block.pixels + y * sourceStride;
    dib.insert(dib.end(), row, row + copied);
    dib.resize(dib.size() + stride - copied);
  }

  const platform::Box whole{0, 0, block.width, block.height};
  platform::MetafileRecorder recorder(kUnitsPerInch);
  recorder.SetFrame(whole);
  recorder.DrawDib(whole, dib, whole);
  block.SetMetafile(recorder.Close(), block.width, block.height, false);
  return true;
}

}  // namespace glib
