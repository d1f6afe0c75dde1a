#ifndef MODULES_HELPERS_DXF_READER_PAINTER_H_
#define MODULES_HELPERS_DXF_READER_PAINTER_H_

#include <memory>

#include "modules/helpers/dxf_reader/drawing.h"
#include "platform/metafile/recorder.h"

namespace dxf {

// Records a drawing, its longer side 1024 pixels. Null if nothing of it is to be seen.
std::unique_ptr<platform::Metafile> RecordDrawing(const Drawing& drawing);

}  // namespace dxf

#endif  // MODULES_HELPERS_DXF_READER_PAINTER_H_
