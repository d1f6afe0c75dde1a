#ifndef MODULES_QSWF_VALUES_H_
#define MODULES_QSWF_VALUES_H_

#include <cstdint>

#include "modules/qswf/bit_reader.h"

// Small values that many tags hold. Lengths are twips, twenty to a pixel.

namespace qswf {

using platform::Transform;

struct Rect {
  std::int32_t left = 0;
  std::int32_t top = 0;
  std::int32_t right = 0;
  std::int32_t bottom = 0;
};

struct Color {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
  std::uint8_t alpha = 255;
};

struct ColorTransform {
  // Red, green, blue, alpha: 256 leaves a value as it is.
  std::int32_t times[4] = {256, 256, 256, 256};
  std::int32_t plus[4] = {};

  Color Apply(Color color) const;
  bool ChangesNothing() const;
};

// First `inner`, then `outer`.
ColorTransform Then(const ColorTransform& inner, const ColorTransform& outer);

Rect ReadRect(BitReader& in);
Transform ReadMatrix(BitReader& in);
ColorTransform ReadColorTransform(BitReader& in, bool withAlpha);
Color ReadColor(BitReader& in, bool withAlpha);

// The way back; false if there is none.
bool Invert(const Transform& transform, Transform& inverse);

}  // namespace qswf

#endif  // MODULES_QSWF_VALUES_H_
