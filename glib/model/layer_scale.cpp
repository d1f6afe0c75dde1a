#include "glib/model/layer.h"

namespace glib {

// Without its kernel yet: the operation refuses, the layer stays as it was.
bool Layer::ScaleLayer(std::int32_t, std::int32_t, std::int32_t, bool, ProgressCallback, const ProgressInfo*) { return false; }

}  // namespace glib
