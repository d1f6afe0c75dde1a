#include "modules/helpers/dxf_reader/curves.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace dxf {
namespace {

constexpr double kStep = std::numbers::pi / 60;
constexpr std::size_t kMaxDegree = 16;
constexpr std::size_t kPointsPerSpan = 12;

// The point of a curve at `t`, by cutting corners.
bool PointAt(const Spline& spline, std::size_t span, double t, Place& point) {
  const std::size_t degree = spline.degree;
  double x[kMaxDegree + 1], y[kMaxDegree + 1], w[kMaxDegree + 1];
  for (std::size_t i = 0; i <= degree; ++i) {
    const std::size_t at = span - degree + i;
    w[i] = spline.weights.empty() ? 1 : spline.weights[at];
    x[i] = spline.control[at].x * w[i];
    y[i] = spline.control[at].y * w[i];
  }
  for (std::size_t round = 1; round <= degree; ++round) {
    for (std::size_t i = degree; i >= round; --i) {
      const std::size_t at = span - degree + i;
      const double length = spline.knots[at + degree - round + 1] - spline.knots[at];
      const double part = length > 0 ? (t - spline.knots[at]) / length : 0;
      x[i] = x[i - 1] + (x[i] - x[i - 1]) * part;
      y[i] = y[i - 1] + (y[i] - y[i - 1]) * part;
      w[i] = w[i - 1] + (w[i] - w[i - 1]) * part;
    }
  }
  if (!(std::abs(w[degree]) > 0)) return false;
  point = {x[degree] / w[degree], y[degree] / w[degree]};
  return true;
}

// Through the fit points, at each in the direction from the one before it to the one behind it.
void AddFitted(const Spline& spline, Line& line) {
  const auto count = static_cast<std::ptrdiff_t>(spline.fit.size());
  const auto at = [&](std::ptrdiff_t i) {
    if (spline.closed) return spline.fit[static_cast<std::size_t>((i + count) % count)];
    return spline.fit[static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(i, 0, count - 1))];
  };
  line.push_back(at(0));
  for (std::ptrdiff_t i = 0; i < (spline.closed ? count : count - 1); ++i) {
    const Place a = at(i - 1), b = at(i), c = at(i + 1), d = at(i + 2);
    for (std::size_t step = 1; step <= kPointsPerSpan; ++step) {
      const double t = static_cast<double>(step) / kPointsPerSpan;
      const auto between = [&](double va, double vb, double vc, double vd) {
        return vb + t * ((vc - va) / 2 + t * (va - 2.5 * vb + 2 * vc - vd / 2 + t * (1.5 * (vb - vc) + (vd - va) / 2)));
      };
      line.push_back({between(a.x, b.x, c.x, d.x), between(a.y, b.y, c.y, d.y)});
    }
  }
}

}  // namespace

void AddEllipse(Place middle, Place major, double ratio, double start, double sweep, Line& line) {
  if (!std::isfinite(start) || !std::isfinite(sweep)) return;
  // Angles of many turns say nothing more than one turn.
  start = std::fmod(start, 2 * std::numbers::pi);
  sweep = std::clamp(sweep, -2 * std::numbers::pi, 2 * std::numbers::pi);
  const int steps = std::max(1, static_cast<int>(std::ceil(std::abs(sweep) / kStep)));
  for (int i = 0; i <= steps; ++i) {
    const double angle = start + sweep * i / steps;
    const double c = std::cos(angle);
    const double s = std::sin(angle) * ratio;
    line.push_back({middle.x + major.x * c - major.y * s, middle.y + major.y * c + major.x * s});
  }
}

void AddArc(Place middle, double radius, double start, double sweep, Line& line) {
  AddEllipse(middle, {radius, 0}, 1, start, sweep, line);
}

void AddBulge(Place to, double bulge, Line& line) {
  if (line.empty() || std::abs(bulge) < 1e-6 || !std::isfinite(bulge)) {
    line.push_back(to);
    return;
  }
  const Place from = line.back();
  const double dx = to.x - from.x;
  const double dy = to.y - from.y;
  // The middle lies beside the chord's middle by this part of the chord.
  const double beside = (1 / bulge - bulge) / 4;
  const Place middle{(from.x + to.x) / 2 - dy * beside, (from.y + to.y) / 2 + dx * beside};
  const double radius = std::hypot(from.x - middle.x, from.y - middle.y);
  AddArc(middle, radius, std::atan2(from.y - middle.y, from.x - middle.x), 4 * std::atan(bulge), line);
  line.push_back(to);
}

void AddSpline(const Spline& spline, Line& line) {
  const std::size_t count = spline.control.size();
  const std::size_t degree = spline.degree;
  const bool whole = degree >= 1 && degree <= kMaxDegree && count > degree &&
                     spline.knots.size() >= count + degree + 1 &&
                     (spline.weights.empty() || spline.weights.size() == count) &&
                     std::is_sorted(spline.knots.begin(), spline.knots.end());
  if (!whole && spline.fit.size() > 2) {
    AddFitted(spline, line);
    return;
  }
  if (!whole) {
    const auto& points = spline.fit.empty() ? spline.control : spline.fit;
    line.insert(line.end(), points.begin(), points.end());
    if (spline.closed && !points.empty()) line.push_back(points.front());
    return;
  }
  for (std::size_t span = degree; span < count; ++span) {
    const double from = spline.knots[span];
    const double to = spline.knots[span + 1];
    if (!(to > from)) continue;
    for (std::size_t i = 0; i <= kPointsPerSpan; ++i) {
      Place point;
      const double part = static_cast<double>(i) / kPointsPerSpan;
      if (PointAt(spline, span, from + (to - from) * part, point)) line.push_back(point);
    }
  }
}

}  // namespace dxf
