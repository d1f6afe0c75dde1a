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

// The sums of a pixel's three channels in one word, lanes of 21 bits above a bias that keeps them positive. The sums
// for the next row are off the critical path; together they need few of the registers that the path needs.
using Packed = std::uint64_t;
constexpr std::uint32_t kLaneBits = 21;
constexpr std::int64_t kBias = 4096;

constexpr Packed Pack(std::int64_t c0, std::int64_t c1, std::int64_t c2) {
  return static_cast<Packed>(c0) + (static_cast<Packed>(c1) << kLaneBits) + (static_cast<Packed>(c2) << 2 * kLaneBits);
}

constexpr Packed kNoErrors = Pack(kBias, kBias, kBias);

std::int64_t Unpack(Packed sums, std::uint32_t lane) {
  return static_cast<std::int64_t>(sums >> lane * kLaneBits & ((1U << kLaneBits) - 1)) - kBias;
}

// Both by value + error + 256: the value limited to a byte, and what the limited value of a channel adds to the key of
// the cache. An error is at most 255 either way, so that every sum has its place. The bits of the channels alternate in
// a key: like colours then share a cache line, and a picture's colours fewer pages.
struct LimitTables {
  std::array<std::uint8_t, 768> value{};
  std::array<std::array<std::uint32_t, 768>, 3> key{};
};

constexpr LimitTables MakeLimitTables() {
  LimitTables tables{};
  for (std::uint32_t i = 0; i < 768; ++i) {
    const std::uint32_t value = i < 256 ? 0 : i > 511 ? 255 : i - 256;
    tables.value[i] = static_cast<std::uint8_t>(value);
    for (std::uint32_t channel = 0; channel < 3; ++channel) {
      for (std::uint32_t bit = 0; bit < 6; ++bit) {
        tables.key[channel][i] |= (value >> (2 + bit) & 1) << (3 * bit + channel);
      }
    }
  }
  return tables;
}

constexpr LimitTables kLimit = MakeLimitTables();

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
  void Row(const std::uint8_t* pixels, const Packed* above, Packed* below, std::uint8_t* dest) const {
    const std::ptrdiff_t width = tree_.source.width;
    std::ptrdiff_t x = kDirection > 0 ? 0 : width - 1;
    std::int64_t error0 = 0;
    std::int64_t error1 = 0;
    std::int64_t error2 = 0;
    Packed before = 0;
    Packed beforeThat = 0;
    for (std::ptrdiff_t i = 0; i < width; ++i, x += kDirection) {
      const std::uint8_t* pixel = pixels + x * static_cast<std::ptrdiff_t>(kBytes);
      const Packed sums = above[x];
      const std::int64_t move0 = Sixteenth(Unpack(sums, 0) + 8 + 7 * error0);
      const std::int64_t move1 = Sixteenth(Unpack(sums, 1) + 8 + 7 * error1);
      const std::int64_t move2 = Sixteenth(Unpack(sums, 2) + 8 + 7 * error2);
      // Places that wait for the move alone.
      const std::uint32_t* key0 = kLimit.key[0].data() + 256 + pixel[0];
      const std::uint32_t* key1 = kLimit.key[1].data() + 256 + pixel[1];
      const std::uint32_t* key2 = kLimit.key[2].data() + 256 + pixel[2];
      std::uint32_t& cached = cache_[std::size_t{key0[move0]} + key1[move1] + key2[move2]];
      const std::uint32_t value0 = kLimit.value.data()[256 + pixel[0] + move0];
      const std::uint32_t value1 = kLimit.value.data()[256 + pixel[1] + move1];
      const std::uint32_t value2 = kLimit.value.data()[256 + pixel[2] + move2];
      std::uint32_t word = cached;
      if (word == empty_) [[unlikely]] {
        word = Find(value0, value1, value2);
        cached = word;
      }
      dest[x] = static_cast<std::uint8_t>(word >> 24);
      error0 = Difference(value0, word);
      error1 = Difference(value1, word >> 8);
      error2 = Difference(value2, word >> 16);
      const Packed error = Pack(error0, error1, error2);
      below[x - kDirection] = kNoErrors + beforeThat + 5 * before + 3 * error;
      beforeThat = before;
      before = error;
    }
    below[x - kDirection] = kNoErrors + beforeThat + 5 * before;
  }

 private:
  // Cut towards zero.
  static std::int64_t Sixteenth(std::int64_t sum) { return sum / 16; }
  static std::int64_t Difference(std::uint32_t value, std::uint32_t word) {
    return std::int64_t{value} - std::int64_t{word & 255};
  }
  [[gnu::noinline]] std::uint32_t Find(std::uint32_t c0, std::uint32_t c1, std::uint32_t c2) const {
    const std::uint32_t index = tree_.FindColor(c0, c1, c2);
    return (tree_.palette[index] & 0xFFFFFF) | index << 24;
  }

  const ColorTree& tree_;
  std::uint32_t* cache_;
  std::uint32_t empty_;
};

template <std::size_t kBytes>
void DiffuseRows(const ColorTree& tree, std::uint32_t* cache, std::uint32_t empty, Packed* first, Packed* second,
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
  const std::unique_ptr<Packed[]> rows(new (std::nothrow) Packed[2 * rowSize]);
  if (cache == nullptr || rows == nullptr) return false;
  // Index 255 with another colour than its own is no entry.
  const std::uint32_t empty = 0xFF000000 | ((tree.palette[255] & 0xFFFFFF) ^ 1);
  std::fill_n(cache.get(), kCacheSize, empty);
  std::fill_n(rows.get(), 2 * rowSize, kNoErrors);
  Packed* first = rows.get() + 1;
  Packed* second = first + rowSize;
  if (tree.source.pixelBytes == 3) {
    DiffuseRows<3>(tree, cache.get(), empty, first, second, dest, destStride);
  } else {
    DiffuseRows<4>(tree, cache.get(), empty, first, second, dest, destStride);
  }
  return true;
}

}  // namespace glib
