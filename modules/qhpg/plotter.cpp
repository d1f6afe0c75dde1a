#include "modules/qhpg/plotter.h"

#include <algorithm>
#include <cmath>

#include "glib/module_api/result_values.h"
#include "modules/common/limits.h"
#include "modules/qhpg/plotter_state.h"
#include "modules/vector/picture.h"

namespace qhpg {
namespace {

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

}  // namespace

void Plotter::Initialize() {
  first_ = {250, 279};
  second_ = {10250, 7479};
  widthMm_ = 0.35;
  SetDefaults();
  sheet_.SetTurn(0);
  sheet_.SetWidth(widthMm_ * kUnitsPerMm);
  UsePen(1);
}

// What leaves the paper and the pen alone.
void Plotter::SetDefaults() {
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
  lettering_ = {};
  symbol_ = '\0';
  tickAhead_ = tickBehind_ = 0.5;
  labelEnd_ = kEndOfText;
  figures_.clear();
  sheet_.SetWindow({}, {});
  sheet_.SetDashes({});
  sheet_.SetFill({});
  UsePen(pen_);
}

Place Plotter::ToPlotter(double x, double y) const { return {x * factorX_ + offsetX_, y * factorY_ + offsetY_}; }
Place Plotter::Way(double x, double y) const { return {x * factorX_, y * factorY_}; }

void Plotter::UsePen(int pen) {
  pen_ = std::clamp(pen, 0, static_cast<int>(kPens) - 1);
  sheet_.SetColor(colors_[static_cast<std::size_t>(pen_)]);
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
      in_.Numbers();
      Initialize();
      return true;
    case Code('D', 'F'):
      in_.Numbers();
      SetDefaults();
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
