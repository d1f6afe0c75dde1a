#ifndef MODULES_VECTOR_PICTURE_H_
#define MODULES_VECTOR_PICTURE_H_

#include <cstdint>
#include <span>
#include <vector>

#include "modules/common/page_builder.h"
#include "platform/metafile/recorder.h"

// What drawings are made of besides lines: pictures, and the page that a recorded drawing becomes.

namespace modules {

// A raster within a drawing, laid out as a page: rows padded to 4 bytes, top row first, palette words as pixels.
struct Picture {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t bits = 0;  // 1, 4, 8, 24 or 32
  std::vector<std::uint8_t> rows;
  std::uint32_t palette[256] = {};
  std::uint32_t paletteEntries = 0;

  // Zeroed rows; false for a size over the limits.
  bool Allocate(std::uint32_t newWidth, std::uint32_t newHeight, std::uint32_t newBits);
  std::size_t Stride() const { return (std::size_t{bits} * width + 31) / 32 * 4; }
  std::uint8_t* Row(std::uint32_t y) { return rows.data() + y * Stride(); }
  const std::uint8_t* Row(std::uint32_t y) const { return rows.data() + y * Stride(); }
  void SetGrays();  // 8 bits: black to white

  // The whole, as a device-independent bitmap.
  std::vector<std::uint8_t> Dib() const;
  platform::Box Whole() const { return {0, 0, static_cast<std::int32_t>(width), static_cast<std::int32_t>(height)}; }
};

// 8 bits grey or 24 bits colour. What a cut file lacks stays as the decoder leaves it. False without a first row.
bool DecodeJpeg(std::span<const std::uint8_t> bytes, Picture& picture);

// 8 bits with a palette, 24, or 32 with straight alpha; the same for what is cut off.
bool DecodePng(std::span<const std::uint8_t> bytes, Picture& picture);

// Null, with a message: see AddPage.
Page* AddPicturePage(glib::ImageDataExchange& exchange, const Picture& picture);

// Ends the recording; the page has the size of its frame. Null, with a message: see AddMetafilePage.
Page* AddRecordedPage(glib::ImageDataExchange& exchange, platform::MetafileRecorder& recorder);

}  // namespace modules

#endif  // MODULES_VECTOR_PICTURE_H_
