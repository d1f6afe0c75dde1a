#ifndef MODULES_HELPERS_DXF_READER_CURVES_H_
#define MODULES_HELPERS_DXF_READER_CURVES_H_

#include <cstddef>

#include "modules/helpers/dxf_reader/drawing.h"

// Curves as lines that stay within a fifth of a pixel where a curve is as large as the picture. All append to `line`.

namespace dxf {

// Radians, from `start` by `sweep`, which may be negative. `major` is the way from the middle to the end of one axis,
// `ratio` the other axis' length to it.
void AddEllipse(Place middle, Place major, double ratio, double start, double sweep, Line& line);
void AddArc(Place middle, double radius, double start, double sweep, Line& line);

// From the line's last point to `to`; a bulge is the tangent of a quarter of the angle.
void AddBulge(Place to, double bulge, Line& line);

struct Spline {
  std::size_t degree = 3;
  bool closed = false;
  std::vector<Place> control;
  std::vector<double> weights;  // as many as control points, or none
  std::vector<double> knots;
  std::vector<Place> fit;
};

// Through the control points, or from fit point to fit point where there are none.
void AddSpline(const Spline& spline, Line& line);

}  // namespace dxf

#endif  // MODULES_HELPERS_DXF_READER_CURVES_H_
