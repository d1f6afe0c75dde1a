#ifndef GLIB_TASKS_AUTO_CROP_TASK_H_
#define GLIB_TASKS_AUTO_CROP_TASK_H_

#include <cstdint>

#include "glib/model/layer.h"

namespace glib {

class Film;

struct AutoCropParams {
  std::uint32_t color;  // a pixel word as it stands in memory, the lowest byte first
};

// Cuts every layer to its own content and puts it at 0, 0. Layers that can't be rendered are passed over.
bool TaskAutoCrop(Film* film, const void* params);

// The smallest rectangle of a layer's raster that holds every pixel whose word isn't `color`. All four bytes count;
// 24-bit pixels have a fourth byte of 255, indexed ones are their palette entries. A layer of nothing but `color` gives
// (width, height, 0, 0), one without an area or null (0, 0, 0, 0).
Rectangle ContentBounds(const Layer* layer, std::uint32_t color);

}  // namespace glib

#endif  // GLIB_TASKS_AUTO_CROP_TASK_H_
