#ifndef MODULES_QPSP_PSP_BLOCKS_H_
#define MODULES_QPSP_PSP_BLOCKS_H_

#include <cstdint>
#include <span>

#include "modules/common/byte_reader.h"

// A PSP file is a list of blocks, some of which hold others. Most begin with a chunk of fields, whose length is told
// because it grew from version to version.

namespace qpsp {

enum class BlockId : std::uint32_t {
  kAttributes = 0,
  kPalette = 2,
  kLayerBank = 3,
  kLayer = 4,
  kChannel = 5,
  kComposite = 9,
  kCompositeBank = 16,
  kCompositeAttributes = 17,
  kJpeg = 18,
  kGroup = 25,
};

struct Block {
  BlockId id = BlockId::kAttributes;
  std::span<const std::uint8_t> content;  // all behind the block's header
  std::span<const std::uint8_t> chunk;    // the fields; of a bank of layers, which has none, without meaning
  std::span<const std::uint8_t> rest;     // what stands behind them
};

// The blocks of a file or of another block, one after the other. Chunks between them are passed over.
class BlockList {
 public:
  BlockList(std::span<const std::uint8_t> bytes, std::uint32_t version) : in_(bytes), version_(version) {}

  // False: there is no more, or what follows is no block. One that is cut off has what there is of it.
  bool Next(Block& block);

 private:
  modules::ByteReader in_;
  std::uint32_t version_;
};

}  // namespace qpsp

#endif  // MODULES_QPSP_PSP_BLOCKS_H_
