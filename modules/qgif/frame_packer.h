#ifndef MODULES_QGIF_FRAME_PACKER_H_
#define MODULES_QGIF_FRAME_PACKER_H_

#include <cstdint>
#include <vector>

#include "modules/qgif/block_output.h"
#include "modules/qgif/change_finder.h"
#include "modules/qgif/lzw_encoder.h"

namespace qgif {

// Writes the codes of frames the shortest of some ways. What the others give stays in memory until then.
class FramePacker {
 public:
  explicit FramePacker(BlockOutput& output) : output_(output) {}

  // Large frames are written at once, in the way that serves most of them.
  void PackPage(const IndexRows& rows, std::uint32_t codeSize);

  void PackChanges(const ChangedFrame& frame, std::uint32_t codeSize);

 private:
  class Codes : public ByteSink {
   public:
    bool Take(std::span<const std::uint8_t> taken) override {
      bytes.insert(bytes.end(), taken.begin(), taken.end());
      return true;
    }
    std::vector<std::uint8_t> bytes;
  };

  // Runs `encode(output)`, which gives whether a table was full, and keeps its codes if they are the shortest so far.
  template <typename Encode>
  bool Try(Encode encode);
  void WriteShortest();

  BlockOutput& output_;
  LzwEncoder encoder_;
  Codes shortest_;
  Codes tried_;
  std::vector<std::uint8_t> mixed_;
};

}  // namespace qgif

#endif  // MODULES_QGIF_FRAME_PACKER_H_
