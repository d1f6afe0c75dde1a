#ifndef MODULES_QHPG_PACKED_PLACES_H_
#define MODULES_QHPG_PACKED_PLACES_H_

#include <string_view>
#include <vector>

namespace qhpg {

// A step of a packed polyline, in user units.
struct PackedStep {
  enum class Kind { kMove, kPen };

  Kind kind = Kind::kMove;
  int pen = 0;            // kPen
  bool down = true;       // kMove
  bool absolute = false;  // kMove: a place, not a way
  double x = 0;
  double y = 0;
};

// Digits of the base 64 or 32, each number's last one marked; steps that break off are left out.
std::vector<PackedStep> UnpackPlaces(std::string_view text);

}  // namespace qhpg

#endif  // MODULES_QHPG_PACKED_PLACES_H_
