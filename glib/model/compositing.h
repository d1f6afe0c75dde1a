#ifndef GLIB_MODEL_COMPOSITING_H_
#define GLIB_MODEL_COMPOSITING_H_

#include <cstdint>

namespace glib {

class Layer;
class Slide;

// Both lay the visible layers of a range, the lowest first, on the slide's background and give a 32-bit image of the
// range's extent at 0, 0 in `target`. Layers that they read become 32 bits deep. False: the range doesn't fit, no
// memory, or a layer that can't be brought to 32 bits.

// Mixes each layer into the background colour and leaves the layer's own alpha in the result.
bool FlattenLayers(Slide& slide, Layer& target, std::uint32_t first, std::uint32_t count);

// A true "over" of transparent pixels.
bool MergeIntoLayer(Slide& slide, Layer& target, std::uint32_t first, std::uint32_t count);

}  // namespace glib

#endif  // GLIB_MODEL_COMPOSITING_H_
