#include <algorithm>
#include <cmath>

#include "modules/qhpg/plotter_state.h"

// Labels and how their letters look.

namespace qhpg {

void Plotter::SetRelativeSize(double width, double height) {
  lettering_.width = std::abs(second_.x - first_.x) * width / 100;
  lettering_.height = std::abs(second_.y - first_.y) * height / 100;
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
    case Code('S', 'M'): {
      const char c = in_.Character();
      symbol_ = c > ' ' ? c : '\0';
      return true;
    }
    case Code('S', 'L'): {
      const auto& n = in_.Numbers();
      lettering_.slanted = !n.empty() && n[0] > 0.1;
      return true;
    }
    case Code('C', 'O'):
      in_.UpToSemicolon();
      return true;
    case Code('C', 'P'): {
      const auto& n = in_.Numbers();
      const double columns = n.size() > 1 ? n[0] : 0;
      const double lines = n.size() > 1 ? n[1] : -1;
      const Place from = n.size() > 1 ? at_ : labelStart_;
      const Place line = n.size() > 1 ? Place{} : Place{at_.x - from.x, at_.y - from.y};
      const double on = columns * lettering_.width * kCellWidth * (1 + lettering_.extraWidth);
      double up = lines * lettering_.height * kCellHeight * (1 + lettering_.extraHeight);
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

}  // namespace qhpg
