#ifndef MODULES_QPCX_EGA_PALETTE_H_
#define MODULES_QPCX_EGA_PALETTE_H_

#include "modules/common/page_builder.h"

namespace qpcx {

// Pictures of the first programs leave their 16 colours out: those of the screen were meant. Gives them to a page of
// 4 bits whose whole palette is black; any other page stays as it is.
void FillMissingPalette(modules::Page& page);

}  // namespace qpcx

#endif  // MODULES_QPCX_EGA_PALETTE_H_
