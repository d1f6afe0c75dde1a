#ifndef MODULES_QGIF_LZW_ENCODER_H_
#define MODULES_QGIF_LZW_ENCODER_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "modules/qgif/block_output.h"
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

// Makes the codes of frames. One object serves all frames of a file, so that its tables are made once.
class LzwEncoder {
 public:
  LzwEncoder() = default;

  // Writes the code size, the blocks of codes and the end of blocks. There is at least one pixel, and all indices are
  // below 1 << codeSize, which is 2 to 8.
  void Encode(const IndexRows& rows, std::uint32_t codeSize, BlockOutput& output);


 private:
  LzwDictionary dictionary_;
  std::vector<std::uint8_t> codes_;
};

}  // namespace qgif

#endif  // MODULES_QGIF_LZW_ENCODER_H_
