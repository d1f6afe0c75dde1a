#ifndef MODULES_QHPG_PLOTTER_STATE_H_
#define MODULES_QHPG_PLOTTER_STATE_H_

#include <array>
#include <cmath>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "modules/qhpg/instructions.h"
#include "modules/qhpg/plot_sheet.h"

namespace qhpg {

using Figures = std::vector<std::vector<Place>>;

inline constexpr double kUnitsPerMm = 40;
inline constexpr double kUnitsPerCm = 400;

// The state of a plotter.
class Plotter {
 public:
  explicit Plotter(std::span<const std::uint8_t> plot) : in_(plot) { Initialize(); }

  void Run();
  PlotSheet& Sheet() { return sheet_; }

 private:
  static constexpr char kEndOfText = 3;
  static constexpr std::size_t kPens = 256;

  void Initialize();
  void SetDefaults();
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
  // Cubic curves, three places each.
  void Bezier(const std::vector<double>& numbers, bool absolute);
  // A mark on an axis, through the pen's place.
  void Tick(bool across);
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
  char symbol_ = '\0';      // drawn at each place to which the pen is sent
  double tickAhead_ = 0.5;  // hundredths of the way from P1 to P2
  double tickBehind_ = 0.5;
  std::string_view buffered_;
  bool polygon_ = false;
  Figures figures_;
  std::size_t figurePoints_ = 0;
};

}  // namespace qhpg

#endif  // MODULES_QHPG_PLOTTER_STATE_H_
