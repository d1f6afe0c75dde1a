#ifndef MODULES_QSWF_BITMAP_H_
#define MODULES_QSWF_BITMAP_H_

#include <cstdint>
#include <memory>
#include <span>

#include "modules/vector/picture.h"

namespace qswf {

// A tag that holds a bitmap, behind its identifier.
struct BitmapTag {
  std::uint32_t code = 0;
  std::span<const std::uint8_t> data;
};

bool IsBitmapTag(std::uint32_t code);

// Alpha is straight. Null for what can't be decoded. `tables` is the movie's common start of JPEG bitmaps.
std::unique_ptr<modules::Picture> DecodeBitmap(const BitmapTag& tag, std::span<const std::uint8_t> tables);

// The whole of compressed data; at most `limit` bytes, fewer if they break off.
std::vector<std::uint8_t> Inflate(std::span<const std::uint8_t> data, std::size_t limit);

}  // namespace qswf

#endif  // MODULES_QSWF_BITMAP_H_
