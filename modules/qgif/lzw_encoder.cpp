#include "modules/qgif/lzw_encoder.h"

#include <bit>

#include "modules/qgif/code_stream.h"
#include "modules/qgif/gif_structure.h"

namespace qgif {

std::uint32_t CodeSizeFor(std::uint32_t highest) {
  return highest < 4 ? 2 : static_cast<std::uint32_t>(std::bit_width(highest));
}

void LzwEncoder::Encode(const IndexRows& rows, std::uint32_t codeSize, BlockOutput& output) {
  dictionary_.Reset(codeSize);
  CodeStream stream(codeSize, std::uint64_t{rows.width} * rows.height, codes_, output);
  std::uint32_t code = rows.first[0];
  std::uint32_t last = code;
  std::uint64_t begin = 0;  // where the string that is being matched begins, counted in pixels of the frame
  for (std::uint32_t i = 0; i < rows.height; ++i) {
    const std::uint32_t y = rows.interlaced ? InterlacedRow(i, rows.height) : i;
    const std::uint8_t* row = rows.first + y * rows.stride;
    const std::uint64_t rowBegin = std::uint64_t{i} * rows.width;
    for (std::uint32_t x = i == 0 ? 1 : 0; x < rows.width; ++x) {
      const std::uint32_t pixel = row[x];
      const std::uint32_t slot = dictionary_.SlotOf(code, pixel, last);
      const std::uint32_t longer = dictionary_.At(slot);
      last = pixel;
      if (longer != 0) {
        code = longer;
        continue;
      }
      const std::uint64_t place = rowBegin + x;
      if (stream.Put(code, static_cast<std::uint32_t>(place - begin))) {
        dictionary_.Reset(codeSize);
      } else if (!stream.Full()) {
        dictionary_.Set(slot, stream.NewEntry());
      }
      code = pixel;
      begin = place;
    }
  }
  stream.End(code);
}

}  // namespace qgif
