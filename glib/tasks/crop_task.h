#ifndef GLIB_TASKS_CROP_TASK_H_
#define GLIB_TASKS_CROP_TASK_H_

#include <cstdint>

namespace glib {

class Film;

// A rectangle of the film. Each length is in pixels, or in percent of the film's width or height where its flag is 1.
struct CropParams {
  std::int32_t leftIsPercent;
  float left;
  std::int32_t topIsPercent;
  float top;
  std::int32_t rightIsPercent;
  float right;
  std::int32_t bottomIsPercent;
  float bottom;
  std::int32_t margins;  // 1: `right` and `bottom` count from the right and the bottom edge
};

// Crops all slides to the same rectangle, worked out against the film's largest width and height. An empty rectangle
// refuses.
bool TaskCrop(Film* film, const void* params);

}  // namespace glib

#endif  // GLIB_TASKS_CROP_TASK_H_
