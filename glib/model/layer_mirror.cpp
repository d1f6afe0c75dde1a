#include "glib/model/layer.h"

namespace glib {

// Without its kernel yet: the operation refuses, the layer stays as it was.
bool Layer::MirrorLayer(bool, bool) { return false; }

}  // namespace glib
