#ifndef MODULES_QTGA_TGA_H_
#define MODULES_QTGA_TGA_H_

#include <cstddef>
#include <cstdint>
#include <span>

#include "modules/common/page_builder.h"

// Targa files. An own reader, as the image library refuses maps that begin above 0 or have alpha, maps beside full
// colours, indices and greys of 16 bits and cut files, and shows rows from right to left the wrong way round.

namespace qtga {

enum class TgaKind : std::uint8_t { kMapped = 1, kColour = 2, kGrey = 3 };

struct TgaHeader {
  TgaKind kind = TgaKind::kColour;
  bool packed = false;
  bool topDown = false;
  bool rightToLeft = false;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t pixelBytes = 0;  // of an index, a grey or a colour: 1 to 4
  bool alphaBit = false;         // the highest bit of a colour in two bytes is its alpha
  std::uint32_t mapFirst = 0;
  std::uint32_t mapCount = 0;
  std::uint32_t mapBytes = 0;  // of an entry: 2 to 4
  std::size_t mapAt = 0;
  std::size_t dataAt = 0;
};

inline constexpr std::size_t kTgaHeaderBytes = 18;

// Reads a header. Sides are within the limits if it is fine.
modules::Verdict ReadTgaHeader(std::span<const std::uint8_t> file, TgaHeader& header);

std::uint32_t TgaPageBits(const TgaHeader& header);

std::uint32_t LoadTga(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange);

}  // namespace qtga

#endif  // MODULES_QTGA_TGA_H_
