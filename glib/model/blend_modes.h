#ifndef GLIB_MODEL_BLEND_MODES_H_
#define GLIB_MODEL_BLEND_MODES_H_

#include <cstddef>
#include <cstdint>

namespace glib {

// How a layer is laid on what is below it; the numbers of Layer::blendMode.
enum class BlendMode : std::int32_t {
  kPlain = 0,
  kDissolve,
  kMultiply,
  kScreen,
  kSoftLight,
  kLighter,
  kDarker,
  kDifference,
  kColor,       // hue of the target
  kSaturation,  // saturation of the target
  kLightness,   // lightness of the layer
  kValue,       // value of the target
  kAdd,
  kSubtract,
  kDivide,
  kInvert,
};

// Combines `count` pixels of a layer's row with the target's. Pixels are those of a 32-bit raster; the rows need no
// alignment and don't overlap. kDissolve seeds the process's random numbers from the clock at each call.
using BlendRow = void (*)(std::uint32_t* target, const std::uint32_t* source, std::size_t count);

// The row function of a mode; null for plain, which has two forms (over_rows.h), and for what is no mode.
BlendRow BlendRowOf(std::int32_t mode);

}  // namespace glib

#endif  // GLIB_MODEL_BLEND_MODES_H_
