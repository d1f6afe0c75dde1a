#ifndef MODULES_QGIF_LZW_ENCODER_H_
#define MODULES_QGIF_LZW_ENCODER_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "modules/qgif/block_output.h"
#include "modules/qgif/code_stream.h"
#include "modules/qgif/lzw_dictionary.h"

namespace qgif {

// Indices of a frame, one a byte, top row first.
struct IndexRows {
  const std::uint8_t* first = nullptr;
  std::size_t stride = 0;  // bytes
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  bool interlaced = false;  // rows are stored in the order of four passes
};

// The smallest code size that holds indices up to `highest`.
std::uint32_t CodeSizeFor(std::uint32_t highest);

// What serves most frames of so many pixels best. Photographs of 256 colours came out 0.6 % smaller with a table that
// is kept at 768 x 512, but 1.3 % larger at 300 x 200.
inline ClearTable ClearTableFor(std::uint64_t pixels) {
  return pixels < 100000 ? ClearTable::kAtOnce : ClearTable::kWhenBehind;
}

// Makes the codes of frames. One object serves all frames of a file, so that its tables are made once.
class LzwEncoder {
 public:
  LzwEncoder() = default;

  // Writes the code size, the blocks of codes and the end of blocks. There is at least one pixel, and all indices are
  // below 1 << codeSize, which is 2 to 8. Gives whether a table was ever full: if not, `clear` made no difference.
  bool Encode(const IndexRows& rows, std::uint32_t codeSize, ClearTable clear, BlockOutput& output);

  // The same for pixels that may be stored as either of two indices. What makes the longest string is taken, among
  // equals what changes from pixel to pixel least often. Both arrays hold `count` indices in the order of the file.
  // Slower than Encode.
  bool EncodeChoices(const std::uint8_t* indices, const std::uint8_t* alternatives, std::size_t count,
                     std::uint32_t codeSize, ClearTable clear, BlockOutput& output);

 private:
  struct Pixels;
  // A string that the table holds and that can stand for pixels from some place on.
  struct Match {
    std::uint32_t code = 0;
    std::uint32_t first = 0;  // its first pixel
    std::uint32_t last = 0;
    std::uint32_t length = 0;
    std::uint32_t changes = 0;
    bool BetterThan(const Match& other) const {
      return length > other.length || (length == other.length && changes < other.changes);
    }
  };

  Match LongestMatch(const Pixels& pixels, std::size_t place, std::uint32_t first);

  LzwDictionary dictionary_;
  std::vector<std::uint8_t> codes_;
  std::vector<Match> open_;  // strings that may be continued
};

}  // namespace qgif

#endif  // MODULES_QGIF_LZW_ENCODER_H_
