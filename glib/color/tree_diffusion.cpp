#include "glib/color/tree_diffusion.h"

#include <algorithm>
#include <array>
#include <memory>
#include <new>
#include <utility>

#include "glib/color/color_tree.h"

namespace glib {
namespace {

constexpr std::uint32_t kCacheSize = 1U << 18;

struct Errors {
  std::int32_t c0, c1, c2;
};

// By value + error + 256: the value limited to a byte in the low bits, and from bit 8 what it adds to the cache's key.
// An error is at most 255 either way, so that every sum has its place.
using LimitTable = std::array<std::array<std::uint32_t, 768>, 3>;

constexpr LimitTable MakeLimitTable() {
  LimitTable table{};
  for (std::uint32_t i = 0; i < 768; ++i) {
    const std::uint32_t value = i < 256 ? 0 : i > 511 ? 255 : i - 256;
    for (std::uint32_t channel = 0; channel < 3; ++channel) {
      table[channel][i] = value | value >> 2 << (8 + 6 * channel);
    }
  }
  return table;
}

constexpr LimitTable kLimit = MakeLimitTable();

// Each pixel waits for the error of the one before it, and the next row starts where this one ends, so speed is the
// length of that chain. What lies on it is kept in registers; all else (the error row above, the sums for the row
// below) is off it. A cached word is a palette entry with its index in place of alpha, so that one read gives both.
template <std::size_t kBytes>
class Diffusion {
 public:
  Diffusion(const ColorTree& tree, std::uint32_t* cache, std::uint32_t empty)
      : tree_(tree), cache_(cache), empty_(empty) {}

  // `above` and `below` have a place before and behind the row. Of `below` all but the place that comes after the last
  // pixel's is written.
  template <std::ptrdiff_t kDirection>
  void Row(const std::uint8_t* pixels, const Errors* above, Errors* below, std::uint8_t* dest) const {
    const std::ptrdiff_t width = tree_.source.width;
    std::ptrdiff_t x = kDirection > 0 ? 0 : width - 1;
    Errors before = {0, 0, 0};
    Errors beforeThat = {0, 0, 0};
    for (std::ptrdiff_t i = 0; i < width; ++i, x += kDirection) {
      const std::uint8_t* pixel = pixels + x * static_cast<std::ptrdiff_t>(kBytes);
      const Errors& sums = above[x];
      const std::uint32_t limit0 = kLimit[0][Place(pixel[0], sums.c0 + 8, before.c0)];
      const std::uint32_t limit1 = kLimit[1][Place(pixel[1], sums.c1 + 8, before.c1)];
      const std::uint32_t limit2 = kLimit[2][Place(pixel[2], sums.c2 + 8, before.c2)];
      std::uint32_t& cached = cache_[(limit0 >> 8) + (limit1 >> 8) + (limit2 >> 8)];
      const std::uint32_t v0 = limit0 & 255;
      const std::uint32_t v1 = limit1 & 255;
      const std::uint32_t v2 = limit2 & 255;
      std::uint32_t word = cached;
      if (word == empty_) {
        const std::uint32_t index = tree_.FindColor(v0, v1, v2);
        word = (tree_.palette[index] & 0xFFFFFF) | index << 24;
        cached = word;
      }
      dest[x] = static_cast<std::uint8_t>(word >> 24);
      const Errors error = {Difference(v0, word), Difference(v1, word >> 8), Difference(v2, word >> 16)};
      below[x - kDirection] = {beforeThat.c0 + 5 * before.c0 + 3 * error.c0,
                               beforeThat.c1 + 5 * before.c1 + 3 * error.c1,
                               beforeThat.c2 + 5 * before.c2 + 3 * error.c2};
      beforeThat = before;
      before = error;
    }
    below[x - kDirection] = {beforeThat.c0 + 5 * before.c0, beforeThat.c1 + 5 * before.c1,
                             beforeThat.c2 + 5 * before.c2};
  }

 private:
  // Sixteenths are cut towards zero.
  static std::size_t Place(std::uint8_t value, std::int32_t rounded, std::int32_t before) {
    return static_cast<std::size_t>(256 + value + (rounded + 7 * before) / 16);
  }
  static std::int32_t Difference(std::uint32_t value, std::uint32_t word) {
    return static_cast<std::int32_t>(value) - static_cast<std::int32_t>(word & 255);
  }

  const ColorTree& tree_;
  std::uint32_t* cache_;
  std::uint32_t empty_;
};

template <std::size_t kBytes>
void DiffuseRows(const ColorTree& tree, std::uint32_t* cache, std::uint32_t empty, Errors* first, Errors* second,
                 std::uint8_t* dest, std::size_t destStride) {
  const Diffusion<kBytes> diffusion(tree, cache, empty);
  const TreeSource& source = tree.source;
  for (std::uint32_t y = 0; y < source.height; ++y) {
    const std::uint8_t* pixels = source.pixels + source.strideBytes * y;
    std::uint8_t* out = dest + destStride * y;
    if (y % 2 == 0) {
      diffusion.template Row<-1>(pixels, first, second, out);
    } else {
      diffusion.template Row<1>(pixels, first, second, out);
    }
    std::swap(first, second);
  }
}

}  // namespace

bool DiffuseByTree(const ColorTree& tree, std::uint8_t* dest, std::size_t destStride) {
  const std::unique_ptr<std::uint32_t[]> cache(new (std::nothrow) std::uint32_t[kCacheSize]);
  const std::size_t rowSize = std::size_t{tree.source.width} + 2;
  const std::unique_ptr<Errors[]> rows(new (std::nothrow) Errors[2 * rowSize]());
  if (cache == nullptr || rows == nullptr) return false;
  // Index 255 with another colour than its own is no entry.
  const std::uint32_t empty = 0xFF000000 | ((tree.palette[255] & 0xFFFFFF) ^ 1);
  std::fill_n(cache.get(), kCacheSize, empty);
  Errors* first = rows.get() + 1;
  Errors* second = first + rowSize;
  if (tree.source.pixelBytes == 3) {
    DiffuseRows<3>(tree, cache.get(), empty, first, second, dest, destStride);
  } else {
    DiffuseRows<4>(tree, cache.get(), empty, first, second, dest, destStride);
  }
  return true;
}

}  // namespace glib
