#ifndef MODULES_QGIF_BLOCK_OUTPUT_H_
#define MODULES_QGIF_BLOCK_OUTPUT_H_

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace qgif {

// Takes the bytes of a file in large pieces. False: they can't be kept, and nothing further needs to come.
class ByteSink {
 public:
  virtual ~ByteSink() = default;
  virtual bool Take(std::span<const std::uint8_t> bytes) = 0;
};

// Bytes of a file on their way to a sink, in pieces of some hundred kilobytes. Errors are kept until Flush.
class BlockOutput {
 public:
  explicit BlockOutput(ByteSink& sink) : sink_(sink) { bytes_.reserve(kPiece + kMost); }

  void Byte(std::uint32_t value) { bytes_.push_back(static_cast<std::uint8_t>(value)); }
  void Word(std::uint32_t value) {  // low byte first
    Byte(value & 255U);
    Byte(value >> 8 & 255U);
  }
  void Bytes(std::span<const std::uint8_t> bytes) {
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
    if (bytes_.size() >= kPiece) Flush();
  }

  // Data blocks: 255 bytes each behind their length, a shorter one for what is left over.
  void DataBlocks(std::span<const std::uint8_t> bytes);

  // False: something could not be written, now or earlier.
  bool Flush();
  bool Ok() const { return ok_; }

 private:
  static constexpr std::size_t kPiece = std::size_t{512} << 10;
  static constexpr std::size_t kMost = 4096;  // what comes between two looks at the size

  ByteSink& sink_;
  std::vector<std::uint8_t> bytes_;
  bool ok_ = true;
};

}  // namespace qgif

#endif  // MODULES_QGIF_BLOCK_OUTPUT_H_
