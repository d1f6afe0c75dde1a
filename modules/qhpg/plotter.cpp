#include "modules/qhpg/plotter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <optional>

#include "glib/module_api/result_values.h"
#include "modules/common/limits.h"
#include "modules/qhpg/instructions.h"
#include "modules/qhpg/packed_places.h"
#include "modules/qhpg/plot_sheet.h"
#include "modules/vector/picture.h"

namespace qhpg {
namespace {

constexpr char kEndOfText = 3;
constexpr double kUnitsPerMm = 40;
constexpr double kUnitsPerCm = 400;
constexpr std::size_t kPens = 256;
constexpr std::size_t kMaxPolygon = std::size_t{1} << 20;  // points of an area

// Hundredths of a pattern's length, drawn and passed over in turn.
const std::vector<double>& PatternOf(int number) {
  static const std::vector<double> kPatterns[] = {
      {},
      {1, 99},
      {50, 50},
      {70, 30},
      {80, 10, 1, 9},
      {70, 10, 10, 10},
      {50, 10, 10, 10, 10, 10},
      {70, 10, 1, 9, 1, 9},
      {50, 10, 1, 9, 10, 10, 1, 9},
  };
  return kPatterns[std::min<std::size_t>(static_cast<std::size_t>(std::abs(number)), std::size(kPatterns) - 1)];
}

using Figures = std::vector<std::vector<Place>>;

// The state of a plotter.
class Plotter {
 public:
  explicit Plotter(std::span<const std::uint8_t> plot) : in_(plot) { Initialize(); }

  void Run();
  PlotSheet& Sheet() { return sheet_; }

 private:
  void Initialize();
  bool Moves(std::uint32_t code);
  bool Curves(std::uint32_t code);
  bool Areas(std::uint32_t code);
  bool Letters(std::uint32_t code);
  bool Pens(std::uint32_t code);
  bool Frames(std::uint32_t code);

  Place ToPlotter(double x, double y) const;
  Place Way(double x, double y) const;  // the same for a difference
  double Length(double units) const { return std::abs(units * factorX_); }
  void GoTo(Place place);
  void Travel(const std::vector<double>& numbers);
  void TravelPacked();
  void ArcAround(Place middle, double degrees);
  void ArcThrough(Place through, Place end);
  Figures Box(Place corner) const;
  Figures Wedge(double radius, double start, double sweep) const;
  void PolygonMode(int mode);
  void SetScale(const std::vector<double>& numbers);
  void SetRelativeSize(double width, double height);
  void UsePen(int pen);
  void UseLineType(const std::vector<double>& numbers);
  void Label(std::string_view text);

