#include "glib/color/dither_feedback.h"

#include <algorithm>
#include <cmath>

#include "glib/color/candidate_lists.h"
#include "glib/color/damped_diffusion.h"

namespace glib {
namespace {

constexpr std::size_t kMaxWidth = 65535;  // of rows whose drifts are collected

struct Steps {
  std::size_t pixels;  // from a column or row that takes part to the next
  std::size_t pages;
};

// More pixels than this don't move the entries to a better place.
Steps StepsFor(std::span<const ColorPage> pages) {
  constexpr double kEnough = 300000;
  double total = 0;
  for (const ColorPage& page : pages) total += static_cast<double>(page.PixelCount());
  const double step = std::clamp(std::floor(std::sqrt(total / kEnough)), 2.0, 4.0);
  return {static_cast<std::size_t>(step), static_cast<std::size_t>(std::max(1.0, total / (step * step * kEnough * 2)))};
}

void CollectDrifts(const ColorPage& page, bool grayscale, std::size_t step, CandidateLists& lists,
                   std::span<const std::uint32_t> colors, std::vector<EntryDrift>& drifts) {
  const std::size_t width = std::min((page.width + step - 1) / step, kMaxWidth);
  if (width == 0) return;
  DampedDiffusion diffusion(lists, colors, 0, DiffusionStrength(colors.size()), width);
  diffusion.CollectDrifts(drifts);
  std::vector<std::uint32_t> row(page.width);
  std::vector<std::uint32_t> band;
  std::vector<std::uint8_t> indices(width * DampedDiffusion::kBandRows);
  for (std::uint64_t y = 0; y < page.height; y += step) {
    ReadEveryNthColor(page, static_cast<std::uint32_t>(y), 0, step, grayscale, row.data());
    band.insert(band.end(), row.begin(), row.begin() + static_cast<std::ptrdiff_t>(width));
    const std::size_t rows = band.size() / width;
    if (rows < DampedDiffusion::kBandRows && y + step < page.height) continue;
    diffusion.DiffuseBand(band.data(), rows, indices.data());
    band.clear();
  }
}

// Six tenths of the mean drift: the whole of it would overshoot, as the neighbours move too.
std::uint32_t Moved(std::uint32_t color, const EntryDrift& drift) {
  if (drift.count == 0) return color;
  std::uint32_t moved = kOpaqueAlpha;
  for (std::size_t k = 0; k < 3; ++k) {
    const auto level = static_cast<std::int64_t>(color >> (16 - 8 * k) & 255U);
    const std::int64_t fine = level * 16 + drift.sum[k] * 6 / (drift.count * 10);
    moved |= static_cast<std::uint32_t>(std::clamp<std::int64_t>((fine + 8) >> 4, 0, 255)) << (16 - 8 * k);
  }
  return moved;
}

}  // namespace

void MoveToDitherTargets(std::span<const ColorPage> pages, bool grayscale, ColorMeasure measure, bool allPixels,
                         std::vector<std::uint32_t>& colors) {
  const Steps steps = allPixels ? Steps{1, 1} : StepsFor(pages);
  CandidateLists lists(colors, 0, measure);
  std::vector<EntryDrift> drifts(256);
  for (std::size_t i = 0; i < pages.size(); i += steps.pages) {
    CollectDrifts(pages[i], grayscale, steps.pixels, lists, colors, drifts);
  }
  for (std::size_t i = 0; i < colors.size(); ++i) colors[i] = Moved(colors[i], drifts[i]);
}

}  // namespace glib
