#ifndef MODULES_QSWF_TAGS_H_
#define MODULES_QSWF_TAGS_H_

#include <algorithm>
#include <cstdint>
#include <span>

#include "modules/common/byte_reader.h"

namespace qswf {

enum TagCode : std::uint32_t {
  kEndTag = 0,
  kShowFrame = 1,
  kDefineShape = 2,
  kPlaceObject = 4,
  kRemoveObject = 5,
  kDefineButton = 7,
  kJpegTables = 8,
  kSetBackgroundColor = 9,
  kDefineFont = 10,
  kDefineText = 11,
  kDefineShape2 = 22,
  kPlaceObject2 = 26,
  kRemoveObject2 = 28,
  kDefineShape3 = 32,
  kDefineText2 = 33,
  kDefineButton2 = 34,
  kDefineEditText = 37,
  kDefineSprite = 39,
  kDefineMorphShape = 46,
  kDefineFont2 = 48,
  kDefineVideo = 60,
  kVideoFrame = 61,
  kPlaceObject3 = 70,
  kDefineFont3 = 75,
  kDefineShape4 = 83,
  kDefineMorphShape2 = 84,
};

struct Tag {
  std::uint32_t code = 0;
  std::span<const std::uint8_t> data;
};

class TagReader {
 public:
  explicit TagReader(std::span<const std::uint8_t> bytes) : in_(bytes) {}

  // False at the end. The last tag of data that are cut off counts with what there is of it.
  bool Next(Tag& tag) {
    const std::uint32_t head = in_.Word();
    std::size_t size = head & 0x3F;
    if (size == 0x3F) size = in_.Long();
    if (in_.Failed()) return false;
    tag.code = head >> 6;
    tag.data = in_.Take(std::min(size, in_.Left()));
    return tag.code != kEndTag;
  }

 private:
  modules::ByteReader in_;
};

}  // namespace qswf

#endif  // MODULES_QSWF_TAGS_H_