  InstructionReader in_;
  PlotSheet sheet_;
  Place first_, second_;                        // P1 and P2
  std::optional<std::array<double, 4>> scale_;  // of P1 and P2 in user units: left, right, bottom, top
  double factorX_ = 1, factorY_ = 1, offsetX_ = 0, offsetY_ = 0;
  Place at_;
  bool down_ = false;
  bool relative_ = false;
  int pen_ = 1;
  std::array<std::uint32_t, kPens> colors_{};
  double white_[3] = {255, 255, 255};
  double widthMm_ = 0.35;
  bool widthsRelative_ = false;
  bool dotsOnly_ = false;
  Lettering lettering_;
  Place labelStart_;
  char labelEnd_ = kEndOfText;
  std::string_view buffered_;
  bool polygon_ = false;
  Figures figures_;
  std::size_t figurePoints_ = 0;
};

void Plotter::Initialize() {
  first_ = {250, 279};
  second_ = {10250, 7479};
  scale_.reset();
  factorX_ = factorY_ = 1;
  offsetX_ = offsetY_ = 0;
  down_ = relative_ = dotsOnly_ = polygon_ = widthsRelative_ = false;
  const std::uint32_t kColors[] = {0xFFFFFF,
                                   0,
                                   platform::ColorRef(255, 0, 0),
                                   platform::ColorRef(0, 255, 0),
                                   platform::ColorRef(255, 255, 0),
                                   platform::ColorRef(0, 0, 255),
                                   platform::ColorRef(255, 0, 255),
                                   platform::ColorRef(0, 255, 255)};
  for (std::size_t i = 0; i < kPens; ++i) colors_[i] = i < std::size(kColors) ? kColors[i] : 0;
  widthMm_ = 0.35;
  lettering_ = {};
  labelEnd_ = kEndOfText;
  figures_.clear();
  sheet_.SetTurn(0);
  sheet_.SetWindow({}, {});
  sheet_.SetDashes({});
  sheet_.SetFill({});
  sheet_.SetWidth(widthMm_ * kUnitsPerMm);
  UsePen(1);
}

Place Plotter::ToPlotter(double x, double y) const { return {x * factorX_ + offsetX_, y * factorY_ + offsetY_}; }
Place Plotter::Way(double x, double y) const { return {x * factorX_, y * factorY_}; }

void Plotter::UsePen(int pen) {
  pen_ = std::clamp(pen, 0, static_cast<int>(kPens) - 1);
  sheet_.SetColor(colors_[static_cast<std::size_t>(pen_)]);
}

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

void Plotter::ArcAround(Place middle, double degrees) {
  const Place from{at_.x - middle.x, at_.y - middle.y};
  degrees = std::clamp(degrees, -360.0, 360.0);
  const int steps = std::max(1, static_cast<int>(std::ceil(std::abs(degrees) / 3)));
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
  const int steps = std::max(1, static_cast<int>(std::ceil(std::abs(sweep) / 3)));
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

void Plotter::SetScale(const std::vector<double>& n) {
  const auto state = [&] {
    if (!scale_) {
      factorX_ = factorY_ = 1;
      offsetX_ = offsetY_ = 0;
      return;
    }
    const auto [left, right, bottom, top] = *scale_;
    factorX_ = (second_.x - first_.x) / (right - left);
    factorY_ = (second_.y - first_.y) / (top - bottom);
    offsetX_ = first_.x - left * factorX_;
    offsetY_ = first_.y - bottom * factorY_;
  };
  scale_.reset();
  if (n.size() >= 5 && n[4] == 2 && n[1] != 0 && n[3] != 0) {  // a place and factors
    factorX_ = n[1];
    factorY_ = n[3];
    offsetX_ = first_.x - n[0] * factorX_;
    offsetY_ = first_.y - n[2] * factorY_;
    return;
  }
  if (n.size() >= 4 && n[0] != n[1] && n[2] != n[3]) scale_ = {n[0], n[1], n[2], n[3]};
  state();
  if (n.size() < 5 || n[4] != 1 || !scale_) return;
  // The same factor both ways, in the middle of what is left over.
  const double factor = std::min(std::abs(factorX_), std::abs(factorY_));
  const auto [left, right, bottom, top] = *scale_;
  factorX_ = std::copysign(factor, factorX_);
  factorY_ = std::copysign(factor, factorY_);
  offsetX_ = (first_.x + second_.x) / 2 - (left + right) / 2 * factorX_;
  offsetY_ = (first_.y + second_.y) / 2 - (bottom + top) / 2 * factorY_;
}

void Plotter::SetRelativeSize(double width, double height) {
  lettering_.width = std::abs(second_.x - first_.x) * width / 100;
  lettering_.height = std::abs(second_.y - first_.y) * height / 100;
}

void Plotter::UseLineType(const std::vector<double>& numbers) {
  dotsOnly_ = !numbers.empty() && numbers[0] == 0;
  const int type = numbers.empty() ? 0 : static_cast<int>(std::clamp(numbers[0], -8.0, 8.0));
  double length = 0.04 * std::hypot(second_.x - first_.x, second_.y - first_.y);
  if (numbers.size() > 1) length *= numbers[1] / 4;
  if (numbers.size() > 2 && numbers[2] == 1) length = numbers[1] * kUnitsPerMm;
  std::vector<double> dashes = PatternOf(type);
  for (double& dash : dashes) dash *= length / 100;
  sheet_.SetDashes(std::move(dashes));
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

void Plotter::Label(std::string_view text) {
  if (pen_ == 0) return;
  at_ = sheet_.Label(at_, lettering_, text);
  sheet_.PenTo(at_, false);
}

bool Plotter::Letters(std::uint32_t code) {
  switch (code) {
    case Code('L', 'B'):
      Label(in_.TextUpTo(labelEnd_));
      return true;
    case Code('B', 'L'):
      buffered_ = in_.TextUpTo(labelEnd_);
      return true;
    case Code('P', 'B'):
      in_.Numbers();
      Label(buffered_);
      return true;
    case Code('W', 'D'):
      in_.TextUpTo(labelEnd_);
      return true;
    case Code('D', 'T'): {
      const char end = in_.Character();
      labelEnd_ = end == '\0' ? kEndOfText : end;
      if (end != '\0') in_.Numbers();
      return true;
    }
    case Code('S', 'M'):
      in_.Character();
      return true;
    case Code('C', 'O'):
      in_.UpToSemicolon();
      return true;
    case Code('C', 'P'): {
      const auto& n = in_.Numbers();
      const double columns = n.size() > 1 ? n[0] : 0;
      const double lines = n.size() > 1 ? n[1] : -1;
      const Place from = n.size() > 1 ? at_ : labelStart_;
      const Place line = n.size() > 1 ? Place{} : Place{at_.x - from.x, at_.y - from.y};
      const double on = columns * lettering_.width * 1.5 * (1 + lettering_.extraWidth);
      double up = lines * lettering_.height * 2 * (1 + lettering_.extraHeight);
      // A new line begins below where the label began, however far down its lines have led.
      up += -line.x * lettering_.runY + line.y * lettering_.runX;
      at_ = {from.x + on * lettering_.runX - up * lettering_.runY,
             from.y + on * lettering_.runY + up * lettering_.runX};
      sheet_.PenTo(at_, false);
      return true;
    }
    case Code('S', 'I'): {
      const auto& n = in_.Numbers();
      lettering_.width = n.size() > 1 ? n[0] * kUnitsPerCm : Lettering().width;
      lettering_.height = n.size() > 1 ? n[1] * kUnitsPerCm : Lettering().height;
      return true;
    }
    case Code('S', 'R'): {
      const auto& n = in_.Numbers();
      SetRelativeSize(n.size() > 1 ? n[0] : 0.75, n.size() > 1 ? n[1] : 1.5);
      return true;
    }
    case Code('D', 'I'):
    case Code('D', 'R'): {
      const auto& n = in_.Numbers();
      double run = n.size() > 1 ? n[0] : 1;
      double rise = n.size() > 1 ? n[1] : 0;
      if (code == Code('D', 'R')) {
        run *= std::abs(second_.x - first_.x);
        rise *= std::abs(second_.y - first_.y);
      }
      const double length = std::hypot(run, rise);
      if (!(length > 0)) return true;
      lettering_.runX = run / length;
      lettering_.runY = rise / length;
      return true;
    }
    case Code('L', 'O'): {
      const auto& n = in_.Numbers();
      lettering_.origin = n.empty() ? 1 : static_cast<std::uint32_t>(std::clamp(n[0], 1.0, 19.0));
      return true;
    }
    case Code('E', 'S'): {
      const auto& n = in_.Numbers();
      lettering_.extraWidth = n.empty() ? 0 : std::clamp(n[0], -1.0, 10.0);
      lettering_.extraHeight = n.size() > 1 ? std::clamp(n[1], -1.0, 10.0) : 0;
      return true;
    }
    default:
      return false;
  }
}

bool Plotter::Pens(std::uint32_t code) {
  switch (code) {
    case Code('S', 'P'): {
      const auto& n = in_.Numbers();
      UsePen(n.empty() ? 0 : static_cast<int>(std::clamp(n[0], 0.0, 255.0)));
      return true;
    }
    case Code('P', 'C'): {
      const auto& n = in_.Numbers();
      if (n.size() < 4 || n[0] < 0 || n[0] >= static_cast<double>(kPens)) return true;
      const auto part = [&](std::size_t i) {
        return static_cast<std::uint32_t>(std::clamp(n[i + 1] / white_[i] * 255, 0.0, 255.0));
      };
      colors_[static_cast<std::size_t>(n[0])] = platform::ColorRef(part(0), part(1), part(2));
      UsePen(pen_);
      return true;
    }
    case Code('C', 'R'): {
      const auto& n = in_.Numbers();
      for (std::size_t i = 0; i < 3; ++i) white_[i] = n.size() > 2 * i + 1 && n[2 * i + 1] > 0 ? n[2 * i + 1] : 255;
      return true;
    }
    case Code('W', 'U'): {
      const auto& n = in_.Numbers();
      widthsRelative_ = !n.empty() && n[0] == 1;
      return true;
    }
    case Code('P', 'W'): {
      const auto& n = in_.Numbers();
      const double diagonal = std::hypot(second_.x - first_.x, second_.y - first_.y);
      widthMm_ = n.empty() ? 0.35 : n[0];
      sheet_.SetWidth(widthsRelative_ && !n.empty() ? n[0] / 100 * diagonal : widthMm_ * kUnitsPerMm);
      return true;
    }
    case Code('L', 'T'):
      UseLineType(in_.Numbers());
      return true;
    default:
      return false;
  }
}

bool Plotter::Frames(std::uint32_t code) {
  switch (code) {
    case Code('I', 'N'):
    case Code('D', 'F'):
      in_.Numbers();
      Initialize();
      return true;
    case Code('I', 'P'): {
      const auto& n = in_.Numbers();
      const auto scale = scale_;
      if (n.size() >= 4) {
        first_ = {n[0], n[1]};
        second_ = {n[2], n[3]};
      } else if (n.size() >= 2) {
        second_ = {second_.x + n[0] - first_.x, second_.y + n[1] - first_.y};
        first_ = {n[0], n[1]};
      }
      if (scale) SetScale({(*scale)[0], (*scale)[1], (*scale)[2], (*scale)[3]});
      return true;
    }
    case Code('S', 'C'):
      SetScale(in_.Numbers());
      return true;
    case Code('I', 'W'): {
      const auto& n = in_.Numbers();
      if (n.size() >= 4) {
        sheet_.SetWindow(ToPlotter(n[0], n[1]), ToPlotter(n[2], n[3]));
      } else {
        sheet_.SetWindow({}, {});
      }
      return true;
    }
    case Code('R', 'O'): {
      const auto& n = in_.Numbers();
      sheet_.SetTurn(n.empty() ? 0 : static_cast<int>(std::clamp(n[0], 0.0, 270.0)) / 90);
      return true;
    }
    default:
      return false;
  }
}

void Plotter::Run() {
  std::uint32_t code = 0;
  while (!sheet_.Full() && in_.Next(code)) {
    if (Moves(code) || Curves(code) || Areas(code) || Letters(code) || Pens(code) || Frames(code)) continue;
    in_.Numbers();
  }
}

}  // namespace

std::uint32_t LoadPlot(std::span<const std::uint8_t> file, glib::ImageDataExchange& exchange) {
  Plotter plotter(file);
  plotter.Run();
  if (!plotter.Sheet().Finish()) return modules::Fail(exchange, glib::IERR, "The plot draws nothing");
  if (plotter.Sheet().LongerSide() > modules::kMaxSide) {
    return modules::Fail(exchange, glib::NSUP, "The plot is too large");
  }
  return modules::AddRecordedPage(exchange, plotter.Sheet().Recorder()) != nullptr ? glib::RCOK : glib::IERR;
}

}  // namespace qhpg
