#ifndef MODULES_QSWF_FILL_RASTER_H_
#define MODULES_QSWF_FILL_RASTER_H_

#include "modules/qswf/shape.h"
#include "modules/vector/picture.h"

namespace qswf {

// The pixels of the stage, from `left`, `top` on, as a gradient or a bitmap colours them: 32 bits, colours multiplied
// by their alpha. `toStage` goes from the shape to the stage's twips; `bitmap` may be null for gradients. False if
// there is nothing to be seen.
bool PaintFill(const FillStyle& fill, const Transform& toStage, const ColorTransform& colors,
               const modules::Picture* bitmap, std::int32_t left, std::int32_t top, modules::Picture& target);

// A pixel word of a colour, multiplied by its alpha.
std::uint32_t MultipliedWord(Color color);

}  // namespace qswf

#endif  // MODULES_QSWF_FILL_RASTER_H_
