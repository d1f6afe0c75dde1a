#ifndef GLIB_COLOR_PALETTE_FILE_H_
#define GLIB_COLOR_PALETTE_FILE_H_

#include <cstdint>

namespace glib {

// A palette as a file gives it. Entries are words as ToPixel makes them, all opaque; those from `count` on are black.
struct PaletteData {
  std::uint32_t count = 0;
  std::uint32_t entries[256] = {};
};

// Reads an ".act" file (by its extension, in any case: 256 times red, green, blue; what follows is ignored) or a RIFF
// palette of 1 to 256 entries (any other name). False, with `data` as it was: no regular file, too short, no palette.
bool ReadPaletteFile(const char* path, PaletteData& data);

}  // namespace glib

#endif  // GLIB_COLOR_PALETTE_FILE_H_
