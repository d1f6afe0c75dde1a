#ifndef MODULES_COMMON_GRAPHICSMAGICK_H_
#define MODULES_COMMON_GRAPHICSMAGICK_H_

#include <cstdint>
#include <span>

#include "glib/module_api/exchange.h"
#include "glib/module_api/save_settings.h"

// Formats that GraphicsMagick reads, through the helper of that name.

namespace modules {

// How pictures become pages. Those with a colour map of at most 256 entries stay indexed, with 1, 4 or 8 bits by the
// number of entries, and count as grey if the map is a grey ramp; others become 24 bits, or 32 with an opacity channel.
struct MagickOptions {
  // A coder of the library ("PCX"): the file's content never chooses one.
  const char* coder;
  // Pictures without a colour map become grey pages of 8 bits if all their pixels are grey. For formats that have grey
  // pictures of their own, when the header says that this is one.
  bool greyIsIndexed = false;
  // Turns pictures as the orientation in their header says.
  bool applyOrientation = false;
  // Of a file with several resolutions, the smallest one with at least these sides; 0: the coder's choice.
  std::uint32_t wantedWidth = 0;
  std::uint32_t wantedHeight = 0;
};

struct MagickSummary {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t bits = 0;
  std::uint32_t pages = 0;
  double dpiX = 72.0;
  double dpiY = 72.0;
};

// All pictures of the file as pages. NSUP when the helper is missing.
std::uint32_t LoadWithMagick(std::span<const std::uint8_t> file, const MagickOptions& options,
                             glib::ImageDataExchange& exchange);

// What a file holds, without decoding where the coder can do that.
std::uint32_t PingWithMagick(std::span<const std::uint8_t> file, const MagickOptions& options, MagickSummary& found);

// File information of a file with `pages` pages, the first of which is as found.
glib::FileInfo* InfoOf(const char* path, std::uint32_t id, const MagickSummary& found, std::int32_t pages);

// File information without decoding where the coder can do that.
std::uint32_t InfoWithMagick(const char* path, std::uint32_t id, const MagickOptions& options, glib::FileInfo** info);

}  // namespace modules

// The entries of the helper.
extern "C" {
std::uint32_t MagickRead(const std::uint8_t* bytes, std::size_t size, const modules::MagickOptions* options,
                         glib::ImageDataExchange* exchange);
std::uint32_t MagickPing(const std::uint8_t* bytes, std::size_t size, const modules::MagickOptions* options,
                         modules::MagickSummary* info);
}

#endif  // MODULES_COMMON_GRAPHICSMAGICK_H_
