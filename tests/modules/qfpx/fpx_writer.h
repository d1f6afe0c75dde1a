#ifndef TESTS_MODULES_QFPX_FPX_WRITER_H_
#define TESTS_MODULES_QFPX_FPX_WRITER_H_

#include <cstdint>
#include <vector>

namespace tests {

struct FpxTile {
  std::uint32_t compression = 0;
  std::uint32_t subtype = 0;
  std::vector<std::uint8_t> data = {};
};

// Everything that a made file says of itself; nothing is checked.
struct FpxSpec {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t tileSide = 64;
  std::uint32_t resolutions = 2;          // only the highest one is there
  std::vector<std::uint32_t> channels;    // numbers
  std::uint32_t sampleFormat = 17;        // bytes
  std::vector<std::uint8_t> tables = {};  // JPEG tables number 3
  std::vector<FpxTile> tiles = {};
};

std::vector<std::uint8_t> MakeFpx(const FpxSpec& spec);

// A picture of `channels` samples a pixel at the best quality. With `tables` these get the tables and the result has
// none; with `converted` three channels are stored as luminance and chrominances.
std::vector<std::uint8_t> MakeJpeg(std::uint32_t side, std::uint32_t channels, bool converted,
                                   const std::vector<std::uint8_t>& samples, std::vector<std::uint8_t>* tables);

}  // namespace tests

#endif  // TESTS_MODULES_QFPX_FPX_WRITER_H_
