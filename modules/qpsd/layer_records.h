#ifndef MODULES_QPSD_LAYER_RECORDS_H_
#define MODULES_QPSD_LAYER_RECORDS_H_

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "modules/qpsd/psd_file.h"

namespace qpsd {

struct Box {
  std::int32_t top = 0;
  std::int32_t left = 0;
  std::int32_t bottom = 0;
  std::int32_t right = 0;

  // 0 where the sides are the wrong way round.
  std::uint32_t Width() const { return Distance(left, right); }
  std::uint32_t Height() const { return Distance(top, bottom); }

 private:
  static std::uint32_t Distance(std::int32_t from, std::int32_t to) {
    return to > from ? static_cast<std::uint32_t>(to) - static_cast<std::uint32_t>(from) : 0;
  }
};

struct LayerMask {
  Box box;
  std::uint8_t outside = 0;
  bool used = false;
};

enum class LayerKind { kPicture, kGroup, kGroupEnd };

struct LayerRecord {
  struct Plane {
    std::int32_t id;  // a channel of the colours, or one of the numbers below
    std::span<const std::uint8_t> data;
  };
  static constexpr std::int32_t kAlphaPlane = -1;
  static constexpr std::int32_t kMaskPlane = -2;

  Box box;
  std::vector<Plane> planes;
  std::uint8_t opacity = 255;
  bool visible = true;
  LayerKind kind = LayerKind::kPicture;
  std::string name;
  LayerMask mask;
};

// In the order of the file, which is lowest first; the end of a group stands below what is in it, the group above.
// What is cut off is left out.
std::vector<LayerRecord> ReadLayerRecords(const PsdFile& psd);

}  // namespace qpsd

#endif  // MODULES_QPSD_LAYER_RECORDS_H_
