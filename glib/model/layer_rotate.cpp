#include "glib/model/layer.h"

namespace glib {

// Without its kernel yet: the operation refuses, the layer stays as it was.
bool Layer::RotateLayer(double, std::uint8_t, ProgressCallback, const ProgressInfo*) { return false; }

}  // namespace glib
