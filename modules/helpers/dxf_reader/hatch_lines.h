#ifndef MODULES_HELPERS_DXF_READER_HATCH_LINES_H_
#define MODULES_HELPERS_DXF_READER_HATCH_LINES_H_

#include <cstddef>
#include <vector>

#include "modules/helpers/dxf_reader/drawing.h"
#include "modules/helpers/dxf_reader/groups.h"

namespace dxf {

// The families of lines that a hatch says it is drawn with.
std::vector<HatchFamily> ReadHatchFamilies(const Groups& groups);

// The strokes of a family that can be seen within the box from `low` to `high`. Empty if there would be more than
// `most`: lines that dense are a surface.
std::vector<Line> HatchStrokes(const HatchFamily& family, Place low, Place high, std::size_t most);

}  // namespace dxf

#endif  // MODULES_HELPERS_DXF_READER_HATCH_LINES_H_
