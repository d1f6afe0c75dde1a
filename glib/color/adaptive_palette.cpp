#include "glib/color/adaptive_palette.h"

#include <algorithm>
#include <limits>

#include "glib/color/color_groups.h"
#include "glib/color/color_means.h"
#include "glib/color/color_samples.h"
#include "glib/color/dither_feedback.h"
#include "glib/color/exact_colors.h"

namespace glib {
namespace {

struct Effort {
  std::uint64_t samples;
  bool merging;
  int passes;
  bool wholeTrial;  // all pixels take part in the trial dither
};

Effort EffortOf(PaletteLevel level) {
  // More samples than these change the result by less than what the choice of samples does.
  constexpr std::uint64_t kSamples = 130000;
  switch (level) {
    case PaletteLevel::kFast:
      return {kSamples, false, 2, false};
    case PaletteLevel::kDefault:
      return {kSamples, true, 3, false};
    default:
      return {std::numeric_limits<std::uint64_t>::max(), true, 8, true};
  }
}

constexpr std::size_t kMergedGroups = 512;

std::vector<FineColor> EntriesOf(std::span<const ColorCell> cells, std::size_t maxColors, bool merging) {
  // Merging takes back cuts that later ones made needless. From the same groups for any number of colours, so that a
  // colour more changes little else.
  std::vector<ColorGroup> groups = SplitCells(cells, merging ? kMergedGroups : maxColors);
  MergeGroups(groups, maxColors);
  std::vector<FineColor> entries;
  for (const ColorGroup& group : groups) {
    FineColor& entry = entries.emplace_back();
    for (std::size_t k = 0; k < 3; ++k) {
      entry[k] = static_cast<std::uint16_t>((group.sum[k] + group.count / 2) / group.count);
    }
  }
  return entries;
}

std::uint32_t ColorOf(const FineColor& entry) {
  std::uint32_t color = kOpaqueAlpha;
  for (std::size_t k = 0; k < 3; ++k) color |= (entry[k] + 8U) / 16 << (16 - 8 * k);
  return color;
}

std::vector<std::uint32_t> ColorsByCount(std::vector<CountedColor> counted) {
  std::sort(counted.begin(), counted.end(), [](const CountedColor& a, const CountedColor& b) {
    return a.count != b.count ? a.count > b.count : a.color < b.color;
  });
  std::vector<std::uint32_t> colors;
  for (const CountedColor& color : counted) colors.push_back(color.color);
  return colors;
}

}  // namespace

PaletteLevel PaletteLevelOf(std::int32_t quantize) {
  const std::int32_t digit = std::max(quantize, 0) % 10;
  if (digit == 9) return PaletteLevel::kPerceptual;
  if (digit == 8) return PaletteLevel::kBest;
  return digit == 1 ? PaletteLevel::kFast : PaletteLevel::kDefault;
}

ColorMeasure MeasureOf(PaletteLevel level) {
  return level == PaletteLevel::kPerceptual ? ColorMeasure::kPerceptual : ColorMeasure::kBalanced;
}

AdaptivePalette BuildAdaptivePalette(std::span<const ColorPage> pages, const PaletteSettings& settings) {
  const std::size_t maxColors = std::clamp<std::size_t>(settings.maxColors, 1, 256);
  const auto exact = CountExactColors(pages, settings.grayscale);
  if (exact && exact->size() <= maxColors) return {ColorsByCount(*exact), true};

  const Effort effort = EffortOf(settings.level);
  const ColorSpace space(MeasureOf(settings.level));
  const std::vector<ColorCell> cells =
      exact ? CellsOf(*exact, space) : SampleCells(pages, settings.grayscale, effort.samples, space);
  if (cells.empty()) return {};
  std::vector<FineColor> entries = EntriesOf(cells, maxColors, effort.merging);
  const std::vector<std::uint64_t> counts = MoveToMeans(cells, space, effort.passes, entries);

  std::vector<CountedColor> counted;
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const auto count = std::min<std::uint64_t>(counts[i], std::numeric_limits<std::uint32_t>::max());
    counted.push_back({ColorOf(entries[i]), static_cast<std::uint32_t>(count)});
  }
  AdaptivePalette palette{ColorsByCount(std::move(counted)), false};
  if (settings.dither) {
    MoveToDitherTargets(pages, settings.grayscale, MeasureOf(settings.level), effort.wholeTrial, palette.colors);
  }
  return palette;
}

}  // namespace glib
