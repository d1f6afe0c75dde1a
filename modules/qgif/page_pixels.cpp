#include "modules/qgif/page_pixels.h"

#include <cstring>

namespace qgif {
namespace {

using modules::Page;

inline std::uint32_t Gray(std::uint32_t word) {
  const std::uint32_t level = (77 * (word >> 16 & 255U) + 150 * (word >> 8 & 255U) + 29 * (word & 255U)) >> 8;
  return kOpaque | level << 16 | level << 8 | level;
}

const std::uint8_t* RowOf(const Page& page, std::uint32_t y) { return page.pixels + y * page.Stride(); }

}  // namespace

std::array<std::uint32_t, 256> EntryWords(const Page& page, const PixelView& view) {
  std::array<std::uint32_t, 256> words{};
  for (int i = 0; i < 256; ++i) {
    const std::uint32_t word = page.palette[i];
    const bool transparent = i == view.transparentIndex || word >> 24 == 0;
    words[static_cast<std::size_t>(i)] = transparent ? kTransparent : view.grayscale ? Gray(word) : word | kOpaque;
  }
  return words;
}

void ReadIndexRow(const Page& page, std::uint32_t y, std::uint8_t* indices) {
  const std::uint8_t* row = RowOf(page, y);
  const auto width = static_cast<std::size_t>(page.width);
  if (page.bits == 8) {
    std::memcpy(indices, row, width);
  } else if (page.bits == 4) {
    for (std::size_t x = 0; x < width; ++x) {
      indices[x] = static_cast<std::uint8_t>(x % 2 == 0 ? row[x / 2] >> 4 : row[x / 2] & 15);
    }
  } else {
    for (std::size_t x = 0; x < width; ++x) indices[x] = static_cast<std::uint8_t>(row[x / 8] >> (7 - x % 8) & 1);
  }
}

void ReadWordRow(const Page& page, std::uint32_t y, const PixelView& view,
                 const std::array<std::uint32_t, 256>& entries, std::uint32_t* words) {
  const std::uint8_t* row = RowOf(page, y);
  const auto width = static_cast<std::size_t>(page.width);
  switch (page.bits) {
    case 32:
      std::memcpy(words, row, width * 4);
      for (std::size_t x = 0; x < width; ++x) words[x] = words[x] >> 24 == 0 ? kTransparent : words[x] | kOpaque;
      break;
    case 24:
      for (std::size_t x = 0; x < width; ++x) {
        words[x] = kOpaque | std::uint32_t{row[x * 3 + 2]} << 16 | std::uint32_t{row[x * 3 + 1]} << 8 | row[x * 3];
      }
      break;
    case 8:
      for (std::size_t x = 0; x < width; ++x) words[x] = entries[row[x]];
      return;
    case 4:
      for (std::size_t x = 0; x < width; ++x) {
        words[x] = entries[static_cast<std::size_t>(x % 2 == 0 ? row[x / 2] >> 4 : row[x / 2] & 15)];
      }
      return;
    default:
      for (std::size_t x = 0; x < width; ++x) words[x] = entries[row[x / 8] >> (7 - x % 8) & 1U];
      return;
  }
  if (!view.grayscale) return;
  for (std::size_t x = 0; x < width; ++x) words[x] = words[x] == kTransparent ? kTransparent : Gray(words[x]);
}

}  // namespace qgif
