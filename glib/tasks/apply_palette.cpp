#include "glib/tasks/apply_palette.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>

#include "glib/color/assign_palette.h"
#include "glib/color/palette_diffusion.h"
#include "glib/format/depth_conversion.h"
#include "glib/model/film.h"
#include "glib/model/film_body.h"
#include "platform/pages.h"

namespace glib {
namespace {

constexpr std::uint32_t kEntries = 256;
constexpr std::uint8_t kTransparentIndex = 255;
constexpr std::uint32_t kColorMask = 0x00FFFFFF;
constexpr std::uint32_t kAlphaMask = 0xFF000000;

// A slide's pixels from before its reduction, as 32-bit words without padding.
using Pixels = std::unique_ptr<std::uint32_t[]>;

struct Size {
  std::size_t width;
  std::size_t height;
};

Size SizeOf(const RasterBlock& raster) {
  return {static_cast<std::size_t>(raster.width), static_cast<std::size_t>(raster.height)};
}

bool HasPixels(const RasterBlock& raster) { return raster.pixels != nullptr && raster.width > 0 && raster.height > 0; }

// Pixels of 24 bits come out opaque.
Pixels CopyPixels(const RasterBlock& raster) {
  const Size size = SizeOf(raster);
  Pixels pixels(new (std::nothrow) std::uint32_t[size.width * size.height]);
  if (pixels == nullptr) return pixels;
  for (std::size_t y = 0; y < size.height; ++y) {
    const std::uint8_t* row = raster.pixels + raster.Stride() * y;
    std::uint32_t* out = pixels.get() + size.width * y;
    if (raster.bits == 32) {
      std::memcpy(out, row, size.width * 4);
    } else if (raster.bits == 24) {
      for (std::size_t x = 0; x < size.width; ++x, row += 3) {
        out[x] =
            kAlphaMask | static_cast<std::uint32_t>(row[2]) << 16 | static_cast<std::uint32_t>(row[1]) << 8 | row[0];
      }
    } else {
      ExpandRow(out, row, raster.palette, raster.width, raster.bits);
    }
  }
  return pixels;
}

// Brings rows of 8 bits that are not padded to 4 bytes into that form.
bool AlignRows(RasterBlock& raster) {
  if (raster.rowsAligned != 0) return true;
  const Size size = SizeOf(raster);
  const std::size_t stride = PaddedStride(size.width, 8);
  auto* pixels = static_cast<std::uint8_t*>(platform::AllocatePages(stride * size.height));
  if (pixels == nullptr) return false;
  for (std::size_t y = 0; y < size.height; ++y) {
    std::memcpy(pixels + stride * y, raster.pixels + raster.Stride() * y, size.width);
  }
  if (raster.owned != 0) platform::FreePages(raster.pixels);
  raster.pixels = pixels;
  raster.owned = 1;
  raster.rowsAligned = 1;
  return true;
}

// A colour that none of the entries has, from `key` upwards.
std::uint32_t FreeKeyColor(const std::uint32_t* entries, std::uint32_t key) {
  const auto taken = [&key](std::uint32_t entry) { return ((entry ^ key) & kColorMask) == 0; };
  while (std::any_of(entries, entries + kEntries, taken)) ++key;
  return key;
}

std::uint32_t LowestUnusedIndex(const RasterBlock& raster) {
  std::array<bool, kEntries> used{};
  const Size size = SizeOf(raster);
  for (std::size_t y = 0; y < size.height; ++y) {
    const std::uint8_t* row = raster.pixels + raster.Stride() * y;
    for (std::size_t x = 0; x < size.width; ++x) used[row[x]] = true;
  }
  return static_cast<std::uint32_t>(std::find(used.begin(), used.end(), false) - used.begin());
}

// Gives transparent pixels index 255 and moves what stood there to a free place, if a full palette has one. A palette
// that is not full has no pixels at 255. Without `saved` all pixels are opaque.
void ReserveTransparentIndex(RasterBlock& raster, std::uint32_t colors, std::uint32_t keyColor,
                             const std::uint32_t* saved) {
  std::uint8_t freeIndex = kTransparentIndex;
  if (colors == kEntries) {
    const std::uint32_t unused = LowestUnusedIndex(raster);
    if (unused < kEntries) {
      freeIndex = static_cast<std::uint8_t>(unused);
      raster.palette[freeIndex] = raster.palette[kTransparentIndex];
      raster.palette[kTransparentIndex] = keyColor;
    }
  }
  const Size size = SizeOf(raster);
  for (std::size_t y = 0; y < size.height; ++y) {
    std::uint8_t* row = raster.pixels + raster.Stride() * y;
    for (std::size_t x = 0; x < size.width; ++x) {
      if (saved != nullptr && (saved[size.width * y + x] & kAlphaMask) == 0) {
        row[x] = kTransparentIndex;
      } else if (row[x] == kTransparentIndex) {
        row[x] = freeIndex;
      }
    }
  }
}

// What stays the same from slide to slide, and what one slide hands to those behind it.
struct Work {
  Film& film;
  const std::uint32_t* entries = nullptr;
  std::uint32_t colors = 0;
  bool diffuse = false;
  std::int32_t& transparentIndex;
  std::uint32_t keyColor = 0x00ABCDEF;
};

// Saves the pixels that later steps need and converts the layer to 8 bits.
bool Prepare(Work& work, std::uint32_t slide, RasterBlock& raster, Pixels& saved) {
  const std::int32_t bits = raster.bits;
  const bool mustSave = bits == 32 || (work.diffuse && (bits == 24 || bits == 8));
  if (mustSave) {
    if (!HasPixels(raster)) return false;
    saved = CopyPixels(raster);
    if (saved == nullptr) return false;
  }
  if (bits == 32) work.transparentIndex = kTransparentIndex;
  if (bits != 8) {
    if (work.diffuse && bits == 0 && !work.film.ConvertBits(32, slide, 0)) return false;
    raster.ditherOnReduce = work.diffuse ? 0 : 1;
    const bool reserve = work.transparentIndex != -1 && work.colors == kEntries;
    raster.paletteEntries = reserve ? kEntries - 1 : work.colors;
    if (!work.film.ConvertBits(8, slide, 0)) return false;
  }
  if (!HasPixels(raster) || raster.bits != 8 || !AlignRows(raster)) return false;
  if (work.diffuse && saved == nullptr) saved = CopyPixels(raster);
  return saved != nullptr || !work.diffuse;
}

bool ApplyToSlide(Work& work, std::uint32_t index) {
  if (work.film.LayerCount(index) != 1 && !work.film.MergeLayers(index, 0, Film::kAll)) return false;
  Slide* slide = work.film.body().GetSlide(index);
  Layer* layer = slide->GetLayer(0);
  if (layer == nullptr) return false;
  RasterBlock& raster = layer->raster;
  slide->stale = true;
  Pixels saved;
  if (!Prepare(work, index, raster, saved)) return false;

  ProgressCallback callback = nullptr;
  std::uintptr_t user = 0;
  work.film.GetCallback(callback, user);
  const auto width = static_cast<std::uint32_t>(raster.width);
  const auto height = static_cast<std::uint32_t>(raster.height);
  AssignPalette(raster.pixels, raster.palette, kEntries, work.entries, work.colors, width, height, callback, user);
  std::copy_n(work.entries, kEntries, raster.palette);
  if (work.diffuse) {
    DitherTarget target{raster.pixels, {}, static_cast<std::int32_t>(work.colors), true};
    std::copy_n(work.entries, kEntries, target.palette);
    // Without memory for it the pixels stay as they were assigned.
    (void)target.DitherRgb32(reinterpret_cast<const std::uint8_t*>(saved.get()), width, height, callback, user);
  }
  if (work.transparentIndex != -1) {
    if (index == 0) work.keyColor = FreeKeyColor(work.entries, work.keyColor);
    ReserveTransparentIndex(raster, work.colors, work.keyColor, saved.get());
  }
  return true;
}

}  // namespace

bool ApplyPalette(Film& film, const std::uint32_t* entries, std::uint32_t count, bool diffuse,
                  std::int32_t& transparentIndex) {
  transparentIndex = -1;
  Work work{film, entries, std::min(count, kEntries), diffuse, transparentIndex};
  for (std::uint32_t slide = 0; slide < film.Count(); ++slide) {
    if (!ApplyToSlide(work, slide)) return false;
  }
  return true;
}

}  // namespace glib
