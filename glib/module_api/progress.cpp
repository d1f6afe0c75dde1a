#include "glib/module_api/progress.h"

#include <cmath>

namespace glib {

std::uint32_t ProgressSteps(std::uint32_t pixels) {
  constexpr std::uint32_t kSilentPixels = 90000;
  if (pixels < kSilentPixels) return 0;
  const auto steps = static_cast<std::uint32_t>(std::sqrt(static_cast<double>(pixels - kSilentPixels)) * 0.009);
  return steps < 2 ? 0 : steps;
}

std::uint32_t RowsPerReport(std::uint32_t width, std::uint32_t height) {
  const std::uint32_t pixels = width * height;
  return RowsPerReport(pixels, ProgressSteps(pixels), width);
}

std::uint32_t RowsPerReport(std::uint32_t pixels, std::uint32_t steps, std::uint32_t width) {
  return steps == 0 || width == 0 ? 0 : pixels / steps / width;
}

}  // namespace glib
