#ifndef GLIB_MODEL_OPERATIONS_FRAME_H_
#define GLIB_MODEL_OPERATIONS_FRAME_H_

#include <cstdint>
#include <functional>

#include "glib/model/film.h"
#include "glib/model/slide.h"
#include "glib/module_api/progress.h"

namespace glib {

// The work on one slide, with what it needs for reports by rows: a callback or null, and the film's record. False ends
// the walk.
using SlideWork = std::function<bool(Slide& slide, ProgressCallback callback, const ProgressInfo* progress)>;

// Both take the slides of a range through `work`, with a report before the first, before each and behind the last
// slide. False: the range doesn't fit (nothing is reported then), the work failed, or a report asked to stop.

// A report for each slide, whatever the work reports itself.
bool WalkSlides(Film& film, const char* stage, std::uint32_t first, std::uint32_t count, const SlideWork& work);

// Reports for each slide if there are several small ones, else only those of the work, which gets the callback.
bool WalkSlidesOrRows(Film& film, const char* stage, std::uint32_t first, std::uint32_t count, const SlideWork& work);

}  // namespace glib

#endif  // GLIB_MODEL_OPERATIONS_FRAME_H_
