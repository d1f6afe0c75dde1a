#include "glib/color/palette_diffusion.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>

#include "glib/color/nearest_entry.h"
#include "glib/color/row_reports.h"

namespace glib {
namespace {

struct Color {
  std::int32_t c0, c1, c2;
};

Color FromWord(std::uint32_t word) {
  return {static_cast<std::int32_t>(word & 255), static_cast<std::int32_t>(word >> 8 & 255),
          static_cast<std::int32_t>(word >> 16 & 255)};
}

// Against a palette that can't follow the image errors pile up row by row, so sums are allowed to wrap.
std::int32_t Plus(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

Color Plus(const Color& a, const Color& b) { return {Plus(a.c0, b.c0), Plus(a.c1, b.c1), Plus(a.c2, b.c2)}; }

Color Minus(const Color& a, const Color& b) { return Plus(a, {-b.c0, -b.c1, -b.c2}); }

std::int32_t Sixteenths(std::int32_t value, std::uint32_t weight) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(value) * weight) / 16;
}

Color Share(const Color& error, std::uint32_t weight) {
  return {Sixteenths(error.c0, weight), Sixteenths(error.c1, weight), Sixteenths(error.c2, weight)};
}

// Maps one row. `sums` holds what the row above left for each pixel, and takes what this row leaves for the next one.
// `fetch` gives the channels of a column.
template <typename Fetch>
void DitherRow(NearestEntryFinder& finder, const Color* entries, Color* sums, std::uint32_t width, std::uint8_t* dest,
               Fetch fetch) {
  const auto find = [&finder](const Color& c) { return finder.Find(c.c0, c.c1, c.c2); };
  dest[0] = static_cast<std::uint8_t>(find(Plus(fetch(0), sums[0])));
  if (width == 1) {
    sums[0] = {0, 0, 0};
    return;
  }
  // Shares for the place below the pixel before and below the pixel itself, not complete yet.
  Color below0 = {0, 0, 0};
  Color below1 = {0, 0, 0};
  Color carried = {0, 0, 0};
  for (std::uint32_t x = 1; x + 1 < width; ++x) {
    const Color value = Plus(Plus(fetch(x), sums[x]), carried);
    const std::uint32_t index = find(value);
    dest[x] = static_cast<std::uint8_t>(index);
    const Color error = Minus(value, entries[index]);
    carried = Share(error, 7);
    sums[x - 1] = Plus(below0, Share(error, 3));
    below0 = Plus(below1, Share(error, 5));
    below1 = Share(error, 1);
  }
  const std::uint32_t last = width - 1;
  dest[last] = static_cast<std::uint8_t>(find(Plus(Plus(fetch(last), sums[last]), carried)));
  sums[last - 1] = below0;
  sums[last] = below1;
}

// `rowOf` gives a function from column to Color for a row of the source.
template <typename RowOf>
bool DitherToPalette(const DitherTarget& target, std::uint32_t width, std::uint32_t height, ProgressCallback callback,
                     std::uintptr_t user, RowOf rowOf) {
  const std::unique_ptr<Color[]> sums(new (std::nothrow) Color[width]());
  if (sums == nullptr) return false;
  const auto count = static_cast<std::uint32_t>(target.count);
  NearestEntryFinder finder(target.palette, count, std::uint64_t{width} * height);
  Color entries[256];
  std::transform(target.palette, target.palette + 256, entries, FromWord);
  const std::size_t stride = target.destAligned ? PaddedStride(width, 8) : width;
  RowReports reports(callback, user, width, height, "dither...");
  for (std::uint32_t y = 0; y < height; ++y) {
    reports.BeforeRow(y);
    DitherRow(finder, entries, sums.get(), width, target.dest + stride * y, rowOf(y));
  }
  reports.End();
  return true;
}

}  // namespace

bool DitherTarget::DitherRgb32(const std::uint8_t* source, std::uint32_t width, std::uint32_t height,
                               ProgressCallback callback, std::uintptr_t user) {
  return DitherToPalette(*this, width, height, callback, user, [=](std::uint32_t y) {
    const std::uint8_t* row = source + std::size_t{width} * 4 * y;
    return [row](std::uint32_t x) {
      const std::uint8_t* pixel = row + std::size_t{x} * 4;
      return Color{pixel[0], pixel[1], pixel[2]};
    };
  });
}

bool DitherTarget::DitherIndexed8(const std::uint8_t* source, std::uint32_t width, std::uint32_t height,
                                  const std::uint32_t* sourcePalette, bool sourceAligned, ProgressCallback callback,
                                  std::uintptr_t user) {
  const std::size_t stride = sourceAligned ? PaddedStride(width, 8) : PackedStride(width, 8);
  return DitherToPalette(*this, width, height, callback, user, [=](std::uint32_t y) {
    const std::uint8_t* row = source + stride * y;
    return [row, sourcePalette](std::uint32_t x) { return FromWord(sourcePalette[row[x]]); };
  });
}

bool DitherTarget::DitherIndexed4(const std::uint8_t* source, std::uint32_t width, std::uint32_t height,
                                  const std::uint32_t* sourcePalette, bool sourceAligned, ProgressCallback callback,
                                  std::uintptr_t user) {
  const std::size_t stride = sourceAligned ? PaddedStride(width, 4) : PackedStride(width, 4);
  return DitherToPalette(*this, width, height, callback, user, [=](std::uint32_t y) {
    const std::uint8_t* row = source + stride * y;
    return [row, sourcePalette](std::uint32_t x) {
      return FromWord(sourcePalette[x % 2 == 0 ? row[x / 2] >> 4 : row[x / 2] & 15]);
    };
  });
}

}  // namespace glib
