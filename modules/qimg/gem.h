#ifndef MODULES_QIMG_GEM_H_
#define MODULES_QIMG_GEM_H_

#include <cstdint>
#include <span>

#include "modules/common/page_builder.h"

// Bit images of the GEM desktop, with the colours of the XIMG form where they are there.

namespace qimg {

struct GemHeader {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t planes = 0;
  std::uint32_t patternLength = 0;  // bytes of a pattern that a run repeats
  double dpiX = 72.0;
  double dpiY = 72.0;
  std::size_t size = 0;                   // bytes of the header with its colours
  std::span<const std::uint8_t> colours;  // red, green, blue as words of 0 to 1000; empty: none in the file
};

// As much of a file as its header takes with 256 colours.
inline constexpr std::size_t kGemStart = 2048;

// Reads a header. Sides are within the limits and planes 1 to 8 if it is fine.
modules::Verdict ReadGemHeader(std::span<const std::uint8_t> file, GemHeader& header);

std::uint32_t GemPageBits(const GemHeader& header);

std::uint32_t LoadGem(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange);

}  // namespace qimg

#endif  // MODULES_QIMG_GEM_H_
