#include "modules/helpers/metafile_player/path.h"

#include <algorithm>
#include <cmath>

#include "modules/helpers/metafile_player/limits.h"

namespace metafile_player {
namespace {

constexpr double kPi = 3.14159265358979323846;

double Held(double value) {
  // Also turns what is no number into one.
  return value > -kMaxCoordinate ? std::min(value, kMaxCoordinate) : -kMaxCoordinate;
}

Spot Mapped(const platform::Transform& transform, double x, double y) { return {transform.X(x, y), transform.Y(x, y)}; }

}  // namespace

void Path::Add(Spot at) { spots_.push_back({Held(at.x), Held(at.y)}); }

void Path::MoveTo(Spot at) {
  steps_.push_back(Step::kMove);
  Add(at);
}

void Path::LineTo(Spot at) {
  steps_.push_back(Step::kLine);
  Add(at);
}

void Path::CurveTo(Spot control1, Spot control2, Spot at) {
  steps_.push_back(Step::kCurve);
  Add(control1);
  Add(control2);
  Add(at);
}

void Path::Close() {
  if (!steps_.empty()) steps_.push_back(Step::kClose);
}

void Path::AddBox(const Area& box) {
  MoveTo({box.left, box.top});
  LineTo({box.right, box.top});
  LineTo({box.right, box.bottom});
  LineTo({box.left, box.bottom});
  Close();
}

void Path::Append(const Path& other) {
  steps_.insert(steps_.end(), other.steps_.begin(), other.steps_.end());
  spots_.insert(spots_.end(), other.spots_.begin(), other.spots_.end());
}

void Path::Clear() {
  steps_.clear();
  spots_.clear();
}

Area Path::Extent() const {
  Area area{kMaxCoordinate, kMaxCoordinate, -kMaxCoordinate, -kMaxCoordinate};
  for (const Spot spot : spots_) {
    area = {std::min(area.left, spot.x), std::min(area.top, spot.y), std::max(area.right, spot.x),
            std::max(area.bottom, spot.y)};
  }
  return area;
}

double Path::CrossedRows(double height, double strokeWidth) const {
  const auto within = [&](double from, double to) {
    const auto [least, most] = std::minmax(from, to);
    return std::max(std::min(most + strokeWidth / 2, height) - std::max(least - strokeWidth / 2, 0.0), 0.0);
  };
  double rows = 0;
  const Spot* at = spots_.data();
  for (const Step step : steps_) {
    if (step == Step::kClose) continue;
    const int points = step == Step::kCurve ? 3 : 1;
    // A curve is drawn as lines, each with joins of its own.
    double joins = 1;
    for (int i = 0; i < points; ++i, ++at) {
      if (at == spots_.data() || step == Step::kMove) continue;
      if (step == Step::kCurve) joins += std::sqrt(std::hypot(at->x - at[-1].x, at->y - at[-1].y));
      rows += (strokeWidth > 0 ? 2 : 1) * within(at->y, at[-1].y);
    }
    if (strokeWidth > 0) rows += joins * 4 * std::min(within(at[-1].y, at[-1].y), strokeWidth);
  }
  return rows;
}

double Path::Length() const {
  double length = 0;
  for (std::size_t i = 1; i < spots_.size(); ++i) {
    length += std::hypot(spots_[i].x - spots_[i - 1].x, spots_[i].y - spots_[i - 1].y);
  }
  return length;
}

void Path::Move(double dx, double dy) {
  for (Spot& spot : spots_) spot = {Held(spot.x + dx), Held(spot.y + dy)};
}

void Path::Trace(cairo_t* cairo) const {
  cairo_new_path(cairo);
  const Spot* at = spots_.data();
  for (const Step step : steps_) {
    switch (step) {
      case Step::kMove:
        cairo_move_to(cairo, at->x, at->y);
        ++at;
        break;
      case Step::kLine:
        cairo_line_to(cairo, at->x, at->y);
        ++at;
        break;
      case Step::kCurve:
        cairo_curve_to(cairo, at[0].x, at[0].y, at[1].x, at[1].y, at[2].x, at[2].y);
        at += 3;
        break;
      case Step::kClose:
        cairo_close_path(cairo);
        break;
    }
  }
}

void AddArc(Path& path, const platform::Transform& toSamples, const Area& box, double start, double sweep,
            bool connected) {
  const double middleX = (box.left + box.right) / 2;
  const double middleY = (box.top + box.bottom) / 2;
  const double radiusX = (box.right - box.left) / 2;
  const double radiusY = (box.bottom - box.top) / 2;
  const int pieces = std::max(1, static_cast<int>(std::ceil(std::abs(sweep) / (kPi / 2) - 1e-9)));
  const double step = sweep / pieces;
  const double reach = 4.0 / 3.0 * std::tan(step / 4);
  const auto at = [&](double x, double y) { return Mapped(toSamples, middleX + radiusX * x, middleY - radiusY * y); };
  double angle = start;
  const Spot first = at(std::cos(angle), std::sin(angle));
  if (connected) {
    path.LineTo(first);
  } else {
    path.MoveTo(first);
  }
  for (int i = 0; i < pieces; ++i) {
    const double next = angle + step;
    const double c0 = std::cos(angle), s0 = std::sin(angle);
    const double c1 = std::cos(next), s1 = std::sin(next);
    path.CurveTo(at(c0 - reach * s0, s0 + reach * c0), at(c1 + reach * s1, s1 - reach * c1), at(c1, s1));
    angle = next;
  }
}

void AddEllipse(Path& path, const platform::Transform& toSamples, const Area& box) {
  AddArc(path, toSamples, box, 0, 2 * kPi, false);
  path.Close();
}

void AddRoundBox(Path& path, const platform::Transform& toSamples, const Area& box, double cornerWidth,
                 double cornerHeight) {
  const double width = box.right - box.left;
  const double height = box.bottom - box.top;
  // A box may be given by any two corners.
  const double cw = std::copysign(std::min(std::abs(cornerWidth), std::abs(width)), width);
  const double ch = std::copysign(std::min(std::abs(cornerHeight), std::abs(height)), height);
  const auto corner = [&](double left, double top, double start, bool connected) {
    AddArc(path, toSamples, {left, top, left + cw, top + ch}, start, kPi / 2, connected);
  };
  corner(box.right - cw, box.top, 0, false);
  corner(box.left, box.top, kPi / 2, true);
  corner(box.left, box.bottom - ch, kPi, true);
  corner(box.right - cw, box.bottom - ch, 3 * kPi / 2, true);
  path.Close();
}

}  // namespace metafile_player
