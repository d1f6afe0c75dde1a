#ifndef MODULES_QPPM_PNM_ROWS_H_
#define MODULES_QPPM_PNM_ROWS_H_

#include <cstdint>
#include <span>
#include <vector>

#include "modules/common/page_builder.h"

namespace qppm {

struct PnmHeader;

// Samples from 0 to a highest one, to 8 bits.
class SampleScale {
 public:
  explicit SampleScale(std::uint32_t highest) : levels_(highest + 1) {
    // highest * 255 + highest / 2 < 2^24
    for (std::uint32_t i = 0; i <= highest; ++i) {
      levels_[i] = static_cast<std::uint8_t>((i * 255 + highest / 2) / highest);
    }
  }

  // What is too high counts as the highest.
  std::uint8_t Of(std::uint32_t sample) const { return sample < levels_.size() ? levels_[sample] : 255; }

 private:
  std::vector<std::uint8_t> levels_;
};

// `count` pixels of three bytes with the first and the third exchanged. The rows don't overlap.
void SwapRedAndBlue(const std::uint8_t* source, std::uint8_t* target, std::size_t count);

// Reads a raster of bytes, or of big-endian words, into a page of the header's size. Gives the whole rows.
std::uint32_t ReadBinaryRows(std::span<const std::uint8_t> data, const PnmHeader& header, modules::Page& page);

}  // namespace qppm

#endif  // MODULES_QPPM_PNM_ROWS_H_
