#include <cmath>
#include <cstdlib>
#include <numeric>

#include "glib/model/layer.h"
#include "glib/pixel/color_effect.h"

namespace glib {
namespace {

// An amount as a whole number, cut; what no int holds is the nearest that one does, and no number is 0.
std::int32_t Whole(double value) {
  if (std::isnan(value)) return 0;
  if (value >= 2147483647.0) return 2147483647;
  if (value <= -2147483647.0) return -2147483647;
  return static_cast<std::int32_t>(value);
}

ChannelTable SameTable() {
  ChannelTable table;
  std::iota(table.begin(), table.end(), std::uint8_t{0});
  return table;
}

struct Pixels {
  std::uint32_t* words;
  std::size_t count;
};

void AutomaticLevels(const Pixels& pixels) {
  const ChannelRange range = RangeOf(pixels.words, pixels.count);
  const auto& [low, high] = range;
  const bool fromBlack = low[0] == 0 && low[1] == 0 && low[2] == 0;
  const bool toWhite = high[0] == 255 || high[1] == 255 || high[2] == 255;
  if (fromBlack && toWhite) return;
  // A channel with one value keeps it.
  ChannelRamp ramps[3];
  for (std::size_t c = 0; c < 3; ++c) {
    ramps[c] = high[c] > low[c] ? ChannelRamp{low[c], 0x1000000U / (static_cast<std::uint32_t>(high[c]) - low[c])}
                                : ChannelRamp{0, 0x10000};
  }
  ApplyRamps(pixels.words, pixels.count, ramps);
}

}  // namespace

bool Layer::ColorEffectLayer(std::uint32_t effect, const double* arguments) {
  if (!EnsureRaster()) return false;
  if (effect > 7) return false;
  const auto argument = [&](std::size_t i) { return arguments == nullptr ? 0.0 : arguments[i]; };
  const Pixels pixels{reinterpret_cast<std::uint32_t*>(raster.pixels),
                      static_cast<std::size_t>(raster.width) * static_cast<std::size_t>(raster.height)};
  if (pixels.words == nullptr || pixels.count == 0) return true;
  ChannelTable table = SameTable();
  switch (effect) {
    case 0: {
      const std::int32_t amount = Whole(argument(0));
      if (amount > 255) return false;
      if (amount != 0) ShiftChannels(pixels.words, pixels.count, amount, amount, amount);
      return true;
    }
    case 1: {
      const std::int32_t amount = Whole(argument(0));
      if (amount > 255) return false;
      if (amount >= 0 && amount < 128) {
        const auto n = static_cast<std::uint32_t>(amount);
        const ChannelRamp ramp{static_cast<std::uint8_t>(n), 0x1000000U / (255U - 2 * n)};
        const ChannelRamp ramps[3] = {ramp, ramp, ramp};
        ApplyRamps(pixels.words, pixels.count, ramps);
        return true;
      }
      ContrastTable(table, amount);
      ApplyTables(pixels.words, pixels.count, table, table, table);
      return true;
    }
    case 2:
      AutomaticLevels(pixels);
      return true;
    case 3:
      if (!(argument(0) > 0.0)) return true;  // no curve: the picture stays
      GammaTable(table, argument(0));
      ApplyTables(pixels.words, pixels.count, table, table, table);
      return true;
    case 4:
      ShiftChannels(pixels.words, pixels.count, Whole(argument(0)), Whole(argument(1)), Whole(argument(2)));
      return true;
    case 5:
      InvertChannels(pixels.words, pixels.count);
      return true;
    case 6: {
      const std::int64_t blockWidth = std::llabs(Whole(argument(0)));
      const std::int64_t blockHeight = std::llabs(Whole(argument(1)));
      if (blockWidth != 0 && blockHeight != 0) {
        Mosaic(pixels.words, raster.width, raster.height, blockWidth, blockHeight);
      }
      return true;
    }
    default:
      (argument(0) == 0.0 ? WeightedGray : MeanGray)(pixels.words, pixels.count);
      return true;
  }
}

}  // namespace glib
