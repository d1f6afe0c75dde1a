#ifndef GLIB_PIXEL_COLOR_EFFECT_H_
#define GLIB_PIXEL_COLOR_EFFECT_H_

#include <array>
#include <cstddef>
#include <cstdint>

namespace glib {

// What becomes of each value of a channel.
using ChannelTable = std::array<std::uint8_t, 256>;

// Each leaves the entries that it doesn't set as they are.

// An `amount` of 0 to 255 stretches the values round the middle; one below 0 squeezes them into a band, which has
// turned over from -129 down.
void ContrastTable(ChannelTable& table, std::int32_t amount);
// Values from `low` to `high` to `outLow` to `outHigh`. Sets nothing unless `high` is above `low`.
void LevelsTable(ChannelTable& table, std::int32_t low, std::int32_t high, std::int32_t outLow, std::int32_t outHigh);
// Sets nothing for a `gamma` of 0 or below.
void GammaTable(ChannelTable& table, double gamma);
void ShiftTable(ChannelTable& table, std::int32_t amount);

// The effects on `count` pixels of 32 bits, in place. Alpha stays with all of them but the mosaic.

void ApplyTables(std::uint32_t* pixels, std::size_t count, const ChannelTable& blue, const ChannelTable& green,
                 const ChannelTable& red);
// Each channel value v becomes ((v - low) x step) >> 16, kept to 0 to 255: what a contrast or levels table that rises
// does, at the speed of the memory. Blue, green, red; `step` is at most 2^24.
struct ChannelRamp {
  std::uint8_t low;
  std::uint32_t step;
};
void ApplyRamps(std::uint32_t* pixels, std::size_t count, const ChannelRamp* ramps);
// `amount` is added to each of the three channels, -255 to 255, and the sums are kept to 0 to 255.
void ShiftChannels(std::uint32_t* pixels, std::size_t count, std::int32_t blue, std::int32_t green, std::int32_t red);
void InvertChannels(std::uint32_t* pixels, std::size_t count);
// Weighted by 77 for blue, 150 for green, 29 for red, in 256ths.
void WeightedGray(std::uint32_t* pixels, std::size_t count);
void MeanGray(std::uint32_t* pixels, std::size_t count);

struct ChannelRange {
  std::uint8_t low[4];  // blue, green, red, alpha
  std::uint8_t high[4];
};
// The smallest and largest value of each channel; `count` is at least 1.
ChannelRange RangeOf(const std::uint32_t* pixels, std::size_t count);

// Blocks of `blockWidth` x `blockHeight`, at least 1 each, take the pixel just behind their middle.
void Mosaic(std::uint32_t* pixels, std::int32_t width, std::int32_t height, std::int64_t blockWidth,
            std::int64_t blockHeight);

}  // namespace glib

#endif  // GLIB_PIXEL_COLOR_EFFECT_H_
