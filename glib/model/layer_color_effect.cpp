#include "glib/model/layer.h"

namespace glib {

// Without its kernel yet: the operation refuses, the layer stays as it was.
bool Layer::ColorEffectLayer(std::uint32_t, const double*) { return false; }

}  // namespace glib
