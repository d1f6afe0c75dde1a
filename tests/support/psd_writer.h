#ifndef TESTS_SUPPORT_PSD_WRITER_H_
#define TESTS_SUPPORT_PSD_WRITER_H_

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tests {

// What a sample of a plane is, in as many bits as the depth says; 32 bits are those of a float.
using PlaneFunction = std::function<std::uint32_t(std::uint32_t plane, std::uint32_t x, std::uint32_t y)>;

struct PsdLayerSpec {
  std::int32_t left = 0;
  std::int32_t top = 0;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::vector<std::int32_t> planes = {};  // ids
  PlaneFunction value = {};               // planes counted from 0; without it they are empty
  std::uint32_t compression = 0;
  std::uint32_t opacity = 255;
  std::uint32_t flags = 0;
  std::string name = {};
  std::uint32_t divider = 0;                 // kind of a section divider; 0: none
  std::vector<std::uint8_t> mask = {};       // the block that describes the mask
  std::vector<std::uint8_t> maskPlane = {};  // its data, with the number of the compression
};

struct PsdResource {
  std::uint32_t id;
  std::vector<std::uint8_t> data;
};

// Everything that a made file says of itself; nothing is checked.
struct PsdSpec {
  std::uint32_t version = 1;
  std::uint32_t channels = 3;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t depth = 8;
  std::uint32_t mode = 3;
  std::vector<std::uint8_t> palette = {};
  std::vector<PsdResource> resources = {};
  std::vector<PsdLayerSpec> layers = {};
  bool transparentMerged = false;    // the count of the layers is negative
  const char* layerBlock = nullptr;  // where layers stand in a block of their own: its key
  std::uint32_t compression = 0;
  PlaneFunction value = {};
};

std::vector<std::uint8_t> MakePsd(const PsdSpec& spec);

}  // namespace tests

#endif  // TESTS_SUPPORT_PSD_WRITER_H_
