#include "modules/helpers/dxf_reader/hatch_lines.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace dxf {

std::vector<HatchFamily> ReadHatchFamilies(const Groups& groups) {
  constexpr int kCount = 78;
  constexpr int kAngle = 53;
  constexpr std::size_t kMaxFamilies = 64;
  constexpr std::size_t kMaxDashes = 32;
  std::vector<HatchFamily> families;
  bool begun = false;
  for (const auto& [code, value] : groups.pairs) {
    begun = begun || code == kCount;
    if (!begun) continue;
    const double number = ToNumber(value);
    if (code == kAngle) {
      if (families.size() >= kMaxFamilies) break;
      families.emplace_back().angle = number * std::numbers::pi / 180;
    }
    if (families.empty()) continue;
    HatchFamily& family = families.back();
    if (code == 43) family.base.x = number;
    if (code == 44) family.base.y = number;
    if (code == 45) family.step.x = number;
    if (code == 46) family.step.y = number;
    if (code == 49 && family.dashes.size() < kMaxDashes) family.dashes.push_back(number);
    if (code == 98) break;
  }
  return families;
}

std::vector<Line> HatchStrokes(const HatchFamily& family, Place low, Place high, std::size_t most) {
  const double c = std::cos(family.angle);
  const double s = std::sin(family.angle);
  // From line to line: across, and along.
  const double across = family.step.y * c - family.step.x * s;
  const double along = family.step.x * c + family.step.y * s;
  std::vector<Line> strokes;
  if (!(std::abs(across) > 0) || !std::isfinite(across)) return strokes;
  double nearest = HUGE_VAL, furthest = -HUGE_VAL, from = HUGE_VAL, to = -HUGE_VAL;
  for (const double x : {low.x - family.base.x, high.x - family.base.x}) {
    for (const double y : {low.y - family.base.y, high.y - family.base.y}) {
      const double number = (y * c - x * s) / across;
      nearest = std::min(nearest, number);
      furthest = std::max(furthest, number);
      from = std::min(from, x * c + y * s);
      to = std::max(to, x * c + y * s);
    }
  }
  const auto limit = static_cast<double>(most);
  double period = 0;
  for (const double dash : family.dashes) period += std::abs(dash);
  const double perLine = period > 0 ? (to - from) / period * static_cast<double>(family.dashes.size()) + 2 : 1;
  if (!((furthest - nearest + 1) * perLine < limit) || !std::isfinite(from) || !std::isfinite(to)) return strokes;
  const auto add = [&](double number, double begin, double end) {
    const auto at = [&](double on) {
      return Place{family.base.x + on * c - number * across * s, family.base.y + on * s + number * across * c};
    };
    strokes.push_back({at(begin), at(end)});
  };
  for (double number = std::ceil(nearest); number <= furthest; ++number) {
    if (period <= 0) {
      add(number, from, to);
      continue;
    }
    const double start = number * along;
    for (double on = start + std::floor((from - start) / period) * period; on < to;) {
      for (const double dash : family.dashes) {
        if (dash >= 0) add(number, on, on + dash);
        on += std::abs(dash);
      }
    }
  }
  return strokes;
}

}  // namespace dxf
