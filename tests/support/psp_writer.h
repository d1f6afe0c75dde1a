#ifndef TESTS_SUPPORT_PSP_WRITER_H_
#define TESTS_SUPPORT_PSP_WRITER_H_

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tests {

// One channel with its value for each pixel, in as many bits as its samples have.
struct PspChannel {
  std::uint32_t bitmap = 0;
  std::uint32_t channel = 0;
  std::uint32_t depth = 8;  // of a sample
  std::function<std::uint32_t(std::uint32_t x, std::uint32_t y)> value = {};
};

struct PspBox {
  std::int32_t left = 0;
  std::int32_t top = 0;
  std::int32_t right = 0;
  std::int32_t bottom = 0;
};

struct PspLayer {
  std::string name = {};
  std::uint32_t kind = 1;
  PspBox whole = {};
  PspBox saved = {};
  PspBox mask = {};  // of both kinds, from the picture's corner
  std::uint32_t opacity = 255;
  std::uint32_t visible = 1;
  std::uint32_t maskDisabled = 0;
  std::uint32_t members = 0;  // of a group
  std::vector<PspChannel> channels = {};
};

// Everything that a made file says of itself; nothing is checked.
struct PspSpec {
  std::uint32_t version = 5;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t depth = 24;
  std::uint32_t compression = 0;
  bool grey = false;
  double resolution = 0;
  std::uint32_t unit = 0;
  std::vector<std::uint32_t> palette = {};  // 0xRRGGBB
  std::vector<PspChannel> composite = {};   // behind a thumbnail of one pixel
  std::vector<PspLayer> layers = {};
  bool padded = false;  // rows without compression
};

std::vector<std::uint8_t> MakePsp(const PspSpec& spec);

}  // namespace tests

#endif  // TESTS_SUPPORT_PSP_WRITER_H_
