#ifndef MODULES_QPCT_PIXEL_MAP_H_
#define MODULES_QPCT_PIXEL_MAP_H_

#include <cstdint>

#include "modules/common/byte_reader.h"
#include "modules/vector/picture.h"

namespace qpct {

// The head of a bitmap or pixel map.
struct PixelMap {
  bool direct = false;     // pixels are colours
  bool oldBitmap = false;  // one bit in the colours of the drawing
  std::uint32_t rowBytes = 0;
  platform::Box bounds;
  std::uint32_t packing = 0;
  std::uint32_t pixelBits = 1;
  std::uint32_t components = 1;
  std::uint32_t palette[256] = {};
  std::uint32_t paletteEntries = 2;

  std::uint32_t Width() const { return static_cast<std::uint32_t>(bounds.right - bounds.left); }
  std::uint32_t Height() const { return static_cast<std::uint32_t>(bounds.bottom - bounds.top); }
};

// The head with its colour table. False for what can't be: a size over the limits, too few bytes for the pixels, an
// unknown depth. `direct` maps have no table.
bool ReadPixelMap(modules::ByteReader& in, bool direct, PixelMap& map);

// The rows that follow. Missing rows stay zero; `rows` counts those that are there.
bool ReadPixels(modules::ByteReader& in, const PixelMap& map, bool packed, modules::Picture& picture,
                std::uint32_t& rows);

}  // namespace qpct

#endif  // MODULES_QPCT_PIXEL_MAP_H_
