#ifndef MODULES_QPSP_CHANNEL_READER_H_
#define MODULES_QPSP_CHANNEL_READER_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "modules/common/byte_reader.h"
#include "modules/common/inflate.h"
#include "modules/qpsp/psp_file.h"

namespace qpsp {

// One channel of a picture, as its block has it.
struct ChannelData {
  std::uint32_t bitmap = 0;   // what it is part of
  std::uint32_t channel = 0;  // 0: all of it; 1 to 3: red, green, blue
  std::span<const std::uint8_t> bytes;
};

// The channels among the blocks of a layer or of a composite.
std::vector<ChannelData> ReadChannels(std::span<const std::uint8_t> blocks, std::uint32_t version);

// Rows of one channel, uncompressed.
class ChannelReader {
 public:
  // `depth` is that of a sample: 1, 4, 8 or 16.
  ChannelReader(const ChannelData& channel, Compression compression, std::uint32_t width, std::uint32_t height,
                std::uint32_t depth);

  // Whether the data can hold so many samples.
  bool Believable() const;

  // The next row, of at least PaddedStride(width, 8) bytes: packed pixels below 8 bits, else 8-bit samples. False:
  // there is no whole row any more.
  bool Next(std::uint8_t* row);

 private:
  std::size_t Fill(std::uint8_t* target, std::size_t count);
  std::size_t FillRuns(std::uint8_t* target, std::size_t count);

  modules::ByteReader in_;
  Compression compression_;
  std::uint32_t width_;
  std::uint32_t height_;
  std::uint32_t depth_;
  std::size_t stride_;
  std::optional<modules::Inflater> inflater_;
  std::size_t runLeft_ = 0;  // of a run that goes on into the next row
  bool runIsLiteral_ = false;
  std::uint8_t runValue_ = 0;
  std::vector<std::uint8_t> row_;  // a row of the file
};

}  // namespace qpsp

#endif  // MODULES_QPSP_CHANNEL_READER_H_
