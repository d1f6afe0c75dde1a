#include "modules/qgif/gif_blocks.h"

#include <algorithm>
#include <bit>
#include <string_view>

namespace qgif {
namespace {

void WriteText(std::string_view text, BlockOutput& output) {
  output.Bytes({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
}

void WriteTable(TableWords table, BlockOutput& output) {
  const std::size_t entries = std::size_t{1} << TableBits(table.size());
  for (std::size_t i = 0; i < entries; ++i) {
    const std::uint32_t word = i < table.size() ? table[i] : 0;
    output.Byte(word >> 16 & 255U);
    output.Byte(word >> 8 & 255U);
    output.Byte(word & 255U);
  }
}

}  // namespace

std::uint32_t TableBits(std::size_t entries) {
  return entries <= 2 ? 1 : static_cast<std::uint32_t>(std::bit_width(entries - 1));
}

void WriteHeader(std::uint32_t width, std::uint32_t height, std::uint8_t aspect, TableWords table,
                 BlockOutput& output) {
  WriteText("GIF89a", output);
  output.Word(width);
  output.Word(height);
  output.Byte(0xF0U | (TableBits(table.size()) - 1));  // a table follows, of colours of 8 bits
  output.Byte(0);
  output.Byte(aspect);
  WriteTable(table, output);
}

void WriteEndlessLoop(BlockOutput& output) {
  output.Byte(kExtensionIntroducer);
  output.Byte(kApplicationLabel);
  output.Byte(11);
  WriteText("NETSCAPE2.0", output);
  output.Byte(3);
  output.Byte(1);
  output.Word(0);
  output.Byte(0);
}

void WriteFrameHeader(const FrameControl& control, const FrameArea& area, bool interlaced, TableWords table,
                      BlockOutput& output) {
  output.Byte(kExtensionIntroducer);
  output.Byte(kGraphicControlLabel);
  output.Byte(4);
  output.Byte(static_cast<std::uint32_t>(control.disposal) << 2 | (control.transparent >= 0 ? 1U : 0U));
  output.Word(std::min(control.delay, 0xFFFFU));
  output.Byte(static_cast<std::uint32_t>(std::max(control.transparent, 0)));
  output.Byte(0);

  output.Byte(kImageSeparator);
  output.Word(area.left);
  output.Word(area.top);
  output.Word(area.width);
  output.Word(area.height);
  output.Byte((table.empty() ? 0U : 0x80U | (TableBits(table.size()) - 1)) | (interlaced ? 0x40U : 0U));
  if (!table.empty()) WriteTable(table, output);
}

void WriteTrailer(BlockOutput& output) { output.Byte(kTrailer); }

}  // namespace qgif
