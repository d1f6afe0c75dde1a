#ifndef GLIB_TASKS_STRETCH_TASK_H_
#define GLIB_TASKS_STRETCH_TASK_H_

#include <cstdint>

namespace glib {

class Film;

inline constexpr std::int32_t kOnlyEnlarge = 1;
inline constexpr std::int32_t kOnlyReduce = 2;

struct StretchParams {
  std::int32_t widthIsPercent;  // 1: of the film's width, else pixels
  float width;                  // 0: not given
  std::int32_t heightIsPercent;
  float height;
  std::int32_t smooth;        // 1: interpolate
  std::int32_t proportional;  // 1: fit into the size and keep the aspect ratio
  std::int32_t condition;     // kOnlyEnlarge, kOnlyReduce; others set none
  std::int32_t fill;          // 1 with `proportional`: centre the image on a canvas of the size that was asked for
};

// Gives all slides a new size. Refuses when the condition isn't met or no size is above 0.
bool TaskStretch(Film* film, const void* params);

}  // namespace glib

#endif  // GLIB_TASKS_STRETCH_TASK_H_
