#ifndef MODULES_HELPERS_METAFILE_PLAYER_PATH_H_
#define MODULES_HELPERS_METAFILE_PLAYER_PATH_H_

#include <cairo.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/metafile/geometry.h"

namespace metafile_player {

struct Spot {
  double x = 0;
  double y = 0;
};

// A rectangle of samples, right and bottom outside.
struct Area {
  double left = 0;
  double top = 0;
  double right = 0;
  double bottom = 0;

  bool Empty() const { return !(left < right && top < bottom); }
};

// Figures of lines and curves in samples. Coordinates are kept within what the drawing library can hold.
class Path {
 public:
  void MoveTo(Spot at);
  void LineTo(Spot at);
  void CurveTo(Spot control1, Spot control2, Spot at);
  void Close();
  void AddBox(const Area& box);
  void Append(const Path& other);
  void Clear();

  bool Empty() const { return steps_.empty(); }
  std::size_t PointCount() const { return spots_.size(); }
  // Around all points, also those that steer curves.
  Area Extent() const;
  // Rows from 0 to `height` that its edges cross, each edge by itself; with a width above 0 those of its outline. A
  // guess from above.
  double CrossedRows(double height, double strokeWidth) const;
  double Length() const;  // with moves, and curves as their points lie
  void Move(double dx, double dy);

  void Trace(cairo_t* cairo) const;

 private:
  enum class Step : std::uint8_t { kMove, kLine, kCurve, kClose };

  void Add(Spot at);

  std::vector<Step> steps_;
  std::vector<Spot> spots_;
};

// Shapes of a logical box, mapped to samples.

// An ellipse, beginning at its right end; it runs as the angles of the screen do, counter-clockwise.
void AddEllipse(Path& path, const platform::Transform& toSamples, const Area& box);
void AddRoundBox(Path& path, const platform::Transform& toSamples, const Area& box, double cornerWidth,
                 double cornerHeight);
// Part of an ellipse between two angles (radians, counter-clockwise with y going up); a positive or negative sweep.
// Begins with a line from the current point if `connected`.
void AddArc(Path& path, const platform::Transform& toSamples, const Area& box, double start, double sweep,
            bool connected);

}  // namespace metafile_player

#endif  // MODULES_HELPERS_METAFILE_PLAYER_PATH_H_
