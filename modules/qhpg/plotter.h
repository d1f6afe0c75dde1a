#ifndef MODULES_QHPG_PLOTTER_H_
#define MODULES_QHPG_PLOTTER_H_

#include <cstdint>
#include <span>

#include "modules/common/page_builder.h"

namespace qhpg {

// A plot as a metafile as large as what it draws.
std::uint32_t LoadPlot(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange);

}  // namespace qhpg

#endif  // MODULES_QHPG_PLOTTER_H_
