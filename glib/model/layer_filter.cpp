#include "glib/model/layer.h"

namespace glib {

// Without its kernel yet: the operation refuses, the layer stays as it was.
bool Layer::FilterLayer(std::uint32_t, ProgressCallback, const ProgressInfo*) { return false; }

}  // namespace glib
