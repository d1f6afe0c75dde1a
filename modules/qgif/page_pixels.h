#ifndef MODULES_QGIF_PAGE_PIXELS_H_
#define MODULES_QGIF_PAGE_PIXELS_H_

#include <array>
#include <cstdint>

#include "modules/common/page_builder.h"

namespace qgif {

// What a pixel becomes in a GIF before its colour is looked for: the word of a transparent one is kTransparent, all
// others have alpha 255.
inline constexpr std::uint32_t kTransparent = 0;
inline constexpr std::uint32_t kOpaque = 0xFF000000U;

// How pages are looked at.
struct PixelView {
  bool grayscale = false;     // colours become (77 red + 150 green + 29 blue) / 256
  int transparentIndex = -1;  // of indexed pages, besides the entries with alpha 0
};

inline bool IsIndexed(const modules::Page& page) { return page.bits <= 8; }

// What each index of an indexed page stands for.
std::array<std::uint32_t, 256> EntryWords(const modules::Page& page, const PixelView& view);

// Row `y` of an indexed page, one index a byte.
void ReadIndexRow(const modules::Page& page, std::uint32_t y, std::uint8_t* indices);

// Row `y` of any page. `entries` is what EntryWords gives; pages of 24 and 32 bits don't need it.
void ReadWordRow(const modules::Page& page, std::uint32_t y, const PixelView& view,
                 const std::array<std::uint32_t, 256>& entries, std::uint32_t* words);

}  // namespace qgif

#endif  // MODULES_QGIF_PAGE_PIXELS_H_
