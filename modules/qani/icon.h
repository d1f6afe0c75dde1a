#ifndef MODULES_QANI_ICON_H_
#define MODULES_QANI_ICON_H_

#include <cstddef>
#include <cstdint>
#include <span>

#include "modules/common/page_builder.h"

// Icons and cursors: a directory of pictures, each a bitmap with a mask below it, or a PNG file. The directory's word
// on sizes and depths is often wrong, so that only its offsets are used.

namespace qani {

struct IconSummary {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t bits = 0;  // of the picture without its mask
  double dpiX = 72.0;
  double dpiY = 72.0;
};

// How many pictures the directory lists; 0 for what is no icon or cursor.
std::uint32_t CountOfIcons(std::span<const std::uint8_t> file);

// The first picture, by its header.
modules::Verdict SummarizeIcon(std::span<const std::uint8_t> file, IconSummary& summary);

inline constexpr std::uint32_t kAllIcons = 65535;

// The first `most` pictures become pages, in the order of the directory. One that is damaged is left out and told in
// the message; the result is a failure if there is no other.
std::uint32_t LoadIcons(std::span<const std::uint8_t> file, std::uint32_t most, glib::ImageDataExchange& exchange);

}  // namespace qani

#endif  // MODULES_QANI_ICON_H_
