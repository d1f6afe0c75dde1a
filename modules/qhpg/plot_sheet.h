#ifndef MODULES_QHPG_PLOT_SHEET_H_
#define MODULES_QHPG_PLOT_SHEET_H_

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "platform/metafile/recorder.h"

namespace qhpg {

// Plotter units, 1016 to the inch, y going up.
struct Place {
  double x = 0;
  double y = 0;
};

// Distances of characters and lines, to the characters' sides.
inline constexpr double kCellWidth = 1.5;
inline constexpr double kCellHeight = 2.0;

struct Lettering {
  double width = 0.187 * 400;  // of a character
  double height = 0.269 * 400;
  double runX = 1;  // direction of the line, of length 1
  double runY = 0;
  std::uint32_t origin = 1;  // how a label lies to its place, as the instruction numbers it
  double extraWidth = 0;     // of a character's cell
  double extraHeight = 0;
  bool slanted = false;
};

enum class Filling { kSolid, kLines, kCrossed };

struct FillLook {
  Filling kind = Filling::kSolid;
  double spacing = 100;
  double angle = 0;  // degrees
  double share = 1;  // of ink
};

// Records what a plot draws, and how far it reaches: a plot has no size of its own.
class PlotSheet {
 public:
  PlotSheet();

  // Quarter turns counter-clockwise.
  void SetTurn(int quarters);
  void SetColor(std::uint32_t color);  // red in the lowest byte
  void SetWidth(double width);
  // Lengths of dashes and gaps; none: a whole line.
  void SetDashes(std::vector<double> dashes);
  void SetFill(const FillLook& look) { fill_ = look; }
  // No clip if the box is none.
  void SetWindow(Place from, Place to);

  // A pen that draws goes through places; whatever else is done ends its line.
  void PenTo(Place place, bool down);
  void Dot(Place place);
  void Outline(const std::vector<std::vector<Place>>& figures);
  void Fill(const std::vector<std::vector<Place>>& figures);
  // Gives the place behind the label.
  Place Label(Place at, const Lettering& lettering, std::string_view text);

  // False if nothing was drawn. Frames the recording by what was.
  bool Finish();
  // No more is recorded.
  bool Full() const { return points_ > kMaxPoints; }
  platform::MetafileRecorder& Recorder() { return recorder_; }
  // Pixels of the longer side at the usual resolution.
  double LongerSide() const;

 private:
  static constexpr std::uint64_t kMaxPoints = std::uint64_t{1} << 24;

  platform::Point ToDevice(Place place);
  void Grow(platform::Point point, double reach);
  void EndLine();
  void SelectPen();
  void Figures(const std::vector<std::vector<Place>>& figures);
  void Hatch(const std::vector<std::vector<Place>>& figures, double angle);
  void LabelLine(Place at, const Lettering& lettering, std::string_view line);

  platform::MetafileRecorder recorder_;
  int turn_ = 0;
  std::uint32_t color_ = 0;
  double width_ = 14;  // 0.35 mm
  std::vector<double> dashes_;
  FillLook fill_;
  bool penStale_ = true;
  std::uint32_t pen_ = 0;
  Place at_;
  std::vector<platform::Point> line_;
  std::uint64_t points_ = 0;
  bool any_ = false;
  platform::Box bounds_;
};

}  // namespace qhpg

#endif  // MODULES_QHPG_PLOT_SHEET_H_
