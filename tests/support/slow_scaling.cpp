#include "tests/support/slow_scaling.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "tests/support/random_raster.h"

namespace test_support {
namespace {

using glib::RasterView;

// Position and weight after `steps` additions of a fraction of 15 bits.
struct Walk {
  int at = 0;
  int fraction = 0;
  void Step(int whole, int increment) {
    fraction += increment;
    at += whole;
    if (fraction >= 0x8000) {
      fraction &= 0x7FFF;
      ++at;
    }
  }
};

int Increment(double ratio) { return static_cast<int>((ratio - std::floor(ratio)) * 32768.0); }

Channels SlowEnlargeFixed(const RasterView& source, int width, int height, int x, int y) {
  const int xInc = static_cast<int>(static_cast<double>(std::max(source.width - 1, 1)) / width * 32768.0);
  const int yInc = static_cast<int>(static_cast<double>(std::max(source.height - 1, 1)) / height * 32768.0);
  Walk column;
  Walk row;
  for (int i = 0; i < x; ++i) column.Step(0, xInc);
  for (int i = 0; i < y; ++i) row.Step(0, yInc);
  const int wx = column.fraction >> 7;
  const int wy = row.fraction >> 7;
  Channels result;
  for (int c = 0; c < 4; ++c) {
    const auto p = [&](int dx, int dy) { return int{PixelAt(source, column.at + dx, row.at + dy).value[c]}; };
    const int top = (p(0, 0) * (256 - wx) + p(1, 0) * wx) >> 8;
    const int bottom = (p(0, 1) * (256 - wx) + p(1, 1) * wx) >> 8;
    result.value[c] = static_cast<std::uint8_t>((bottom * wy + top * (256 - wy)) >> 8);
  }
  return result;
}

Channels SlowReduceFixed(const RasterView& source, int width, int height, int x, int y) {
  const double xs = static_cast<double>(width > source.width ? source.width - 1 : source.width) / width;
  const double ys = static_cast<double>(height > source.height ? source.height - 1 : source.height) / height;
  const int xStep = static_cast<int>(xs);
  const int yStep = static_cast<int>(ys);
  Walk column;
  Walk row;
  for (int i = 0; i < x; ++i) column.Step(xStep, Increment(xs));
  for (int i = 0; i < y; ++i) row.Step(yStep, Increment(ys));
  Walk column2 = column;
  Walk row2 = row;
  column2.Step(xStep == 0 ? 0 : xStep - 1, Increment(xs));
  row2.Step(yStep == 0 ? 0 : yStep - 1, Increment(ys));
  Channels result;
  for (int c = 0; c < 4; ++c) {
    const auto sample = [&](const Walk& px, const Walk& py) {
      const int wx = px.fraction >> 7;
      const int wy = py.fraction >> 7;
      const auto p = [&](int dx, int dy) { return int{PixelAt(source, px.at + dx, py.at + dy).value[c]}; };
      const int left = (p(0, 0) * (256 - wy) + p(0, 1) * wy) >> 8;
      const int right = (p(1, 0) * (256 - wy) + p(1, 1) * wy) >> 8;
      return (right * wx + left * (256 - wx)) >> 8;
    };
    int sum = sample(column, row);
    if (xStep != 0) sum += sample(column2, row);
    if (yStep != 0) sum += sample(column, row2);
    if (xStep != 0 && yStep != 0) sum += sample(column2, row2);
    if (xStep != 0) sum >>= 1;
    if (yStep != 0) sum >>= 1;
    result.value[c] = static_cast<std::uint8_t>(sum);
  }
  return result;
}

Channels SlowEnlargeFloat(const RasterView& source, int width, int height, int x, int y) {
  const float xRatio = static_cast<float>(std::max(source.width - 1, 1)) / static_cast<float>(width);
  const float yRatio = static_cast<float>(std::max(source.height - 1, 1)) / static_cast<float>(height);
  const double px = static_cast<double>(x) * static_cast<double>(xRatio);
  const double py = static_cast<double>(y) * static_cast<double>(yRatio);
  const int ix = static_cast<int>(px);
  const int iy = static_cast<int>(py);
  const double f = static_cast<double>(static_cast<float>(px - ix));
  const double g = static_cast<double>(static_cast<float>(py - iy));
  Channels result;
  for (int c = 0; c < 4; ++c) {
    const auto p = [&](int dx, int dy) {
      return double{static_cast<double>(PixelAt(source, ix + dx, iy + dy).value[c])};
    };
    const double value = (p(1, 1) * f + p(0, 1) * (1 - f)) * g + (p(1, 0) * f + p(0, 0) * (1 - f)) * (1 - g);
    result.value[c] = static_cast<std::uint8_t>(value);
  }
  return result;
}

Channels SlowReduceBox(const RasterView& source, int width, int height, int x, int y) {
  const float xStep = static_cast<float>(source.width) / static_cast<float>(width);
  const float yStep = static_cast<float>(source.height) / static_cast<float>(height);
  const int boxWidth = std::max(static_cast<int>(xStep + 0.5F), 1);
  const int boxHeight = std::max(static_cast<int>(yStep + 0.5F), 1);
  float fx = 0.0F;
  float fy = 0.0F;
  for (int i = 0; i < x; ++i) fx += xStep;
  for (int i = 0; i < y; ++i) fy += yStep;
  const int ix = static_cast<int>(fx);
  const int iy = static_cast<int>(fy);
  const double f = static_cast<double>(fx - static_cast<float>(ix));
  const double g = static_cast<double>(fy - static_cast<float>(iy));
  const int bw = ix + boxWidth < source.width ? boxWidth : source.width - ix - 1;
  const int bh = iy + boxHeight < source.height ? boxHeight : source.height - iy - 1;
  Channels result;
  for (int c = 0; c < 4; ++c) {
    const auto p = [&](int dx, int dy) { return static_cast<double>(PixelAt(source, ix + dx, iy + dy).value[c]); };
    std::uint32_t sum = 0;
    const auto add = [&](double term) { sum += static_cast<std::uint32_t>(term) & 0xFFU; };
    if (bw > 0 && bh > 0) {
      for (int j = 0; j < bh; ++j) {
        for (int i = 0; i < bw; ++i) {
          add((p(i, j) * (1 - f) + p(i + 1, j) * f) * (1 - g) + (p(i, j + 1) * (1 - f) + p(i + 1, j + 1) * f) * g);
        }
      }
      sum /= static_cast<std::uint32_t>(bw * bh);
    } else if (bh > 0) {
      for (int j = 0; j < bh; ++j) add(p(0, j) * (1 - g) + p(0, j + 1) * g);
      sum /= static_cast<std::uint32_t>(bh);
    } else if (bw > 0) {
      for (int i = 0; i < bw; ++i) add(p(i + 1, 0) * f + p(i, 0) * (1 - f));
      sum /= static_cast<std::uint32_t>(bw);
    } else {
      add(p(0, 0));
    }
    result.value[c] = static_cast<std::uint8_t>(sum);
  }
  return result;
}

std::vector<std::uint8_t> SlowNearest(const RasterView& source, int width, int height) {
  const std::size_t stride = glib::PaddedStride(static_cast<std::size_t>(width), static_cast<std::size_t>(source.bits));
  std::vector<std::uint8_t> block(stride * static_cast<std::size_t>(height));
  const auto position = [](int i, int from, int to) {
    const float ratio = static_cast<float>(from) / static_cast<float>(to);
    return static_cast<int>(static_cast<double>(i) * static_cast<double>(ratio));
  };
  for (int y = 0; y < height; ++y) {
    std::uint8_t* row = block.data() + static_cast<std::size_t>(y) * stride;
    for (int x = 0; x < width; ++x) {
      const int sx = position(x, source.width, width);
      const int sy = position(y, source.height, height);
      if (source.bits <= 8) {
        const auto bit = static_cast<unsigned>(x * source.bits);
        const unsigned index = IndexAt(source, sx, sy) << (8 - static_cast<unsigned>(source.bits) - bit % 8);
        row[bit / 8] = static_cast<std::uint8_t>(row[bit / 8] | index);
      } else {
        const Channels pixel = PixelAt(source, sx, sy);
        std::memcpy(row + x * source.bits / 8, pixel.value, static_cast<std::size_t>(source.bits) / 8);
      }
    }
  }
  return block;
}

}  // namespace

std::vector<std::uint8_t> SlowScale(const RasterView& source, std::int32_t width, std::int32_t height, bool smooth) {
  if (!smooth) return SlowNearest(source, width, height);
  std::vector<std::uint8_t> block(std::size_t{4} * static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
  if (width == source.width && height == source.height && source.bits == 32) {
    std::copy(source.pixels, source.pixels + block.size(), block.begin());
    return block;
  }
  const bool enlarging = width > source.width && height > source.height;
  const auto pixel = source.bits == 32 ? (enlarging ? SlowEnlargeFixed : SlowReduceFixed)
                                       : (enlarging ? SlowEnlargeFloat : SlowReduceBox);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const Channels value = pixel(source, width, height, x, y);
      std::memcpy(block.data() +
                      4 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)),
                  value.value, 4);
    }
  }
  return block;
}

}  // namespace test_support
