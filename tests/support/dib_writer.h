#ifndef TESTS_SUPPORT_DIB_WRITER_H_
#define TESTS_SUPPORT_DIB_WRITER_H_

#include <cstdint>
#include <functional>
#include <vector>

namespace tests {

// Everything that a made bitmap says of itself; nothing is checked.
struct DibSpec {
  std::uint32_t headerSize = 40;
  std::int32_t width = 0;
  std::int32_t height = 0;  // negative: top row first
  std::uint32_t bits = 24;
  std::uint32_t compression = 0;
  std::uint32_t perMetreX = 0;
  std::uint32_t perMetreY = 0;
  std::uint32_t declaredColours = 0;
  std::vector<std::uint32_t> masks = {};    // written behind the first 40 bytes, whether the header counts them or not
  std::vector<std::uint32_t> palette = {};  // words 0xRRGGBB
  std::vector<std::uint8_t> data = {};      // rows or code
};

std::vector<std::uint8_t> MakeDib(const DibSpec& spec);
// With a file header, which leads to the data.
std::vector<std::uint8_t> MakeBmp(const DibSpec& spec);

// Rows of `bits`, each padded to 4 bytes, in the order of the file; `value` gives what a pixel holds, with y counted
// from the top of the picture.
std::vector<std::uint8_t> DibRows(std::int32_t width, std::int32_t height, std::uint32_t bits,
                                  const std::function<std::uint32_t(std::uint32_t x, std::uint32_t y)>& value);

}  // namespace tests

#endif  // TESTS_SUPPORT_DIB_WRITER_H_
