#include <algorithm>
#include <cmath>
#include <numbers>

#include "modules/qhpg/packed_places.h"
#include "modules/qhpg/plotter_state.h"

// Where the pen goes, and the areas that it goes around.

namespace qhpg {
namespace {

constexpr std::size_t kMaxPolygon = std::size_t{1} << 20;  // points of an area
constexpr double kStepDegrees = 3;                         // of the lines that stand for an arc

}  // namespace

void Plotter::GoTo(Place place) {
  at_ = place;
  labelStart_ = place;
  if (polygon_) {
    if (figures_.empty() || !down_) figures_.emplace_back();
    if (++figurePoints_ < kMaxPolygon) figures_.back().push_back(place);
    return;
  }
  const bool draws = down_ && pen_ != 0;
  if (draws && dotsOnly_) {
    sheet_.PenTo(place, false);
    sheet_.Dot(place);
  } else {
    sheet_.PenTo(place, draws);
  }
}

void Plotter::Travel(const std::vector<double>& numbers) {
  for (std::size_t i = 0; i + 1 < numbers.size(); i += 2) {
    const Place way = Way(numbers[i], numbers[i + 1]);
    GoTo(relative_ ? Place{at_.x + way.x, at_.y + way.y} : ToPlotter(numbers[i], numbers[i + 1]));
    if (symbol_ != '\0' && !polygon_ && pen_ != 0) {
      Lettering centred = lettering_;
      centred.origin = 5;
      sheet_.Label(at_, centred, {&symbol_, 1});
    }
  }
}

void Plotter::TravelPacked() {
  const bool before = down_;
  for (const PackedStep& step : UnpackPlaces(in_.UpToSemicolon())) {
    if (step.kind == PackedStep::Kind::kPen) {
      UsePen(step.pen);
      continue;
    }
    down_ = step.down;
    const Place way = Way(step.x, step.y);
    GoTo(step.absolute ? ToPlotter(step.x, step.y) : Place{at_.x + way.x, at_.y + way.y});
  }
  down_ = before;
}

void Plotter::Bezier(const std::vector<double>& numbers, bool absolute) {
  constexpr int kSteps = 24;
  for (std::size_t i = 0; i + 5 < numbers.size(); i += 6) {
    const Place from = at_;
    const auto place = [&](std::size_t index) {
      const Place way = Way(numbers[index], numbers[index + 1]);
      return absolute ? ToPlotter(numbers[index], numbers[index + 1]) : Place{from.x + way.x, from.y + way.y};
    };
    const Place a = place(i);
    const Place b = place(i + 2);
    const Place to = place(i + 4);
    for (int step = 1; step <= kSteps; ++step) {
      const double t = static_cast<double>(step) / kSteps;
      const double s = 1 - t;
      const auto at = [&](double p, double q, double r, double v) {
        return s * s * s * p + 3 * s * s * t * q + 3 * s * t * t * r + t * t * t * v;
      };
      GoTo({at(from.x, a.x, b.x, to.x), at(from.y, a.y, b.y, to.y)});
    }
  }
}

void Plotter::Tick(bool across) {
  const double size = across ? second_.x - first_.x : second_.y - first_.y;
  const double ahead = size * tickAhead_ / 100;
  const double behind = size * tickBehind_ / 100;
  if (pen_ == 0 || polygon_) return;
  sheet_.PenTo(across ? Place{at_.x - behind, at_.y} : Place{at_.x, at_.y - behind}, false);
  sheet_.PenTo(across ? Place{at_.x + ahead, at_.y} : Place{at_.x, at_.y + ahead}, true);
  sheet_.PenTo(at_, false);
}

void Plotter::ArcAround(Place middle, double degrees) {
  const Place from{at_.x - middle.x, at_.y - middle.y};
  degrees = std::clamp(degrees, -360.0, 360.0);
  const int steps = std::max(1, static_cast<int>(std::ceil(std::abs(degrees) / kStepDegrees)));
  for (int i = 1; i <= steps; ++i) {
    const double angle = degrees * i / steps * std::numbers::pi / 180;
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    GoTo({middle.x + from.x * c - from.y * s, middle.y + from.x * s + from.y * c});
  }
}

void Plotter::ArcThrough(Place through, Place end) {
  const double ax = through.x - at_.x;
  const double ay = through.y - at_.y;
  const double bx = end.x - at_.x;
  const double by = end.y - at_.y;
  const double cross = 2 * (ax * by - ay * bx);
  if (std::abs(cross) < 1e-6) {
    GoTo(through);
    GoTo(end);
    return;
  }
  const double a = ax * ax + ay * ay;
  const double b = bx * bx + by * by;
  const Place middle{at_.x + (by * a - ay * b) / cross, at_.y + (ax * b - bx * a) / cross};
  const auto angle = [&](Place place) { return std::atan2(place.y - middle.y, place.x - middle.x); };
  double sweep = (angle(end) - angle(at_)) * 180 / std::numbers::pi;
  // The way around on which the point between lies.
  if (cross > 0 && sweep < 0) sweep += 360;
  if (cross < 0 && sweep > 0) sweep -= 360;
  ArcAround(middle, sweep);
  GoTo(end);
}

Figures Plotter::Box(Place corner) const { return {{at_, {corner.x, at_.y}, corner, {at_.x, corner.y}}}; }

Figures Plotter::Wedge(double radius, double start, double sweep) const {
  std::vector<Place> points{at_};
  sweep = std::clamp(sweep, -360.0, 360.0);
  const int steps = std::max(1, static_cast<int>(std::ceil(std::abs(sweep) / kStepDegrees)));
  for (int i = 0; i <= steps; ++i) {
    const double angle = (start + sweep * i / steps) * std::numbers::pi / 180;
    points.push_back({at_.x + radius * std::cos(angle), at_.y + radius * std::sin(angle)});
  }
  return {points};
}

void Plotter::PolygonMode(int mode) {
  if (mode == 0) {
    figures_.assign(1, {at_});
    figurePoints_ = 1;
    polygon_ = true;
  } else if (mode == 1 && polygon_) {
    figures_.emplace_back();
  } else {
    polygon_ = false;
    sheet_.PenTo(at_, false);
  }
}

bool Plotter::Moves(std::uint32_t code) {
  switch (code) {
    case Code('P', 'U'):
      down_ = false;
      Travel(in_.Numbers());
      sheet_.PenTo(at_, false);
      return true;
    case Code('P', 'D'): {
      down_ = true;
      const auto& numbers = in_.Numbers();
      if (numbers.size() < 2 && !polygon_ && pen_ != 0 && dotsOnly_) sheet_.Dot(at_);
      Travel(numbers);
      return true;
    }
    case Code('P', 'A'):
      relative_ = false;
      Travel(in_.Numbers());
      return true;
    case Code('P', 'R'):
      relative_ = true;
      Travel(in_.Numbers());
      return true;
    case Code('P', 'E'):
      TravelPacked();
      return true;
    case Code('X', 'T'):
    case Code('Y', 'T'):
      in_.Numbers();
      Tick(code == Code('Y', 'T'));
      return true;
    case Code('T', 'L'): {
      const auto& n = in_.Numbers();
      tickAhead_ = n.empty() ? 0.5 : std::clamp(n[0], -100.0, 100.0);
      tickBehind_ = n.empty() ? 0.5 : n.size() > 1 ? std::clamp(n[1], -100.0, 100.0) : 0;
      return true;
    }
    default:
      return false;
  }
}

bool Plotter::Curves(std::uint32_t code) {
  const bool absolute = code == Code('A', 'A') || code == Code('A', 'T');
  switch (code) {
    case Code('A', 'A'):
    case Code('A', 'R'): {
      const auto& n = in_.Numbers();
      if (n.size() < 3) return true;
      const Place way = Way(n[0], n[1]);
      ArcAround(absolute ? ToPlotter(n[0], n[1]) : Place{at_.x + way.x, at_.y + way.y}, n[2]);
      return true;
    }
    case Code('A', 'T'):
    case Code('R', 'T'): {
      const auto& n = in_.Numbers();
      if (n.size() < 4) return true;
      const Place a = Way(n[0], n[1]);
      const Place b = Way(n[2], n[3]);
      ArcThrough(absolute ? ToPlotter(n[0], n[1]) : Place{at_.x + a.x, at_.y + a.y},
                 absolute ? ToPlotter(n[2], n[3]) : Place{at_.x + b.x, at_.y + b.y});
      return true;
    }
    case Code('B', 'Z'):
    case Code('B', 'R'):
      Bezier(in_.Numbers(), code == Code('B', 'Z'));
      return true;
    case Code('C', 'I'): {
      const auto& n = in_.Numbers();
      if (n.empty()) return true;
      Figures circle = Wedge(Length(n[0]), 0, 360);
      circle[0].erase(circle[0].begin());
      if (polygon_) {
        figures_.push_back(circle[0]);
      } else if (pen_ != 0) {
        sheet_.Outline(circle);
        sheet_.PenTo(at_, false);
      }
      return true;
    }
    default:
      return false;
  }
}

bool Plotter::Areas(std::uint32_t code) {
  const auto show = [&](const Figures& figures, bool fill) {
    if (pen_ == 0) return;
    if (fill) {
      sheet_.Fill(figures);
    } else {
      sheet_.Outline(figures);
    }
    sheet_.PenTo(at_, false);
  };
  switch (code) {
    case Code('E', 'A'):
    case Code('R', 'A'):
      if (const auto& n = in_.Numbers(); n.size() >= 2) show(Box(ToPlotter(n[0], n[1])), code == Code('R', 'A'));
      return true;
    case Code('E', 'R'):
    case Code('R', 'R'):
      if (const auto& n = in_.Numbers(); n.size() >= 2) {
        const Place way = Way(n[0], n[1]);
        show(Box({at_.x + way.x, at_.y + way.y}), code == Code('R', 'R'));
      }
      return true;
    case Code('E', 'W'):
    case Code('W', 'G'):
      if (const auto& n = in_.Numbers(); n.size() >= 3) {
        show(Wedge(Length(n[0]) * (n[0] < 0 ? -1 : 1), n[1], n[2]), code == Code('W', 'G'));
      }
      return true;
    case Code('P', 'M'): {
      const auto& n = in_.Numbers();
      PolygonMode(n.empty() ? 0 : static_cast<int>(std::clamp(n[0], 0.0, 2.0)));
      return true;
    }
    case Code('F', 'P'):
    case Code('E', 'P'):
      in_.Numbers();
      show(figures_, code == Code('F', 'P'));
      return true;
    case Code('F', 'T'): {
      const auto& n = in_.Numbers();
      FillLook look;
      const double kind = n.empty() ? 1 : n[0];
      if (kind == 3) look.kind = Filling::kLines;
      if (kind == 4) look.kind = Filling::kCrossed;
      look.spacing = 0.01 * std::hypot(second_.x - first_.x, second_.y - first_.y);
      if (kind == 10) {
        look.share = n.size() > 1 ? std::clamp(n[1], 0.0, 100.0) / 100 : 0.5;
      } else if (n.size() > 1 && n[1] > 0) {
        look.spacing = Length(n[1]);
      }
      if (n.size() > 2) look.angle = n[2];
      sheet_.SetFill(look);
      return true;
    }
    default:
      return false;
  }
}

}  // namespace qhpg
