#include <algorithm>
#include <cmath>
#include <cstdint>

#include "glib/pixel/color_effect.h"

namespace glib {
namespace {

std::uint8_t Byte(std::int32_t value) { return static_cast<std::uint8_t>(std::clamp(value, 0, 255)); }

}  // namespace

void ContrastTable(ChannelTable& table, std::int32_t amount) {
  if (amount >= 0) {
    const std::int32_t n = std::min(amount, 255);
    std::fill_n(table.begin(), n, std::uint8_t{0});
    if (n < 255 - n) {
      const std::int32_t step = 0x1000000 / (255 - 2 * n);
      for (std::int32_t i = 0; i <= 255 - 2 * n; ++i) {
        table[static_cast<std::size_t>(n + i)] = static_cast<std::uint8_t>(std::min((i * step) >> 16, 255));
      }
    }
    std::fill_n(table.end() - n, n, std::uint8_t{255});
    return;
  }
  // Only the low 8 bits of the magnitude count.
  const auto n = static_cast<std::int32_t>((0U - static_cast<std::uint32_t>(amount)) & 255U);
  const std::int32_t top = 255 - n;
  const std::int32_t step = (top - n + 1) * 65536 / 255;
  for (std::int32_t i = 0; i < 256; ++i) {
    table[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>((n * 65536 + i * step) >> 16);
  }
}

void LevelsTable(ChannelTable& table, std::int32_t low, std::int32_t high, std::int32_t outLow, std::int32_t outHigh) {
  if (high <= low) return;
  const std::int32_t step = (outHigh - outLow + 1) * 65536 / (high - low);
  for (std::int32_t i = 0; i <= high - low; ++i) {
    const std::int32_t value = (outLow * 65536 + i * step) >> 16;
    table[static_cast<std::size_t>(low + i)] = static_cast<std::uint8_t>(std::min(value, outHigh));
  }
}

void GammaTable(ChannelTable& table, double gamma) {
  if (!(gamma > 0.0)) return;
  table[0] = 0;
  for (std::int32_t i = 1; i < 256; ++i) {
    const double value = std::pow(i * 0.00392156862745098, 1.0 / gamma) * 255.0 + 0.5;
    table[static_cast<std::size_t>(i)] = value >= 255.0 ? 255 : static_cast<std::uint8_t>(value);
  }
}

void ShiftTable(ChannelTable& table, std::int32_t amount) {
  amount = std::clamp(amount, -255, 255);
  for (std::int32_t i = 0; i < 256; ++i) table[static_cast<std::size_t>(i)] = Byte(i + amount);
}

}  // namespace glib
