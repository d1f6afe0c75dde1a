#include "glib/pixel/rotate.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "glib/module_api/exchange.h"
#include "glib/module_api/progress.h"
#include "glib/pixel/rotate_rows.h"
#include "glib/pixel/row_reports.h"

namespace glib {
namespace {

// Into 0 up to but not including 360. Steps of 360 would take for ever on a large angle and give the same: the
// remainder is exact, and so is each step while it isn't lost in rounding.
double Normalised(double angle) {
  angle = std::fmod(angle, 360.0);
  if (angle < 0.0) angle += 360.0;
  return angle >= 360.0 ? angle - 360.0 : angle;
}

double AcuteOf(double angle) {
  if (angle < 90.0) return angle;
  if (angle < 180.0) return 180.0 - angle;
  if (angle < 270.0) return angle - 180.0;
  return 360.0 - angle;
}

struct Size {
  std::int32_t width;
  std::int32_t height;
};

Size TurnedSize(std::int32_t width, std::int32_t height, double angle) {
  constexpr double kPi = 3.14159265358979323846;
  const double acute = AcuteOf(angle) * kPi / 180.0;
  const double c = std::cos(acute);
  const double s = std::sin(acute);
  return {static_cast<std::int32_t>(height * s + width * c + 0.5),
          static_cast<std::int32_t>(width * s + height * c + 0.5)};
}

TurnedGrid GridOf(std::int32_t width, std::int32_t height, Size size, double angle) {
  constexpr double kPi = 3.14159265358979323846;
  const double radians = (-kPi * angle) * 0.005555555555555556;
  TurnedGrid grid;
  grid.width = width;
  grid.height = height;
  grid.centreX = width / 2;
  grid.centreY = height / 2;
  grid.targetWidth = size.width;
  grid.targetCentreX = size.width / 2;
  grid.targetCentreY = size.height / 2;
  grid.cosine = std::cos(radians);
  grid.sine = std::sin(radians);
  return grid;
}

}  // namespace

template <typename Pixel>
bool RotateImage<Pixel>::Rotate(const Pixel* source, std::int32_t width, std::int32_t height, double angle,
                                Pixel*& target, std::int32_t& newWidth, std::int32_t& newHeight, Pixel background) {
  static_assert(sizeof(Pixel) == sizeof(std::uint32_t));
  if (source == nullptr || width < 1 || height < 1 || !std::isfinite(angle)) return false;
  angle = Normalised(angle);
  Size size{width, height};
  if (angle == 90.0 || angle == 270.0) {
    size = {height, width};
  } else if (angle != 0.0 && angle != 180.0) {
    size = TurnedSize(width, height, angle);
  }
  auto* block = AllocateRaster(static_cast<std::uint32_t>(size.width), static_cast<std::uint32_t>(size.height), 32);
  if (block == nullptr) return false;
  const auto* from = reinterpret_cast<const std::uint32_t*>(source);
  auto* to = reinterpret_cast<std::uint32_t*>(block);

  bool done = true;
  if (angle == 0.0) {
    std::memcpy(to, from, std::size_t{4} * static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
  } else {
    const bool right = angle == 90.0 || angle == 180.0 || angle == 270.0;
    const std::int32_t rows = right ? height : size.height;
    const std::uint32_t step =
        callback == nullptr ? 0 : RowsPerReport(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height));
    const gen::basic_string<char> text = label.IsEmpty() ? gen::basic_string<char>("rotate") : label + "; rotate";
    RowReports reports(callback, user, step, static_cast<std::uint32_t>(height), text.c_str());
    const TurnedGrid grid = GridOf(width, height, size, angle);
    const auto corner = std::bit_cast<std::uint32_t>(background);
    // Between two reports all rows go together, so that the kernels can work in blocks.
    const std::int32_t band = step == 0 ? rows : static_cast<std::int32_t>(std::min<std::uint32_t>(step, 0x7FFFFFFF));
    for (std::int32_t y = 0; y < rows && done; y += std::min(band, rows - y)) {
      if (reports.DueFirst(static_cast<std::uint32_t>(y)) && !reports.Send(y)) {
        done = false;
        break;
      }
      const std::int32_t end = y + std::min(band, rows - y);
      if (angle == 90.0) {
        TurnRowsRight(from, width, height, y, end, to);
      } else if (angle == 180.0) {
        TurnRowsOver(from, width, height, y, end, to);
      } else if (angle == 270.0) {
        TurnRowsLeft(from, width, height, y, end, to);
      } else if (interpolate != 0) {
        TurnRowsMixed(from, grid, y, end, corner, to);
      } else {
        TurnRowsNearest(from, grid, y, end, corner, to);
      }
    }
  }
  if (!done) {
    FreeRaster(block);
    return false;
  }
  target = reinterpret_cast<Pixel*>(block);
  newWidth = size.width;
  newHeight = size.height;
  return true;
}

template class RotateImage<RGB32>;

}  // namespace glib
