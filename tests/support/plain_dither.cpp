#include "tests/support/plain_dither.h"

namespace plain {

Channels ChannelsOf(std::uint32_t word) {
  return {static_cast<std::int32_t>(word & 255), static_cast<std::int32_t>(word >> 8 & 255),
          static_cast<std::int32_t>(word >> 16 & 255)};
}

std::uint32_t NearestEntry(const Channels& colour, const std::uint32_t* palette, std::uint32_t count) {
  std::uint32_t best = 0;
  std::int32_t bestDistance = 0;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint32_t d0 = static_cast<std::uint32_t>(colour[0]) - (palette[i] & 255);
    const std::uint32_t d1 = static_cast<std::uint32_t>(colour[1]) - (palette[i] >> 8 & 255);
    const std::uint32_t d2 = static_cast<std::uint32_t>(colour[2]) - (palette[i] >> 16 & 255);
    const auto distance = static_cast<std::int32_t>(d0 * d0 + d1 * d1 + d2 * d2);
    if (i == 0 || distance < bestDistance) {
      best = i;
      bestDistance = distance;
    }
  }
  return best;
}

std::vector<std::uint8_t> DitherToPalette(std::uint32_t width, std::uint32_t height, std::size_t stride,
                                          const std::uint32_t* palette, std::uint32_t count,
                                          const std::function<Channels(std::uint32_t x, std::uint32_t y)>& pixel) {
  std::vector<std::uint8_t> result(stride * height);
  std::vector<Channels> current(width, Channels{}), next(width, Channels{});
  for (std::uint32_t y = 0; y < height; ++y) {
    std::uint8_t* out = result.data() + stride * y;
    for (std::uint32_t x = 0; x < width; ++x) {
      const Channels source = pixel(x, y);
      for (std::size_t c = 0; c < 3; ++c) current[x][c] = source[c] + next[x][c];
      next[x] = Channels{};
    }
    out[0] = static_cast<std::uint8_t>(NearestEntry(current[0], palette, count));
    for (std::uint32_t x = 1; x + 1 < width; ++x) {
      const std::uint32_t index = NearestEntry(current[x], palette, count);
      out[x] = static_cast<std::uint8_t>(index);
      const Channels entry = ChannelsOf(palette[index]);
      for (std::size_t c = 0; c < 3; ++c) {
        const std::int32_t error = current[x][c] - entry[c];
        current[x + 1][c] += 7 * error / 16;
        next[x - 1][c] += 3 * error / 16;
        next[x][c] += 5 * error / 16;
        next[x + 1][c] += error / 16;
      }
    }
    if (width > 1) out[width - 1] = static_cast<std::uint8_t>(NearestEntry(current[width - 1], palette, count));
  }
  return result;
}

}  // namespace plain
