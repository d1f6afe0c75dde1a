#ifndef GLIB_MODEL_HUE_PARTS_H_
#define GLIB_MODEL_HUE_PARTS_H_

#include <cstdint>

namespace glib {

// A colour as hue, saturation and its light: the value (largest channel) or the lightness (mean of largest and
// smallest). All are from 0 to 255. Channels are bytes 0, 1, 2 of a pixel, in this order.
struct HueParts {
  int hue;
  int saturation;
  int light;
};

HueParts ToHueValue(const std::uint8_t* pixel);
void FromHueValue(const HueParts& parts, std::uint8_t* pixel);

HueParts ToHueLightness(const std::uint8_t* pixel);
void FromHueLightness(const HueParts& parts, std::uint8_t* pixel);

}  // namespace glib

#endif  // GLIB_MODEL_HUE_PARTS_H_
