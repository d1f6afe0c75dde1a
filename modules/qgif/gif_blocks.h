#ifndef MODULES_QGIF_GIF_BLOCKS_H_
#define MODULES_QGIF_GIF_BLOCKS_H_

#include <cstdint>
#include <span>

#include "modules/qgif/block_output.h"
#include "modules/qgif/gif_structure.h"

namespace qgif {

struct FrameControl {
  std::uint32_t delay = 0;  // hundredths of a second; what 16 bits can't hold becomes the longest they can
  Disposal disposal = Disposal::kNone;
  int transparent = -1;  // index, or -1
};

using TableWords = std::span<const std::uint32_t>;  // words as rasters have them

// Bits of the index of the table that holds so many entries, 1 to 8.
std::uint32_t TableBits(std::size_t entries);

void WriteHeader(std::uint32_t width, std::uint32_t height, std::uint8_t aspect, TableWords table, BlockOutput& output);
void WriteEndlessLoop(BlockOutput& output);
// All of a frame that stands before its code size. An empty table: the global one serves.
void WriteFrameHeader(const FrameControl& control, const FrameArea& area, bool interlaced, TableWords table,
                      BlockOutput& output);
void WriteTrailer(BlockOutput& output);

}  // namespace qgif

#endif  // MODULES_QGIF_GIF_BLOCKS_H_
